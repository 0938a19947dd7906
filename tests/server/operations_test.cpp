// Running the server as an operator does: health, metrics, readiness to systemd, the version and
// the messages for wrong flags. Real HTTP on loopback, real processes, a real unix datagram socket.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "common/thread_values.h"
#include "common/version.h"
#include "server/execution_journal.h"
#include "server/head_office.h"
#include "server/host_server.h"
#include "server/http_client.h"
#include "server/systemd_notify.h"
#include "support/program.h"
#include "support/sample_shop.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using nlohmann::json;

// A datagram socket bound where NOTIFY_SOCKET will point, as systemd holds it.
class NotifyListener {
 public:
  explicit NotifyListener(const std::string& name) : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    if (name[0] == '@') address.sun_path[0] = '\0';
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&address), size), 0);
    timeval wait{30, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  }
  ~NotifyListener() { close(fd_); }
  // The next message, or "" after 30 seconds.
  std::string Receive() {
    char buffer[4096];
    const ssize_t n = recv(fd_, buffer, sizeof buffer, 0);
    return n > 0 ? std::string(buffer, static_cast<size_t>(n)) : "";
  }

 private:
  int fd_;
};

// The value of one series in a Prometheus text ("" when absent).
std::string Sample(const std::string& text, const std::string& series) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (line.rfind(series + " ", 0) == 0) return line.substr(series.size() + 1);
  return "";
}

// A path is what ServeProcessTest listens on; an abstract socket is named with a leading @.
TEST(SystemdNotifyTest, ReadinessGoesToThePathOrAbstractSocketSystemdNames) {
  test::TempDir dir;
  const std::string abstract = "@entprcreq-test-" + std::to_string(getpid());
  NotifyListener abstract_listener(abstract);
  setenv("NOTIFY_SOCKET", abstract.c_str(), 1);
  EXPECT_TRUE(NotifySystemd("STOPPING=1"));
  EXPECT_EQ(abstract_listener.Receive(), "STOPPING=1");

  // Not under systemd, or a name that is no socket address: nothing is sent, nothing fails.
  unsetenv("NOTIFY_SOCKET");
  EXPECT_FALSE(NotifySystemd("READY=1"));
  setenv("NOTIFY_SOCKET", "relative/path", 1);
  EXPECT_FALSE(NotifySystemd("READY=1"));
  setenv("NOTIFY_SOCKET", dir.file("nobody-listens").c_str(), 1);
  EXPECT_FALSE(NotifySystemd("READY=1"));
  unsetenv("NOTIFY_SOCKET");
}

using ServeProcessTest = test::HostOnLoopback;

TEST_F(ServeProcessTest, TellsSystemdItIsReadyAndLogsEachCallToStderr) {
  std::filesystem::create_directory(dir_.file("log"));
  NotifyListener listener(dir_.file("notify"));
  std::ofstream(dir_.file("secret")) << "s3cret\n";
  test::BackgroundProgram serve(
      {"serve", "--listen", "127.0.0.1:0", "--token-dir", dir_.file("token"), "--log-dir", dir_.file("log")},
      dir_.path().string(),
      {"NOTIFY_SOCKET=" + dir_.file("notify"), "CREDENTIALS_DIRECTORY=" + dir_.path().string()});
  const std::string ready = listener.Receive();
  ASSERT_EQ(ready.rfind("READY=1\nSTATUS=serving on 127.0.0.1:", 0), 0u) << ready << serve.Err();
  const std::string base = "http://127.0.0.1:" + ready.substr(ready.rfind(':') + 1);

  // The secret came from the credential folder.
  const nlohmann::json call = Call("Q1", test::CodeRequest("AVGINV01", {"1/1/2024", "12/31/2024"}));
  EXPECT_EQ(HttpPost(base + "/requests", {}, call.dump(), {5, 30}).status, 401);
  const std::vector<std::string> auth = {"Authorization: Bearer s3cret"};
  EXPECT_EQ(HttpPost(base + "/requests", auth, call.dump(), {5, 30}).status, 200);
  EXPECT_EQ(HttpPost(base + "/requests", auth, "{", {5, 30}).status, 400);
  EXPECT_EQ(HttpGet(base + "/health", {5, 5}).status, 401);

  EXPECT_EQ(serve.Stop(), 0);
  EXPECT_EQ(listener.Receive(), "STOPPING=1");
  const std::string err = serve.Err();
  for (const char* line :
       {"AVGINV01 session=\"Q1\"", "post=accepted http=200", "HTTP 401 POST /requests",
        "HTTP 400 POST /requests: {\"error\":\"the body is not valid JSON", "HTTP 401 GET /health"})
    EXPECT_NE(err.find(line), std::string::npos) << line << " in " << err;
  // Exactly the three refusals and the one call: a success other than a call leaves no line.
  EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 4) << err;
  EXPECT_EQ(ExecutionJournal(dir_.file("log/journal.db")).Select({}).size(), 1u);
}

