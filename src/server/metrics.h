// The server's counters in the Prometheus text format: requests by report code, status and post
// outcome, their durations and phases, HTTP answers that were not successes, and the queue.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "server/execution_trace.h"

namespace ent {

// The load of the server at the time of a scrape.
struct QueueLoad {
  int workers = 0, running = 0, waiting = 0, queue = 0;
};

class Metrics {
 public:
  void Observe(const ExecutionRecord& record);
  void ObserveHttpStatus(int status);  // every answer of the host interface
  void ObserveJournalFailure();
  // The text of a scrape.
  std::string Text(const QueueLoad& load) const;

 private:
  mutable std::mutex mutex_;
  // (code, status, post) -> count. At most kMaxSeries distinct codes; others count as "other".
  std::map<std::tuple<std::string, std::string, std::string>, uint64_t> requests_;
  std::vector<uint64_t> duration_buckets_ = std::vector<uint64_t>(kBounds.size(), 0);
  uint64_t durations_count_ = 0;
  double durations_sum_ = 0, read_sum_ = 0, build_sum_ = 0, post_sum_ = 0;
  uint64_t document_bytes_ = 0;
  std::map<int, uint64_t> http_statuses_;
  uint64_t journal_failures_ = 0;

  static constexpr size_t kMaxSeries = 64;
  static inline const std::vector<double> kBounds = {0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30, 60, 120};
};

// The metrics of this process.
Metrics& ProcessMetrics();

}  // namespace ent
