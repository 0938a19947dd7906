#include "data/sql_format_function.h"

#include <sqlite3.h>

#include <string>
#include <string_view>

#include "common/date_time.h"
#include "common/error.h"
#include "common/number_format.h"

namespace ent {

namespace {

void FormatValue(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (argc != 2 || sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  const std::string pattern(reinterpret_cast<const char*>(sqlite3_value_text(argv[1])));
  int type = sqlite3_value_type(argv[0]);
  if (type == SQLITE_TEXT) {
    std::string_view text(reinterpret_cast<const char*>(sqlite3_value_text(argv[0])));
    if (auto d = DateTime::Parse(text)) {
      std::string out = FormatDateParts(d->year(), d->month(), d->day(), d->hour(), d->minute(), d->second(),
                                        pattern, FormatRules::kSqlServer);
      sqlite3_result_text(ctx, out.data(), static_cast<int>(out.size()), SQLITE_TRANSIENT);
      return;
    }
    // SQL Server's format() takes no text; a text that holds a number is read as that number.
    type = sqlite3_value_numeric_type(argv[0]);
  }
  std::string out;
  if (type == SQLITE_INTEGER) {
    out = FormatDecimal(std::to_string(sqlite3_value_int64(argv[0])), pattern, FormatRules::kSqlServer);
  } else if (type == SQLITE_FLOAT) {
    out = FormatDouble(sqlite3_value_double(argv[0]), pattern, FormatRules::kSqlServer);
  } else {
    sqlite3_result_null(ctx);
    return;
  }
  sqlite3_result_text(ctx, out.data(), static_cast<int>(out.size()), SQLITE_TRANSIENT);
}

// No exception may cross SQLite's C frames: a pattern the engine refuses is the statement's error.
void SqlFormat(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  try {
    FormatValue(ctx, argc, argv);
  } catch (const Error& e) {
    sqlite3_result_error(ctx, e.description().c_str(), -1);
  } catch (const std::exception& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

}  // namespace

void RegisterSqlFormatFunction(sqlite3* db) {
  int rc = sqlite3_create_function_v2(db, "format", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, SqlFormat,
                                      nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) throw Error(err::kDatabaseError, sqlite3_errmsg(db), "sqlite");
}

}  // namespace ent
