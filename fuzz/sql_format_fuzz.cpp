// The database's format(value, pattern) function with any pattern, for numbers, dates and texts.
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "data/sql_format_function.h"

namespace {

sqlite3* Database() {
  static sqlite3* db = [] {
    sqlite3* opened = nullptr;
    sqlite3_open(":memory:", &opened);
    ent::RegisterSqlFormatFunction(opened);
    return opened;
  }();
  return db;
}

void Run(sqlite3_stmt* statement) {
  sqlite3_step(statement);
  sqlite3_reset(statement);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static sqlite3_stmt* statement = [] {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(Database(), "select format(?1, ?2)", -1, &prepared, nullptr);
    return prepared;
  }();
  // The input is "value NUL pattern"; the value is tried as text, and the pattern also for numbers.
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t split = input.find('\0');
  const std::string pattern = split == std::string::npos ? input : input.substr(split + 1);
  const std::string value = split == std::string::npos ? "2024-02-29 13:05:09" : input.substr(0, split);
  sqlite3_bind_text(statement, 2, pattern.data(), static_cast<int>(pattern.size()), SQLITE_TRANSIENT);
  sqlite3_bind_text(statement, 1, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
  Run(statement);
  for (double number : {0.0, -0.004, 1234567.891, 1e300}) {
    sqlite3_bind_double(statement, 1, number);
    Run(statement);
  }
  sqlite3_bind_int64(statement, 1, INT64_MIN);
  Run(statement);
  if (size >= sizeof(double)) {
    double raw;
    std::memcpy(&raw, data, sizeof raw);
    sqlite3_bind_double(statement, 1, raw);
    Run(statement);
  }
  return 0;
}
