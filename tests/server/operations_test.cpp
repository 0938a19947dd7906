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

TEST(SystemdNotifyTest, ReadinessGoesToThePathOrAbstractSocketSystemdNames) {
  test::TempDir dir;
  const std::string path = dir.file("notify");
  NotifyListener listener(path);
  setenv("NOTIFY_SOCKET", path.c_str(), 1);
  EXPECT_TRUE(NotifySystemd("READY=1\nSTATUS=serving"));
  EXPECT_EQ(listener.Receive(), "READY=1\nSTATUS=serving");

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
  Serve(dir_.file("token"));
  // The log folder is missing: unhealthy, and the check says which folder and why.
  HttpResponse answer = Get("/health");
  EXPECT_EQ(answer.status, 503);
  json health = json::parse(answer.body);
  EXPECT_EQ(health.at("status"), "unhealthy");
  EXPECT_EQ(health.at("checks").at("log_dir").at("ok"), false);
  EXPECT_EQ(health.at("checks").at("log_dir").at("path"), dir_.file("log"));
  EXPECT_EQ(health.at("checks").at("token_dir").at("ok"), true);
  EXPECT_EQ(health.at("version"), ProgramVersion());

  std::filesystem::create_directory(dir_.file("log"));
  answer = Get("/health");
  EXPECT_EQ(answer.status, 200) << answer.body;
  health = json::parse(answer.body);
  EXPECT_EQ(health.at("status"), "running");
  EXPECT_EQ(health.at("workers"), 2);

  // A token folder that cannot be used.
  std::ofstream(dir_.file("blocked")) << "a file where the token folder should be";
  Serve(dir_.file("blocked"));
  answer = Get("/health");
  EXPECT_EQ(answer.status, 503);
  health = json::parse(answer.body);
  EXPECT_EQ(health.at("checks").at("token_dir").at("ok"), false);
  EXPECT_NE(health.at("checks").at("token_dir").at("problem").get<std::string>().find("cannot be created"),
            std::string::npos);
  EXPECT_EQ(health.at("checks").at("log_dir").at("ok"), true);
  SetLogDirectory(saved_log_dir);

  // The program says the same version.
  EXPECT_EQ(test::RunProgram({"--version"}, dir_.path().string()).out,
            "entprcreq " + ProgramVersion() + "\n");
}

TEST_F(OperationsTest, MetricsCountCallsByCodeAndOutcome) {
  Serve(dir_.file("token"));
  auto series = [&](const std::string& name) { return Sample(Get("/metrics").body, name); };
  // The counters are the process's: read them before and after.
  const std::string ok = "entprcreq_requests_total{code=\"CARCOUNT01\",status=\"ok\",post=\"accepted\"}";
  const std::string none =
      "entprcreq_requests_total{code=\"custom\",status=\"no_records\",post=\"accepted\"}";
  const std::string missing =
      "entprcreq_requests_total{code=\"NOSUCH-M\",status=\"error\",post=\"accepted\"}";
  auto count = [&](const std::string& name) {
    const std::string value = series(name);
    return value.empty() ? 0L : std::stol(value);
  };
  const long ok_before = count(ok), none_before = count(none),
             calls_before = count("entprcreq_request_duration_seconds_count");
  const long refused_before = count("entprcreq_http_responses_total{status=\"400\"}");

  for (const auto& [session, document] : std::vector<std::pair<std::string, std::string>>{
           {"M1", test::CodeRequest("CARCOUNT01", {"1/1/2024", "12/31/2024"})},
           {"M2", test::CodeRequest("CARCOUNT01", {"1/1/2024", "12/31/2024"})},
           {"M3", test::SqlRequest("select cusid from customer where 1=0")},
           {"M4", test::CodeRequest("NOSUCH-M")}})
    ASSERT_EQ(Post(Call(session, document)).status, 200);
  ASSERT_EQ(HttpPost(Url("/requests"), {}, "[]", {5, 5}).status, 400);

  const std::string text = Get("/metrics").body;
  EXPECT_EQ(count(ok) - ok_before, 2);
  EXPECT_EQ(count(none) - none_before, 1);
  EXPECT_EQ(count(missing), 1);
  EXPECT_EQ(count("entprcreq_request_duration_seconds_count") - calls_before, 4);
  EXPECT_EQ(count("entprcreq_http_responses_total{status=\"400\"}") - refused_before, 1);
  // Every call is at most as long as the largest finite bucket or counted in +Inf only.
  EXPECT_EQ(Sample(text, "entprcreq_request_duration_seconds_bucket{le=\"+Inf\"}"),
            Sample(text, "entprcreq_request_duration_seconds_count"));
  EXPECT_GT(std::stod(Sample(text, "entprcreq_phase_seconds_total{phase=\"read\"}")), 0);
  EXPECT_GT(std::stod(Sample(text, "entprcreq_document_bytes_total")), 0);
  EXPECT_EQ(Sample(text, "entprcreq_workers"), "2");
  EXPECT_EQ(Sample(text, "entprcreq_queue_capacity"), "5");
  EXPECT_EQ(Sample(text, "entprcreq_requests_running"), "0");
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
      {{"process", "--request"},
       "entprcreq process: option --request needs a value; it wants FILE: the request"},
      {{"process", "--request", "r.xml", "--sesion-id", "1"},
       "entprcreq process: unknown option --sesion-id; did you mean --session-id?"},
      {{"process", "--request", "r.xml", "--debug=yes"}, "entprcreq process: option --debug takes no value"},
      {{"process", "--request", "r.xml", "extra"}, "entprcreq process: unexpected argument 'extra'"},
      {{"serve", "--workers", "none"},
       "entprcreq serve: --workers takes a whole number of at least 1, not 'none'"},
      {{"serve", "--listen"},
       "entprcreq serve: option --listen needs a value; it wants HOST:PORT: where to listen"},
      {{"serve", "--zzz"}, "entprcreq serve: unknown option --zzz; the options are --connect-timeout,"},
      {{"query", "--sql", "select 1"},
       "entprcreq query: option --connection is missing; it wants STRING: the shop"},
      {{"headoffice"},
       "entprcreq headoffice: option --listen is missing; it wants HOST:PORT: where to listen;"},
      {{"journal", "--last", "0"}, "entprcreq journal: --last takes a whole number of at least 1, not '0'"},
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
