#include "data/sqlite_driver.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <exception>
#include <filesystem>
#include <limits>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "common/error.h"
#include "common/text.h"
#include "data/column_values.h"
#include "data/query_limits.h"
#include "data/sql_format_function.h"
#include "data/sql_server_text.h"
#include "data/sql_text.h"
#include "data/tsql_adapter.h"

namespace ent {

namespace {

constexpr int kBusyTimeoutMs = 30000;

struct DbCloser {
  void operator()(sqlite3* db) const {
    // Keeps the planner's statistics current: analyses the tables this connection's queries would
    // have planned better with fresh statistics, and does nothing when they are current. Failure
    // (a read-only file, a busy database) costs nothing but the chance,
    // and it does not wait for another connection's lock.
    sqlite3_busy_timeout(db, 0);
    sqlite3_exec(db, "PRAGMA optimize", nullptr, nullptr, nullptr);
    sqlite3_close_v2(db);
  }
};
struct StmtFinalizer {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using DbHandle = std::unique_ptr<sqlite3, DbCloser>;
using StmtHandle = std::unique_ptr<sqlite3_stmt, StmtFinalizer>;
struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// The environment variable naming a file that receives every statement the driver runs, with its
// bound values written in, one per line ending in ";": a script that sqlite3 can replay to time the
// database's own share of a report.
constexpr const char* kSqlLogVariable = "ENTPRCREQ_SQL_LOG";

int LogStatement(unsigned /*type*/, void* file, void* stmt, void* unexpanded) {
  // Statements run by triggers arrive as comments; the statement that fired them is logged already.
  if (std::strncmp(static_cast<const char*>(unexpanded), "--", 2) == 0) return 0;
  char* text = sqlite3_expanded_sql(static_cast<sqlite3_stmt*>(stmt));
  if (text) {
    std::fprintf(static_cast<std::FILE*>(file), "%s;\n", text);
    std::fflush(static_cast<std::FILE*>(file));
    sqlite3_free(text);
  }
  return 0;
}

// SQLite's failure under the numbers SQL Server's driver gives: a missing table, a syntax error, or a general
// failure.
[[noreturn]] void Raise(sqlite3* db) {
  std::string message = db ? sqlite3_errmsg(db) : "out of memory";
  int32_t number = err::kDatabaseError;
  if (message.rfind("no such table", 0) == 0)
    number = err::kTableNotFound;
  else if (message.find("syntax error") != std::string::npos || message.rfind("no such column", 0) == 0 ||
           message.rfind("no such function", 0) == 0 ||
           message.find("wrong number of arguments") != std::string::npos)
    number = err::kSyntaxError;
  throw Error(number, message, "sqlite");
}

// Who may use a connection now. A connection is used by the thread that owns it and, while a cursor
// reads ahead, by that cursor's reader thread: each takes the gate for one call into SQLite (the
// reader for one row). The cursor keeps its connection, and so the gate, until it is destroyed.
struct Gate {
  std::mutex mutex;
  std::atomic<int> waiting{0};            // threads waiting for the mutex
  std::atomic<std::thread::id> holder{};  // the thread that has it
};

// Holds the gate for one scope, counted as waiting while it waits, so that a reader going from row
// to row lets a waiting thread in first.
class GateLock {
 public:
  static constexpr int kTriesBeforeSleeping = 100;

  explicit GateLock(Gate& gate) : gate_(gate) {
    gate_.waiting.fetch_add(1);
    // The other thread holds the gate for one row at a time and then lets a waiting thread in, so
    // the gate is tried for a while before sleeping on it: being woken costs more than the row.
    for (int tries = 0; !gate_.mutex.try_lock();) {
      if (++tries == kTriesBeforeSleeping) {
        gate_.mutex.lock();
        break;
      }
      std::this_thread::yield();
    }
    gate_.waiting.fetch_sub(1);
    gate_.holder = std::this_thread::get_id();
  }
  ~GateLock() {
    gate_.holder = std::thread::id();
    gate_.mutex.unlock();
  }
  GateLock(const GateLock&) = delete;
  GateLock& operator=(const GateLock&) = delete;

