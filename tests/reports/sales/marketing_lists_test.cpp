#include <gtest/gtest.h>

#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using V = std::vector<std::string>;

// Four customers, each with one vehicle (vehid = cusid + 10); Cy does not accept marketing mail.
class MarketingLists : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* names[] = {"'Ann'", "'Bob'", "'Cy'", "'Dee'"};
    const char* years[] = {"2010", "2004", "2015", "2020"};
    for (int c = 1; c <= 4; ++c) {
      shop_.Insert("customer", {{"cusid", std::to_string(c)},
                                {"fname", names[c - 1]},
                                {"lname", "'  Smith  '"},
                                {"city", "'Barrie'"},
                                {"chksolicit", c == 3 ? "0" : "1"}});
      shop_.Insert("vehicle", {{"vehid", std::to_string(c + 10)},
                               {"cusid", std::to_string(c)},
                               {"Year", years[c - 1]},
                               {"Make", "'FORD'"},
                               {"Plate", "'P" + std::to_string(c) + "'"}});
    }
    shop_.Insert("jobheader", {{"jobid", "1"}, {"jobnum", "'LOFGTX-HO'"}});
    shop_.Insert("jobheader", {{"jobid", "2"}, {"jobnum", "'BRAKE-FRT'"}});
  }
  // An invoice of a customer's vehicle with lines of the given preset jobs (0: no job).
  void Visit(int woid, int cusid, const std::string& date, std::vector<int> jobs,
             std::map<std::string, std::string> more = {}) {
    more["cusid"] = std::to_string(cusid);
    more["vehid"] = std::to_string(cusid + 10);
    shop_.WorkOrder(woid, 300 + woid, 0, date, more);
    for (int job : jobs) shop_.Line(woid, {{"presetjobid", std::to_string(job)}});
  }
  void Postcards() {
    Visit(1, 1, "2/1/2024", {1});  // Ann's oil change ...
    Visit(5, 1, "8/1/2024", {1});  // ... and her next one
    Visit(2, 2, "3/1/2024", {1});  // Bob's oil change; he came back for brakes only
    Visit(6, 2, "9/1/2024", {2});
    Visit(3, 3, "3/5/2024", {1});     // Cy takes no mail
    Visit(4, 4, "4/1/2024", {2, 0});  // Dee: brakes, then an oil change with brakes
    Visit(7, 4, "5/1/2024", {1, 2});
  }
  test::SalesShop shop_;
};

TEST_F(MarketingLists, OilChangeReminders) {
  Postcards();
  std::string status;
  auto rs = shop_.engine().getPostCardLOF("1/1/2024", "6/30/2024", "7/1/2024", "12/31/2024", status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->fields().size(), 11u);
  EXPECT_EQ(test::Column(*rs, "First_Name"), (V{"Bob", "Dee"}));
  EXPECT_EQ(test::Column(*rs, "Last_Name"), (V{"Smith", "Smith"}));  // trimmed
  EXPECT_EQ(test::Column(*rs, "Invoice_Date"), (V{"3/1/2024", "5/1/2024"}));
  EXPECT_EQ(test::Column(*rs, "Job_Number"), (V{"LOFGTX-HO", "LOFGTX-HO"}));

  // Nobody came back: every consenting customer with an oil change is listed.
  rs = shop_.engine().getPostCardLOF("1/1/2024", "6/30/2024", "1/1/2030", "12/31/2030", status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "First_Name"), (V{"Ann", "Bob", "Dee"}));

  // No oil changes in the first range: nothing, and no failure.
  rs = shop_.engine().getPostCardLOF("1/1/2020", "6/30/2020", "7/1/2024", "12/31/2024", status);
  EXPECT_FALSE(rs);
  EXPECT_EQ(status, "0");
}

TEST_F(MarketingLists, PostcardsWithoutOilChange) {
  Postcards();
  std::string status;
  auto rs = shop_.engine().getPostcardNONLOF("1/1/2024", "6/30/2024", "7/1/2024", "12/31/2024", status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->fields().size(), 10u);
  // Invoices with an oil change are out (Ann, Bob, Dee's second), and so are vehicles back in the
  // second range (Ann, Bob); Dee's brake invoice stays.
  EXPECT_EQ(test::Column(*rs, "First_Name"), V{"Dee"});
  EXPECT_EQ(test::Column(*rs, "Invoice_Date"), V{"4/1/2024"});

  rs = shop_.engine().getPostcardNONLOF("1/1/2024", "6/30/2024", "1/1/2030", "12/31/2030", status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "Invoice_Date"), V{"4/1/2024"});
}

TEST_F(MarketingLists, LoyalCustomers) {
  auto visit = [&](int woid, int cusid, const std::string& date, const char* subtotal,
                   std::map<std::string, std::string> more = {}) {
    more["screensubtotal"] = subtotal;
    more["screentotal"] = std::to_string(std::stod(subtotal) + 10);
    Visit(woid, cusid, date, {}, more);
  };
  visit(1, 1, "2/1/2024", "60");  // Ann: two invoices, 110.00
  visit(2, 1, "3/1/2024", "50");
  visit(3, 1, "3/2/2024", "1000", {{"wodeleted", "1"}});
  for (int i = 0; i < 3; ++i) visit(4 + i, 2, "4/1/2024", "100");  // Bob's vehicle is too old
  visit(7, 3, "4/1/2024", "40");                                   // Cy: 80.00 is not enough
  visit(8, 3, "4/2/2024", "40");
  visit(9, 4, "5/1/2024", "500");  // Dee: one invoice and a credit invoice from long ago
  shop_.WorkOrder(10, 0, 5, "5/1/2019",
                  {{"cusid", "4"}, {"vehid", "14"}, {"screensubtotal", "-100"}, {"screentotal", "-90"}});

  std::string status;
  auto rs =
      shop_.engine().getLoyaltyReport("1/1/2024", "12/31/2024", 2, Currency::FromInt(100), 2005, status);
  EXPECT_EQ(status, "0");
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "First_Name"), (V{"Ann", "Dee", "<null>"}));
  EXPECT_EQ(test::Column(*rs, "Company"), (V{"", "", "[b]TOTAL"}));
  EXPECT_EQ(test::Column(*rs, "Invoice_Count"), (V{"2", "2", "<null>"}));
  EXPECT_EQ(test::Column(*rs, "Sub_Total"), (V{"110.00", "400.00", "510.00"}));
  EXPECT_EQ(test::Column(*rs, "Total"), (V{"130.00", "420.00", "550.00"}));

  rs = shop_.engine().getLoyaltyReport("1/1/2024", "12/31/2024", 2, Currency::FromDecimalText("110.0001"),
                                       2005, status);
  ASSERT_TRUE(rs);
  EXPECT_EQ(test::Column(*rs, "First_Name"), (V{"Dee", "<null>"}));
}

}  // namespace
}  // namespace ent
