#include <gtest/gtest.h>

#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using V = std::vector<std::string>;

TEST(SalesComparison, TwoRangesAndANegativeDifference) {
  test::SalesShop shop;
  shop.WorkOrder(1, 101, 0, "1/10/2024", {{"screensubtotal", "100"}});
  shop.WorkOrder(2, 102, 0, "1/20/2024", {{"screensubtotal", "50.25"}});
  shop.WorkOrder(3, 103, 0, "1/21/2024", {{"screensubtotal", "999"}, {"wodeleted", "1"}});
  shop.WorkOrder(4, 0, 0, "1/22/2024", {{"screensubtotal", "999"}});  // not invoiced
  shop.WorkOrder(5, 104, 0, "2/10/2024", {{"screensubtotal", "1300"}});
  shop.WorkOrder(6, 0, 7, "2/11/2024", {{"screensubtotal", "-20"}});  // credit invoice

  std::string status;
  auto rs = shop.engine().getSalesComp("1/1/2024", "1/31/2024", "2/1/2024", "2/29/2024", status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->RecordCount(), 1u);
  EXPECT_EQ(test::Column(*rs, "Total_Sales_1"), V{"150.25"});
  EXPECT_EQ(test::Column(*rs, "Total_Sales_2"), V{"1,280.00"});
  EXPECT_EQ(test::Column(*rs, "Difference"), V{"-1,129.75"});

  rs = shop.engine().getSalesComp("1/1/2020", "1/31/2020", "2/1/2020", "2/29/2020", status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::RowOf(*rs, "0.00"),
            (std::map<std::string, std::string>{
                {"Total_Sales_1", "0.00"}, {"Total_Sales_2", "0.00"}, {"Difference", "0.00"}}));
}

TEST(CarCount, EightKindsOfInvoices) {
  test::SalesShop shop;
  // Emission test at the reduced price, with two test lines and a drive-clean line.
  shop.WorkOrder(1, 201, 0, "3/5/2024", {{"screensubtotal", "17.5"}, {"screentotal", "19.78"}});
  shop.Line(1, {{"SalesClass", "'EMISSION TESTS'"}});
  shop.Line(1, {{"SalesClass", "'EMISSION TESTS'"}});
  shop.Line(1, {{"SalesClass", "'OTHER'"}, {"description", "'DRIVE-CLEAN CERTIFICATE'"}});
  // Emission test at the full price; its skipped test line does not count.
  shop.WorkOrder(2, 202, 0, "3/6/2024", {{"screensubtotal", "40"}, {"screentotal", "45.20"}});
  shop.Line(2, {{"SalesClass", "'EMISSION TESTS'"}});
  shop.Line(2, {{"SalesClass", "'EMISSION TESTS'"}, {"skip", "'Yes'"}});
  // An invoice of nothing.
  shop.WorkOrder(3, 203, 0, "3/7/2024");
  shop.Line(3, {{"SalesClass", "'OIL'"}});
  // A credit invoice with a drive-clean line; a deleted credit invoice; a deleted invoice.
  shop.WorkOrder(4, 0, 9, "3/8/2024", {{"screentotal", "-10"}});
  shop.Line(4, {{"SalesClass", "'OTHER'"}, {"description", "'drive clean refund'"}});
  shop.WorkOrder(5, 0, 10, "3/8/2024", {{"wodeleted", "1"}});
  shop.WorkOrder(6, 204, 0, "3/9/2024", {{"wodeleted", "1"}, {"screensubtotal", "35"}});
  shop.Line(6, {{"SalesClass", "'EMISSION TESTS'"}});
  // Out of range.
  shop.WorkOrder(7, 205, 0, "4/1/2024", {{"screensubtotal", "35"}});
  shop.Line(7, {{"SalesClass", "'EMISSION TESTS'"}});

  std::string status;
  auto rs = shop.engine().getCarCount("3/1/2024", "3/31/2024", status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "Invoice_Type"),
            (V{"Invoices", "Zero Invoices", "Drive Clean", "Emissions Test", "Emissions Test 2",
               "Credit Invoices", "Emissions Test New", "Emissions Test 2 New"}));
  EXPECT_EQ(test::Column(*rs, "Count"), (V{"3", "1", "2", "3", "2", "2", "2", "1"}));

  rs = shop.engine().getCarCount("1/1/2020", "1/31/2020", status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "Count"), V(8, "0"));
}

TEST(SalesComparison, AMissingTableBecomesTheStatus) {
  test::SalesShop shop;
  shop.db().Exec("drop table wo");
  std::string status;
  EXPECT_FALSE(shop.engine().getSalesComp("1/1/2024", "1/31/2024", "2/1/2024", "2/29/2024", status));
  EXPECT_EQ(status, "no such table: wo");
  EXPECT_FALSE(shop.engine().getCarCount("1/1/2024", "1/31/2024", status));
  EXPECT_EQ(status, "no such table: wo");
}

}  // namespace
}  // namespace ent