 private:
  Gate& gate_;
};

// The raw SQLite value of a column.
Variant RawValue(sqlite3_stmt* stmt, int col) {
  switch (sqlite3_column_type(stmt, col)) {
    case SQLITE_NULL:
      return Variant::Null();
    case SQLITE_INTEGER:
      return Variant::LongLong(sqlite3_column_int64(stmt, col));
    case SQLITE_FLOAT:
      return Variant(sqlite3_column_double(stmt, col));
    default: {
      const unsigned char* text = sqlite3_column_text(stmt, col);
      return Variant(std::string(reinterpret_cast<const char*>(text),
                                 static_cast<size_t>(sqlite3_column_bytes(stmt, col))));
    }
  }
}

// The limits' watch over one call of the driver: SQLite asks it every few thousand steps whether to
// go on (so its time limit needs no watchdog), and an interruption from another thread stops it
// through sqlite3_interrupt.
class WatchedCall {
 public:
  explicit WatchedCall(sqlite3* db)
      : db_(db), watch_([db] { sqlite3_interrupt(db); }, QueryWatch::Timing::kDriverAsks) {
    sqlite3_progress_handler(db_, 4000, &WatchedCall::Stop, &watch_);
  }
  ~WatchedCall() { sqlite3_progress_handler(db_, 0, nullptr, nullptr); }
  WatchedCall(const WatchedCall&) = delete;
  WatchedCall& operator=(const WatchedCall&) = delete;

  QueryWatch& watch() { return watch_; }
  // A failure of the call: the limit that stopped it, or SQLite's own.
  [[noreturn]] void Fail() {
    watch_.RaiseIfStopped();
    Raise(db_);
  }

 private:
  static int Stop(void* watch) { return static_cast<QueryWatch*>(watch)->MustStop() ? 1 : 0; }

  sqlite3* db_;
  QueryWatch watch_;
};

// Opens the shop database with the functions the reports' texts call. Raises Error when the file
// cannot be opened or is not a database.
DbHandle OpenDatabase(const std::string& path, bool read_only) {
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw,
                           (read_only ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) | SQLITE_OPEN_NOMUTEX,
                           nullptr);
  DbHandle db(raw);
  if (rc != SQLITE_OK) {
    std::string why = raw ? sqlite3_errmsg(raw) : "out of memory";
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  sqlite3_busy_timeout(db.get(), kBusyTimeoutMs);
  sqlite3_extended_result_codes(db.get(), 1);
  RegisterSqlFormatFunction(db.get());
  RegisterSqlServerText(db.get());
  // Reading the schema proves the file is a database before anyone relies on it.
  if (sqlite3_exec(db.get(), "select count(*) from sqlite_master", nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::string why = sqlite3_errmsg(db.get());
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  return db;
}

// The SQL log the environment asks for, traced from `db`; none when it asks for none.
FileHandle OpenSqlLog(sqlite3* db) {
  FileHandle sql_log;
  if (const char* log_path = std::getenv(kSqlLogVariable); log_path && *log_path) {
    sql_log.reset(std::fopen(log_path, "a"));
    if (!sql_log)
      throw Error(err::kDatabaseError, std::string("Cannot write the SQL log ") + log_path, "sqlite");
    sqlite3_trace_v2(db, SQLITE_TRACE_STMT, LogStatement, sql_log.get());
  }
  return sql_log;
}

class SqliteConnection : public Connection, public std::enable_shared_from_this<SqliteConnection> {
 public:
  SqliteConnection(DbHandle db, std::string path, FileHandle sql_log)
      : sql_log_(std::move(sql_log)),
        db_(std::move(db)),
        path_(std::move(path)),
        catalog_(std::filesystem::path(path_).stem().string()) {}
  ~SqliteConnection() override { Close(); }

  SqlDialect dialect() const override { return SqlDialect::kSqlite; }

  void Execute(const std::string& sql) override {
    GateLock lock(gate_);
    const std::string text = tsql::ToSqlite(sql, adapter_schema_);
    WatchedCall call(db());
    const char* tail = text.c_str();
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail, call);
      if (!stmt) continue;
      int rc;
      while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
      }
      if (rc != SQLITE_DONE) call.Fail();
    }
  }

  QueryResult Query(const std::string& sql) override {
    if (SqliteConnection* side = SideConnection()) {
      if (std::optional<QueryResult> result = side->QueryIfReadOnly(sql)) return std::move(*result);
    }
    GateLock lock(gate_);
    WatchedCall call(db());
    StmtHandle stmt = FirstQuery(sql, call);
    return stmt ? Fetch(stmt.get(), call) : QueryResult{};
  }

  // A cursor of this connection started (or stopped) reading ahead on a thread of its own.
  void ReaderStarted() { readers_ahead_.fetch_add(1); }
  void ReaderStopped() { readers_ahead_.fetch_sub(1); }

