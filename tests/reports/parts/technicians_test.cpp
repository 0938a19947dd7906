// Technician performance and cost on a shop made by hand, for every combination of the switches,
// and the time clock in place of the lines' hourly pay.
#include <gtest/gtest.h>

#include <map>

#include "common/error.h"
#include "reports/parts/parts_shop.h"

namespace ent {
namespace {

using Row = std::vector<std::string>;

class TechniciansTest : public ::testing::Test {
 protected:
  TechniciansTest() {
    User("'T1'", "'Ann'", "'Baker'", "'Technician'", true);
    User("'T2'", "'Carl'", "'Adams'", "'Service Advisor/Technician'", true);
    User("'T3'", "'Dora'", "'Zeta'", "'Technician'", false);  // no mechanic row
    User("'T4'", "'Eve'", "'Young'", "'Manager'", true);
    Order(1, {{"invoiceid", "11"}});
    Order(2, {{"chkvoid", "1"}});                         // voided, never invoiced
    Order(3, {{"estid", "7"}});                           // estimate no longer pending
    Order(4, {{"estid", "8"}, {"chkestpending", "1"}});   // estimate still pending
    Order(5, {{"invoiceid", "12"}, {"wodeleted", "1"}});  // deleted
    // Ann's lines: parts, labour, other, levy, parts discount, labour discount; hours and pay.
    Line(1, 1,
         {{"invoiceid", "11"},
          {"totparts", "100"},
          {"labour", "50"},
          {"otherchgdo", "10"},
          {"levyItemAmount", "5"},
          {"discpart", "20"},
          {"disclab", "5"},
          {"hrs", "2"},
          {"MECHHOURLYTOT", "40"},
          {"mechflatrateTot", "15"},
          {"mechpartstot", "10"},
          {"mechlabtot", "5"}});
    Line(2, 2, {{"totparts", "30"}, {"hrs", "1"}, {"MECHHOURLYTOT", "20"}});
    Line(3, 3, {{"estid", "7"}, {"totparts", "7"}, {"hrs", "0.5"}, {"MECHHOURLYTOT", "10"}});
    Line(4, 4, {{"estid", "8"}, {"totparts", "1000"}, {"hrs", "9"}});
    Line(5, 1, {{"invoiceid", "11"}, {"totparts", "500"}, {"skip", "'Yes'"}});
    Line(6, 1, {{"invoiceid", "11"}, {"totparts", "300"}, {"presetpkg", "1"}});
    Line(7, 1,
         {{"invoiceid", "11"},
          {"totparts", "3"},
          {"mechflatrateTot", "6"},
          {"presetpkg", "1"},
          {"presetheader", "1"}});
    Line(8, 5, {{"invoiceid", "12"}, {"totparts", "900"}, {"hrs", "9"}});
  }
  void User(const std::string& id, const std::string& first, const std::string& last, const std::string& type,
            bool mechanic) {
    shop.Insert("usertable", {{"UserID", id}, {"FName", first}, {"LName", last}, {"usertype", type}});
    if (mechanic) shop.Insert("mechanic", {{"userid", id}});
  }
  void Order(int woid, std::map<std::string, std::string> values) {
    values["woid"] = std::to_string(woid);
    values["latestdate"] = "'2024-05-" + std::to_string(9 + woid) + "'";
    shop.Insert("wo", values);
  }
  void Line(int id, int woid, std::map<std::string, std::string> values, const std::string& tech = "'T1'") {
    values["wopartsid"] = std::to_string(id);
    values["woid"] = std::to_string(woid);
    values["mechuserid"] = tech;
    shop.Insert("woparts", values);
  }
  void Clock(int id, int woid, const std::string& user, const std::string& date, const std::string& hours,
             const std::string& rate) {
    shop.Insert("timeclock", {{"timeclockid", std::to_string(id)},
                              {"woid", std::to_string(woid)},
                              {"userid", user},
                              {"thedate", "'" + date + "'"},
                              {"hrs", hours},
                              {"thehourlyrate", rate}});
  }
  // Result rows by last name (the total line under "TOTAL").
  std::map<std::string, Row> ByLastName(Recordset& rs) {
    std::map<std::string, Row> rows;
    for (const Row& row : test::Cells(rs)) rows[row[0] == "[b]TOTAL" ? "TOTAL" : row[1]] = row;
    return rows;
  }

