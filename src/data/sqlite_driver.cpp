#include "data/sqlite_driver.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

#include "common/error.h"
#include "data/column_values.h"
#include "data/sql_text.h"
#include "data/sql_format_function.h"
#include "data/tsql_adapter.h"

namespace ent {

namespace {

constexpr int kBusyTimeoutMs = 30000;

struct DbCloser {
  void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct StmtFinalizer {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using DbHandle = std::unique_ptr<sqlite3, DbCloser>;
using StmtHandle = std::unique_ptr<sqlite3_stmt, StmtFinalizer>;

// SQLite's failure as the reference's numbers: a missing table, a syntax error, or a general failure.
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

class SqliteConnection : public Connection {
 public:
  SqliteConnection(DbHandle db, std::string catalog) : db_(std::move(db)), catalog_(std::move(catalog)) {}

  void Execute(const std::string& sql) override {
    const std::string text = tsql::ToSqlite(sql);
    const char* tail = text.c_str();
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail);
      if (!stmt) continue;
      int rc;
      while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
      }
      if (rc != SQLITE_DONE) Raise(db());
    }
  }

  QueryResult Query(const std::string& sql) override {
    StmtHandle stmt = FirstQuery(sql);
    return stmt ? Fetch(stmt.get()) : QueryResult{};
  }

  std::unique_ptr<RowCursor> OpenCursor(const std::string& sql) override;

  void InsertRow(const std::string& table, const std::vector<std::string>& columns,
                 const std::vector<Variant>& values) override {
    std::string sql = InsertStatement(table, columns);
    StmtHandle stmt = Prepare(sql.c_str(), nullptr);
    for (size_t i = 0; i < values.size(); ++i) Bind(stmt.get(), static_cast<int>(i + 1), values[i]);
    if (sqlite3_step(stmt.get()) != SQLITE_DONE) Raise(db());
  }

  void Close() override { db_.reset(); }
  bool IsOpen() const override { return db_ != nullptr; }

 private:
  sqlite3* db() {
    if (!db_) throw Error(3704, "Operation is not allowed when the object is closed.");
    return db_.get();
  }

  // The first statement of the text that returns columns, prepared; statements before it run for
  // their effect. Null when there is none.
  StmtHandle FirstQuery(const std::string& sql) {
    const std::string text = tsql::ToSqlite(sql);
    const char* tail = text.c_str();
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail);
      if (!stmt) continue;
      if (sqlite3_column_count(stmt.get()) == 0) {
        int rc = sqlite3_step(stmt.get());
        if (rc != SQLITE_DONE && rc != SQLITE_ROW) Raise(db());
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

  QueryResult Fetch(sqlite3_stmt* stmt) {
    QueryResult result;
    const int n = sqlite3_column_count(stmt);
    std::vector<bool> declared;
    result.fields = DescribeColumns(stmt, declared);
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      std::vector<Variant> row;
      row.reserve(static_cast<size_t>(n));
      for (int c = 0; c < n; ++c) row.push_back(RawValue(stmt, c));
      result.rows.push_back(std::move(row));
    }
    if (rc != SQLITE_DONE) Raise(db());
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

  DbHandle db_;
  std::string catalog_;
};

// Steps the statement as the reader asks for rows: nothing but the current row is held.
class SqliteCursor : public RowCursor {
 public:
  SqliteCursor(sqlite3* db, StmtHandle stmt, std::vector<Field> fields)
      : db_(db), stmt_(std::move(stmt)), fields_(std::move(fields)) {}
  const std::vector<Field>& fields() const override { return fields_; }
  bool Next(std::vector<Variant>& row) override {
    if (!stmt_) return false;
    int rc = sqlite3_step(stmt_.get());
    if (rc == SQLITE_DONE) {
      stmt_.reset();
      return false;
    }
    if (rc != SQLITE_ROW) Raise(db_);
    row.resize(fields_.size());
    for (size_t c = 0; c < fields_.size(); ++c)
      row[c] = TypedValue(fields_[c], RawValue(stmt_.get(), static_cast<int>(c)));
    return true;
  }

 private:
  sqlite3* db_;
  StmtHandle stmt_;
  std::vector<Field> fields_;
};

std::unique_ptr<RowCursor> SqliteConnection::OpenCursor(const std::string& sql) {
  StmtHandle stmt = FirstQuery(sql);
  if (!stmt) return CursorOver(QueryResult{});
  std::vector<bool> declared;
  std::vector<Field> fields = DescribeColumns(stmt.get(), declared);
  // A computed column takes its type from all of its values: such results are fetched whole.
  if (std::find(declared.begin(), declared.end(), false) != declared.end()) return CursorOver(Fetch(stmt.get()));
  return std::make_unique<SqliteCursor>(db(), std::move(stmt), std::move(fields));
}

}  // namespace

std::shared_ptr<Connection> OpenSqliteConnection(const std::string& path) {
  if (path.empty())
    throw Error(err::kDatabaseError, "The connection string names no Data Source (the shop database file).",
                "sqlite");
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  DbHandle db(raw);
  if (rc != SQLITE_OK) {
    std::string why = raw ? sqlite3_errmsg(raw) : "out of memory";
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  sqlite3_busy_timeout(db.get(), kBusyTimeoutMs);
  sqlite3_extended_result_codes(db.get(), 1);
  RegisterSqlFormatFunction(db.get());
  // Reading the schema proves the file is a database before anyone relies on it.
  if (sqlite3_exec(db.get(), "select count(*) from sqlite_master", nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::string why = sqlite3_errmsg(db.get());
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  return std::make_shared<SqliteConnection>(std::move(db), std::filesystem::path(path).stem().string());
}

}  // namespace ent
