#include <gtest/gtest.h>

#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using V = std::vector<std::string>;

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

}  // namespace
}  // namespace ent