  std::unique_ptr<RowCursor> OpenCursor(const std::string& sql, const ComputedTypes& computed) override;

  void InsertRow(const std::string& table, const std::vector<std::string>& columns,
                 const std::vector<Variant>& values) override {
    GateLock lock(gate_);
    std::string sql = InsertStatement(table, columns);
    StmtHandle stmt = Prepare(sql.c_str(), nullptr);
    for (size_t i = 0; i < values.size(); ++i) Bind(stmt.get(), static_cast<int>(i + 1), values[i]);
    if (sqlite3_step(stmt.get()) != SQLITE_DONE) Raise(db());
  }

  void Close() override {
    side_.reset();
    GateLock lock(gate_);
    schema_version_query_.reset();
    db_.reset();
  }
  bool IsOpen() const override { return db_ != nullptr; }

  // Taken for every call into SQLite on this connection (see Gate).
  Gate& gate() { return gate_; }

 private:
  // The database, for a caller that holds the gate.
  sqlite3* db() {
    if (!db_) throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
    if (gate_.holder != std::this_thread::get_id())
      throw Error(err::kDatabaseError, "The shop connection was used without waiting for its other reader.",
                  "sqlite");
    return db_.get();
  }

  // While a cursor reads ahead, it takes the connection for every row, and a query of the report's
  // (a look-up per row) would stop it for as long as the query runs: such queries go to a second,
  // read-only connection to the same file, opened the first time one is needed. Not while this
  // connection writes (the other would not see what it has not committed). Null when there is no
  // reader, the connection writes, or the second connection cannot be opened.
  SqliteConnection* SideConnection() {
    if (readers_ahead_.load() == 0 || side_failed_) return nullptr;
    {
      GateLock lock(gate_);
      if (sqlite3_txn_state(db(), nullptr) == SQLITE_TXN_WRITE) return nullptr;
    }
    if (!side_) {
      if (path_ == ":memory:") {  // another connection would open a database of its own
        side_failed_ = true;
        return nullptr;
      }
      try {
        DbHandle db = OpenDatabase(path_, true);
        FileHandle log = OpenSqlLog(db.get());
        side_ = std::make_unique<SqliteConnection>(std::move(db), path_, std::move(log));
      } catch (const Error&) {
        side_failed_ = true;
        return nullptr;
      }
    }
    return side_.get();
  }

  // Runs `sql` when it is one statement that only reads and returns rows, as Query would; nothing
  // (and nothing run) otherwise, or when this connection cannot prepare it (a table only the other
  // connection sees), for the other connection to run it.
  std::optional<QueryResult> QueryIfReadOnly(const std::string& sql) {
    GateLock lock(gate_);
    WatchedCall call(db());
    const std::string text = tsql::ToSqlite(sql, adapter_schema_);
    const char* tail = text.c_str();
    StmtHandle query;
    while (tail && *tail) {
      sqlite3_stmt* raw = nullptr;
      if (sqlite3_prepare_v2(db(), tail, -1, &raw, &tail) != SQLITE_OK) return std::nullopt;
      StmtHandle stmt(raw);
      if (!stmt) continue;
      if (query || !sqlite3_stmt_readonly(stmt.get()) || sqlite3_column_count(stmt.get()) == 0)
        return std::nullopt;
      query = std::move(stmt);
    }
    if (!query) return std::nullopt;
    return Fetch(query.get(), call);
  }

  // The tables' columns as declared, for the adapter (through adapter_schema_, when a text needs
  // them); read again whenever the schema has changed.
  const tsql::Schema& AdapterSchema() {
    const int64_t version = SchemaVersion();
    if (version != schema_version_) {
      tsql::Schema schema;
      StmtHandle stmt = Prepare(tsql::kSqliteColumnsQuery, nullptr);
      auto text = [&](int c) {
        const unsigned char* t = sqlite3_column_text(stmt.get(), c);
        return std::string(t ? reinterpret_cast<const char*>(t) : "");
      };
      int rc;
      while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW)
        tsql::AddDeclaredColumn(schema, text(0), text(1), text(2));
      if (rc != SQLITE_DONE) Raise(db());
      schema_ = std::move(schema);
      schema_version_ = version;
    }
    return schema_;
  }

