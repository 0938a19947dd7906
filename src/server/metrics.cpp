#include "server/metrics.h"

#include <set>
#include <sstream>

#include "common/version.h"

namespace ent {

namespace {

std::string Label(const std::string& value) {
  std::string out;
  for (char c : value) {
    if (c == '\\' || c == '"') out += '\\';
    if (c == '\n')
      out += "\\n";
    else
      out += c;
  }
  return out;
}

std::string StatusKind(const std::string& status) {
  if (status == "0") return "ok";
  if (status == "No records found.") return "no_records";
  return "error";
}

void Header(std::ostream& out, const char* name, const char* type, const char* help) {
  out << "# HELP " << name << " " << help << "\n# TYPE " << name << " " << type << "\n";
}

}  // namespace

void Metrics::Observe(const ExecutionRecord& record) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::string code = record.code.empty() ? "none" : record.code;
  // A head office may send any code; past a bound, new ones share one series.
  std::set<std::string> codes;
  for (const auto& [key, count] : requests_) codes.insert(std::get<0>(key));
  if (!codes.count(code) && codes.size() >= kMaxSeries) code = "other";
  ++requests_[{code, StatusKind(record.status), record.post.empty() ? "none" : record.post}];
  const double seconds = record.total_ms / 1000.0;
  for (size_t i = 0; i < kBounds.size(); ++i)
    if (seconds <= kBounds[i]) ++duration_buckets_[i];
  ++durations_count_;
  durations_sum_ += seconds;
  read_sum_ += record.read_ms / 1000.0;
  build_sum_ += record.build_ms / 1000.0;
  post_sum_ += record.post_ms / 1000.0;
  document_bytes_ += static_cast<uint64_t>(record.document_bytes);
}

void Metrics::ObserveHttpStatus(int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  ++http_statuses_[status];
}

void Metrics::ObserveJournalFailure() {
  std::lock_guard<std::mutex> lock(mutex_);
  ++journal_failures_;
}

std::string Metrics::Text(const QueueLoad& load) const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::ostringstream out;
  Header(out, "entprcreq_build_info", "gauge", "The program's version.");
  out << "entprcreq_build_info{version=\"" << Label(ProgramVersion()) << "\"} 1\n";
  Header(out, "entprcreq_requests_total", "counter",
         "Report requests handled, by report code, status (ok, no_records, error) and post outcome.");
  for (const auto& [key, count] : requests_)
    out << "entprcreq_requests_total{code=\"" << Label(std::get<0>(key)) << "\",status=\"" << std::get<1>(key)
        << "\",post=\"" << std::get<2>(key) << "\"} " << count << "\n";
  Header(out, "entprcreq_request_duration_seconds", "histogram",
         "Time from a request's start to the end of its post.");
  for (size_t i = 0; i < kBounds.size(); ++i)
    out << "entprcreq_request_duration_seconds_bucket{le=\"" << kBounds[i] << "\"} " << duration_buckets_[i]
        << "\n";
  out << "entprcreq_request_duration_seconds_bucket{le=\"+Inf\"} " << durations_count_ << "\n"
      << "entprcreq_request_duration_seconds_sum " << durations_sum_ << "\n"
      << "entprcreq_request_duration_seconds_count " << durations_count_ << "\n";
  Header(out, "entprcreq_phase_seconds_total", "counter",
         "Time spent reading the database, building documents and posting them.");
  out << "entprcreq_phase_seconds_total{phase=\"read\"} " << read_sum_ << "\n"
      << "entprcreq_phase_seconds_total{phase=\"build\"} " << build_sum_ << "\n"
      << "entprcreq_phase_seconds_total{phase=\"post\"} " << post_sum_ << "\n";
  Header(out, "entprcreq_document_bytes_total", "counter", "Bytes of the documents posted.");
  out << "entprcreq_document_bytes_total " << document_bytes_ << "\n";
  Header(out, "entprcreq_http_responses_total", "counter", "Answers of the host interface, by HTTP status.");
  for (const auto& [status, count] : http_statuses_)
    out << "entprcreq_http_responses_total{status=\"" << status << "\"} " << count << "\n";
  Header(out, "entprcreq_journal_failures_total", "counter", "Records the execution journal could not take.");
  out << "entprcreq_journal_failures_total " << journal_failures_ << "\n";
  Header(out, "entprcreq_workers", "gauge", "Requests that may run at once.");
  out << "entprcreq_workers " << load.workers << "\n";
  Header(out, "entprcreq_requests_running", "gauge", "Requests running now.");
  out << "entprcreq_requests_running " << load.running << "\n";
  Header(out, "entprcreq_requests_waiting", "gauge", "Requests waiting for a worker.");
  out << "entprcreq_requests_waiting " << load.waiting << "\n";
  Header(out, "entprcreq_queue_capacity", "gauge", "Requests that may wait before more are refused.");
  out << "entprcreq_queue_capacity " << load.queue << "\n";
  return out.str();
}

Metrics& ProcessMetrics() {
  static Metrics metrics;
  return metrics;
}

}  // namespace ent
