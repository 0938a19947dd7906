// Inventory value, inventory list, parts sales performance and purchases per supplier on a shop made
// by hand, with figures worked out on paper.
#include <gtest/gtest.h>

#include <string>

#include "common/error.h"
#include "reports/parts/parts_shop.h"
#include "sampledb/embedded_sql.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class InventoryReportsTest : public ::testing::Test {
 protected:
  InventoryReportsTest() {
    shop.Insert("supplier", {{"supid", "1"}, {"company", "'Acme Parts'"}});
    shop.Insert("supplier", {{"supid", "2"}, {"company", "'Best Filters'"}});
    shop.Insert("supplier", {{"supid", "3"}, {"company", "'Zed Supply'"}});
    Item(1, "'A-100'", "'Brake pad'", "'Brakes'", "'A1'", 1, "4", "25", "10");
    Item(2, "'B-200'", "'Oil filter'", "'Filters'", "'B2'", 2, "10", "8", "3");
    Item(3, "'C-300'", "'Returned pad'", "'Brakes'", "'A9'", 1, "0", "5", "2");
    Item(4, "'D-400'", "'Orphan'", "'Brakes'", "'A5'", 99, "1", "1", "1");  // no supplier row
    // Stock brought in counts; returns and zero-quantity transactions do not.
    Trans(1, 1, "2", "10", "1.5");
    Trans(2, 1, "3", "9", "0");
    Trans(3, 1, "-1", "10", "0");
    Trans(4, 2, "10", "3", "0");
    Trans(5, 3, "-2", "2", "0");
    Trans(6, 3, "0", "2", "0");
  }
  void Item(int id, const std::string& part, const std::string& desc, const std::string& category,
            const std::string& location, int supplier, const std::string& qoh, const std::string& list,
            const std::string& cost) {
    shop.Insert("inventory", {{"invid", std::to_string(id)},
                              {"partnum", part},
                              {"Description", desc},
                              {"Category", category},
                              {"Manufacturer", "'Acme'"},
                              {"Location", location},
                              {"supid", std::to_string(supplier)},
                              {"QOH", qoh},
                              {"LastList", list},
                              {"LastCost", cost}});
  }
  void Trans(int id, int item, const std::string& qty, const std::string& cost, const std::string& core) {
    shop.Insert("invtrans", {{"invtransid", std::to_string(id)},
                             {"invid", std::to_string(item)},
                             {"qty", qty},
                             {"costea", cost},
                             {"coresea", core}});
  }
  void Purchases(int supplier, const std::vector<std::pair<std::string, std::string>>& dated_amounts) {
    std::string ddl(sampledb::EmbeddedSql("supplier_purchases.sql"));
    for (size_t at = ddl.find("{supid}"); at != std::string::npos; at = ddl.find("{supid}"))
      ddl.replace(at, 7, std::to_string(supplier));
    shop.Exec(ddl);
    int id = 1;
    for (const auto& [date, amount] : dated_amounts)
      shop.Insert("suph" + std::to_string(supplier),
                  {{"purchid", std::to_string(id++)}, {"purchdate", "'" + date + "'"}, {"purchase", amount}});
  }

  test::PartsShop shop;
};

TEST_F(InventoryReportsTest, InventoryValueCountsOnlyStockBroughtIn) {
  std::string part, desc, category, err;
  auto rs = shop.engine().getInvValue(part, desc, category, err);
  ASSERT_TRUE(rs) << err;
  EXPECT_EQ(err, "0");
  EXPECT_EQ(part, "%");  // empty filters are rewritten in place
  // Item 3 had only a return and a zero-quantity transaction; item 4's stock came in no transaction.
  EXPECT_EQ(test::Cells(*rs),
            (Rows{{"A-100", "Brake pad", "Brakes", "4.00", "25.00", "10.00", "50.00", "100.00"},
                  {"B-200", "Oil filter", "Filters", "10.00", "8.00", "3.00", "30.00", "80.00"},
                  {"[b]TOTAL", "", "", "14.00", "33.00", "13.00", "80.00", "180.00"}}));

  // Filters are LIKE patterns, wildcards included.
  std::string none, underscore = "B-2_0";
  category = "";
  auto filtered = shop.engine().getInvValue(underscore, none, category, err);
  ASSERT_TRUE(filtered);
  EXPECT_EQ(test::ColumnOf(*filtered, "Part_Number"), (std::vector<std::string>{"B-200", "[b]TOTAL"}));

  // Nothing matching: the columns without rows and without total line.
  std::string missing = "Z%";
  auto empty = shop.engine().getInvValue(missing, none, category, err);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->fields().size(), 8u);
  EXPECT_EQ(empty->RecordCount(), 0u);
}

TEST_F(InventoryReportsTest, InventoryListFiltersOnLocationAndNeedsASupplier) {
  std::string part, desc, category, supplier, location = "A%", err;
  auto rs = shop.engine().getInvList(part, desc, category, supplier, location, err);
  ASSERT_TRUE(rs) << err;
  EXPECT_EQ(err, "0");
  // D-400 lies in A5 but has no supplier row.
  EXPECT_EQ(test::Cells(*rs),
            (Rows{{"A-100", "Brake pad", "Acme", "A1", "Acme Parts", "Brakes", "25.00", "10.00", "4.00"},
                  {"C-300", "Returned pad", "Acme", "A9", "Acme Parts", "Brakes", "5.00", "2.00", "0.00"},
                  {"[b]TOTAL", "", "", "", "", "", "30.00", "12.00", "4.00"}}));

  std::string by_supplier = "Best%", anywhere;
  auto filters = shop.engine().getInvList(part, desc, category, by_supplier, anywhere, err);
  ASSERT_TRUE(filters);
  EXPECT_EQ(test::ColumnOf(*filters, "Part_Number"), (std::vector<std::string>{"B-200", "[b]TOTAL"}));
  EXPECT_EQ(anywhere, "%");

  // A quote in a filter is a character to match, not the end of the SQL text.
  std::string quoted = "O'Brien%";
  auto no_match = shop.engine().getInvList(part, quoted, category, supplier, location, err);
  ASSERT_TRUE(no_match) << err;
  EXPECT_EQ(no_match->RecordCount(), 0u);
}

