// A SQLite loadable extension with the program's SQL format() function, text comparison and LIKE,
// for shop databases that are reached through the SQLite ODBC driver
// ("...;LoadExt=/path/to/libentprcreq_sqlite.so").
#include <sqlite3.h>

#include "data/sql_format_function.h"
#include "data/sql_server_text.h"

extern "C" int sqlite3_extension_init(sqlite3* db, char** /*error*/, const void* /*api*/) {
  ent::RegisterSqlFormatFunction(db);
  ent::RegisterSqlServerText(db);
  return SQLITE_OK;
}
