#include <gtest/gtest.h>

#include "common/error.h"
#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using V = std::vector<std::string>;
using Row = std::map<std::string, std::string>;

// Units, sales, cost and margin of one period ("", "_MTD", "_YTD") of the row labelled `label`.
V Period(Recordset& rs, const std::string& label, const std::string& suffix) {
  Row row = test::RowOf(rs, label);
  return {row["Units" + suffix], row["Sales" + suffix], row["Cost" + suffix], row["Margin" + suffix]};
}

class DailyRecap : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* c : {"'OIL'", "'Unclassified'", "' tire labour '", "'TIRE LABOUR.'", "'GDYR PASS'"})
      shop_.SalesClass(c);
    const char* dates[] = {"12/31/2023", "1/1/2024", "2/10/2024", "3/1/2024", "3/15/2024"};
    for (int i = 0; i < 5; ++i) shop_.WorkOrder(i + 1, 100 + i, 0, dates[i]);
    shop_.Line(1, {{"SalesClass", "'OIL'"}, {"qty", "10"}, {"totparts", "100"}, {"invcost", "40"}});
    // New Year's day: parts (with the mechanics' parts in the cost), an other charge, labour without
    // a class, tire labour filed two ways and a tire sold for nothing.
    shop_.Line(2, {{"SalesClass", "'OIL'"},
                   {"qty", "2"},
                   {"totparts", "22"},
                   {"discpart", "2"},
                   {"invcost", "6"},
                   {"mechpartstot", "2"}});
    shop_.Line(
        2, {{"SalesClass", "'OIL'"}, {"otherchargeid", "3"}, {"otherchargeamt", "5"}, {"othCHRGcost", "5"}});
    shop_.Line(2, {{"SalesClass", "''"}, {"hrs", "1.5"}, {"labour", "90"}, {"mechlabtot", "30"}});
    shop_.Line(2, {{"SalesClass", "' tire labour '"}, {"hrs", "1"}, {"labour", "40"}});
    shop_.Line(2, {{"SalesClass", "'TIRE LABOUR.'"}, {"hrs", "1"}, {"labour", "10"}});
    shop_.Line(2, {{"SalesClass", "'GDYR PASS'"}, {"qty", "1"}, {"invcost", "15"}});
    shop_.Line(2, {{"SalesClass", "'OIL'"}, {"qty", "50"}, {"totparts", "500"}, {"skip", "'Yes'"}});
    for (int wo : {3, 4, 5})
      shop_.Line(wo, {{"SalesClass", "'OIL'"}, {"qty", "1"}, {"totparts", "10"}, {"invcost", "4"}});
  }
  std::unique_ptr<Recordset> Run(const std::string& day, bool summary) {
    std::string status;
    auto rs = shop_.engine().getDailySalesRecap(day, summary, status);
    EXPECT_EQ(status, "0");
    return rs;
  }
  test::SalesShop shop_;
};

TEST_F(DailyRecap, NewYearsDayIsItsOwnMonthAndYear) {
  auto rs = Run("1/1/2024", false);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->fields().size(), 13u);
  EXPECT_EQ(rs->RecordCount(), 6u);  // five classes and the total line, no summary
  for (const char* period : {"", "_MTD", "_YTD"}) {
    SCOPED_TRACE(period);
    EXPECT_EQ(Period(*rs, "OIL", period), (V{"3.00", "25.00", "13.00", "48.00"}));
  }
  EXPECT_EQ(Period(*rs, "Unclassified", "_YTD"), (V{"1.50", "90.00", "30.00", "66.67"}));
  EXPECT_EQ(Period(*rs, "GDYR PASS", ""), (V{"1.00", "0.00", "15.00", "0.00"}));  // no sales, no margin
  EXPECT_EQ(Period(*rs, "[b]TOTAL", ""), (V{"7.50", "165.00", "58.00", "64.85"}));
  EXPECT_EQ(Period(*rs, "[b]TOTAL", "_YTD"), (V{"7.50", "165.00", "58.00", "64.85"}));
  EXPECT_EQ(test::Column(*rs, "Sales_Class").back(), "[b]TOTAL");
}

TEST_F(DailyRecap, MonthAndYearToDate) {
  auto rs = Run("3/15/2024", false);
  ASSERT_TRUE(rs);
  EXPECT_EQ(Period(*rs, "OIL", ""), (V{"1.00", "10.00", "4.00", "60.00"}));
  EXPECT_EQ(Period(*rs, "OIL", "_MTD"), (V{"2.00", "20.00", "8.00", "60.00"}));
  EXPECT_EQ(Period(*rs, "OIL", "_YTD"), (V{"6.00", "55.00", "25.00", "54.55"}));
  EXPECT_EQ(Period(*rs, " tire labour ", ""), (V{"0.00", "0.00", "0.00", "0.00"}));
  EXPECT_EQ(Period(*rs, " tire labour ", "_YTD"), (V{"1.00", "40.00", "0.00", "100.00"}));
}

TEST_F(DailyRecap, FinalSummaryByCategory) {
  auto rs = Run("1/1/2024", true);
  ASSERT_TRUE(rs);
  const V labels = test::Column(*rs, "Sales_Class");
  ASSERT_EQ(labels.size(), 14u);
  EXPECT_EQ(V(labels.begin() + 5, labels.end()), (V{"[b]TOTAL", "", "[b]FINAL SUMMARY", "TIRES", "PARTS",
                                                    "LABOUR", "WHEELS", "OTHER", "[b]GRAND TOTAL"}));
  EXPECT_EQ(Period(*rs, "", ""), (V{"", "", "", ""}));

  EXPECT_EQ(Period(*rs, "TIRES", ""), (V{"1.00", "0.00", "15.00", "0.00"}));
  EXPECT_EQ(Period(*rs, "PARTS", "_MTD"), (V{"3.00", "25.00", "13.00", "48.00"}));
  // " tire labour " is tire labour; "TIRE LABOUR." is not.
  EXPECT_EQ(Period(*rs, "LABOUR", ""), (V{"1.00", "40.00", "0.00", "100.00"}));
  EXPECT_EQ(Period(*rs, "OTHER", ""), (V{"2.50", "100.00", "30.00", "70.00"}));
  for (const char* period : {"", "_MTD", "_YTD"})
    EXPECT_EQ(Period(*rs, "[b]GRAND TOTAL", period), (V{"7.50", "165.00", "58.00", "64.85"}));
}

TEST(DailyRecapEdges, EmptyPricingTableAndUnreadableDay) {
  test::SalesShop shop;
  std::string status;
  auto rs = shop.engine().getDailySalesRecap("1/1/2024", true, status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->fields().size(), 13u);
  EXPECT_EQ(rs->RecordCount(), 0u);

  status.clear();
  EXPECT_THROW(shop.engine().getDailySalesRecap("yesterday", false, status), Error);
  EXPECT_EQ(status, "");

  shop.SalesClass("'OIL'");
  shop.db().Exec("drop table woparts");
  EXPECT_FALSE(shop.engine().getDailySalesRecap("1/1/2024", false, status));
  EXPECT_EQ(status, "424 - no such table: woparts");
}

}  // namespace
}  // namespace ent
