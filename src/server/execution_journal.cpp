#include "server/execution_journal.h"

#include <sqlite3.h>

#include <atomic>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "common/error.h"
#include "common/thread_values.h"
#include "data/connection_string.h"
#include "server/metrics.h"

namespace ent {

namespace {

const char kSchema[] =
    "CREATE TABLE IF NOT EXISTS executions ("
    " id INTEGER PRIMARY KEY, start_ms INTEGER NOT NULL, session TEXT NOT NULL, client TEXT NOT NULL,"
    " code TEXT NOT NULL, params TEXT NOT NULL, rows INTEGER, document_bytes INTEGER NOT NULL,"
    " status TEXT NOT NULL, post TEXT NOT NULL, post_detail TEXT NOT NULL, http_status INTEGER NOT NULL,"
    " read_ms REAL NOT NULL, build_ms REAL NOT NULL, post_ms REAL NOT NULL, total_ms REAL NOT NULL,"
    " failed INTEGER NOT NULL);"
    "CREATE INDEX IF NOT EXISTS executions_by_start ON executions(start_ms);";

const char kColumns[] =
    "start_ms, session, client, code, params, rows, document_bytes, status, post, post_detail, http_status,"
    " read_ms, build_ms, post_ms, total_ms";

// Pages the log may hold before the journal copies them into the file and empties it.
constexpr int kLogPagesBeforeCopy = 100;

std::mutex settings_mutex;
std::string journal_path;
int retention_days = 30;
std::atomic<bool> failure_reported{false};

Error JournalError(sqlite3* db, const std::string& what) {
  return Error(err::kDatabaseError, "the execution journal " + what + ": " + (db ? sqlite3_errmsg(db) : "?"));
}

// One prepared statement, finalized on every path.
class Statement {
 public:
  Statement(sqlite3* db, const std::string& sql) : db_(db) {
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK)
      throw JournalError(db, "cannot be read");
  }
  ~Statement() { sqlite3_finalize(stmt_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  void Bind(int i, const std::string& text) {
    sqlite3_bind_text(stmt_, i, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
  void Bind(int i, int64_t value) { sqlite3_bind_int64(stmt_, i, value); }
  void Bind(int i, double value) { sqlite3_bind_double(stmt_, i, value); }
  // True while there is a row.
  bool Step() {
    const int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc != SQLITE_DONE) throw JournalError(db_, "cannot be written");
    return false;
  }
  std::string Text(int i) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, i));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(stmt_, i))) : "";
  }
  int64_t Int(int i) const { return sqlite3_column_int64(stmt_, i); }
  double Real(int i) const { return sqlite3_column_double(stmt_, i); }
  bool IsNull(int i) const { return sqlite3_column_type(stmt_, i) == SQLITE_NULL; }

 private:
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
};

}  // namespace

