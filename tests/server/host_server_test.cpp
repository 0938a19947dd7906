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
#include "support/server_loopback.h"

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

HostServerOptions Settings(int workers, int queue, std::string secret = "", bool allow_remote = false) {
  HostServerOptions options;
  options.workers = workers;
  options.queue = queue;
  options.secret = std::move(secret);
  options.allow_remote = allow_remote;
  return options;
}

using HostServerTest = test::HostOnLoopback;

TEST_F(HostServerTest, BadCallsAreRefusedAndRunNothing) {
  Serve();
  const std::string call = Call("1", test::SqlRequest("select 1 as one")).dump();
  const std::vector<std::pair<std::string, std::string>> bad = {
      {"{\"SessionID\": ", "the body is not valid JSON"},
      // Bytes that are not UTF-8, quoted in the answer's text.
      {"{\"SessionID\": \"a\xff\xfe\"}", "UTF-8"},
      {"{\"Request\": \"\xc3\x28\"}", "UTF-8"},
      {call.substr(0, call.size() - 2) + "\x80\"}", "UTF-8"},
      {"[1, 2]", "the body must be a JSON object"},
      {"{\"DBSize\": \"yes\"}", "the field DBSize must be true or false"},
      {"{\"ClientID\": 7}", "the field ClientID must be a string"},
      {"{\"Sessionid\": \"1\"}", "unknown field Sessionid"},
  };
  for (const auto& [body, error] : bad) {
    HttpResponse answer = HttpPost(Url("/requests"), {"Content-Type: application/json"}, body, {5, 10});
    EXPECT_EQ(answer.status, 400) << body;
    EXPECT_NE(json::parse(answer.body).at("error").get<std::string>().find(error), std::string::npos)
        << answer.body;
  }
  EXPECT_TRUE(office_.Posts().empty());

  // The token cannot be created: the one failure the host sees, and nothing posted.
  std::ofstream(dir_.file("blocked")) << "a file where the token folder should be";
  HostServerOptions options;
  options.token_dir = dir_.file("blocked");
  Serve(options);
  const HttpResponse answer = Post(Call("1", test::SqlRequest("select 1")));
  EXPECT_EQ(answer.status, 500);
  const json refusal = json::parse(answer.body);
  EXPECT_EQ(refusal.at("error").get<std::string>().rfind("the token component cannot be created", 0), 0u);
  EXPECT_EQ(refusal.at("KillFlag"), false);
  EXPECT_TRUE(office_.Posts().empty());
}

TEST_F(HostServerTest, ACallerThatGoesAwayDoesNotStopThePost) {
  HeadOfficeOptions slow;
  slow.delay_ms = 1500;
  HeadOffice slow_office(slow);
  office_port_ = slow_office.Start("127.0.0.1", 0);
  Serve();
  EXPECT_THROW(Post(Call("7", test::CodeRequest("AVGINV01", {"1/1/2024", "12/31/2024"})), 1), Error);
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
  const json call = Call("1", test::CodeRequest("AVGINV01", {"1/1/2024", "12/31/2024"}));
  std::thread first([&] { EXPECT_EQ(Post(call).status, 200); });
  ASSERT_TRUE(WaitFor([&] { return load("running") == 1; }));
  std::thread second([&] { EXPECT_EQ(Post(call).status, 200); });
  ASSERT_TRUE(WaitFor([&] { return load("waiting") == 1; }));
  EXPECT_EQ(Post(call).status, 503);
  first.join();
  second.join();
  EXPECT_EQ(slow_office.Posts().size(), 2u);
}

TEST_F(HostServerTest, ASecretGuardsEveryCallAndRemoteListeningNeedsOne) {
  // Calls without the secret and with it are in ServeProcessTest.
  Serve(Settings(2, 2, "s3cret"));
  EXPECT_EQ(Post(Call("1", ""), 10, {"Authorization: Bearer wrong!"}).status, 401);
  EXPECT_EQ(HttpPost(Url("/health"), {"Authorization: Bearer s3cret"}, "", {5, 5}).status, 404);
  EXPECT_TRUE(office_.Posts().empty());

  EXPECT_THROW(HostServer(Settings(1, 1, "secret")).Start("0.0.0.0", 0), Error);
  EXPECT_THROW(HostServer(Settings(1, 1, "", true)).Start("0.0.0.0", 0), Error);
}

}  // namespace
}  // namespace ent
