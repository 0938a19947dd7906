#include <gtest/gtest.h>

#include "common/error.h"
#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

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
