#include "sampledb/shop_schema.h"

#include <regex>

#include "data/tsql_adapter.h"
#include "sampledb/embedded_sql.h"

namespace ent::sampledb {
namespace {

bool IsIndex(const std::string& statement) {
  return std::regex_search(statement, std::regex(R"(^\s*CREATE\s+(UNIQUE\s+)?INDEX\b)", std::regex::icase));
}

void RunSchema(Database& db, bool indexes) {
  for (const std::string& statement : SplitStatements(EmbeddedSql("schema.sql"))) {
    if (IsIndex(statement) == indexes) db.Exec(tsql::ToSqlite(statement));
  }
}

}  // namespace

std::vector<std::string> SplitStatements(std::string_view script) {
  std::vector<std::string> statements;
  std::string current;
  auto flush = [&] {
    const size_t begin = current.find_first_not_of(" \t\r\n");
    if (begin != std::string::npos) {
      statements.push_back(current.substr(begin, current.find_last_not_of(" \t\r\n") + 1 - begin));
    }
    current.clear();
  };
  size_t i = 0;
  while (i < script.size()) {
    const char c = script[i];
    if (c == '-' && script.substr(i, 2) == "--") {
      i = script.find('\n', i);
      if (i == std::string_view::npos) break;
    } else if (c == '/' && script.substr(i, 2) == "/*") {
      const size_t end = script.find("*/", i + 2);
      i = end == std::string_view::npos ? script.size() : end + 2;
      current += ' ';
    } else if (c == '\'' || c == '"' || c == '[') {
      // A quoted literal or name runs to its closing quote; a doubled quote stays inside.
      const char close = c == '[' ? ']' : c;
      size_t end = i + 1;
      while (end < script.size() &&
             !(script[end] == close && script.substr(end, 2) != std::string{close, close})) {
        end += script[end] == close ? 2 : 1;
      }
      end = std::min(end + 1, script.size());
      current.append(script.substr(i, end - i));
      i = end;
    } else if (c == ';') {
      flush();
      ++i;
    } else {
      current += c;
      ++i;
    }
  }
  flush();
  return statements;
}

void CreateShopTables(Database& db) {
  RunSchema(db, false);
}

void CreateShopIndexes(Database& db) {
  RunSchema(db, true);
  db.Exec("ANALYZE");
}

void CreateSupplierTable(Database& db, int supid) {
  std::string script(EmbeddedSql("supplier_purchases.sql"));
  const std::string placeholder = "{supid}";
  for (size_t at = script.find(placeholder); at != std::string::npos; at = script.find(placeholder, at)) {
    script.replace(at, placeholder.size(), std::to_string(supid));
  }
  for (const std::string& statement : SplitStatements(script)) db.Exec(tsql::ToSqlite(statement));
}

}  // namespace ent::sampledb
