// The parts, inventory and technician codes answer on the sample shop through the catalogue, and
// their totals agree with SQL of our own over the same file.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/sample_shop.h"

namespace ent {
namespace {

using test::Amount;
using test::QueryValue;
using test::RunReport;

// Every combination of the technician reports' switches gives one row per technician and the total.
TEST(PartsCodesOnSampleShop, TechnicianCodesAnswerForEverySwitch) {
  for (const std::string code : {"TECHPERF01", "TECHCOST01"}) {
    for (int switches = 0; switches < 8; ++switches) {
      std::vector<std::string> params = {"1/1/2024", "6/30/2024", switches & 1 ? "true" : "false",
                                         switches & 2 ? "true" : "false", switches & 4 ? "true" : "false"};
      test::ReportRun run = RunReport(code, params);
      EXPECT_EQ(run.status, "0") << code << " " << switches;
      // One row per technician, then the total line.
      EXPECT_EQ(
          run.rows.size(),
          std::stoul(QueryValue("select count(*) from usertable inner join mechanic on usertable.userid = "
                                "mechanic.userid where usertype in ('Service Advisor/Technician', "
                                "'Technician')")) +
              1)
          << code;
    }
  }
}

TEST(PartsCodesOnSampleShop, TotalsAgreeWithTheDatabase) {
  test::ReportRun gross = RunReport("PARTGP01", {"3/1/2024", "3/31/2024"});
  ASSERT_EQ(gross.status, "0");
  const std::string lines =
      " from woparts inner join wo on woparts.credid = wo.credid and woparts.woid = wo.woid where "
      "wo.latestdate between '2024-03-01 00:00:00' and '2024-03-31 00:00:00' and woparts.skip <> 'Yes' and "
      "not "
      "(presetpkg = 1 and presetheader = 0) and ((wo.invoiceid <> 0 and woparts.invcost > 0) or wo.credid <> "
      "0)";
  ASSERT_EQ(gross.rows.size(), std::stoul(QueryValue("select count(*)" + lines)) + 1);
  EXPECT_NEAR(Amount(gross.rows.back().at("Total_Parts")),
              std::stod(QueryValue("select sum(totparts)" + lines)), 0.005);

  test::ReportRun technicians = RunReport("TECHPERF01", {"1/1/2024", "6/30/2024", "false", "false"});
  ASSERT_EQ(technicians.status, "0");
  const std::string credited =
      " from woparts inner join wo on wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid where "
      "(woparts.invoiceid <> 0 or woparts.credid <> 0) and (presetpkg = 0 or presetheader = 1) and wodeleted "
      "<> 1 "
      "and skip <> 'Yes' and latestdate between '2024-01-01 00:00:00' and '2024-06-30 00:00:00' and "
      "mechuserid in "
      "(select usertable.userid from usertable inner join mechanic on usertable.userid = mechanic.userid "
      "where "
      "usertype in ('Service Advisor/Technician', 'Technician'))";
  const double labour = std::stod(QueryValue("select sum(labour)" + credited));
  ASSERT_GT(labour, 0);
  EXPECT_NEAR(Amount(technicians.rows.back().at("Total_Labor")), labour, 0.005);
  EXPECT_EQ(technicians.rows.back().at("First_Name"), "[b]TOTAL");
}

}  // namespace
}  // namespace ent
