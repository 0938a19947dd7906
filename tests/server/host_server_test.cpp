// The host's HTTP interface: real HTTP on loopback to the server, and from it to the stand-in head office.
#include "server/host_server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "common/error.h"
#include "server/head_office.h"
#include "server/http_client.h"
#include "server/token.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using nlohmann::json;

bool WaitFor(const std::function<bool()>& condition) {
  for (int i = 0; i < 1000; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

std::string RequestDocument(const std::string& code, const std::vector<std::string>& params,
                            const std::string& sql = "") {
  std::string items;
  for (size_t i = 0; i < params.size(); ++i)
    items += "<item n='p" + std::to_string(i) + "' v='" + params[i] + "'/>";
  return "<report><type>" + std::string(sql.empty() ? "1" : "2") + "</type><clientid>3</clientid><sql>" +
         sql + "</sql><name>" + code + "</name><params><reportItem>" + items +
         "</reportItem></params><sessionid>S</sessionid></report>";
}

HostServerOptions Settings(int workers, int queue, std::string secret = "", bool allow_remote = false) {
  HostServerOptions options;
  options.workers = workers;
  options.queue = queue;
  options.secret = std::move(secret);
  options.allow_remote = allow_remote;
  return options;
}

class HostServerTest : public ::testing::Test {
 protected:
  // Starts the server with these settings (the token in the test's folder).
  void Serve(HostServerOptions options = {}) {
    options.token_dir = dir_.file("token");
    options.soap = {2, 10};
    server_ = std::make_unique<HostServer>(options);
    port_ = server_->Start("127.0.0.1", 0);
  }
  std::string Url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

  // The call of a request, with the session put into its document too.
  json Call(const std::string& session, std::string document) const {
    if (size_t at = document.find("<sessionid>S<"); at != std::string::npos)
      document.replace(at + 11, 1, session);
    return {{"ApplicationPath", "Provider=SQLite;Data Source=" + test::SmallSampleShop()},
            {"HostAddress", "127.0.0.1"},
            {"HostPort", std::to_string(office_port_)},
            {"GUID", "g"},
            {"SessionID", session},
            {"ClientID", session},
            {"DBSize", true},
            {"Request", document}};
  }
  HttpResponse Post(const json& body, long timeout = 30, std::vector<std::string> headers = {}) const {
    headers.push_back("Content-Type: application/json");
    return HttpPost(Url("/requests"), headers, body.dump(), {5, timeout});
  }
  // The status and document each session was answered with.
  std::map<std::string, std::pair<std::string, std::string>> PostsBySession() const {
    std::map<std::string, std::pair<std::string, std::string>> by_session;
    for (const HeadOfficePost& post : office_.Posts())
      by_session[post.arguments.at(2).second] = {post.arguments.at(4).second, post.arguments.at(5).second};
    return by_session;
  }

  test::TempDir dir_;
  HeadOffice office_{HeadOfficeOptions{}};
  int office_port_ = office_.Start("127.0.0.1", 0);
  std::unique_ptr<HostServer> server_;
  int port_ = 0;
};

TEST_F(HostServerTest, RequestsAtOnceGiveWhatTheyGiveOneAtATime) {
  Serve(Settings(4, 64));
  const std::vector<std::string> documents = {
      RequestDocument("INVSUM01", {"1/1/2024", "12/31/2024"}),
      RequestDocument("PAYREC01", {"1/1/2025", "6/30/2025"}),
      RequestDocument("AVGINV01", {"1/1/2023", "12/31/2025"}),
      RequestDocument("ENTCUSTSRCH", {"", "", "", "", "50"}),
      RequestDocument("ENTINVSRCH", {"Description", "", "", "", "30"}),
      RequestDocument("ENTCUSTINVOICES", {"", "2"}),
      RequestDocument("", {}, "select top 40 woid, latestdate, screentotal from wo order by woid"),
      RequestDocument("NOSUCH", {}),
      // Statements that fill work tables in the shop database: at once they must not mix.
      RequestDocument("BL01", {"12/31/2024"}),
      RequestDocument("BL01", {"6/30/2024"}),
      RequestDocument("TB01", {"12/31/2024"}),
      RequestDocument("AR01", {"12/31/2024"}),
  };
  for (size_t i = 0; i < documents.size(); ++i) {
    HttpResponse answer = Post(Call(std::to_string(i + 1), documents[i]));
    ASSERT_EQ(answer.status, 200) << answer.body;
    EXPECT_EQ(json::parse(answer.body), json({{"KillFlag", true}}));
  }
  std::vector<std::thread> callers;
  for (int round = 0; round < 3; ++round) {
    for (size_t i = 0; i < documents.size(); ++i) {
      const std::string session = std::to_string(100 * (round + 1) + i + 1);
      callers.emplace_back([&, session, i] { EXPECT_EQ(Post(Call(session, documents[i])).status, 200); });
    }
  }
  for (std::thread& caller : callers) caller.join();

  auto posts = PostsBySession();
  ASSERT_EQ(posts.size(), documents.size() * 4);
  for (size_t i = 0; i < documents.size(); ++i) {
    const auto& alone = posts.at(std::to_string(i + 1));
    EXPECT_TRUE(alone.first == "0" || alone.first == "Prebuilt report not found.") << alone.first;
    for (int round = 1; round <= 3; ++round) {
      const auto& together = posts.at(std::to_string(100 * round + i + 1));
      EXPECT_EQ(together.first, alone.first);
      EXPECT_EQ(together.second, alone.second) << documents[i];
    }
  }
  EXPECT_EQ(DbInUseToken::Create(dir_.file("token"))->GetdbInUse(), 0);
}

TEST_F(HostServerTest, BadCallsAreRefusedAndRunNothing) {
  Serve();
  const std::vector<std::pair<std::string, std::string>> bad = {
      {"{\"SessionID\": ", "the body is not valid JSON"},
      {"[1, 2]", "the body must be a JSON object"},
      {"{\"DBSize\": \"yes\"}", "the field DBSize must be true or false"},
      {"{\"ClientID\": 7}", "the field ClientID must be a string"},
      {"{\"Sessionid\": \"1\"}", "unknown field Sessionid"},
  };
  for (const auto& [body, error] : bad) {
    HttpResponse answer = HttpPost(Url("/requests"), {"Content-Type: application/json"}, body, {5, 10});
    EXPECT_EQ(answer.status, 400) << body;
    EXPECT_EQ(json::parse(answer.body).at("error").get<std::string>().rfind(error, 0), 0u) << answer.body;
  }
  EXPECT_TRUE(office_.Posts().empty());

  // The token cannot be created: the one failure the host sees, and nothing posted.
  std::ofstream(dir_.file("blocked")) << "a file where the token folder should be";
  json call = Call("1", RequestDocument("", {}, "select 1"));
  HostServerOptions options;
  options.token_dir = dir_.file("blocked");
  server_ = std::make_unique<HostServer>(options);
  port_ = server_->Start("127.0.0.1", 0);
  HttpResponse answer = Post(call);
  EXPECT_EQ(answer.status, 500);
  EXPECT_EQ(json::parse(answer.body)
                .at("error")
                .get<std::string>()
                .rfind("the token component cannot be created", 0),
            0u);
  EXPECT_EQ(json::parse(answer.body).at("KillFlag"), false);
  EXPECT_TRUE(office_.Posts().empty());
}

TEST_F(HostServerTest, ACallerThatGoesAwayDoesNotStopThePost) {
  HeadOfficeOptions slow;
  slow.delay_ms = 1500;
  HeadOffice slow_office(slow);
  office_port_ = slow_office.Start("127.0.0.1", 0);
  Serve();
  EXPECT_THROW(Post(Call("7", RequestDocument("AVGINV01", {"1/1/2024", "12/31/2024"})), 1), Error);
  EXPECT_TRUE(WaitFor([&] { return slow_office.Posts().size() == 1; }));
  EXPECT_EQ(slow_office.Posts().at(0).arguments.at(4).second, "0");
  server_->Stop();  // returns once the request has finished
  EXPECT_EQ(DbInUseToken::Create(dir_.file("token"))->GetdbInUse(), 0);
}

TEST_F(HostServerTest, BeyondTheQueueCallsAreTurnedAway) {
  HeadOfficeOptions slow;
  slow.delay_ms = 1000;
  HeadOffice slow_office(slow);
  office_port_ = slow_office.Start("127.0.0.1", 0);
  Serve(Settings(1, 1));
  auto load = [&](const char* key) {
    return json::parse(HttpGet(Url("/health"), {5, 5}).body).at(key).get<int>();
  };
  const json call = Call("1", RequestDocument("AVGINV01", {"1/1/2024", "12/31/2024"}));
  std::thread first([&] { EXPECT_EQ(Post(call).status, 200); });
  ASSERT_TRUE(WaitFor([&] { return load("running") == 1; }));
  std::thread second([&] { EXPECT_EQ(Post(call).status, 200); });
  ASSERT_TRUE(WaitFor([&] { return load("waiting") == 1; }));
  HttpResponse refused = Post(call);
  EXPECT_EQ(refused.status, 503);
  first.join();
  second.join();
  EXPECT_EQ(slow_office.Posts().size(), 2u);
}

TEST_F(HostServerTest, ASecretGuardsEveryCallAndRemoteListeningNeedsOne) {
  Serve(Settings(2, 2, "s3cret"));
  EXPECT_EQ(HttpGet(Url("/health"), {5, 5}).status, 401);
  EXPECT_EQ(Post(Call("1", ""), 10, {"Authorization: Bearer wrong!"}).status, 401);
  EXPECT_EQ(HttpPost(Url("/health"), {"Authorization: Bearer s3cret"}, "", {5, 5}).status, 404);
  EXPECT_EQ(Post(Call("1", RequestDocument("", {}, "select 1 as one")), 10, {"Authorization: Bearer s3cret"})
                .status,
            200);
  EXPECT_EQ(office_.Posts().size(), 1u);

  EXPECT_THROW(HostServer(Settings(1, 1, "secret")).Start("0.0.0.0", 0), Error);
  EXPECT_THROW(HostServer(Settings(1, 1, "", true)).Start("0.0.0.0", 0), Error);
}

}  // namespace
}  // namespace ent