  // Asked before every text, so prepared once.
  int64_t SchemaVersion() {
    if (!schema_version_query_) schema_version_query_ = Prepare(tsql::kSqliteSchemaVersionQuery, nullptr);
    sqlite3_stmt* stmt = schema_version_query_.get();
    if (sqlite3_step(stmt) != SQLITE_ROW) {
      sqlite3_reset(stmt);
      Raise(db());
    }
    const int64_t version = sqlite3_column_int64(stmt, 0);
    sqlite3_reset(stmt);
    return version;
  }

  // The first statement of the text that returns columns, prepared; statements before it run for
  // their effect. Null when there is none.
  StmtHandle FirstQuery(const std::string& sql, WatchedCall& call) {
    const std::string text = tsql::ToSqlite(sql, adapter_schema_);
    const char* tail = text.c_str();
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail, call);
      if (!stmt) continue;
      if (sqlite3_column_count(stmt.get()) == 0) {
        int rc = sqlite3_step(stmt.get());
        if (rc != SQLITE_DONE && rc != SQLITE_ROW) call.Fail();
        continue;
      }
      return stmt;
    }
    return nullptr;
  }

  StmtHandle Prepare(const char* sql, const char** tail) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db(), sql, -1, &raw, tail) != SQLITE_OK) Raise(db());
    return StmtHandle(raw);
  }
  StmtHandle Prepare(const char* sql, const char** tail, WatchedCall& call) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db(), sql, -1, &raw, tail) != SQLITE_OK) call.Fail();
    return StmtHandle(raw);
  }

  static void Bind(sqlite3_stmt* stmt, int index, const Variant& v) {
    using K = Variant::Kind;
    switch (v.kind()) {
      case K::kEmpty:
      case K::kNull:
        sqlite3_bind_null(stmt, index);
        break;
      case K::kBoolean:
        sqlite3_bind_int(stmt, index, v.boolean() ? 1 : 0);
        break;
      case K::kByte:
      case K::kInteger:
      case K::kLong:
      case K::kLongLong:
        sqlite3_bind_int64(stmt, index, v.whole());
        break;
      case K::kDate: {
        std::string text = v.date().StoredText();
        sqlite3_bind_text(stmt, index, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
        break;
      }
      case K::kString:
        sqlite3_bind_text(stmt, index, v.text().c_str(), static_cast<int>(v.text().size()), SQLITE_TRANSIENT);
        break;
      default:
        sqlite3_bind_double(stmt, index, v.ToDouble());
        break;
    }
  }

  // The fields of a statement's columns; `declared[c]` tells whether column c has a declared type.
  std::vector<Field> DescribeColumns(sqlite3_stmt* stmt, std::vector<bool>& declared) {
    const int n = sqlite3_column_count(stmt);
    std::vector<Field> fields;
    declared.assign(static_cast<size_t>(n), false);
    for (int c = 0; c < n; ++c) {
      Field f;
      const char* decl = sqlite3_column_decltype(stmt, c);
      if (decl) {
        const tsql::DeclaredType t = tsql::ParseDeclaredType(decl);
        f = FieldOfSqlServerType(t.name, t.size_or_precision, t.scale);
        declared[static_cast<size_t>(c)] = true;
      }
      f.name = sqlite3_column_name(stmt, c);
      DescribeBase(stmt, c, f);
      fields.push_back(std::move(f));
    }
    return fields;
  }

  QueryResult Fetch(sqlite3_stmt* stmt, WatchedCall& call) {
    QueryResult result;
    const int n = sqlite3_column_count(stmt);
    std::vector<bool> declared;
    result.fields = DescribeColumns(stmt, declared);
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      std::vector<Variant> row;
      row.reserve(static_cast<size_t>(n));
      int64_t bytes = 0;
      for (int c = 0; c < n; ++c) {
        row.push_back(RawValue(stmt, c));
        bytes += row.back().IsString() ? static_cast<int64_t>(row.back().text().size()) + 16 : 16;
      }
      call.watch().AddBytes(bytes);
      result.rows.push_back(std::move(row));
    }
    if (rc != SQLITE_DONE) call.Fail();
    TypeColumns(result, declared);
    return result;
  }

  // Where a column comes from: its table and column, whether it may be null and whether it is a key.
  void DescribeBase(sqlite3_stmt* stmt, int c, Field& f) {
    const char* table = sqlite3_column_table_name(stmt, c);
    const char* origin = sqlite3_column_origin_name(stmt, c);
    const char* schema = sqlite3_column_database_name(stmt, c);
    if (!table || !origin) return;
    f.base_catalog = catalog_;
    f.base_table = table;
    f.base_column = origin;
    int not_null = 0, primary_key = 0, autoinc = 0;
    if (sqlite3_table_column_metadata(db(), schema, table, origin, nullptr, nullptr, &not_null, &primary_key,
                                      &autoinc) == SQLITE_OK) {
      f.may_be_null = !not_null && !primary_key;
      f.key_column = primary_key != 0;
      f.autoincrement = autoinc != 0;
    }
  }

  Gate gate_;
  // Declared before the database, so that it outlives the trace that writes to it.
  FileHandle sql_log_;
  DbHandle db_;
  StmtHandle schema_version_query_;  // finalized before the database closes
  std::string path_;
  std::string catalog_;
  std::atomic<int> readers_ahead_{0};       // cursors reading ahead on a thread of their own
  std::unique_ptr<SqliteConnection> side_;  // see SideConnection
  bool side_failed_ = false;
  tsql::Schema schema_;
  int64_t schema_version_ = -1;
  const tsql::SchemaSource adapter_schema_ = [this]() -> const tsql::Schema& { return AdapterSchema(); };
};

