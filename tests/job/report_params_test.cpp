// The catalogue reads each code's parameters as its signature types them: a text that does not
// convert is posted as a failure naming the parameter, before any SQL runs, and every date form the
// shop database's server reads is handed on in one form.
#include "job/report_params.h"

#include <gtest/gtest.h>

#include "common/error.h"
#include "support/sample_shop.h"
#include "support/test_db.h"

namespace ent {
namespace {

// Run on a shop without tables, where any query would fail with "no such table".
TEST(ReportParams, AParameterThatDoesNotConvertIsPostedBeforeAnySqlRuns) {
  struct Case {
    std::string code;
    std::vector<std::string> params;
    std::string status;
  };
  const std::vector<Case> cases = {
      {"ENTCUSTSRCH",
       {"", "", "", "", "abc"},
       "Parameter p4 (lMaxRecords) of ENTCUSTSRCH is not a whole number: 'abc'"},
      {"INVSUM01",
       {"1/1/2024", "1/31/2024", "yes"},
       "Parameter p2 (bIncCustInfo) of INVSUM01 is not true or false: 'yes'"},
      {"LOYAL01",
       {"1/1/2024", "12/31/2024", "2", "lots"},
       "Parameter p3 (cSubTot) of LOYAL01 is not an amount: 'lots'"},
      {"LOYAL01",
       {"1/1/2024", "12/31/2024", "99999999999"},
       "Parameter p2 (lInvCount) of LOYAL01 is not a whole number: '99999999999'"},
      {"AP01", {"not a date"}, "Parameter p0 (dtEnd) of AP01 is not a date: 'not a date'"},
      {"ar01", {"junk"}, "Parameter p0 (dtEnd) of AR01 is not a date: 'junk'"},
      {"PROFALOSS01", {"1/1/2024", "junk"}, "Parameter p1 (dtEnd) of PROFALOSS01 is not a date: 'junk'"},
      {"ENTINVOICE", {"x1"}, "Parameter p0 (lInvoiceId) of ENTINVOICE is not a whole number: 'x1'"},
      {"BL01", {"6/31/2024"}, "Parameter p0 (dtAsOf) of BL01 is not a date: '6/31/2024'"},
      {"TECHCOST01",
       {"1/1/2024", "1/31/2024", "false", "0", "maybe"},
       "Parameter p4 (chkHours) of TECHCOST01 is not true or false: 'maybe'"},
      // The first failing parameter in order p0, p1, ... is the one posted.
      {"SALESCOMP01",
       {"1/1/2024", "2/30/2024", "junk"},
       "Parameter p1 (EndDate) of SALESCOMP01 is not a date: '2/30/2024'"},
  };
  test::TestDb empty;
  for (const Case& c : cases) {
    test::ReportRun run = test::RunReportOn(empty.path(), c.code, c.params);
    EXPECT_EQ(run.status, c.status) << c.code;
    EXPECT_FALSE(run.has_document) << c.code;
  }
  const std::string query_failure = test::RunReportOn(empty.path(), "AR01", {"6/30/2024"}).status;
  EXPECT_NE(query_failure.find("no such table"), std::string::npos) << query_failure;
}

// Every date form the shop database's server reads is handed to the report in the shop's own form.
TEST(ReportParams, DatesAreRewrittenInTheShopsOwnForm) {
  const ReportParam date{0, "dtEnd", ParamType::kDate};
  for (const char* form : {"3/28/2024", "3/28/24", "20240328", "2024-03-28T00:00:00", "Mar 28 2024",
                           "March 28, 2024", "2024-03-28", " 03/28/2024 "})
    EXPECT_EQ(ReadReportParam("TB01", date, form).text(), "3/28/2024") << form;
  EXPECT_EQ(ReadReportParam("TB01", date, "2024-06-30T14:05:00").text(), "6/30/2024 2:05:00 PM");
  EXPECT_EQ(ReadReportParam("TB01", date, "").text(), "");
}

}  // namespace
}  // namespace ent
