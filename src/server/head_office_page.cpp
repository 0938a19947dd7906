#include "server/head_office_page.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "common/error.h"
#include "job/result_render.h"
#include "job/result_view.h"

namespace ent {

namespace {

const char kPolicy[] = "default-src 'none'; style-src 'unsafe-inline'";
// The list shows the start of each document; a post's own page shows the rest.
const ViewLimits kListLimits{size_t{4} << 20, 32, 100};
const ViewLimits kPostLimits{size_t{64} << 20, 32, 20000};

struct StoredPost {
  std::string stem;  // "0001"
  std::string session, client, status, rows, root;
  std::string time;  // when it was stored, local time
};

std::string StoredTime(const std::filesystem::path& file) {
  std::error_code ec;
  const auto written = std::filesystem::last_write_time(file, ec);
  if (ec) return "";
  const std::time_t t = std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(written));
  std::tm local{};
  localtime_r(&t, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

bool IsStem(const std::string& text) {
  return !text.empty() && text.size() <= 6 && text.find_first_not_of("0123456789") == std::string::npos;
}

// posts.txt: one line per post, tab-separated: number, session, client, status, rows, root element.
std::vector<StoredPost> ReadPosts(const std::filesystem::path& dir) {
  std::vector<StoredPost> posts;
  std::ifstream in(dir / "posts.txt", std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    std::vector<std::string> fields;
    std::istringstream parts(line);
    for (std::string field; std::getline(parts, field, '\t');) fields.push_back(field);
    if (fields.empty() || !IsStem(fields[0])) continue;
    fields.resize(std::max<size_t>(fields.size(), 6));
    StoredPost post{fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], ""};
    post.time = StoredTime(dir / (post.stem + ".json"));
    if (post.time.empty()) post.time = StoredTime(dir / (post.stem + ".xml"));
    posts.push_back(std::move(post));
  }
  return posts;
}

std::string RowsText(const StoredPost& post) {
  return post.rows == "-1" || post.rows.empty() ? "-" : post.rows;
}

// The post's document rendered, or why it is not shown.
std::string DocumentHtml(const std::filesystem::path& dir, const StoredPost& post, const ViewLimits& limits) {
  const std::filesystem::path file = dir / (post.stem + ".xml");
  std::error_code ec;
  if (!std::filesystem::exists(file, ec))
    return "<p class=\"note\">No document: the post carried only its status.</p>\n";
  try {
    return RenderHtmlTables(LoadResultView(file.string(), limits));
  } catch (const Error& e) {
    return "<p class=\"note\">The document is not shown: " + HtmlEscape(e.description()) + "</p>\n";
  }
}

void Send(httplib::Response& response, const std::string& page) {
  response.set_header("Content-Security-Policy", kPolicy);
  response.set_header("X-Content-Type-Options", "nosniff");
  response.set_content(page, "text/html; charset=utf-8");
}

std::string PostHeading(const StoredPost& post) {
  return "Post " + post.stem + ": session " + post.session + ", client " + post.client + ", status " +
         post.status;
}

std::string ListPage(const std::string& out_dir) {
  std::string page = HtmlPageStart("Posts received by the stand-in head office");
  page += "<h1>Posts received by the stand-in head office</h1>\n";
  if (out_dir.empty())
    return page +
           "<p>This head office does not keep its posts. Start it with <code>--out DIR</code> to see them "
           "here.</p>\n" +
           HtmlPageEnd();
  const std::filesystem::path dir(out_dir);
  const std::vector<StoredPost> posts = ReadPosts(dir);
  page += "<p>" + std::to_string(posts.size()) + (posts.size() == 1 ? " post" : " posts") +
          " received. Documents are shown as the head office's client shows them: bold totals, indented "
          "accounts, no headings over hide_ columns.</p>\n";
  page +=
      "<table class=\"posts\"><thead><tr><th>Post</th><th>Received</th><th>Session</th><th>Client</th>"
      "<th>Status</th><th>Rows</th><th>Document</th></tr></thead><tbody>\n";
  for (const StoredPost& p : posts)
    page += "<tr><td><a href=\"#post-" + p.stem + "\">" + p.stem + "</a></td><td>" + HtmlEscape(p.time) +
            "</td><td>" + HtmlEscape(p.session) + "</td><td>" + HtmlEscape(p.client) + "</td><td>" +
            HtmlEscape(p.status) + "</td><td class=\"num\">" + HtmlEscape(RowsText(p)) + "</td><td>" +
            HtmlEscape(p.root.empty() ? "-" : p.root) + "</td></tr>\n";
  page += "</tbody></table>\n";
  for (const StoredPost& p : posts) {
    page += "<section id=\"post-" + p.stem + "\"><h2>" + HtmlEscape(PostHeading(p)) + "</h2>\n";
    page += DocumentHtml(dir, p, kListLimits);
    page += "<p class=\"note\"><a href=\"/posts/" + p.stem + "\">the whole post</a></p></section>\n";
  }
  return page + HtmlPageEnd();
}

}  // namespace

void AddHeadOfficePages(httplib::Server& server, const std::string& out_dir) {
  server.Get("/", [out_dir](const httplib::Request&, httplib::Response& response) {
    Send(response, ListPage(out_dir));
  });
  server.Get(R"(/posts/(\d{1,6}))", [out_dir](const httplib::Request& request, httplib::Response& response) {
    const std::string stem = request.matches[1];
    const std::filesystem::path dir(out_dir);
    for (const StoredPost& p : out_dir.empty() ? std::vector<StoredPost>{} : ReadPosts(dir)) {
      if (p.stem != stem) continue;
      Send(response, HtmlPageStart(PostHeading(p)) + "<h1>" + HtmlEscape(PostHeading(p)) +
                         "</h1>\n<p>Received " + HtmlEscape(p.time) + ". <a href=\"/\">All posts</a></p>\n" +
                         DocumentHtml(dir, p, kPostLimits) + HtmlPageEnd());
      return;
    }
    response.status = 404;
    Send(response, HtmlPageStart("No such post") + "<p>No post " + HtmlEscape(stem) +
                       ". <a href=\"/\">All posts</a></p>\n" + HtmlPageEnd());
  });
}

}  // namespace ent
