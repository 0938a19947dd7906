// The shop schema as built into the program: its statements and how SQLite keeps the values the
// reports compare.
#include "sampledb/shop_schema.h"

#include <gtest/gtest.h>

#include <string>

#include "common/error.h"
#include "sampledb/embedded_sql.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent::sampledb {
namespace {

class ShopSchema : public ::testing::Test {
 protected:
  ShopSchema() : db_(dir_.file("shop.db")) {
    CreateShopTables(db_);
    CreateSupplierTable(db_, 12);
  }

  // The first value of a query, read by SQLite on the file.
  std::string Scalar(const std::string& sql) const { return test::QueryValueOn(dir_.file("shop.db"), sql); }

  test::TempDir dir_;
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
  EXPECT_EQ(statements,
            (std::vector<std::string>{"CREATE TABLE a (x int)", "INSERT INTO a VALUES ('it''s; fine')",
                                      "SELECT [odd;name], \"other;name\" FROM a", "SELECT 1"}));
  EXPECT_TRUE(SplitStatements("  -- nothing\n ; ").empty());
}

TEST_F(ShopSchema, KeepsValuesTheWayTheReportsCompareThem) {
  // Money is REAL even when whole; text compares without regard to case; flags are numbers.
  db_.Exec(
      "INSERT INTO suph12 (purchid, purchdate, refnum, purchase) VALUES (1, '2024-03-05 00:00:00', 'si-1', "
      "12)");
  EXPECT_EQ(Scalar("SELECT typeof(purchase) FROM suph12"), "real");
  EXPECT_EQ(Scalar("SELECT count(*) FROM suph12 WHERE refnum = 'SI-1'"), "1");
  EXPECT_EQ(Scalar("SELECT count(*) FROM suph12 WHERE purchdate <= '2024-03-05 00:00:00'"), "1");
  db_.Exec("INSERT INTO customer (cusid, company, chksolicit) VALUES (1, 'Cash Sale', 1)");
  EXPECT_EQ(Scalar("SELECT count(*) FROM customer WHERE company = 'CASH SALE' AND chksolicit = 1"), "1");
  EXPECT_EQ(Scalar("SELECT typeof(chksolicit) FROM customer"), "integer");

  EXPECT_EQ(Scalar("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'"), "0");
  CreateShopIndexes(db_);
  EXPECT_GT(std::stoi(Scalar("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'")),
            10);
}

}  // namespace
}  // namespace ent::sampledb
