#include "support/sample_shop.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/result_document.h"
#include "job/sendable.h"
#include "sampledb/sample_db.h"
#include "support/temp_dir.h"

namespace ent::test {

namespace {

TempDir& SharedDir() {
  static TempDir* dir = new TempDir();  // removed by the environment below, after the last test
  return *dir;
}

class RemoveSharedDir : public ::testing::Environment {
 public:
  void TearDown() override { std::filesystem::remove_all(SharedDir().path()); }
};
[[maybe_unused]] ::testing::Environment* const kRemoveSharedDir =
    ::testing::AddGlobalTestEnvironment(new RemoveSharedDir);

}  // namespace

const std::string& SmallSampleShop() {
  static const std::string path = [] {
    std::string file = SharedDir().file("small-shop.db");
    sampledb::Options options;
    options.size = sampledb::Size::kSmall;
    sampledb::CreateSampleDb(file, options);
    return file;
  }();
  return path;
}

const std::string& UntidySampleShop() {
  static const std::string path = [] {
    std::string file = SharedDir().file("untidy-shop.db");
    sampledb::Options options;
    options.size = sampledb::Size::kSmall;
    options.untidy = true;
    sampledb::CreateSampleDb(file, options);
    return file;
  }();
  return path;
}

ReportRun RunReport(const std::string& code, const std::vector<std::string>& params) {
  return RunReportOn(SmallSampleShop(), code, params);
}

ReportRun RunReportOn(const std::string& shop, const std::string& code,
                      const std::vector<std::string>& params) {
  SetShopConnectionString("Provider=SQLite;Data Source=" + shop);
  clsPrebuiltReport job;
  job.reportName = code;
  for (size_t i = 0; i < params.size(); ++i) job.addParam("p" + std::to_string(i), params[i]);
  std::shared_ptr<ISendable> result = job.generateDOC();
  ReportRun run;
  run.status = job.StatusStr;
  if (!result || !result->XMLDocument()) return run;
  run.has_document = true;
  run.document = result->XMLDocument()->Text();
  pugi::xml_document doc;
  doc.load_string(run.document.c_str());
  for (const pugi::xpath_node& column : doc.select_nodes("//s:AttributeType")) {
    run.columns.push_back(column.node().attribute("name").value());
    run.widths.push_back(column.node().child("s:datatype").attribute("dt:maxLength").as_int());
  }
  for (const pugi::xpath_node& row : doc.select_nodes("//rs:data/z:row")) {
    std::map<std::string, std::string> values;
    for (pugi::xml_attribute a = row.node().first_attribute(); a; a = a.next_attribute())
      values[a.name()] = a.value();
    run.rows.push_back(std::move(values));
  }
  return run;
}

std::string QueryValue(const std::string& sql) {
  return QueryValueOn(SmallSampleShop(), sql);
}

std::string QueryValueOn(const std::string& path, const std::string& sql) {
  const auto rows = QueryRowsOn(path, sql);
  return rows.empty() || rows[0].empty() ? "" : rows[0][0];
}

std::vector<std::vector<std::string>> QueryRowsOn(const std::string& path, const std::string& sql) {
  sqlite3* raw = nullptr;
  if (sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(raw);
    ADD_FAILURE() << "cannot open " << path;
    return {};
  }
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(raw, sqlite3_close);
  sqlite3_stmt* raw_statement = nullptr;
  if (sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &raw_statement, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sqlite3_errmsg(db.get()) << " in " << sql;
    return {};
  }
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw_statement, sqlite3_finalize);
  std::vector<std::vector<std::string>> rows;
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    std::vector<std::string>& row = rows.emplace_back();
    for (int i = 0; i < sqlite3_column_count(statement.get()); ++i) {
      const unsigned char* text = sqlite3_column_text(statement.get(), i);
      row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
    }
  }
  return rows;
}

int64_t QueryCount(const std::string& sql) {
  return std::stoll("0" + QueryValue(sql));
}

double Amount(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ','), text.end());
  return text.empty() ? 0 : std::stod(text);
}

}  // namespace ent::test