  test::PartsShop shop;
};

TEST_F(TechniciansTest, PerformanceCountsTheLinesEachSwitchAdds) {
  struct Case {
    bool not_pending, voided;
    Row ann;
  };
  // Invoice lines: parts 103 (a package header's 3 included), labour 50, other 10, levy 5, discounts
  // 20 and 5; the voided order adds parts 30, the estimate parts 7.
  const Case cases[] = {
      {false, false, {"Ann", "Baker", "103.00", "50.00", "10.00", "5.00", "20.00", "5.00", "143.00"}},
      {false, true, {"Ann", "Baker", "133.00", "50.00", "10.00", "5.00", "20.00", "5.00", "173.00"}},
      {true, false, {"Ann", "Baker", "110.00", "50.00", "10.00", "5.00", "20.00", "5.00", "150.00"}},
      {true, true, {"Ann", "Baker", "140.00", "50.00", "10.00", "5.00", "20.00", "5.00", "180.00"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.not_pending) + std::to_string(c.voided));
    std::string err;
    auto rs = shop.engine().getTechPerf("5/1/2024", "5/31/2024", c.not_pending, c.voided, err);
    ASSERT_TRUE(rs) << err;
    EXPECT_EQ(err, "0");
    Row total = c.ann;
    total[0] = "[b]TOTAL";
    total[1] = "";
    // By last name; a technician without lines shows 0.00 throughout.
    EXPECT_EQ(test::Cells(*rs),
              (std::vector<Row>{
                  {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}, c.ann, total}));
  }
}

TEST_F(TechniciansTest, CostFromTheLinesOrFromTheTimeClock) {
  // Clock: Ann 3 h at 25 on the invoice (clocked before the range: the invoice date counts), 2 h at
  // 30 on the voided order in the range, 5 h on it after the range, 1 h on the deleted order; Carl,
  // who has no lines, 1 h at 20 on the invoice.
  Clock(1, 1, "'T1'", "2024-04-30", "3", "25");
  Clock(2, 2, "'T1'", "2024-05-11", "2", "30");
  Clock(3, 2, "'T1'", "2024-06-15", "5", "30");
  Clock(4, 5, "'T1'", "2024-05-14", "1", "30");
  Clock(5, 1, "'T2'", "2024-05-10", "1", "20");
  struct Case {
    bool not_pending, voided, clock;
    Row ann, carl;
  };
  const Case cases[] = {
      {false,
       false,
       false,
       {"Ann", "Baker", "2.00", "40.00", "21.00", "10.00", "5.00", "76.00"},
       {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}},
      {false,
       true,
       false,
       {"Ann", "Baker", "3.00", "60.00", "21.00", "10.00", "5.00", "96.00"},
       {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}},
      {true,
       false,
       false,
       {"Ann", "Baker", "2.50", "50.00", "21.00", "10.00", "5.00", "86.00"},
       {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}},
      {true,
       true,
       false,
       {"Ann", "Baker", "3.50", "70.00", "21.00", "10.00", "5.00", "106.00"},
       {"Carl", "Adams", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}},
      // The clock's pay replaces the lines' hourly pay: 76 - 40 + 75.
      {false,
       false,
       true,
       {"Ann", "Baker", "3.00", "75.00", "21.00", "10.00", "5.00", "111.00"},
       {"Carl", "Adams", "1.00", "20.00", "0.00", "0.00", "0.00", "20.00"}},
      // Voided orders count on the clock by the clock's date: 96 - 60 + 75 + 60. Carl has no lines,
      // so his hours and hourly cells stay empty.
      {false,
       true,
       true,
       {"Ann", "Baker", "5.00", "135.00", "21.00", "10.00", "5.00", "171.00"},
       {"Carl", "Adams", "", "", "0.00", "0.00", "0.00", "20.00"}},
      {true,
       false,
       true,
       {"Ann", "Baker", "3.00", "75.00", "21.00", "10.00", "5.00", "111.00"},
       {"Carl", "Adams", "1.00", "20.00", "0.00", "0.00", "0.00", "20.00"}},
      {true,
       true,
       true,
       {"Ann", "Baker", "5.00", "135.00", "21.00", "10.00", "5.00", "171.00"},
       {"Carl", "Adams", "", "", "0.00", "0.00", "0.00", "20.00"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.not_pending) + std::to_string(c.voided) + std::to_string(c.clock));
    std::string err;
    auto rs = shop.engine().getTechCost("5/1/2024", "5/31/2024", c.not_pending, c.voided, c.clock, err);
    ASSERT_TRUE(rs);
    EXPECT_EQ(err, "0");
    std::map<std::string, Row> rows = ByLastName(*rs);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows["Baker"], c.ann);
    EXPECT_EQ(rows["Adams"], c.carl);
    // The total line comes last and adds the technicians' cells up, empty ones as nothing.
    rs->MoveLast();
    EXPECT_EQ(rs->Get("First_Name").ToText(), "[b]TOTAL");
    for (size_t column = 2; column < 8; ++column)
      EXPECT_DOUBLE_EQ(std::stod(rows["TOTAL"][column]),
                       std::stod(c.ann[column]) + (c.carl[column].empty() ? 0 : std::stod(c.carl[column])));
  }
}

TEST(TechniciansWithoutStaffTest, AnEmptyListGivesTheColumnsWithoutRows) {
  test::PartsShop shop;
  std::string err;
  auto perf = shop.engine().getTechPerf("5/1/2024", "5/31/2024", true, true, err);
  ASSERT_TRUE(perf);
  EXPECT_EQ(err, "0");
  EXPECT_EQ(perf->fields().size(), 9u);
  EXPECT_EQ(perf->RecordCount(), 0u);
  auto cost = shop.engine().getTechCost("5/1/2024", "5/31/2024", true, true, true, err);
  ASSERT_TRUE(cost);
  EXPECT_EQ(err, "0");
  EXPECT_EQ(cost->fields().size(), 8u);
  EXPECT_EQ(cost->RecordCount(), 0u);

  // A list that cannot be read: the performance report answers with the failure, the cost report
  // raises it.
  shop.Exec("drop table mechanic");
  EXPECT_FALSE(shop.engine().getTechPerf("5/1/2024", "5/31/2024", false, false, err));
  EXPECT_NE(err.find("mechanic"), std::string::npos) << err;
  std::string status;
  EXPECT_THROW(shop.engine().getTechCost("5/1/2024", "5/31/2024", false, false, false, status), Error);
  EXPECT_NE(status.find("mechanic"), std::string::npos) << status;
}

}  // namespace
}  // namespace ent
