// The accounting statements and summaries on the untidy shop against sums of the ledger of our own:
// the balance sheet's section totals (accounts without a type among them), the payables' untidy
// names, and the receivables' end day.
#include <gtest/gtest.h>

#include "reports/untidy_figures.h"
#include "support/reports_shop_copy.h"

namespace ent::test::untidy {
namespace {

// The ledger's sum over the accounts of one class, for postings the date condition selects.
double ClassSum(char fivetypename, const std::string& dates) {
  return Sum(
      std::string("select sum(amt) from ChartOfAccountsGLPOSTINGTABLE g inner join chartofaccounts a on "
                  "g.chid = a.chid where a.fivetypename = '") +
      fivetypename + "' and " + dates);
}

double Statement(const ReportRun& run, const std::string& label, const std::string& column = "hide_Total") {
  const std::vector<Row> rows = RowsWhere(run, "hide_Account_Name", label);
  EXPECT_EQ(rows.size(), 1u) << label;
  return rows.empty() ? 0 : Amount(Cell(rows[0], column));
}

TEST(UntidyAccounts, BalanceSheetSectionsAreTheLedgersSums) {
  const ReportRun run = Report("BL01", {"6/30/2024"});
  ASSERT_EQ(run.status, "0");
  const std::string as_of = "transdate <= '2024-06-30 00:00:00'";
  const double assets = ClassSum('A', as_of);
  const double liabilities = -ClassSum('L', as_of);
  // Profit before the fiscal year is retained; the year's own profit so far is the net income.
  const double retained =
      -ClassSum('R', "transdate < '2024-01-01'") - ClassSum('E', "transdate < '2024-01-01'");
  const std::string year = "transdate >= '2024-01-01' and " + as_of;
  const double income = -ClassSum('R', year) - ClassSum('E', year);
  EXPECT_GT(assets, 0);
  EXPECT_NEAR(Statement(run, "[b]TOTAL ASSETS"), assets, 0.005);
  EXPECT_NEAR(Statement(run, "[b]Total Liabilities"), liabilities, 0.005);
  EXPECT_NEAR(Statement(run, "Retained Earnings"), retained, 0.005);
  EXPECT_NEAR(Statement(run, "Net Income"), income, 0.005);
  EXPECT_NEAR(Statement(run, "[b]Total Equity"), -ClassSum('Q', as_of) + retained + income, 0.005);
  EXPECT_NEAR(Statement(run, "[b]TOTAL LIABILITIES & EQUITY"), assets, 0.005);
  // One account's own line: what the shop owes its suppliers shows positive.
  EXPECT_NEAR(Statement(run, "[sp6]Accounts Payable", "hide_cTot3"),
              -Sum("select sum(amt) from ChartOfAccountsGLPOSTINGTABLE where chid = 10 and " + as_of), 0.005);
}

TEST(UntidyAccounts, ReceivablesLeaveOutAnInvoiceDatedAfterTheEndDay) {
  // The invoice still owed at the end of 2024 that owes the most, dated into the next year on a copy.
  const std::string invoice = Value(
      "select srcid from ChartOfAccountsGLPOSTINGTABLE g inner join wo on g.srcid = wo.invoiceid where "
      "g.chid = 9 and "
      "g.srcmod = 'INVOICE' and g.transdate <= '2024-12-31' and wo.archive <> 1 group by srcid order by "
      "sum(amt) desc "
      "limit 1");
  const double owed =
      Sum("select sum(amt) from ChartOfAccountsGLPOSTINGTABLE where chid = 9 and srcmod = 'INVOICE' "
          "and srcid = " +
          invoice);
  ASSERT_GT(owed, 0.01);
  TempDir dir;
  const std::string copy =
      ChangedCopy(UntidySampleShop(), dir,
                  "update wo set latestdate = '2025-01-15 00:00:00' where invoiceid = " + invoice);
  const ReportRun before = Report("AR01", {"12/31/2024"});
  const ReportRun after = RunReportOn(copy, "AR01", {"12/31/2024"});
  ASSERT_EQ(after.status, "0");
  EXPECT_NEAR(TotalOf(after, "Balance"), TotalOf(before, "Balance") - owed, 0.005);
}

}  // namespace
}  // namespace ent::test::untidy
