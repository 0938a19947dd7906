// How SQLite plans the heavy reports on a sample shop: the statements a report runs are taken from
// the driver's SQL log and explained. Most lines and work orders carry the placeholder 0 in
// invoiceid or credid; a join that reaches lines by one of those keys alone, or scans a table,
// loops over thousands of placeholder rows for every work order of a large shop.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using Db = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

Db OpenShop() {
  sqlite3* raw = nullptr;
  sqlite3_open_v2(test::SmallSampleShop().c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  return Db(raw, sqlite3_close);
}

// Every row of a query's first column, as text.
std::vector<std::string> Column(sqlite3* db, const std::string& sql, int column = 0) {
  sqlite3_stmt* raw = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &raw, nullptr), SQLITE_OK) << sql << sqlite3_errmsg(db);
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> stmt(raw, sqlite3_finalize);
  std::vector<std::string> values;
  while (stmt && sqlite3_step(stmt.get()) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt.get(), column);
    values.push_back(text ? reinterpret_cast<const char*>(text) : "");
  }
  return values;
}

// The statements that running a code sends to the shop database, one per element.
std::vector<std::string> StatementsOf(const std::string& code, const std::vector<std::string>& params) {
  test::TempDir dir;
  const std::string log = dir.file("sql.log");
  setenv("ENTPRCREQ_SQL_LOG", log.c_str(), 1);
  const test::ReportRun run = test::RunReport(code, params);
  unsetenv("ENTPRCREQ_SQL_LOG");
  EXPECT_EQ(run.status, "0") << code;
  std::ifstream in(log);
  std::vector<std::string> statements;
  std::string statement;
  for (std::string line; std::getline(in, line);) {
    statement += line + "\n";
    if (sqlite3_complete(statement.c_str())) statements.push_back(std::move(statement)), statement.clear();
  }
  EXPECT_EQ(statement, "") << "a statement of " << code << " does not end";
  return statements;
}

TEST(ShopPlans, TheSampleShopKeepsStatisticsAndIndexesForThePlaceholderKeys) {
  Db db = OpenShop();
  const std::vector<std::string> analysed = Column(db.get(), "select distinct tbl from sqlite_stat1");
  for (const char* table : {"wo", "woparts", "customer", "vehicle"})
    EXPECT_NE(std::find(analysed.begin(), analysed.end(), table), analysed.end()) << table;
  // The partial indexes leave out the placeholder keys.
  EXPECT_EQ(Column(db.get(),
                   "select sql like '%WHERE invoiceid <> 0' from sqlite_master where name = "
                   "'ix_woparts_invoice_set'"),
            std::vector<std::string>{"1"});
  EXPECT_EQ(Column(db.get(),
                   "select sql like '%WHERE credid <> 0' from sqlite_master where name = "
                   "'ix_woparts_credit_set'"),
            std::vector<std::string>{"1"});
}

TEST(ShopPlans, HeavyJoinsNeverLoopOverThePlaceholderKeys) {
  const std::string from = "1/1/2024", to = "12/31/2024";
  const std::vector<std::pair<std::string, std::vector<std::string>>> codes = {
      {"TECHPERF01", {from, to, "true", "false"}},
      {"TECHCOST01", {from, to, "true", "false", "true"}},
      {"PARTGP01", {from, to}},
      {"CARCOUNT01", {from, to}},
      {"PARTSALPER01", {from, to, "", "", "", "false"}},
      {"POSTCARDNONLOF01", {from, "6/30/2024", "7/1/2024", to}},
  };
  Db db = OpenShop();
  const std::regex whole_table(R"(^SCAN (wo|woparts)\b)", std::regex::icase);
  std::map<std::string, std::string> plans;  // code -> every step of its joins' plans
  for (const auto& [code, params] : codes) {
    for (const std::string& statement : StatementsOf(code, params)) {
      std::string lower = statement;
      std::transform(lower.begin(), lower.end(), lower.begin(),
                     [](unsigned char c) { return std::tolower(c); });
      if (lower.find("woparts") == std::string::npos) continue;
      for (const std::string& step : Column(db.get(), "EXPLAIN QUERY PLAN " + statement, 3)) {
        EXPECT_FALSE(std::regex_search(step, whole_table)) << code << ": " << step;
        plans[code] += step + "\n";
      }
    }
    EXPECT_NE(plans[code], "") << code << " joins no lines";
  }
  // The technicians' sums join on all three keys and the technician: one index answers all four.
  for (const char* code : {"TECHPERF01", "TECHCOST01"})
    EXPECT_NE(plans[code].find("ix_woparts_keys (invoiceid=? AND credid=? AND estid=? AND mechuserid=?)"),
              std::string::npos)
        << plans[code];
  // The joins that say "woparts.invoiceid <> 0" or "woparts.credid <> 0" use the indexes without
  // the placeholder rows.
  EXPECT_NE(plans["CARCOUNT01"].find("ix_woparts_invoice_set (invoiceid=?)"), std::string::npos)
      << plans["CARCOUNT01"];
  EXPECT_NE(plans["CARCOUNT01"].find("ix_woparts_credit_set (credid=?)"), std::string::npos)
      << plans["CARCOUNT01"];
}

TEST(ShopPlans, PartsGrossProfitLooksEachKeyUpOnce) {
  // Lines repeat suppliers, preset jobs and cost bands; every look-up text is sent at most once.
  std::map<std::string, int> lookups;
  for (const std::string& statement : StatementsOf("PARTGP01", {"1/1/2024", "12/31/2024"}))
    if (statement.find("FROM woparts") == std::string::npos && statement.rfind("SELECT", 0) == 0)
      ++lookups[statement];
  int sent = 0;
  for (const auto& [statement, times] : lookups) {
    EXPECT_EQ(times, 1) << statement;
    sent += times;
  }
  EXPECT_GT(sent, 3);
}

}  // namespace
}  // namespace ent
