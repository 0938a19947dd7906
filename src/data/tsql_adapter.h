// Rewrites the reports' SQL Server (T-SQL) texts so that SQLite runs them with SQL Server's meaning.
// On SQL Server the texts run as they stand; the SQLite driver passes every text through here.
//
//  - TOP n (or TOP (n)) after SELECT [DISTINCT] becomes LIMIT n at the end of that select;
//  - isnull(a, b) becomes ifnull(a, b);
//  - a chain of + with a string literal among its operands becomes || concatenation;
//  - string literals compared with (or inserted into) date columns are read as the shop database's
//    server reads them and become the stored form 'yyyy-MM-dd HH:mm:ss' (see tsql_dates.h);
//  - in CREATE TABLE, text columns compare without case (COLLATE NOCASE); money, smallmoney,
//    decimal and numeric columns keep their type name but get REAL affinity ("money real",
//    "decimal real(18,4)"), so amounts are never divided as whole numbers; IDENTITY(n,m) goes.
// Text inside string literals, comments and quoted names is never touched otherwise.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ent::tsql {

// What the adapter knows of the database's tables: their columns in order and which hold dates.
// Table and column names are in lower case.
struct TableColumn {
  std::string name;
  bool is_date = false;
};
using Schema = std::map<std::string, std::vector<TableColumn>>;

// Raises Error for a literal that meets a date column and does not read as a date.
std::string ToSqlite(std::string_view tsql, const Schema& schema = {});

// The same, with the schema read only when a text needs it: when a string literal meets a column,
// or the text creates a table or inserts into one. Most texts never do, and reading the schema is
// the larger part of a small report's SQL work, so a driver passes what reads it.
using SchemaSource = std::function<const Schema&()>;
std::string ToSqlite(std::string_view tsql, const SchemaSource& schema);

// The SQL Server type a declared column type names, as the adapter writes declarations:
// "money real" -> {"money"}, "varchar(50) COLLATE NOCASE" -> {"varchar", 50},
// "decimal real(18,4)" -> {"decimal", 18, 4}. The name is in lower case.
struct DeclaredType {
  std::string name;
  int size_or_precision = 0;
  int scale = 0;
};
DeclaredType ParseDeclaredType(std::string_view decltype_text);

// For drivers over SQLite: the query that lists every table's columns (table, column, declared type)
// in order, and the query of the schema's version, which changes whenever a table does.
inline constexpr char kSqliteColumnsQuery[] =
    "select m.name, p.name, p.type from sqlite_master m join pragma_table_info(m.name) p "
    "where m.type = 'table' order by m.name, p.cid";
inline constexpr char kSqliteSchemaVersionQuery[] = "PRAGMA schema_version";

// Adds one row of kSqliteColumnsQuery to the schema.
void AddDeclaredColumn(Schema& schema, std::string_view table, std::string_view column,
                       std::string_view declared_type);

}  // namespace ent::tsql
