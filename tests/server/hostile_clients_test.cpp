// The host's HTTP interface under clients that send slowly or try a port that is taken; and `serve`
// stopping while a runaway query runs.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "common/error.h"
#include "common/thread_values.h"
#include "server/head_office.h"
#include "server/host_server.h"
#include "server/http_client.h"
#include "server/token.h"
#include "support/error_text.h"
#include "support/program.h"
#include "support/server_loopback.h"
#include "support/test_db.h"

namespace ent {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

// A raw TCP connection to 127.0.0.1:port, closed at the end.
class RawClient {
 public:
  explicit RawClient(int port) : fd_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  ~RawClient() { close(fd_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool connected() const { return connected_; }
  bool Send(const std::string& bytes) { return send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0; }
  // What the server sent until it closed the connection or `seconds` passed; `closed` tells which.
  std::string Receive(int seconds, bool& closed) {
    std::string got;
    closed = false;
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < end) {
      pollfd p{fd_, POLLIN, 0};
      if (poll(&p, 1, 100) <= 0) continue;
      char buffer[4096];
      const ssize_t n = recv(fd_, buffer, sizeof buffer, 0);
      if (n <= 0) {
        closed = true;
        break;
      }
      got.append(buffer, static_cast<size_t>(n));
    }
    return got;
  }

 private:
  int fd_;
  bool connected_ = false;
};

class HostileClientsTest : public test::HostOnLoopback {
 protected:
  void SetUp() override {
    // /health also checks the log folder: give it one.
    std::filesystem::create_directories(dir_.file("log"));
    saved_log_dir_ = LogDirectory();
    SetLogDirectory(dir_.file("log"));
  }
  void TearDown() override { SetLogDirectory(saved_log_dir_); }
  // A call of free SQL on the test's own shop.
  nlohmann::json SqlCall(const std::string& session, const std::string& sql) const {
    return Call(session, test::SqlRequest(sql, session), db_.connection_string());
  }

  std::string saved_log_dir_;
  test::TestDb db_;
};

TEST_F(HostileClientsTest, SlowClientsNeitherStopTheServerNorHoldItLong) {
  HostServerOptions options;
  options.workers = 2;
  options.queue = 2;
  options.request_seconds = 3;
  Serve(options);
  // 64 clients that send a request one byte a second.
  std::vector<std::unique_ptr<RawClient>> slow;
  for (int i = 0; i < 64; ++i) {
    slow.push_back(std::make_unique<RawClient>(port_));
    ASSERT_TRUE(slow.back()->connected());
    slow.back()->Send("POST /requests HTTP/1.1\r\nHost: x\r\n");
  }
  std::atomic<bool> done{false};
  std::thread trickle([&] {
    for (int second = 0; second < 8 && !done; ++second) {
      for (auto& client : slow) client->Send("X");
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  // /health and a real call are answered while all of them are connected.
  const HttpResponse health = HttpGet(Url("/health"), {2, 2});
  EXPECT_EQ(health.status, 200);
  const HttpResponse call = Post(SqlCall("1", "select 1 as one"), 5);
  EXPECT_EQ(call.status, 200) << call.body;
  ASSERT_EQ(office_.Posts().size(), 1u);
  EXPECT_EQ(office_.Posts()[0].arguments.at(4).second, "0");
  // A request must arrive whole within its time: the slow ones are cut off at about 3 seconds.
  bool closed = false;
  slow.front()->Receive(8, closed);
  EXPECT_TRUE(closed);
  done = true;
  trickle.join();
}

TEST_F(HostileClientsTest, TheSecretIsCheckedBeforeTheBodyIsRead) {
  HostServerOptions options;
  options.secret = "s3cret";
  Serve(options);
  RawClient client(port_);
  // The body is announced but never sent: without the secret the answer must not wait for it.
  client.Send("POST /requests HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n");
  bool closed = false;
  const std::string answer = client.Receive(3, closed);
  EXPECT_EQ(answer.rfind("HTTP/1.1 401", 0), 0u) << answer;
  EXPECT_TRUE(office_.Posts().empty());
}

// The host and the head office listen the same way: a port taken by one is refused to the other.
TEST_F(HostileClientsTest, APortInUseIsRefusedWithAClearText) {
  Serve(HostServerOptions{});
  EXPECT_EQ(test::ErrorText([&] { HeadOffice(HeadOfficeOptions{}).Start("127.0.0.1", port_); }),
            "cannot listen on 127.0.0.1:" + std::to_string(port_) +
                ": the port is in use (is another server already running there?).");
  EXPECT_EQ(HttpGet(Url("/health"), {2, 5}).status, 200);
}

TEST_F(HostileClientsTest, SigtermStopsServeWhileAQueryRunsAndTheFailureIsPosted) {
  const std::string token = dir_.file("token");
  test::BackgroundProgram serve({"serve", "--listen", "127.0.0.1:0", "--token-dir", token},
                                dir_.path().string());
  const std::string serving = "serving on http://127.0.0.1:";
  for (int i = 0; i < 100 && serve.Out().find(serving) == std::string::npos; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const std::string out = serve.Out();
  ASSERT_NE(out.find(serving), std::string::npos) << serve.Err();
  port_ = std::stoi(out.substr(out.find(serving) + serving.size()));
  // A slow answer (under a sanitizer, beside the running query) reads as "not yet".
  auto running = [&] {
    try {
      return json::parse(HttpGet(Url("/health"), {1, 2}).body).value("running", 0);
    } catch (const std::exception&) {
      return -1;
    }
  };
  // A text that runs for ever and returns nothing.
  std::jthread caller([&] {
    try {
      Post(SqlCall("7",
                   "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c WHERE "
                   "x = 0"),
           60);
    } catch (const Error&) {
    }
  });
  for (int i = 0; i < 100 && running() != 1; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(running(), 1) << serve.Err();
  EXPECT_EQ(serve.StopWithin(20), 0) << "serve did not stop within 20 seconds of SIGTERM";
  caller.join();
  ASSERT_EQ(office_.Posts().size(), 1u);
  EXPECT_EQ(office_.Posts()[0].arguments.at(4).second, "The query was interrupted: the server is stopping.");
  EXPECT_EQ(DbInUseToken::Create(token)->GetdbInUse(), 0);
}

}  // namespace
}  // namespace ent
