#include "server/host_server.h"

#include <condition_variable>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "common/error.h"
#include "common/version.h"
#include "job/catalogue.h"
#include "server/cls_process_request.h"
#include "server/execution_trace.h"
#include "server/health.h"
#include "server/host_call.h"
#include "server/http_serving.h"
#include "server/metrics.h"

namespace ent {

namespace {

const char kJson[] = "application/json";

bool IsLoopback(const std::string& host) {
  return host == "localhost" || host == "::1" || host.rfind("127.", 0) == 0;
}

// Equal texts, compared in a time that does not depend on where they differ.
bool SameSecret(const std::string& given, const std::string& secret) {
  if (secret.empty() || given.size() != secret.size()) return false;
  unsigned char difference = 0;
  for (size_t i = 0; i < given.size(); ++i) difference |= static_cast<unsigned char>(given[i] ^ secret[i]);
  return difference == 0;
}

void Answer(httplib::Response& response, int status, const nlohmann::json& body) {
  response.status = status;
  // Texts quoted from a call (a parse error's last bytes) may be invalid UTF-8: replace those bytes.
  response.set_content(body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n", kJson);
}

// Up to `workers` calls run; up to `queue` more wait for one of them; the rest are turned away.
class Admission {
 public:
  Admission(int workers, int queue) : workers_(workers), queue_(queue) {}

  bool Enter() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (running_ >= workers_) {
      if (waiting_ >= queue_) return false;
      ++waiting_;
      free_.wait(lock, [&] { return running_ < workers_; });
      --waiting_;
    }
    ++running_;
    return true;
  }
  void Leave() {
    std::lock_guard<std::mutex> lock(mutex_);
    --running_;
    free_.notify_one();
  }
  nlohmann::json Load() {
    std::lock_guard<std::mutex> lock(mutex_);
    return {{"workers", workers_}, {"running", running_}, {"waiting", waiting_}, {"queue", queue_}};
  }
  QueueLoad Counts() {
    std::lock_guard<std::mutex> lock(mutex_);
    return {workers_, running_, waiting_, queue_};
  }

 private:
  std::mutex mutex_;
  std::condition_variable free_;
  const int workers_;
  const int queue_;
  int running_ = 0;
  int waiting_ = 0;
};

class Slot {
 public:
  explicit Slot(Admission& admission) : admission_(admission), held_(admission.Enter()) {}
  ~Slot() {
    if (held_) admission_.Leave();
  }
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  bool held() const { return held_; }

 private:
  Admission& admission_;
  bool held_;
};

}  // namespace

struct HostServer::Impl {
  explicit Impl(HostServerOptions o) : options(std::move(o)), admission(options.workers, options.queue) {}

  bool Authorised(const httplib::Request& request, httplib::Response& response) const {
    if (options.secret.empty()) return true;
    const std::string header = request.get_header_value("Authorization");
    const std::string prefix = "Bearer ";
    if (header.rfind(prefix, 0) == 0 && SameSecret(header.substr(prefix.size()), options.secret)) return true;
    Answer(response, 401, {{"error", "this server needs the shared secret: Authorization: Bearer <secret>"}});
    return false;
  }

  void Run(const httplib::Request& http, httplib::Response& response) {
    HostCall call;
    try {
      call = ParseHostCall(http.body);
    } catch (const std::invalid_argument& e) {
      return Answer(response, 400, {{"error", e.what()}});
    }
    Slot slot(admission);
    if (!slot.held()) {
      response.set_header("Retry-After", "5");
      return Answer(response, 503,
                    {{"error", "all workers are busy and the queue is full; try again later"}});
    }
    clsProcessRequest request;
    ApplyHostCall(call, request);
    request.set_TokenDirectory(options.token_dir);
    request.set_SoapOptions(options.soap);
    try {
      request.prepareDBReport();
    } catch (const Error& e) {
      if (options.log_calls) std::cerr << DescribeExecution(LastExecution()) << std::endl;
      return Answer(response, 500, {{"error", e.description()}, {"KillFlag", request.KillFlag}});
    }
    if (options.log_calls) std::cerr << DescribeExecution(LastExecution()) << std::endl;
    Answer(response, 200, {{"KillFlag", request.KillFlag}});
  }

  HostServerOptions options;
  Admission admission;
  DeadlineServer server;
  std::thread thread;
};

HostServer::HostServer(HostServerOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}

HostServer::~HostServer() {
  Stop();
}

int HostServer::Start(const std::string& host, int port) {
  Impl& s = *impl_;
  if (!IsLoopback(host) && (!s.options.allow_remote || s.options.secret.empty()))
    throw Error(err::kServiceFailure, "listening on " + host +
                                          " would open the server beyond this machine: that needs the remote "
                                          "switch and a shared secret");
  if (s.options.workers < 1 || s.options.queue < 0 || s.options.connections < 1 ||
      s.options.request_seconds < 1)
    throw Error(err::kServiceFailure,
                "the server needs at least one worker, a queue of zero or more, at least one connection "
                "and a request time of at least one second");
  // Threads for the workers and the calls waiting for them, and as many again for connections still
  // being read (or answered /health and 503): a slow client holds one of those, never a worker.
  const size_t threads = static_cast<size_t>(s.options.workers + s.options.queue + s.options.connections);
  s.server.new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
  s.server.set_request_deadline(std::chrono::seconds(s.options.request_seconds));
  s.server.set_payload_max_length(64u << 20);
  // Before the body is read: a caller without the secret is refused at once.
  s.server.set_pre_routing_handler([&s](const httplib::Request& request, httplib::Response& response) {
    return s.Authorised(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                           : httplib::Server::HandlerResponse::Handled;
  });
  s.server.Post("/requests", [&s](const httplib::Request& request, httplib::Response& response) {
    s.Run(request, response);
  });
  s.server.Get("/health", [&s](const httplib::Request&, httplib::Response& response) {
    nlohmann::json load = s.admission.Load();
    const Health health = CheckHealth(s.options.token_dir);
    load["status"] = health.healthy ? "running" : "unhealthy";
    load["version"] = ProgramVersion();
    load["checks"] = health.checks;
    Answer(response, health.healthy ? 200 : 503, load);
  });
  s.server.Get("/metrics", [&s](const httplib::Request& request, httplib::Response& response) {
    if (!s.Authorised(request, response)) return;
    response.set_content(ProcessMetrics().Text(s.admission.Counts()), "text/plain; version=0.0.4");
  });
  // Counted before the answer is written, so a caller that reads /metrics after its answer sees it
  // (the logger runs only once the answer has gone).
  s.server.set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
    ProcessMetrics().ObserveHttpStatus(response.status);
  });
  s.server.set_logger([&s](const httplib::Request& request, const httplib::Response& response) {
    if (s.options.log_calls && response.status >= 400)
      std::cerr << "HTTP " << response.status << " " << request.method << " " << request.path << ": "
                << response.body.substr(0, response.body.find('\n')) << std::endl;
  });
  s.server.Get("/reports", [&s](const httplib::Request& request, httplib::Response& response) {
    if (!s.Authorised(request, response)) return;
    response.set_content(ReportCatalogueJson(), "application/json");
  });
  const int bound = StartServing(s.server, host, port, s.thread);
  return bound;
}

void HostServer::Stop() {
  impl_->server.stop();
  Wait();
}

void HostServer::Wait() {
  if (impl_->thread.joinable()) impl_->thread.join();
}

}  // namespace ent
