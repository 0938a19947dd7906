#include <gtest/gtest.h>

#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using V = std::vector<std::string>;

TEST(GeneralMargin, TotalLineMarginsAreWeightedByTheAmounts) {
  test::SalesShop shop;
  // Parts 100.00 at 50 %, labour 200.00 at 60 %, other charges 10.00 at 100 %, total 310.00 at 40 %.
  shop.WorkOrder(1, 101, 0, "3/5/2024",
                 {{"screenparts", "100"},
                  {"txtPartPERmargin", "50"},
                  {"screenlabour", "200"},
                  {"txtLabourPERmargin", "60"},
                  {"screenother", "10"},
                  {"txtOtherPERmargin", "100"},
                  {"screensubtotal", "310"},
                  {"txtTotalPERmargin", "40"}});
  // Parts 300.00 (280.00 after a 20.00 discount) at 10 %, levy 5.00, total 285.00 at 10 % of 280.00.
  shop.WorkOrder(2, 102, 0, "3/4/2024",
                 {{"screenparts", "280"},
                  {"screentotpartsdisc", "20"},
                  {"txtPartPERmargin", "10"},
                  {"screenlevy", "5"},
                  {"screensubtotal", "285"},
                  {"txtTotalPERmargin", "10"}});
  shop.WorkOrder(3, 103, 0, "3/6/2024", {{"screenparts", "999"}, {"wodeleted", "1"}});

  std::string status;
  auto rs = test::Held(shop.engine().getGenMargReport("3/1/2024", "3/31/2024", status));
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "RO_Date"), (V{"03/04/2024", "03/05/2024", "[b]TOTAL"}));
  EXPECT_EQ(test::Column(*rs, "Parts"), (V{"300.00", "100.00", "400.00"}));
  EXPECT_EQ(test::Column(*rs, "Discount"), (V{"20.00", "0.00", "20.00"}));
  // Parts: 100 - (270 + 50) / 400 * 100; labour: 100 - 80 / 200 * 100; other: no cost;
  // total: 100 - (252 + 186) / 595 * 100.
  EXPECT_EQ(test::Column(*rs, "Parts_Margin"), (V{"10.00", "50.00", "20.00"}));
  EXPECT_EQ(test::Column(*rs, "Labor_Margin"), (V{"0.00", "60.00", "60.00"}));
  EXPECT_EQ(test::Column(*rs, "Other_Charges_Margin"), (V{"0.00", "100.00", "100.00"}));
  EXPECT_EQ(test::Column(*rs, "Total"), (V{"285.00", "310.00", "595.00"}));
  EXPECT_EQ(test::Column(*rs, "Total_Margin"), (V{"10.00", "40.00", "26.39"}));
}

TEST(MarginByMake, MakesRankedByProfitMargin) {
  test::SalesShop shop;
  int vehicle = 1;
  for (const char* make : {"'FORD'", "'HONDA'", "'FORD'", "'KIA'"})
    shop.Insert("vehicle", {{"vehid", std::to_string(vehicle++)}, {"Make", make}});
  auto invoice = [&](int woid, int vehid, const char* subtotal, const char* profit, const char* parts) {
    shop.WorkOrder(woid, 100 + woid, 0, "3/5/2024",
                   {{"vehid", std::to_string(vehid)},
                    {"screensubtotal", subtotal},
                    {"txtTotalDolMargin", profit},
                    {"screenparts", parts}});
  };
  invoice(1, 1, "100", "30", "100");
  invoice(2, 3, "200", "90", "1200");
  invoice(3, 2, "50", "25", "50");
  invoice(4, 4, "0", "0", "0");
  invoice(5, 0, "1000", "900", "1000");  // no vehicle: left out

  std::string status;
  auto rs = shop.engine().getMarginByMake("3/1/2024", "3/31/2024", status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "Make"), (V{"HONDA", "FORD", "KIA", "[b]TOTAL"}));
  EXPECT_EQ(test::Column(*rs, "Total_Parts"), (V{"50.00", "1,300.00", "0.00", "1,350.00"}));
  EXPECT_EQ(test::Column(*rs, "Sub_Total"), (V{"50.00", "300.00", "0.00", "350.00"}));
  EXPECT_EQ(test::Column(*rs, "Profit"), (V{"25.00", "120.00", "0.00", "145.00"}));
  EXPECT_EQ(test::Column(*rs, "Profit_Margin"), (V{"50.00", "40.00", "0.00", "41.43"}));

  rs = shop.engine().getMarginByMake("1/1/2020", "1/31/2020", status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->RecordCount(), 0u);
}

}  // namespace
}  // namespace ent
