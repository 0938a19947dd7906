// The execution journal: every request's record (execution_trace.h) in a SQLite file beside the
// logs, "journal.db" in the log directory unless set otherwise. Records older than the retention
// period are removed as new ones arrive. Several processes and threads may write it at once.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "server/execution_trace.h"

struct sqlite3;

namespace ent {

class ExecutionJournal {
 public:
  // Opens the journal, creating the file and its table when missing. Raises ent::Error when the
  // file cannot be opened or is not a journal.
  explicit ExecutionJournal(const std::string& path);
  ~ExecutionJournal();
  ExecutionJournal(const ExecutionJournal&) = delete;
  ExecutionJournal& operator=(const ExecutionJournal&) = delete;

  void Append(const ExecutionRecord& record);
  // Removes the records that started before `start_ms`.
  void RemoveBefore(int64_t start_ms);

  struct Filter {
    int limit = 20;              // at most this many records
    bool failures_only = false;  // see ExecutionRecord::failed
    std::string code;            // only this report code ("custom" for free SQL); "" for all
    bool slowest = false;        // longest first, instead of newest first
  };
  std::vector<ExecutionRecord> Select(const Filter& filter) const;

 private:
  sqlite3* db_ = nullptr;
  int log_pages_ = 0;  // pages in the log after this connection's last commit
};

// Where RecordExecution writes: "" (the default) means LogDirectory() + "/journal.db".
std::string JournalPath();
void SetJournalPath(std::string path);
// How long records are kept (default 30 days).
void SetJournalRetentionDays(int days);

// Appends the record to the journal and counts it in the metrics. Never throws: when the journal
// cannot be written, the first such failure of the process is reported on stderr.
void RecordExecution(const ExecutionRecord& record);

// The connection's password, if the shop connection string of this thread has one, replaced by
// "***" in `text`.
std::string HideConnectionPassword(std::string text);

}  // namespace ent