class OperationsTest : public test::HostOnLoopback {
 protected:
  void Serve(const std::string& token_dir) {
    HostServerOptions options;
    options.token_dir = token_dir;
    options.workers = 2;
    options.queue = 5;
    HostOnLoopback::Serve(options);
  }
  HttpResponse Get(const std::string& path) const { return HttpGet(Url(path), {5, 10}); }
};

TEST_F(OperationsTest, HealthReportsEachCheckAndTheVersion) {
  const std::string saved_log_dir = LogDirectory();
  SetLogDirectory(dir_.file("log"));
  auto health = [&] {
    const HttpResponse answer = Get("/health");
    return std::to_string(answer.status) + " " + json::parse(answer.body).dump();
  };
  auto check = [](const std::string& path, const std::string& problem) {
    json c = {{"ok", problem.empty()}, {"path", path}};
    if (!problem.empty()) c["problem"] = problem;
    return c;
  };
  // The log folder is missing: unhealthy, and the check says which folder and why.
  Serve(dir_.file("token"));
  json expected = {{"status", "unhealthy"}, {"version", ProgramVersion()},
                   {"workers", 2},          {"running", 0},
                   {"waiting", 0},          {"queue", 5}};
  expected["checks"] = {{"log_dir", check(dir_.file("log"), "the folder does not exist")},
                        {"token_dir", check(dir_.file("token"), "")}};
  EXPECT_EQ(health(), "503 " + expected.dump());

  std::filesystem::create_directory(dir_.file("log"));
  expected["status"] = "running";
  expected["checks"]["log_dir"] = check(dir_.file("log"), "");
  EXPECT_EQ(health(), "200 " + expected.dump());

  // A token folder that cannot be used.
  std::ofstream(dir_.file("blocked")) << "a file where the token folder should be";
  Serve(dir_.file("blocked"));
  expected["status"] = "unhealthy";
  expected["checks"]["token_dir"] =
      check(dir_.file("blocked"),
            "the token component cannot be created: " + dir_.file("blocked") + ": Not a directory");
  EXPECT_EQ(health(), "503 " + expected.dump());
  SetLogDirectory(saved_log_dir);

  // The program says the same version.
  EXPECT_EQ(test::RunProgram({"--version"}, dir_.path().string()).out,
            "entprcreq " + ProgramVersion() + "\n");
}