// Steps the statement as the reader asks for rows. The first rows are read on the caller's thread;
// a longer result is read ahead by a thread of its own, a few batches at most, so that SQLite finds
// the next rows while the caller writes the last ones (two cores do the work of one query). Rows and
// failures reach the caller in their order; a failure ends the rows.
class SqliteCursor : public RowCursor {
 public:
  SqliteCursor(std::shared_ptr<SqliteConnection> connection, std::unique_ptr<WatchedCall> call,
               StmtHandle stmt, std::vector<Field> fields)
      : connection_(std::move(connection)),
        call_(std::move(call)),
        stmt_(std::move(stmt)),
        fields_(std::move(fields)) {}

  ~SqliteCursor() override {
    {
      std::lock_guard<std::mutex> lock(queue_mutex_);
      stop_ = true;
    }
    changed_.notify_all();
    if (reader_.joinable()) {
      reader_.join();
      connection_->ReaderStopped();
    }
    GateLock lock(connection_->gate());
    Finish();
  }

  const std::vector<Field>& fields() const override { return fields_; }

  bool Next(std::vector<Variant>& row) override {
    if (!reader_.joinable()) {
      if (rows_read_ < kRowsBeforeReadingAhead) {
        ++rows_read_;
        return ReadRow(row);
      }
      connection_->ReaderStarted();
      reader_ = std::thread([this] { ReadAhead(); });
    }
    if (at_ == current_.size()) {
      if (!TakeBatch()) return false;
    }
    std::swap(row, current_[at_++]);
    return true;
  }

 private:
  // Results up to this many rows are read without a thread.
  static constexpr int64_t kRowsBeforeReadingAhead = 256;
  // A batch ends at this many rows or this many bytes of values, and this many batches wait at most.
  static constexpr size_t kBatchRows = 256;
  static constexpr int64_t kBatchBytes = 1 << 20;
  static constexpr size_t kBatchesAhead = 4;

  // Reads one row into `row` with the connection to itself; false after the last row.
  bool ReadRow(std::vector<Variant>& row) {
    GateLock lock(connection_->gate());
    return ReadRowLocked(row);
  }

  bool ReadRowLocked(std::vector<Variant>& row) {
    if (!stmt_) return false;
    int rc = sqlite3_step(stmt_.get());
    if (rc == SQLITE_DONE) {
      Finish();
      return false;
    }
    if (rc != SQLITE_ROW) call_->Fail();
    row.resize(fields_.size());
    int64_t bytes = 0;
    for (size_t c = 0; c < fields_.size(); ++c) {
      row[c] = RawValue(stmt_.get(), static_cast<int>(c));
      TypeValue(fields_[c], row[c]);
      bytes += row[c].IsString() ? static_cast<int64_t>(row[c].text().size()) + 16 : 16;
    }
    batch_bytes_ += bytes;
    call_->watch().AddBytes(bytes);
    return true;
  }

  // The limits' watch ends with the statement; both go as soon as the last row is read.
  void Finish() {
    call_.reset();
    stmt_.reset();
  }

