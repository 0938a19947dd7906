// The shop schema as built into the program: its statements, its columns and how SQLite keeps
// the values the reports compare.
#include "sampledb/shop_schema.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/error.h"
#include "sampledb/embedded_sql.h"

namespace ent::sampledb {
namespace {

namespace fs = std::filesystem;

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string Scalar(Database& db, const std::string& sql) {
  sqlite3_stmt* stmt = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db.handle(), sql.c_str(), -1, &stmt, nullptr), SQLITE_OK) << sql;
  std::string value;
  if (stmt && sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_text(stmt, 0)) {
    value = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
  }
  sqlite3_finalize(stmt);
  return value;
}

// A path for a new database of this test process.
std::string NewDatabasePath() {
  const fs::path path =
      fs::temp_directory_path() / ("entprcreq-schema-" + std::to_string(::getpid()) + ".db");
  fs::remove(path);
  return path.string();
}

class ShopSchema : public ::testing::Test {
 protected:
  ShopSchema() : path_(NewDatabasePath()), db_(path_.string()) {
    CreateShopTables(db_);
    CreateSupplierTable(db_, 12);
  }
  ~ShopSchema() override { fs::remove(path_); }

  std::set<std::string> Columns(const std::string& table) {
    std::set<std::string> columns;
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db_.handle(), ("PRAGMA table_info(" + table + ")").c_str(), -1, &stmt, nullptr);
    while (stmt && sqlite3_step(stmt) == SQLITE_ROW) {
      columns.insert(Lower(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1))));
    }
    sqlite3_finalize(stmt);
    return columns;
  }

  fs::path path_;
  Database db_;
};

TEST(EmbeddedSql, HoldsTheSchemaFiles) {
  EXPECT_NE(EmbeddedSql("schema.sql").find("CREATE TABLE wo ("), std::string_view::npos);
  EXPECT_NE(EmbeddedSql("supplier_purchases.sql").find("suph{supid}"), std::string_view::npos);
  EXPECT_THROW(EmbeddedSql("missing.sql"), Error);
}

TEST(SplitStatements, KeepsQuotedSemicolonsAndDropsComments) {
  const auto statements = SplitStatements(
      "-- a comment; with a semicolon\n"
      "CREATE TABLE a (x int); /* block; comment */\n"
      "INSERT INTO a VALUES ('it''s; fine');\n"
      "SELECT [odd;name], \"other;name\" FROM a -- trailing\n"
      ";\n"
      "  SELECT 1  ");
  ASSERT_EQ(statements.size(), 4u);
  EXPECT_EQ(statements[0], "CREATE TABLE a (x int)");
  EXPECT_EQ(statements[1], "INSERT INTO a VALUES ('it''s; fine')");
  EXPECT_EQ(statements[2], "SELECT [odd;name], \"other;name\" FROM a");
  EXPECT_EQ(statements[3], "SELECT 1");
  EXPECT_TRUE(SplitStatements("  -- nothing\n ; ").empty());
}

TEST_F(ShopSchema, HasEveryColumnTheReportsRead) {
  const std::map<std::string, std::string> read = {
      {"chartofaccounts", "chid parentid accountnumber accountname type sublevel fivetypename"},
      {"ChartOfAccountsGLPOSTINGTABLE", "chid amt transdate srcmod srcid srcid2"},
      {"ChartOfAccountsFiscalYearRange", "fiscalyearstartdate fiscalyearenddate"},
      {"supplier", "supid company"},
      {"customer",
       "cusid company fname lname street city province postal ahtel htel abtel btel chksolicit tx1exempt "
       "tx2exempt"},
      {"vehicle", "vehid cusid year make model plate vin unitno engsize"},
      {"wo",
       "woid cusid vehid invoiceid credid estid wodeleted chkvoid chkestpending archive latestdate wodate "
       "wotime "
       "invoicetime stateandnumber summary defmechuserid ponum txtodometer cmbservicewriter customershiptoid "
       "txtcustomerrequests optionsmessage optionsnotetocustomer screenparts screentotpartsdisc screenlabour "
       "screentotlabourdisc screenother screenlevy screentotdiscount screensubtotal screentx1 screentx2 "
       "screentotal "
       "txtpartpermargin txtlabourpermargin txtotherpermargin txttotalpermargin txttotaldolmargin "
       "insurencecusid "
       "totalinsurenceinvamt insurencedeductible"},
      {"woparts",
       "woid invoiceid credid estid linenum description salesclass qty hrs partsea totparts discpart labour "
       "disclab "
       "tx total c ok needed skip presetpkg presetheader presetjobid miscid invinvid invsupid invcost "
       "invcorecost "
       "margpartsper marglabdol mechuserid mechpartstot mechlabtot mechhourlytot mechflatratetot "
       "otherchargeid "
       "otherchargeamt othchrgcost otherchgdo levyitemamount"},
      {"wopaymentadv", "id trandate type payment"},
      {"inventory", "invid partnum description category manufacturer location supid qoh lastlist lastcost"},
      {"invtrans", "invid qty costea coresea"},
      {"suph12", "purchase purchdate"},
      {"jobheader", "jobid jobnum"},
      {"SalesClassInventoryIndexPricing", "salesclass costfrom costto profitmargin"},
      {"usertable", "userid usertype fname lname"},
      {"mechanic", "userid"},
      {"timeclock", "woid userid thedate hrs thehourlyrate"},
      {"GlobalVars2", "comppostal compstreet compcity compahtel comphtel"},
      {"globalvars",
       "chkprintinvoicetime invoicedefnote invdisclaimerfontsize invoicechkdispdisclaimer invoicedefdisclaim "
       "chkinvprintcusttx1num chkinvprintcusttx2num woreg compftel compaftel comptx1name comptx2name "
       "wochkprintcustomerrequests invoicechkdispcomments chkinvprintpartnumbers"},
      {"machine", "companyname"},
  };
  for (const auto& [table, names] : read) {
    const std::set<std::string> columns = Columns(table);
    std::istringstream words(names);
    for (std::string column; words >> column;) EXPECT_TRUE(columns.count(column)) << table << "." << column;
  }
}

TEST_F(ShopSchema, KeepsValuesTheWayTheReportsCompareThem) {
  // Money is REAL even when whole; text compares without regard to case; flags are numbers.
  db_.Exec(
      "INSERT INTO suph12 (purchid, purchdate, refnum, purchase) VALUES (1, '2024-03-05 00:00:00', 'si-1', "
      "12)");
  EXPECT_EQ(Scalar(db_, "SELECT typeof(purchase) FROM suph12"), "real");
  EXPECT_EQ(Scalar(db_, "SELECT count(*) FROM suph12 WHERE refnum = 'SI-1'"), "1");
  EXPECT_EQ(Scalar(db_, "SELECT count(*) FROM suph12 WHERE purchdate <= '2024-03-05 00:00:00'"), "1");
  db_.Exec("INSERT INTO customer (cusid, company, chksolicit) VALUES (1, 'Cash Sale', 1)");
  EXPECT_EQ(Scalar(db_, "SELECT count(*) FROM customer WHERE company = 'CASH SALE' AND chksolicit = 1"), "1");
  EXPECT_EQ(Scalar(db_, "SELECT typeof(chksolicit) FROM customer"), "integer");

  EXPECT_EQ(Scalar(db_, "SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'"), "0");
  CreateShopIndexes(db_);
  EXPECT_GT(
      std::stoi(Scalar(db_, "SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'")),
      10);
}

}  // namespace
}  // namespace ent::sampledb
