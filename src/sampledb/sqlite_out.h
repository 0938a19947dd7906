// Writing the sample shop into a SQLite file: the open database and prepared INSERT statements.
#pragma once

#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "sampledb/calendar.h"

namespace ent::sampledb {

// An amount of money in whole cents; stored as REAL in units of money.
struct Money {
  int64_t cents = 0;
};

// Text stored as NULL when it is empty.
struct OrNull {
  std::string_view text;
};

// A new SQLite database file, closed on destruction. Failures throw ent::Error.
class Database {
 public:
  explicit Database(const std::string& path);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void Exec(const std::string& sql);
  sqlite3* handle() const { return db_; }

 private:
  sqlite3* db_ = nullptr;
};

// One prepared "INSERT INTO table (columns) VALUES (?, ...)"; Row binds one value per column, in
// order, and runs it. Days are stored as "yyyy-MM-dd 00:00:00", Money as REAL, bool as 0/1 and
// nullptr and empty OrNull text as NULL.
class Insert {
 public:
  Insert(Database& db, std::string_view table, std::initializer_list<std::string_view> columns);
  ~Insert();
  Insert(const Insert&) = delete;
  Insert& operator=(const Insert&) = delete;

  template <class... Values>
  void Row(const Values&... values) {
    int index = 0;
    (Bind(++index, values), ...);
    Step(index);
  }

 private:
  template <std::integral T>
  void Bind(int index, T value) {
    BindInt(index, static_cast<int64_t>(value));
  }
  void BindInt(int index, int64_t value);
  void Bind(int index, double value);
  void Bind(int index, Money value);
  void Bind(int index, Day value);
  void Bind(int index, std::string_view value);
  void Bind(int index, const std::string& value) { Bind(index, std::string_view(value)); }
  void Bind(int index, const char* value) { Bind(index, std::string_view(value)); }
  void Bind(int index, std::nullptr_t);
  void Bind(int index, OrNull value);
  void Check(int rc);
  void Step(int bound);

  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
  int columns_ = 0;
  std::string table_;
};

}  // namespace ent::sampledb
