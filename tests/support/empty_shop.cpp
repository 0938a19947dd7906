#include "support/empty_shop.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "common/thread_values.h"
#include "sampledb/shop_schema.h"
#include "sampledb/sqlite_out.h"

namespace ent::test {

namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The names and default literals of the required columns of `table` that `given` leaves out.
void AddLeftOutColumns(const std::string& path, const std::string& table, const std::set<std::string>& given,
                       std::string& columns, std::string& values) {
  sampledb::Database file(path);
  sqlite3_stmt* info = nullptr;
  sqlite3_prepare_v2(file.handle(), ("pragma table_info(" + table + ")").c_str(), -1, &info, nullptr);
  while (sqlite3_step(info) == SQLITE_ROW) {
    const std::string name = Lower(reinterpret_cast<const char*>(sqlite3_column_text(info, 1)));
    const std::string type = Lower(reinterpret_cast<const char*>(sqlite3_column_text(info, 2)));
    if (sqlite3_column_int(info, 3) == 0 || given.count(name)) continue;
    columns += ", " + name;
    values += name == "skip" ? ", 'No'" : type.find("char") != std::string::npos ? ", ''" : ", 0";
  }
  sqlite3_finalize(info);
}

}  // namespace

EmptyShop::EmptyShop() {
  {
    sampledb::Database file(db_.path());
    sampledb::CreateShopTables(file);
  }
  SetShopConnectionString(db_.connection_string());
  engine_.openConnections();
}

void EmptyShop::Insert(const std::string& table, const std::string& columns,
                       const std::vector<std::string>& rows) {
  std::set<std::string> given;
  std::string names = Lower(columns);
  names.erase(std::remove(names.begin(), names.end(), ' '), names.end());
  for (size_t start = 0, comma; start <= names.size(); start = comma + 1) {
    comma = std::min(names.find(',', start), names.size());
    given.insert(names.substr(start, comma - start));
  }
  std::string more_columns, more_values;
  AddLeftOutColumns(db_.path(), table, given, more_columns, more_values);
  for (const std::string& row : rows)
    db_.Exec("insert into " + table + " (" + columns + more_columns + ") values (" + row + more_values + ")");
}

void EmptyShop::Insert(const std::string& table, const std::map<std::string, std::string>& values) {
  std::string columns, literals;
  for (const auto& [column, literal] : values) {
    columns += (columns.empty() ? "" : ", ") + column;
    literals += (literals.empty() ? "" : ", ") + literal;
  }
  Insert(table, columns, {literals});
}

}  // namespace ent::test
