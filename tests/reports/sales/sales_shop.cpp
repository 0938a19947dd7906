#include "reports/sales/sales_shop.h"

#include <sqlite3.h>

#include "common/thread_values.h"
#include "sampledb/shop_schema.h"
#include "sampledb/sqlite_out.h"

namespace ent::test {

SalesShop::SalesShop() {
  {
    sampledb::Database file(db_.path());
    sampledb::CreateShopTables(file);
  }
  SetShopConnectionString(db_.connection_string());
  engine_.openConnections();
}

void SalesShop::Insert(const std::string& table, const std::map<std::string, std::string>& values) {
  std::string columns, literals;
  auto add = [&](const std::string& column, const std::string& literal) {
    columns += (columns.empty() ? "" : ", ") + column;
    literals += (literals.empty() ? "" : ", ") + literal;
  };
  for (const auto& [column, literal] : values) add(column, literal);
  // Required columns the test left out.
  sampledb::Database file(db_.path());
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(file.handle(), ("pragma table_info(" + table + ")").c_str(), -1, &stmt, nullptr);
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    const std::string column = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1));
    const std::string type = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 2));
    if (sqlite3_column_int(stmt, 3) == 0 || values.count(column)) continue;
    add(column, type.find("char") != std::string::npos ? "''" : "0");
  }
  sqlite3_finalize(stmt);
  db_.Exec("insert into " + table + " (" + columns + ") values (" + literals + ")");
}

void SalesShop::WorkOrder(int woid, int invoiceid, int credid, const std::string& date,
                          std::map<std::string, std::string> more) {
  documents_[woid] = {invoiceid, credid};
  more["woid"] = std::to_string(woid);
  more["invoiceid"] = std::to_string(invoiceid);
  more["credid"] = std::to_string(credid);
  more["latestdate"] = "'" + date + "'";
  Insert("wo", more);
}

void SalesShop::Line(int woid, std::map<std::string, std::string> values) {
  values["wopartsid"] = std::to_string(next_line_++);
  values["woid"] = std::to_string(woid);
  values.emplace("invoiceid", std::to_string(documents_[woid].first));
  values.emplace("credid", std::to_string(documents_[woid].second));
  values.emplace("skip", "'No'");
  Insert("woparts", values);
}

void SalesShop::SalesClass(const std::string& name) {
  Insert("SalesClassInventoryIndexPricing",
         {{"pricingid", std::to_string(next_class_++)}, {"salesclass", name}});
}

std::vector<std::string> Column(Recordset& rs, const std::string& name) {
  std::vector<std::string> out;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext())
    out.push_back(rs.Get(name).IsNull() ? "<null>" : rs.Get(name).ToText());
  return out;
}

std::map<std::string, std::string> RowOf(Recordset& rs, const std::string& label) {
  std::map<std::string, std::string> row;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext()) {
    if (rs.Get(size_t{0}).IsNull() || rs.Get(size_t{0}).ToText() != label) continue;
    for (size_t c = 0; c < rs.fields().size(); ++c)
      row[rs.fields()[c].name] = rs.Get(c).IsNull() ? "<null>" : rs.Get(c).ToText();
    break;
  }
  return row;
}

}  // namespace ent::test
