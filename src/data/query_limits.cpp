#include "data/query_limits.h"

#include <atomic>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include "common/error.h"

namespace ent {

namespace {

using Clock = std::chrono::steady_clock;

std::mutex limits_mutex;
QueryLimits limits;
// Bumped by each interruption; a statement started under an older value stops.
std::atomic<uint64_t> interrupt_epoch{0};
std::atomic<bool> stopping{false};

// The statements running now that can be cancelled from outside, and a watchdog thread that cancels
// those whose time is up: some drivers run a whole query inside one call and check nothing meanwhile.
struct Running {
  const QueryWatch* watch;
  Clock::time_point end;
  std::function<void()> cancel;
  bool watched;  // cancelled by the watchdog when its time is up
  bool cancelled = false;
};
struct Registry {
  std::mutex mutex;
  std::condition_variable changed;
  std::list<Running> running;
  bool watchdog_started = false;
};
// Never destroyed: the watchdog may still wait on it while the program exits.
Registry& TheRegistry() {
  static Registry* registry = new Registry();
  return *registry;
}

void Watchdog() {
  Registry& r = TheRegistry();
  std::unique_lock<std::mutex> lock(r.mutex);
  for (;;) {
    const Clock::time_point now = Clock::now();
    for (Running& statement : r.running) {
      if (statement.watched && !statement.cancelled && statement.end <= now) {
        statement.cancelled = true;
        statement.cancel();
      }
    }
    r.changed.wait_for(lock, std::chrono::milliseconds(100));
  }
}

}  // namespace

QueryLimits CurrentQueryLimits() {
  std::lock_guard<std::mutex> lock(limits_mutex);
  return limits;
}

void SetQueryLimits(QueryLimits new_limits) {
  std::lock_guard<std::mutex> lock(limits_mutex);
  limits = new_limits;
}

void InterruptRunningQueries() {
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  ++interrupt_epoch;
  for (Running& statement : r.running) {
    statement.cancelled = true;
    statement.cancel();
  }
}

void StopAllQueries() {
  stopping = true;
  InterruptRunningQueries();
}

QueryWatch::QueryWatch(std::function<void()> cancel, Timing timing) : epoch_(interrupt_epoch.load()) {
  const QueryLimits now = CurrentQueryLimits();
  seconds_ = now.seconds;
  byte_limit_ = now.result_bytes;
  end_ = Clock::now() + std::chrono::seconds(seconds_);
  if (!cancel) return;
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  // An interruption between reading the epoch and registering stops this statement too.
  epoch_ = interrupt_epoch.load();
  const bool watched = timing == Timing::kWatchdog;
  r.running.push_back(Running{this, end_, std::move(cancel), watched});
  registered_ = true;
  if (watched && !r.watchdog_started) {
    std::thread(Watchdog).detach();
    r.watchdog_started = true;
  }
}

QueryWatch::~QueryWatch() {
  if (!registered_) return;
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.running.remove_if([this](const Running& statement) { return statement.watch == this; });
}

bool QueryWatch::MustStop() const {
  return stopping || interrupt_epoch.load() != epoch_ || Clock::now() >= end_;
}

void QueryWatch::RaiseIfStopped() const {
  if (stopping || interrupt_epoch.load() != epoch_)
    throw Error(err::kDatabaseError, "The query was interrupted: the server is stopping.", "query");
  if (Clock::now() >= end_)
    throw Error(err::kDatabaseError,
                "The query ran longer than its time limit of " + std::to_string(seconds_) +
                    " seconds (--query-timeout) and was stopped.",
                "query");
}

void QueryWatch::AddBytes(int64_t bytes) {
  bytes_ += bytes;
  if (bytes_ > byte_limit_)
    throw Error(err::kDatabaseError,
                "The query's result grew beyond its size limit of " + std::to_string(byte_limit_ >> 20) +
                    " MB (--max-result-mb) and was stopped.",
                "query");
}

int QueryWatch::SecondsLeft() const {
  const auto left = std::chrono::duration_cast<std::chrono::seconds>(end_ - Clock::now()).count();
  return left < 1 ? 1 : static_cast<int>(left);
}

}  // namespace ent
