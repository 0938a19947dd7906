// Rewrites the reports' SQL Server (T-SQL) texts so that SQLite runs them with SQL Server's meaning.
// On SQL Server the texts run as they stand; the SQLite driver passes every text through here.
//
//  - TOP n (or TOP (n)) after SELECT [DISTINCT] becomes LIMIT n at the end of that select;
//  - isnull(a, b) becomes ifnull(a, b);
//  - a chain of + with a string literal among its operands becomes || concatenation;
//  - string literals that read as dates (M/d/yyyy, MM/dd/yyyy, yyyy-MM-dd, optionally with a time)
//    become the stored form 'yyyy-MM-dd HH:mm:ss';
//  - in CREATE TABLE, text columns compare without case (COLLATE NOCASE); money, smallmoney,
//    decimal and numeric columns keep their type name but get REAL affinity ("money real",
//    "decimal real(18,4)"), so amounts are never divided as whole numbers; IDENTITY(n,m) goes.
// Text inside string literals, comments and quoted names is never touched otherwise.
#pragma once

#include <string>
#include <string_view>

namespace ent::tsql {

std::string ToSqlite(std::string_view tsql);

// The SQL Server type a declared column type names, as the adapter writes declarations:
// "money real" -> {"money"}, "varchar(50) COLLATE NOCASE" -> {"varchar", 50},
// "decimal real(18,4)" -> {"decimal", 18, 4}. The name is in lower case.
struct DeclaredType {
  std::string name;
  int size_or_precision = 0;
  int scale = 0;
};
DeclaredType ParseDeclaredType(std::string_view decltype_text);

}  // namespace ent::tsql
