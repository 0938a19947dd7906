// The stand-in head office's pages: real posts over SOAP on loopback, the pages over HTTP, and what a
// real browser (headless Chromium) shows of them.
#include "server/head_office_page.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <cstdlib>
#include <fstream>

#include "data/recordset.h"
#include "server/head_office.h"
#include "server/http_client.h"
#include "server/soap_client.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

// A balance sheet's shape: hidden headings, bold headings and totals, indented accounts; plus one
// column with a heading and a cell that tries to run a script.
std::string BalanceSheet() {
  Recordset rs;
  for (const char* name : {"hide_Account_Name", "hide_cTot3", "Note"}) rs.AppendField(AppendedField(name));
  rs.Open();
  const std::vector<std::vector<std::string>> rows = {
      {"[b]ASSETS", " ", " "},
      {"[sp3]Current Assets", " ", " "},
      {"[sp6]Cash on Hand", "1,415.81", "<script>window.injected=true</script>"},
      {"[b]TOTAL ASSETS", "1,415.81", " "}};
  for (const auto& row : rows) {
    rs.AddNew();
    for (size_t c = 0; c < row.size(); ++c) rs.Set(c, Variant(row[c]));
    rs.Update();
  }
  return rs.SaveToString();
}

class HeadOfficePageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    HeadOfficeOptions options;
    options.out_dir = dir_.file("posts");
    office_ = std::make_unique<HeadOffice>(options);
    port_ = office_->Start("127.0.0.1", 0);
  }
  void Send(const std::string& session, const std::string& status, const std::string& document) {
    SoapClient client({5, 30});
    client.Init(office_->WsdlUrl());
    client.Call("sendReport", {"shop", "pass", session, "7", status, document});
  }
  httplib::Result Get(const std::string& path) {
    httplib::Client client("127.0.0.1", port_);
    client.set_read_timeout(30, 0);
    return client.Get(path);
  }

  test::TempDir dir_;
  std::unique_ptr<HeadOffice> office_;
  int port_ = 0;
};

TEST_F(HeadOfficePageTest, ListsThePostsWithTheirDocumentsRendered) {
  Send("S-BL01", "0", BalanceSheet());
  Send("S-<i>fail</i>", "Prebuilt report not found.", "");
  auto page = Get("/");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->get_header_value("Content-Security-Policy"),
            "default-src 'none'; style-src 'unsafe-inline'");
  const std::string& html = page->body;
  for (const char* part :
       {"2 posts received",
        // The list: session, client, status and rows of each post; a failure has no rows.
        "<td>S-BL01</td><td>7</td><td>0</td><td class=\"num\">4</td><td>xml</td>",
        "<td>S-&lt;i&gt;fail&lt;/i&gt;</td><td>7</td><td>Prebuilt report not found.</td>"
        "<td class=\"num\">-</td><td>-</td>",
        // The document as the head office's client shows it, markers gone and nothing from it live.
        "<tr class=\"b\"><td>TOTAL ASSETS</td>",
        "<td style=\"padding-left:calc(.6em + 6ch)\">Cash on Hand</td>", "<th></th><th></th><th>Note</th>",
        "No document: the post carried only its status."})
    EXPECT_NE(html.find(part), std::string::npos) << part << " in " << html;
  EXPECT_EQ(html.find("<script>"), std::string::npos);
  EXPECT_EQ(html.find("<i>"), std::string::npos);
}

TEST_F(HeadOfficePageTest, OnePostsPageAndWhatItRefuses) {
  Send("S1", "0", BalanceSheet());
  Send("S2", "0", BalanceSheet());
  // A stored document that is no longer XML is reported on the page, which still shows the rest.
  std::ofstream(dir_.file("posts/0002.xml"), std::ios::binary) << "<xml><broken";
  auto whole = Get("/posts/0001");
  ASSERT_TRUE(whole);
  EXPECT_EQ(whole->status, 200);
  EXPECT_NE(whole->body.find("Post 0001: session S1, client 7, status 0"), std::string::npos);
  EXPECT_NE(whole->body.find("Cash on Hand"), std::string::npos);
  auto broken = Get("/posts/0002");
  ASSERT_TRUE(broken);
  EXPECT_EQ(broken->status, 200);
  EXPECT_NE(broken->body.find("The document is not shown:"), std::string::npos);
  EXPECT_NE(Get("/")->body.find("Cash on Hand"), std::string::npos);

  EXPECT_EQ(Get("/posts/0003")->status, 404);
  EXPECT_EQ(Get("/posts/..%2Fposts.txt")->status, 404);
  EXPECT_EQ(Get("/posts/1234567")->status, 404);
}

// Headless Chromium opens the list page and reports, from the computed styles, what a person sees.
// The page forbids scripts by its HTTP policy, so the test's probe runs on a copy of the page's HTML
// in a file, with the probe appended; any script the document smuggled in would run there too.
std::string Chromium() {
  if (const char* named = std::getenv("ENTPRCREQ_CHROMIUM")) return named;
  return std::system("command -v chromium >/dev/null 2>&1") == 0 ? "chromium" : "";
}

// What the probe sees, on one line: whether the document's script ran, the headings, each row's
// label and font weight, whether [sp3] and [sp6] indent by even steps, and the figures' alignment.
const char kProbe[] = R"(<script>
const table = document.querySelector('#post-0001 table');
const rows = [...table.tBodies[0].rows], style = cell => getComputedStyle(cell);
const indent = rows.map(tr => parseFloat(style(tr.cells[0]).paddingLeft));
const seen = [window.injected === true ? 'injected' : 'inert',
              [...table.querySelectorAll('th')].map(th => th.textContent).join('|'),
              ...rows.map(tr => tr.cells[0].textContent + ' ' + style(tr.cells[0]).fontWeight),
              indent[1] > indent[0] + 10 && Math.abs(indent[2] - 2 * indent[1] + indent[0]) <= 1
                  ? 'even steps' : 'steps ' + indent.join(' '),
              style(rows[2].cells[1]).textAlign];
const pre = document.createElement('pre');
pre.id = 'probe';
pre.textContent = seen.join('; ');
document.body.appendChild(pre);
</script>)";

TEST_F(HeadOfficePageTest, ABrowserShowsBoldTotalsIndentationAndHiddenHeadings) {
  const std::string chromium = Chromium();
  if (chromium.empty())
    GTEST_SKIP() << "chromium is not installed (./scripts/deps installs it); the browser check did not run";
  Send("S-BL01", "0", BalanceSheet());
  std::string html = Get("/")->body;
  html.insert(html.rfind("</body>"), kProbe);
  std::ofstream(dir_.file("page.html"), std::ios::binary) << html;
  const std::string command = "timeout 120 " + chromium +
                              " --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --no-first-run"
                              " --user-data-dir=" +
                              dir_.file("profile") + " --dump-dom file://" + dir_.file("page.html") + " >" +
                              dir_.file("dom.html") + " 2>" + dir_.file("err.txt");
  ASSERT_EQ(std::system(command.c_str()), 0) << test::FileText(dir_.file("err.txt"));
  const std::string text = test::FileText(dir_.file("dom.html"));
  const size_t start = text.find("<pre id=\"probe\">");
  ASSERT_NE(start, std::string::npos) << text.substr(0, 2000);
  EXPECT_EQ(
      text.substr(start, text.find("</pre>", start) - start),
      "<pre id=\"probe\">inert; ||Note; ASSETS 700; Current Assets 400; Cash on Hand 400; TOTAL ASSETS 700; "
      "even steps; right");
}

}  // namespace
}  // namespace ent
