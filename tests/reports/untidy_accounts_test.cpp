// The accounting statements and summaries on the untidy shop against sums of the ledger of our own:
// section totals of the balance sheet and the profit and loss, and the payables and receivables
// lines per party.
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

TEST(UntidyAccounts, ProfitAndLossSectionsAreTheLedgersSumsOverThePeriod) {
  const ReportRun run = Report("PROFALOSS01", {"1/1/2024", "6/30/2024"});
  ASSERT_EQ(run.status, "0");
  // Both ends of the period count.
  const std::string period = "transdate >= '2024-01-01 00:00:00' and transdate <= '2024-06-30 00:00:00'";
  ASSERT_GT(
      Count("select count(*) from ChartOfAccountsGLPOSTINGTABLE where transdate in ('2024-01-01 00:00:00', "
            "'2024-06-30 00:00:00')"),
      0u);
  const double revenue = -ClassSum('R', period), expenses = ClassSum('E', period);
  EXPECT_GT(revenue, 0);
  EXPECT_NEAR(Statement(run, "[b]TOTAL REVENUE"), revenue, 0.005);
  EXPECT_NEAR(Statement(run, "[b]TOTAL EXPENSES"), expenses, 0.005);
  EXPECT_NEAR(Statement(run, "[b]NET REVENUE"), revenue - expenses, 0.005);
}

TEST(UntidyAccounts, PayablesPerSupplierAndTaxLine) {
  const ReportRun run = Report("AP01", {"6/30/2023"});
  ASSERT_EQ(run.status, "0");
  const std::string owed =
      "select -sum(amt) from ChartOfAccountsGLPOSTINGTABLE where chid = 10 and transdate <= '2023-06-30 "
      "00:00:00' "
      "and ";
  const std::string purchases = "srcmod in ('SUPTRANS', 'SUPMAKEPAYMENT', 'LEVYSUP')";
  // A line per supplier that owes or is owed, whatever its name (one has none), and both tax lines.
  const size_t suppliers = Count("select count(*) from supplier s where round(ifnull((" + owed + purchases +
                                 " and srcid2 = s.supid), 0), 2) <> 0");
  EXPECT_GT(suppliers, 1u);
  EXPECT_EQ(run.rows.size(), suppliers + 2 + 1);
  EXPECT_EQ(Cell(run.rows.back(), "Company"), "[b]TOTAL");
  const double taxes = Sum(owed + "(srcmod like 'TAX%' or srcmod = 'LEVYTAX') and srcid2 in (1, 2)");
  EXPECT_NEAR(TotalOf(run, "Balance"), Sum(owed + purchases) + taxes, 0.005);
  const std::vector<Row> tax1 = RowsWhere(run, "Company", "Tax 1");
  ASSERT_EQ(tax1.size(), 1u);
  EXPECT_NEAR(Amount(Cell(tax1[0], "Balance")), Sum(owed + "srcmod like 'TAX%' and srcid2 = 1"), 0.005);
  // The supplier with the widest name, in full.
  const std::string wide = Value("select company from supplier where supid = 2");
  const std::vector<Row> lines = RowsWhere(run, "Company", wide);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(Amount(Cell(lines[0], "Balance")), Sum(owed + purchases + " and srcid2 = 2"), 0.005);
  // Sorted by company, the supplier without a name first.
  EXPECT_EQ(Cell(run.rows.front(), "Company"), "");
}

TEST(UntidyAccounts, ReceivablesPerCustomerCountInvoicesDatedByTheEndDay) {
  // A customer whose credit invoice settles the balance has no line.
  const ReportRun run = Report("AR01", {"12/31/2024"});
  ASSERT_EQ(run.status, "0");
  const std::string end = "'2024-12-31 00:00:00'";
  // What each customer owes: postings to receivables made against the customer, and those of the
  // customer's invoices and credit invoices dated by the end day, archived ones left out.
  const std::string per_customer =
      "select c.cusid, round(coalesce((select sum(amt) from ChartOfAccountsGLPOSTINGTABLE g where g.chid = 9 "
      "and "
      "g.transdate <= " +
      end +
      " and g.srcid2 = c.cusid and (g.srcmod like 'AR%' or g.srcmod like 'NSF%')), 0) + "
      "coalesce((select sum(amt) from ChartOfAccountsGLPOSTINGTABLE g inner join wo on g.srcid = "
      "wo.invoiceid where "
      "wo.cusid = c.cusid and wo.invoiceid <> 0 and wo.archive <> 1 and wo.latestdate <= " +
      end + " and g.chid = 9 and g.transdate <= " + end +
      " and g.srcmod in ('INVOICE', 'CREDINVOLD', 'INVOICE-DT')), 0) + "
      "coalesce((select sum(amt) from ChartOfAccountsGLPOSTINGTABLE g inner join wo on g.srcid = wo.credid "
      "where "
      "wo.cusid = c.cusid and wo.credid <> 0 and wo.archive <> 1 and wo.latestdate <= " +
      end + " and g.chid = 9 and g.transdate <= " + end +
      " and g.srcmod = 'CREDINVOICE'), 0), 2) as owed from customer c";
  const std::string owing = "select count(*) from (" + per_customer + ") where abs(owed) > 0.01";
  EXPECT_GT(Count(owing), 1u);
  EXPECT_EQ(run.rows.size(), Count(owing) + 1);
  EXPECT_NEAR(TotalOf(run, "Balance"),
              Sum("select sum(owed) from (" + per_customer + ") where abs(owed) > 0.01"), 0.005);
  // The customer who owes the most, by name.
  const std::string top = "select cusid from (" + per_customer + ") order by owed desc limit 1";
  const std::string who = " from customer where cusid = (" + top + ")";
  std::vector<Row> lines;
  for (const Row& row : RowsWhere(run, "LastName", Value("select ifnull(lname, '')" + who))) {
    if (Cell(row, "FirstName") == Value("select ifnull(fname, '')" + who) &&
        Cell(row, "Company") == Value("select ifnull(company, '')" + who))
      lines.push_back(row);
  }
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(Amount(Cell(lines[0], "Balance")),
              Sum("select owed from (" + per_customer + ") where cusid = (" + top + ")"), 0.005);
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
