#include "sampledb/sqlite_out.h"

#include <stdexcept>

#include "common/error.h"

namespace ent::sampledb {
namespace {

[[noreturn]] void Fail(sqlite3* db, const std::string& what) {
  throw Error(err::kDatabaseError, what + ": " + (db ? sqlite3_errmsg(db) : "out of memory"), "sample-db");
}

}  // namespace

Database::Database(const std::string& path) {
  const int rc = sqlite3_open_v2(path.c_str(), &db_,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc != SQLITE_OK) {
    const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    db_ = nullptr;
    throw Error(err::kDatabaseError, "Cannot create " + path + ": " + message, "sample-db");
  }
}

Database::~Database() {
  sqlite3_close(db_);
}

void Database::Exec(const std::string& sql) {
  if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Fail(db_, "Cannot run \"" + sql.substr(0, 60) + "\"");
  }
}

Insert::Insert(Database& db, std::string_view table, std::initializer_list<std::string_view> columns)
    : db_(db.handle()), columns_(static_cast<int>(columns.size())), table_(table) {
  std::string sql = "INSERT INTO " + table_ + " (";
  std::string marks;
  for (std::string_view column : columns) {
    if (!marks.empty()) {
      sql += ", ";
      marks += ", ";
    }
    sql += column;
    marks += "?";
  }
  sql += ") VALUES (" + marks + ")";
  if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) {
    Fail(db_, "Cannot prepare the insert into " + table_);
  }
}

Insert::~Insert() {
  sqlite3_finalize(stmt_);
}

void Insert::Check(int rc) {
  if (rc != SQLITE_OK) Fail(db_, "Cannot bind a value for " + table_);
}

void Insert::BindInt(int index, int64_t value) {
  Check(sqlite3_bind_int64(stmt_, index, value));
}

void Insert::Bind(int index, double value) {
  Check(sqlite3_bind_double(stmt_, index, value));
}

void Insert::Bind(int index, Money value) {
  Check(sqlite3_bind_double(stmt_, index, static_cast<double>(value.cents) / 100.0));
}

void Insert::Bind(int index, Day value) {
  const std::string text = value.Text();
  Check(sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
}

void Insert::Bind(int index, std::string_view value) {
  // An empty view may have no data pointer, which SQLite would take for NULL.
  const char* text = value.empty() ? "" : value.data();
  Check(sqlite3_bind_text(stmt_, index, text, static_cast<int>(value.size()), SQLITE_TRANSIENT));
}

void Insert::Bind(int index, std::nullptr_t) {
  Check(sqlite3_bind_null(stmt_, index));
}

void Insert::Bind(int index, OrNull value) {
  if (value.text.empty()) {
    Bind(index, nullptr);
  } else {
    Bind(index, value.text);
  }
}

void Insert::Step(int bound) {
  if (bound != columns_) {
    throw std::logic_error("insert into " + table_ + ": " + std::to_string(bound) + " values for " +
                           std::to_string(columns_) + " columns");
  }
  if (sqlite3_step(stmt_) != SQLITE_DONE) Fail(db_, "Cannot insert into " + table_);
  sqlite3_reset(stmt_);
}

}  // namespace ent::sampledb