class PartsSalesTest : public InventoryReportsTest {
 protected:
  PartsSalesTest() {
    Order(1, 11, 0, "2024-05-10");
    Order(2, 0, 1, "2024-05-12");   // voided, never invoiced
    Order(3, 12, 0, "2024-07-01");  // outside the range
    Line(1, 1, 11, 1, "2", "20", "50", "0");
    Line(2, 1, 11, 2, "4", "12", "20", "4");
    Line(3, 2, 0, 2, "4", "12", "24", "0");
    Line(4, 1, 11, 1, "0", "5", "9", "0");  // quantity 0
    Line(5, 1, 11, 1, "1", "10", "100", "0", "'Yes'");
    Line(6, 3, 12, 1, "1", "10", "30", "0");
  }
  void Order(int woid, int invoice, int voided, const std::string& date) {
    shop.Insert("wo", {{"woid", std::to_string(woid)},
                       {"invoiceid", std::to_string(invoice)},
                       {"chkvoid", std::to_string(voided)},
                       {"latestdate", "'" + date + "'"}});
  }
  void Line(int id, int woid, int invoice, int item, const std::string& qty, const std::string& cost,
            const std::string& parts, const std::string& discount, const std::string& skip = "'No'") {
    shop.Insert("woparts", {{"wopartsid", std::to_string(id)},
                            {"woid", std::to_string(woid)},
                            {"invoiceid", std::to_string(invoice)},
                            {"invinvid", std::to_string(item)},
                            {"qty", qty},
                            {"invcost", cost},
                            {"totparts", parts},
                            {"discpart", discount},
                            {"skip", skip}});
  }
  Rows Run(bool voided) {
    std::string part, desc, category, err;
    auto rs =
        shop.engine().getPartsSalesPerformance("5/1/2024", "5/31/2024", part, desc, category, voided, err);
    EXPECT_EQ(err, "0");
    return rs ? test::Cells(*rs) : Rows{};
  }
};

TEST_F(PartsSalesTest, TotalLineAveragesTheMarginsAndVoidedOrdersCountOnRequest) {
  // 2 sold at 25.00 bought at 10.00 (60%); B-200: 4 at (20 - 4) / 4 = 4.00 bought at 3.00 (25%).
  EXPECT_EQ(Run(false),
            (Rows{{"A-100", "Brake pad", "2.00", "10.00", "25.00", "20.00", "50.00", "60.00", "Acme Parts"},
                  {"B-200", "Oil filter", "4.00", "3.00", "4.00", "12.00", "16.00", "25.00", "Best Filters"},
                  {"[b]TOTAL", "", "", "", "", "32.00", "66.00", "42.50", ""}}));
  // The voided order adds 4 B-200 at 6.00: 8 at 5.00 bought at 3.00 (40%).
  EXPECT_EQ(Run(true),
            (Rows{{"A-100", "Brake pad", "2.00", "10.00", "25.00", "20.00", "50.00", "60.00", "Acme Parts"},
                  {"B-200", "Oil filter", "8.00", "3.00", "5.00", "24.00", "40.00", "40.00", "Best Filters"},
                  {"[b]TOTAL", "", "", "", "", "44.00", "90.00", "50.00", ""}}));

  std::string part, desc, category, err;
  auto none =
      shop.engine().getPartsSalesPerformance("1/1/2020", "1/31/2020", part, desc, category, true, err);
  ASSERT_TRUE(none);
  EXPECT_EQ(none->RecordCount(), 0u);
  EXPECT_EQ(err, "0");
}

TEST_F(InventoryReportsTest, SupplierPurchasesOverTheRangeWithZeroForTheQuietOnes) {
  Purchases(1, {{"2024-03-01", "100"}, {"2024-03-31", "50.25"}, {"2024-04-01", "999"}});
  Purchases(2, {{"2024-03-15", "1200"}});
  Purchases(3, {{"2023-12-31", "70"}});
  std::string err;
  auto rs = shop.engine().GetSupplierExpenseSummary("3/1/2024", "3/31/2024", err);
  ASSERT_TRUE(rs);
  EXPECT_EQ(err, "0");
  EXPECT_EQ(test::Cells(*rs), (Rows{{"Acme Parts", "150.25"},
                                    {"Best Filters", "1,200.00"},
                                    {"Zed Supply", "0.00"},
                                    {"[b]TOTAL", "1,350.25"}}));

  // A supplier whose purchase table is missing stops the report with the database's text.
  shop.Insert("supplier", {{"supid", "4"}, {"company", "'No Table Co'"}});
  std::string status;
  EXPECT_THROW(shop.engine().GetSupplierExpenseSummary("3/1/2024", "3/31/2024", status), Error);
  EXPECT_NE(status.find("suph4"), std::string::npos) << status;
}

}  // namespace
}  // namespace ent