  // The reader thread: fills batches until the rows end, a failure, or the cursor is destroyed. The
  // rows read before a failure are handed over before it.
  void ReadAhead() {
    bool more = true;
    while (more) {
      std::vector<std::vector<Variant>> batch = SpareBatch();
      size_t count = 0;
      std::exception_ptr failure;
      batch_bytes_ = 0;
      try {
        while (count < kBatchRows && batch_bytes_ < kBatchBytes) {
          if (stop_) return;
          if (count == batch.size()) batch.emplace_back();
          // Between two rows a thread waiting for the connection goes first.
          while (connection_->gate().waiting.load() > 0) std::this_thread::yield();
          GateLock lock(connection_->gate());
          more = ReadRowLocked(batch[count]);
          if (!more) break;
          ++count;
        }
      } catch (...) {
        failure = std::current_exception();
        more = false;
      }
      batch.resize(count);
      std::unique_lock<std::mutex> lock(queue_mutex_);
      changed_.wait(lock, [&] { return stop_ || ready_.size() < kBatchesAhead; });
      if (stop_) return;
      if (count > 0) ready_.push_back(std::move(batch));
      failure_ = std::move(failure);  // handed over whole: the reader keeps no share of it
      ended_ = !more;
      changed_.notify_all();
    }
  }

  // A used batch's rows, kept for the reader to fill again.
  std::vector<std::vector<Variant>> SpareBatch() {
    std::lock_guard<std::mutex> lock(queue_mutex_);
    std::vector<std::vector<Variant>> batch = std::move(spare_);
    spare_.clear();
    return batch;
  }

  // Makes the next batch the current one; false after the last. Raises the reader's failure.
  bool TakeBatch() {
    std::unique_lock<std::mutex> lock(queue_mutex_);
    if (spare_.empty()) spare_ = std::move(current_);
    current_.clear();
    at_ = 0;
    changed_.wait(lock, [&] { return !ready_.empty() || ended_; });
    if (ready_.empty()) {
      if (!failure_) return false;
      std::exception_ptr failure = std::exchange(failure_, nullptr);
      std::rethrow_exception(failure);
    }
    current_ = std::move(ready_.front());
    ready_.pop_front();
    changed_.notify_all();
    return true;
  }

  std::shared_ptr<SqliteConnection> connection_;  // kept open while rows are read
  std::unique_ptr<WatchedCall> call_;             // the limits hold while rows are read
  StmtHandle stmt_;
  std::vector<Field> fields_;
  int64_t rows_read_ = 0;
  int64_t batch_bytes_ = 0;

  std::thread reader_;
  std::mutex queue_mutex_;
  std::condition_variable changed_;
  std::deque<std::vector<std::vector<Variant>>> ready_;
  std::vector<std::vector<Variant>> current_, spare_;
  size_t at_ = 0;
  std::atomic<bool> stop_{false};
  bool ended_ = false;
  std::exception_ptr failure_;
};

std::unique_ptr<RowCursor> SqliteConnection::OpenCursor(const std::string& sql,
                                                        const ComputedTypes& computed) {
  GateLock lock(gate_);
  auto call = std::make_unique<WatchedCall>(db());
  StmtHandle stmt = FirstQuery(sql, *call);
  if (!stmt) return CursorOver(QueryResult{});
  std::vector<bool> declared;
  std::vector<Field> fields = DescribeColumns(stmt.get(), declared);
  for (size_t c = 0; c < fields.size(); ++c) {
    if (declared[c]) continue;
    auto given = std::find_if(computed.begin(), computed.end(), [&](const auto& named) {
      return EqualsIgnoreCase(named.first, fields[c].name);
    });
    if (given == computed.end()) continue;
    Field typed = FieldOfSqlServerType(given->second);
    typed.name = std::move(fields[c].name);
    fields[c] = std::move(typed);
    declared[c] = true;
  }
  // A computed column takes its type from all of its values: such results are fetched whole.
  if (std::find(declared.begin(), declared.end(), false) != declared.end())
    return CursorOver(Fetch(stmt.get(), *call));
  return std::make_unique<SqliteCursor>(shared_from_this(), std::move(call), std::move(stmt),
                                        std::move(fields));
}

}  // namespace

std::shared_ptr<Connection> OpenSqliteConnection(const std::string& path, bool read_only) {
  if (path.empty())
    throw Error(err::kDatabaseError, "The connection string names no Data Source (the shop database file).",
                "sqlite");
  DbHandle db = OpenDatabase(path, read_only);
  FileHandle sql_log = OpenSqlLog(db.get());
  return std::make_shared<SqliteConnection>(std::move(db), path, std::move(sql_log));
}

}  // namespace ent
