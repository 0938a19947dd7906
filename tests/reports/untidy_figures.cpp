#include "reports/untidy_figures.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>

namespace ent::test::untidy {

ReportRun Report(const std::string& code, const std::vector<std::string>& params) {
  return RunReportOn(UntidySampleShop(), code, params);
}

std::string Value(const std::string& sql) {
  return QueryValueOn(UntidySampleShop(), sql);
}

size_t Count(const std::string& sql) {
  const std::string value = Value(sql);
  return value.empty() ? 0 : std::stoul(value);
}

double Sum(const std::string& sql) {
  const std::string value = Value(sql);
  return value.empty() ? 0 : std::stod(value);
}

std::vector<std::string> Values(const std::string& sql) {
  std::vector<std::string> values;
  sqlite3* raw = nullptr;
  sqlite3_open_v2(UntidySampleShop().c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(raw, sqlite3_close);
  sqlite3_stmt* raw_statement = nullptr;
  if (sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &raw_statement, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sqlite3_errmsg(db.get()) << " in " << sql;
    return values;
  }
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw_statement, sqlite3_finalize);
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(statement.get(), 0);
    values.push_back(text ? reinterpret_cast<const char*>(text) : "");
  }
  return values;
}

std::vector<std::string> ColumnOf(const ReportRun& run, const std::string& column) {
  std::vector<std::string> cells;
  for (const Row& row : run.rows) cells.push_back(Cell(row, column));
  return cells;
}

std::string Cell(const Row& row, const std::string& column) {
  const auto cell = row.find(column);
  return cell == row.end() ? "" : cell->second;
}

double TotalOf(const ReportRun& run, const std::string& column) {
  if (run.rows.empty()) {
    ADD_FAILURE() << "no rows for " << column;
    return 0;
  }
  return Amount(Cell(run.rows.back(), column));
}

std::vector<Row> RowsWhere(const ReportRun& run, const std::string& column, const std::string& value) {
  std::vector<Row> rows;
  for (const Row& row : run.rows) {
    if (Cell(row, column) == value) rows.push_back(row);
  }
  return rows;
}

}  // namespace ent::test::untidy
