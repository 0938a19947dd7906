// Parts gross profit on a shop made by hand: which lines are listed, the unit cost, and the margin
// of the sales-class pricing band at its edges.
#include <gtest/gtest.h>

#include "support/empty_shop.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

const char kLineColumns[] =
    "wopartsid, woid, credid, description, qty, invcost, partsea, totparts, margpartsper, invsupid, "
    "SalesClass, "
    "presetjobid, presetpkg, presetheader, skip";

class PartsGrossProfitTest : public ::testing::Test {
 protected:
  PartsGrossProfitTest() {
    shop.Insert("supplier", "supid, company", {"1, 'Acme Parts'"});
    shop.Insert("jobheader", "jobid, jobnum", {"7, ' J-7 '"});
    shop.Insert("SalesClassInventoryIndexPricing", "pricingid, salesclass, CostFrom, CostTo, profitMargin",
                {"1, 'BRAKES', 0, 10, 40", "2, 'BRAKES', 10.01, 50, 30", "3, 'OIL', 1, 100, 20"});
    shop.Insert("wo", "woid, invoiceid, credid, stateandnumber, latestdate",
                {"1, 11, 0, 'ON-11', '2024-05-10'", "2, 0, 5, 'CR-5', '2024-05-20'",
                 "3, 12, 0, 'ON-12', '2024-06-01'"});
  }
  Rows Run(const std::string& from, const std::string& to, std::string& err) {
    auto rs = shop.engine().getPartsGPReport(from, to, err);
    return rs ? test::Cells(rs.get()) : Rows{{"<none>"}};
  }

  test::EmptyShop shop;
};

TEST_F(PartsGrossProfitTest, ListsInvoiceLinesWithACostAndEveryCreditLine) {
  shop.Insert("woparts", kLineColumns,
              {"1, 1, 0, 'Brake pad', 2, 20, 25, 50, 60, 1, 'BRAKES', 7, 0, 0, 'No'",
               // Unit cost 10.01 opens the second band; supplier 99 has no row.
               "2, 1, 0, 'Rotor', 1, 10.01, 15, 15, 33.27, 99, 'BRAKES', 0, 0, 0, 'No'",
               "3, 1, 0, 'Free sample', 1, 0, 0, 0, 0, 1, 'BRAKES', 0, 0, 0, 'No'",
               // Quantity 0: unit cost 0.00, below the only OIL band; the class is listed trimmed.
               "4, 1, 0, 'Zero qty', 0, 5, 9, 0, 0, 1, 'OIL  ', 0, 0, 0, 'No'",
               "5, 1, 0, 'Kit bolt', 1, 5, 0, 0, 0, 1, 'BRAKES', 0, 1, 0, 'No'",
               "6, 1, 0, 'Brake kit', 1, 30, 60, 60, 50, 1, 'BRAKES', 7, 1, 1, 'No'",
               "7, 2, 5, 'Returned pad', 1, 0, 25, -25, 0, 1, 'BRAKES', 0, 0, 0, 'No'",
               "8, 1, 0, 'Skipped', 1, 10, 0, 0, 0, 1, 'BRAKES', 0, 0, 0, 'Yes'",
               "9, 3, 0, 'Next month', 1, 10, 0, 0, 0, 1, 'BRAKES', 0, 0, 0, 'No'"});
  std::string err;
  EXPECT_EQ(Run("5/1/2024", "5/31/2024", err),
            (Rows{{"ON-11", "5/10/2024", "Brake pad", "10.00", "25.00", "2.00", "50.00", "60.00", "40.00",
                   "Acme Parts", "BRAKES", "J-7"},
                  {"ON-11", "5/10/2024", "Rotor", "10.01", "15.00", "1.00", "15.00", "33.27", "30.00", "",
                   "BRAKES", ""},
                  {"ON-11", "5/10/2024", "Zero qty", "0.00", "9.00", "0.00", "0.00", "0.00", "0.00",
                   "Acme Parts", "OIL", ""},
                  {"ON-11", "5/10/2024", "Brake kit", "30.00", "60.00", "1.00", "60.00", "50.00", "30.00",
                   "Acme Parts", "BRAKES", "J-7"},
                  {"CR-5", "5/20/2024", "Returned pad", "0.00", "25.00", "1.00", "-25.00", "0.00", "40.00",
                   "Acme Parts", "BRAKES", ""},
                  {"[b]TOTAL", "", "", "50.01", "134.00", "5.00", "100.00", "", "", "", "", ""}}));
  EXPECT_EQ(err, "0");

  auto empty = shop.engine().getPartsGPReport("1/1/2020", "1/31/2020", err);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->fields().size(), 12u);
  EXPECT_EQ(empty->RecordCount(), 0u);
}

TEST_F(PartsGrossProfitTest, NullsReadAsEmptyAndOverlongValuesStayWhole) {
  shop.Insert("woparts", kLineColumns, {"1, 1, 0, null, 1, 3, 0, 0, 0, 1, 'BRAKES', 0, 0, 0, 'No'"});
  std::string err;
  // A null reads as the empty text.
  const Rows with_null = Run("5/1/2024", "5/31/2024", err);
  ASSERT_EQ(with_null.size(), 2u);
  EXPECT_EQ(with_null[0][2], "");
  EXPECT_EQ(err, "0");

  // A long value is kept whole.
  shop.Exec("update woparts set description = '" + std::string(51, 'x') + "'");
  EXPECT_EQ(Run("5/1/2024", "5/31/2024", err)[0][2], std::string(51, 'x'));
  EXPECT_EQ(err, "0");

  // A quote in a date stays inside the SQL literal, which then is no date.
  EXPECT_EQ(Run("5/1/2024' or 1=1 --", "5/31/2024", err), (Rows{{"<none>"}}));
  EXPECT_EQ(err, "Conversion failed when converting date and/or time from character string.");
}

}  // namespace
}  // namespace ent
