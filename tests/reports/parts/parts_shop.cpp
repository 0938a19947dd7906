#include "reports/parts/parts_shop.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "common/thread_values.h"
#include "sampledb/embedded_sql.h"
#include "sampledb/shop_schema.h"

namespace ent::test {

PartsShop::PartsShop() {
  for (const std::string& statement : sampledb::SplitStatements(sampledb::EmbeddedSql("schema.sql")))
    db_.Exec(statement);
  SetShopConnectionString(db_.connection_string());
  engine_.openConnections();
}

void PartsShop::Insert(const std::string& table, const std::string& columns,
                       const std::vector<std::string>& rows) {
  std::string lower = "," + columns + ",";
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  lower.erase(std::remove(lower.begin(), lower.end(), ' '), lower.end());
  std::string more_columns, more_values;
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(db_.path().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    throw std::runtime_error("cannot open " + db_.path());
  }
  sqlite3_stmt* info = nullptr;
  sqlite3_prepare_v2(db, ("pragma table_info(" + table + ")").c_str(), -1, &info, nullptr);
  while (sqlite3_step(info) == SQLITE_ROW) {
    std::string name = reinterpret_cast<const char*>(sqlite3_column_text(info, 1));
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (sqlite3_column_int(info, 3) == 0 || lower.find("," + name + ",") != std::string::npos) continue;
    more_columns += ", " + name;
    more_values += name == "skip" ? ", 'No'" : ", 0";
  }
  sqlite3_finalize(info);
  sqlite3_close(db);
  for (const std::string& row : rows)
    db_.Exec("insert into " + table + " (" + columns + more_columns + ") values (" + row + more_values + ")");
}

std::vector<std::vector<std::string>> Cells(Recordset& rs) {
  std::vector<std::vector<std::string>> rows;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext()) {
    std::vector<std::string> row;
    for (size_t i = 0; i < rs.fields().size(); ++i)
      row.push_back(rs.Get(i).IsNull() ? "" : rs.Get(i).ToText());
    rows.push_back(row);
  }
  return rows;
}

std::vector<std::string> ColumnOf(Recordset& rs, const std::string& name) {
  std::vector<std::string> column;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext())
    column.push_back(rs.Get(name).IsNull() ? "" : rs.Get(name).ToText());
  return column;
}

}  // namespace ent::test