ExecutionJournal::ExecutionJournal(const std::string& path) {
  if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK) {
    Error failure = JournalError(db_, path + " cannot be opened");
    sqlite3_close(db_);
    db_ = nullptr;
    throw failure;
  }
  // Writers of other threads and processes wait their turn rather than fail.
  sqlite3_busy_timeout(db_, 10000);
  // Every request writes a record, so a record must not cost a flush to the disk: in WAL mode a
  // commit is then only appended to the log, which is flushed when it is copied into the file (every
  // thousand pages or so), not each time a process closes the journal. A power cut may lose the last
  // records, never the file. The log stays between runs, so it is not created (and its folder flushed)
  // anew by every process.
  int keep_log = 1;
  sqlite3_file_control(db_, "main", SQLITE_FCNTL_PERSIST_WAL, &keep_log);
  sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  // Each process that opens the journal reads the whole log to index it (about a millisecond per
  // 3 MB), so the log is copied into the file and emptied once it holds a hundred pages, some thirty
  // records (see the destructor), instead of SQLite's copy at a thousand pages that leaves the log as
  // long as before.
  sqlite3_wal_hook(
      db_,
      [](void* pages, sqlite3*, const char*, int in_log) {
        *static_cast<int*>(pages) = in_log;
        return SQLITE_OK;
      },
      &log_pages_);
  if (sqlite3_exec(db_, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_exec(db_, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_exec(db_, kSchema, nullptr, nullptr, nullptr) != SQLITE_OK) {
    Error failure = JournalError(db_, path + " cannot be used");
    sqlite3_close(db_);
    db_ = nullptr;
    throw failure;
  }
}

ExecutionJournal::~ExecutionJournal() {
  if (log_pages_ >= kLogPagesBeforeCopy) {
    // Costs two flushes; skipped (left to a later record) while another connection is using the log.
    sqlite3_busy_timeout(db_, 0);
    sqlite3_wal_checkpoint_v2(db_, "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  }
  sqlite3_close(db_);
}

void ExecutionJournal::Append(const ExecutionRecord& r) {
  Statement insert(db_, std::string("INSERT INTO executions (") + kColumns +
                            ", failed) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
  insert.Bind(1, r.start_ms);
  insert.Bind(2, r.session);
  insert.Bind(3, r.client);
  insert.Bind(4, r.code);
  insert.Bind(5, nlohmann::json(r.params).dump());
  if (r.rows >= 0) insert.Bind(6, r.rows);
  insert.Bind(7, r.document_bytes);
  insert.Bind(8, r.status);
  insert.Bind(9, r.post);
  insert.Bind(10, r.post_detail);
  insert.Bind(11, static_cast<int64_t>(r.http_status));
  insert.Bind(12, r.read_ms);
  insert.Bind(13, r.build_ms);
  insert.Bind(14, r.post_ms);
  insert.Bind(15, r.total_ms);
  insert.Bind(16, static_cast<int64_t>(r.failed() ? 1 : 0));
  insert.Step();
}

void ExecutionJournal::RemoveBefore(int64_t start_ms) {
  Statement remove(db_, "DELETE FROM executions WHERE start_ms < ?");
  remove.Bind(1, start_ms);
  remove.Step();
}

std::vector<ExecutionRecord> ExecutionJournal::Select(const Filter& filter) const {
  std::string sql = std::string("SELECT ") + kColumns + " FROM executions WHERE 1=1";
  if (filter.failures_only) sql += " AND failed = 1";
  if (!filter.code.empty()) sql += " AND code = ?1 COLLATE NOCASE";
  sql += filter.slowest ? " ORDER BY total_ms DESC, id DESC" : " ORDER BY id DESC";
  sql += " LIMIT ?2";
  Statement select(db_, sql);
  if (!filter.code.empty()) select.Bind(1, filter.code);
  select.Bind(2, static_cast<int64_t>(filter.limit));
  std::vector<ExecutionRecord> records;
  while (select.Step()) {
    ExecutionRecord r;
    r.start_ms = select.Int(0);
    r.session = select.Text(1);
    r.client = select.Text(2);
    r.code = select.Text(3);
    const nlohmann::json params = nlohmann::json::parse(select.Text(4), nullptr, false);
    if (params.is_array())
      for (const auto& value : params) r.params.push_back(value.is_string() ? value.get<std::string>() : "");
    r.rows = select.IsNull(5) ? -1 : select.Int(5);
    r.document_bytes = select.Int(6);
    r.status = select.Text(7);
    r.post = select.Text(8);
    r.post_detail = select.Text(9);
    r.http_status = static_cast<long>(select.Int(10));
    r.read_ms = select.Real(11);
    r.build_ms = select.Real(12);
    r.post_ms = select.Real(13);
    r.total_ms = select.Real(14);
    records.push_back(std::move(r));
  }
  return records;
}

std::string JournalPath() {
  std::lock_guard<std::mutex> lock(settings_mutex);
  return journal_path.empty() ? LogDirectory() + "/journal.db" : journal_path;
}

void SetJournalPath(std::string path) {
  std::lock_guard<std::mutex> lock(settings_mutex);
  journal_path = std::move(path);
}

void SetJournalRetentionDays(int days) {
  std::lock_guard<std::mutex> lock(settings_mutex);
  retention_days = days;
}

std::string HideConnectionPassword(std::string text) {
  std::optional<std::string> password;
  try {
    password = ConnectionString::Parse(ShopConnectionString()).GetAny({"Password", "Pwd"});
  } catch (const std::exception&) {
    return text;
  }
  if (!password || password->size() < 3) return text;
  for (size_t at = text.find(*password); at != std::string::npos; at = text.find(*password, at + 3))
    text.replace(at, password->size(), "***");
  return text;
}

void RecordExecution(const ExecutionRecord& given) {
  ExecutionRecord record = given;
  record.status = HideConnectionPassword(record.status);
  record.post_detail = HideConnectionPassword(record.post_detail);
  ProcessMetrics().Observe(record);
  int days = 30;
  {
    std::lock_guard<std::mutex> lock(settings_mutex);
    days = retention_days;
  }
  const std::string path = JournalPath();
  try {
    ExecutionJournal journal(path);
    journal.Append(record);
    journal.RemoveBefore(record.start_ms - int64_t{days} * 24 * 3600 * 1000);
  } catch (const std::exception& e) {
    ProcessMetrics().ObserveJournalFailure();
    if (!failure_reported.exchange(true))
      std::cerr << "entprcreq: the execution journal cannot be written (" << path
                << "); records are lost until it can: " << e.what() << std::endl;
  }
}

}  // namespace ent