TEST_F(OperationsTest, MetricsCountCallsByCodeAndOutcome) {
  Serve(dir_.file("token"));
  // The counters are the process's: what the calls below add to each, read before and after.
  const std::vector<std::string> counted = {
      "entprcreq_requests_total{code=\"CARCOUNT01\",status=\"ok\",post=\"accepted\"}",
      "entprcreq_requests_total{code=\"custom\",status=\"no_records\",post=\"accepted\"}",
      "entprcreq_requests_total{code=\"NOSUCH-M\",status=\"error\",post=\"accepted\"}",
      "entprcreq_request_duration_seconds_count", "entprcreq_http_responses_total{status=\"400\"}"};
  auto counts = [&] {
    const std::string text = Get("/metrics").body;
    std::vector<long> values;
    for (const std::string& name : counted) values.push_back(std::atol(Sample(text, name).c_str()));
    return values;
  };
  const std::vector<long> before = counts();
  for (const auto& [session, document] : std::vector<std::pair<std::string, std::string>>{
           {"M1", test::CodeRequest("CARCOUNT01", {"1/1/2024", "12/31/2024"})},
           {"M2", test::CodeRequest("CARCOUNT01", {"1/1/2024", "12/31/2024"})},
           {"M3", test::SqlRequest("select cusid from customer where 1=0")},
           {"M4", test::CodeRequest("NOSUCH-M")}})
    ASSERT_EQ(Post(Call(session, document)).status, 200);
  ASSERT_EQ(HttpPost(Url("/requests"), {}, "[]", {5, 5}).status, 400);
  const std::vector<long> after = counts();
  std::string added;
  for (size_t i = 0; i < counted.size(); ++i) added += std::to_string(after[i] - before[i]) + " ";
  EXPECT_EQ(added, "2 1 1 4 1 ");

  const std::string text = Get("/metrics").body;
  // Every call is at most as long as the largest finite bucket or counted in +Inf only.
  EXPECT_EQ(Sample(text, "entprcreq_request_duration_seconds_bucket{le=\"+Inf\"}"),
            Sample(text, "entprcreq_request_duration_seconds_count"));
  EXPECT_GT(std::stod(Sample(text, "entprcreq_phase_seconds_total{phase=\"read\"}")), 0);
  EXPECT_GT(std::stod(Sample(text, "entprcreq_document_bytes_total")), 0);
  EXPECT_EQ(Sample(text, "entprcreq_workers") + " " + Sample(text, "entprcreq_queue_capacity") + " " +
                Sample(text, "entprcreq_requests_running"),
            "2 5 0");
  // Each sample line is "name{labels} number" or "name number", each family announced by TYPE.
  const std::regex sample(R"(^[a-z_]+(\{[a-z]+="[^"]*"(,[a-z]+="[^"]*")*\})? [-+0-9.e]+(Inf)?$)");
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (line[0] != '#') {
      EXPECT_TRUE(std::regex_match(line, sample)) << line;
    }
}

TEST(CommandLineTest, WrongOrMissingFlagsAreNamedWithWhatTheyWant) {
  test::TempDir dir;
  auto run = [&](std::vector<std::string> args) { return test::RunProgram(args, dir.path().string()); };
  struct Case {
    std::vector<std::string> args;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{"process"}, "entprcreq process: option --request is missing; it wants FILE: the request document"},
      {{"process", "--request", "r.xml", "--sesion-id", "1"},
       "entprcreq process: unknown option --sesion-id; did you mean --session-id?"},
      {{"process", "--request", "r.xml", "--debug=yes"}, "entprcreq process: option --debug takes no value"},
      {{"process", "--request", "r.xml", "extra"}, "entprcreq process: unexpected argument 'extra'"},
      {{"serve", "--workers", "none"},
       "entprcreq serve: --workers takes a whole number of at least 1, not 'none'"},
      {{"serve", "--listen"},
       "entprcreq serve: option --listen needs a value; it wants HOST:PORT: where to listen"},
      {{"serve", "--zzz"}, "entprcreq serve: unknown option --zzz; the options are --connect-timeout,"},
      {{"token", "put", "1"}, "entprcreq token: token wants 'get' or 'set 0|1|2', not 'put 1'"},
  };
  for (const Case& c : cases) {
    const test::ProgramRun result = run(c.args);
    EXPECT_EQ(result.exit_code, 2) << c.message;
    EXPECT_EQ(result.err.rfind(c.message, 0), 0u) << result.err;
    // One line, not the whole usage.
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  }
}

}  // namespace
}  // namespace ent
