// Inventory value, inventory list, parts sales performance and purchases per supplier on a shop made
// by hand, with figures worked out on paper.
#include <gtest/gtest.h>

#include "support/empty_shop.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class InventoryReportsTest : public ::testing::Test {
 protected:
  InventoryReportsTest() {
    shop.Insert("supplier", "supid, company", {"1, 'Acme Parts'", "2, 'Best Filters'", "3, 'Zed Supply'"});
    // D-400 lies in A5 but has no supplier row.
    shop.Insert(
        "inventory",
        "invid, partnum, Description, Category, Manufacturer, Location, supid, QOH, LastList, LastCost",
        {"1, 'A-100', 'Brake pad', 'Brakes', 'Acme', 'A1', 1, 4, 25, 10",
         "2, 'B-200', 'Oil filter', 'Filters', 'Acme', 'B2', 2, 10, 8, 3",
         "3, 'C-300', 'Returned pad', 'Brakes', 'Acme', 'A9', 1, 0, 5, 2",
         "4, 'D-400', 'Orphan', 'Brakes', 'Acme', 'A5', 99, 1, 1, 1"});
    // Stock brought in counts; a return and a zero-quantity transaction do not.
    shop.Insert("invtrans", "invtransid, invid, qty, costea, coresea",
                {"1, 1, 2, 10, 1.5", "2, 1, 3, 9, 0", "3, 1, -1, 10, 0", "4, 2, 10, 3, 0", "5, 3, -2, 2, 0",
                 "6, 3, 0, 2, 0"});
  }

  test::EmptyShop shop;
};

TEST_F(InventoryReportsTest, InventoryListFiltersOnLocationAndNeedsASupplier) {
  std::string part, desc, category, supplier, location = "A%", err;
  auto rs = shop.engine().getInvList(part, desc, category, supplier, location, err);
  ASSERT_TRUE(rs) << err;
  EXPECT_EQ(err, "0");
  EXPECT_EQ(test::Cells(rs.get()),
            (Rows{{"A-100", "Brake pad", "Acme", "A1", "Acme Parts", "Brakes", "25.00", "10.00", "4.00"},
                  {"C-300", "Returned pad", "Acme", "A9", "Acme Parts", "Brakes", "5.00", "2.00", "0.00"},
                  {"[b]TOTAL", "", "", "", "", "", "30.00", "12.00", "4.00"}}));

  // A quote in a filter is a character to match, not the end of the SQL text.
  std::string quoted = "O'Brien%";
  auto no_match = shop.engine().getInvList(part, quoted, category, supplier, location, err);
  ASSERT_TRUE(no_match) << err;
  EXPECT_EQ(no_match->RecordCount(), 0u);
}

TEST_F(InventoryReportsTest, PartsSalesAverageTheMarginsAndCountVoidedOrdersOnRequest) {
  // Order 2 is voided and was never invoiced; order 3 falls outside the range; order 4 was deleted.
  shop.Insert("wo", "woid, invoiceid, chkvoid, latestdate, wodeleted",
              {"1, 11, 0, '2024-05-10', 0", "2, 0, 1, '2024-05-12', 0", "3, 12, 0, '2024-07-01', 0",
               "4, 13, 0, '2024-05-20', 1"});
  // Line 4 has quantity 0, line 5 was skipped; line 1 carries a core charge of 2.
  shop.Insert("woparts",
              "wopartsid, woid, invoiceid, invinvid, qty, invcost, invcorecost, totparts, discpart, skip",
              {"1, 1, 11, 1, 2, 20, 2, 50, 0, 'No'", "2, 1, 11, 2, 4, 12, 0, 20, 4, 'No'",
               "3, 2, 0, 2, 4, 12, 0, 24, 0, 'No'", "4, 1, 11, 1, 0, 5, 0, 9, 0, 'No'",
               "5, 1, 11, 1, 1, 10, 0, 100, 0, 'Yes'", "6, 3, 12, 1, 1, 10, 0, 30, 0, 'No'",
               "7, 4, 13, 1, 3, 30, 0, 90, 0, 'No'"});
  auto run = [&](bool voided) {
    std::string part, desc, category, err;
    auto rs =
        shop.engine().getPartsSalesPerformance("5/1/2024", "5/31/2024", part, desc, category, voided, err);
    EXPECT_EQ(err, "0");
    return test::Cells(rs.get());
  };
  // 2 sold at 25.00 bought at 10.00 plus 1.00 of core charge (56%); B-200: 4 at (20 - 4) / 4 = 4.00
  // bought at 3.00 (25%).
  EXPECT_EQ(run(false),
            (Rows{{"A-100", "Brake pad", "2.00", "11.00", "25.00", "20.00", "50.00", "56.00", "Acme Parts"},
                  {"B-200", "Oil filter", "4.00", "3.00", "4.00", "12.00", "16.00", "25.00", "Best Filters"},
                  {"[b]TOTAL", "", "", "", "", "32.00", "66.00", "40.50", ""}}));
  // The voided order adds 4 B-200 at 6.00: 8 at 5.00 bought at 3.00 (40%).
  EXPECT_EQ(run(true),
            (Rows{{"A-100", "Brake pad", "2.00", "11.00", "25.00", "20.00", "50.00", "56.00", "Acme Parts"},
                  {"B-200", "Oil filter", "8.00", "3.00", "5.00", "24.00", "40.00", "40.00", "Best Filters"},
                  {"[b]TOTAL", "", "", "", "", "44.00", "90.00", "48.00", ""}}));
}

}  // namespace
}  // namespace ent
