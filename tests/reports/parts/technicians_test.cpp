// Technician performance and cost on a shop made by hand, for every combination of the switches,
// and the time clock in place of the lines' hourly pay.
#include <gtest/gtest.h>

#include "support/empty_shop.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Row = std::vector<std::string>;

class TechniciansTest : public ::testing::Test {
 protected:
  TechniciansTest() {
    // Dora has no mechanic row; Eve is no technician.
    shop.Insert("usertable", "UserID, FName, LName, usertype",
                {"'T1', 'Ann', 'Baker', 'Technician'", "'T2', 'Carl', 'Adams', 'Service Advisor/Technician'",
                 "'T3', 'Dora', 'Zeta', 'Technician'", "'T4', 'Eve', 'Young', 'Manager'"});
    shop.Insert("mechanic", "userid", {"'T1'", "'T2'", "'T4'"});
    // An invoice, a voided order, an estimate no longer pending, a pending one, a deleted invoice.
    shop.Insert("wo", "woid, invoiceid, estid, chkvoid, chkestpending, wodeleted, latestdate",
                {"1, 11, 0, 0, 0, 0, '2024-05-10'", "2, 0, 0, 1, 0, 0, '2024-05-11'",
                 "3, 0, 7, 0, 0, 0, '2024-05-12'", "4, 0, 8, 0, 1, 0, '2024-05-13'",
                 "5, 12, 0, 0, 0, 1, '2024-05-14'"});
    // Ann's lines: parts, labour, other, levy, discounts; hours, hourly, flat-rate and commissions.
    // Line 5 was skipped, line 6 is inside a package, line 7 is its header.
    shop.Insert("woparts",
                "wopartsid, woid, invoiceid, estid, mechuserid, totparts, labour, otherchgdo, "
                "levyItemAmount, discpart, "
                "disclab, hrs, MECHHOURLYTOT, mechflatrateTot, mechpartstot, mechlabtot, presetpkg, "
                "presetheader, skip",
                {"1, 1, 11, 0, 'T1', 100, 50, 10, 5, 20, 5, 2, 40, 15, 10, 5, 0, 0, 'No'",
                 "2, 2, 0, 0, 'T1', 30, 0, 0, 0, 0, 0, 1, 20, 0, 0, 0, 0, 0, 'No'",
                 "3, 3, 0, 7, 'T1', 7, 0, 0, 0, 0, 0, 0.5, 10, 0, 0, 0, 0, 0, 'No'",
                 "4, 4, 0, 8, 'T1', 1000, 0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 'No'",
                 "5, 1, 11, 0, 'T1', 500, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'Yes'",
                 "6, 1, 11, 0, 'T1', 300, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 'No'",
                 "7, 1, 11, 0, 'T1', 3, 0, 0, 0, 0, 0, 0, 0, 6, 0, 0, 1, 1, 'No'",
                 "8, 5, 12, 0, 'T1', 900, 0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 'No'"});
  }

  test::EmptyShop shop;
};

TEST_F(TechniciansTest, CostFromTheLinesOrFromTheTimeClock) {
  // Ann: 3 h at 25 on the invoice, clocked before the range (the invoice date counts); 2 h at 30 on
  // the voided order in the range, 5 h on it after the range; 1 h on the deleted invoice. Carl, who
  // has no lines, 1 h at 20 on the invoice; his hour on a credit invoice never counts.
  shop.Insert("wo", "woid, invoiceid, credid, estid, chkvoid, chkestpending, wodeleted, latestdate",
              {"6, 0, 21, 0, 0, 0, 0, '2024-05-15'"});
  shop.Insert("timeclock", "timeclockid, woid, userid, thedate, hrs, thehourlyrate",
              {"1, 1, 'T1', '2024-04-30', 3, 25", "2, 2, 'T1', '2024-05-11', 2, 30",
               "3, 2, 'T1', '2024-06-15', 5, 30", "4, 5, 'T1', '2024-05-14', 1, 30",
               "5, 1, 'T2', '2024-05-10', 1, 20", "6, 6, 'T2', '2024-05-15', 1, 20"});
  // Ann's hours, hourly pay and total; her flat-rate, parts and labour commissions are the same
  // throughout.
  struct Case {
    bool not_pending, voided, clock;
    std::string hours, hourly, total;
    Row carl;
  };
  const Row carl_idle = {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"};
  const Row carl_clocked = {"Carl", "Adams", "1.00", "20.00", "0.00", "0.00", "0.00", "20.00"};
  // With voided orders, a technician without lines keeps his hours and hourly cells empty.
  const Row carl_clocked_voided = {"Carl", "Adams", "", "", "0.00", "0.00", "0.00", "20.00"};
  const Case cases[] = {
      {false, false, false, "2.00", "40.00", "76.00", carl_idle},
      {false, true, false, "3.00", "60.00", "96.00", carl_idle},
      {true, false, false, "2.50", "50.00", "86.00", carl_idle},
      {true, true, false, "3.50", "70.00", "106.00", carl_idle},
      // The clock's pay replaces the lines' hourly pay: 76 - 40 + 75.
      {false, false, true, "3.00", "75.00", "111.00", carl_clocked},
      // Voided orders count on the clock by the clock's date: 96 - 60 + 75 + 60.
      {false, true, true, "5.00", "135.00", "171.00", carl_clocked_voided},
      {true, false, true, "3.00", "75.00", "111.00", carl_clocked},
      {true, true, true, "5.00", "135.00", "171.00", carl_clocked_voided},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.not_pending) + std::to_string(c.voided) + std::to_string(c.clock));
    const Row ann = {"Ann", "Baker", c.hours, c.hourly, "21.00", "10.00", "5.00", c.total};
    std::string err;
    auto rs = shop.engine().getTechCost("5/1/2024", "5/31/2024", c.not_pending, c.voided, c.clock, err);
    ASSERT_TRUE(rs);
    EXPECT_EQ(err, "0");
    // The list has no order of its own; the total line comes last and adds up, empty cells as nothing.
    std::vector<Row> rows = test::Cells(rs.get());
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0][1] == "Baker" ? rows[0] : rows[1], ann);
    EXPECT_EQ(rows[0][1] == "Baker" ? rows[1] : rows[0], c.carl);
    EXPECT_EQ(rows[2][0], "[b]TOTAL");
    for (size_t column = 2; column < 8; ++column)
      EXPECT_DOUBLE_EQ(std::stod(rows[2][column]),
                       std::stod(ann[column]) + (c.carl[column].empty() ? 0 : std::stod(c.carl[column])));
  }
}

}  // namespace
}  // namespace ent
