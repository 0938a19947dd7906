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
#include <regex>
#include <string>
#include <vector>

#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

// Every row of a query's column on the small sample shop, as text.
std::vector<std::string> Column(const std::string& sql, size_t column = 0) {
  std::vector<std::string> values;
  for (const auto& row : test::QueryRowsOn(test::SmallSampleShop(), sql)) values.push_back(row.at(column));
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
  EXPECT_EQ(test::QueryCount("select count(distinct tbl) from sqlite_stat1 where tbl in ('wo', 'woparts', "
                             "'customer', 'vehicle')"),
            4);
  // The partial indexes leave out the placeholder keys.
  EXPECT_EQ(
      test::QueryCount("select count(*) from sqlite_master where (name = 'ix_woparts_invoice_set' and sql "
                       "like '%WHERE invoiceid <> 0') or (name = 'ix_woparts_credit_set' and sql like "
                       "'%WHERE credid <> 0')"),
      2);
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
  const std::regex whole_table(R"(^SCAN (wo|woparts)\b)", std::regex::icase);
  std::map<std::string, std::string> plans;  // code -> every step of its joins' plans
  for (const auto& [code, params] : codes) {
    for (const std::string& statement : StatementsOf(code, params)) {
      std::string lower = statement;
      std::transform(lower.begin(), lower.end(), lower.begin(),
                     [](unsigned char c) { return std::tolower(c); });
      if (lower.find("woparts") == std::string::npos) continue;
      for (const std::string& step : Column("EXPLAIN QUERY PLAN " + statement, 3)) {
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
