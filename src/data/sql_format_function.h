// The shop database's format(value, pattern) function for SQLite, with SQL Server's behaviour:
// numbers with .NET custom numeric patterns, datetime values (stored as "yyyy-MM-dd HH:mm:ss" text)
// with date patterns, null gives null.
#pragma once

struct sqlite3;

namespace ent {

// Registers format() on the connection; raises Error on failure.
void RegisterSqlFormatFunction(sqlite3* db);

}  // namespace ent
