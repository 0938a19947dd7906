// The report codes on a shop whose data is as untidy as real shops' (nulls, full-width texts, a
// pricing band without a class, a part credited in full): the figures agree with SQL of our own over
// the same file, and a broken chart of accounts is a failure.
#include <gtest/gtest.h>

#include <algorithm>

#include "reports/untidy_figures.h"
#include "support/reports_shop_copy.h"

namespace ent::test::untidy {
namespace {

// The parts sales performance of a range agrees with our own sums: rows, revenue and cost.
void ExpectPartsSalesFigures(const ReportRun& run, const std::string& from, const std::string& to,
                             const std::string& description) {
  ASSERT_EQ(run.status, "0");
  const std::string lines =
      " from woparts inner join wo on (woparts.invoiceid = wo.invoiceid and woparts.invoiceid <> 0) or "
      "(woparts.credid = wo.credid and wo.credid <> 0) inner join inventory on woparts.invinvid = "
      "inventory.invid "
      "inner join supplier on inventory.supid = supplier.supid where wodeleted = 0 and invcost <> 0 and "
      "skip <> 'Yes' and qty <> 0 and latestdate between '" +
      from + " 00:00:00' and '" + to + " 00:00:00'" +
      (description.empty() ? "" : " and inventory.description like '" + description + "'");
  const std::string parts = " group by partnum, inventory.description, supplier.company";
  EXPECT_EQ(run.rows.size(), Count("select count(*) from (select 1" + lines + parts + ")") + 1);
  EXPECT_NEAR(Amount(run.rows.back().at("Total_Revenue")), Sum("select sum(totparts - discpart)" + lines),
              0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Total_Cost")), Sum("select sum(invcost)" + lines), 0.005);
}

TEST(UntidyShop, PartsSalesFiguresAgreeOnMonthsEndingWithAnInvoiceAtMidnight) {
  // May 2024 ends with an invoice dated at midnight of its last day.
  ASSERT_GT(Count("select count(*) from wo where latestdate = '2024-05-31 00:00:00' and invoiceid <> 0"), 0u);
  ExpectPartsSalesFigures(Report("PARTSALPER01", {"5/1/2024", "5/31/2024", "", "", "", "false"}),
                          "2024-05-01", "2024-05-31", "");
  ExpectPartsSalesFigures(Report("PARTSALPER01", {"5/1/2024", "5/31/2024", "", "%OIL%", "", "false"}),
                          "2024-05-01", "2024-05-31", "%OIL%");
}

TEST(UntidyShop, PartCreditedInFullKeepsItsRevenueAndStaysOutOfTheMarginAverage) {
  const ReportRun run = Report("PARTSALPER01", {"3/1/2024", "3/31/2024", "", "", "", "false"});
  ExpectPartsSalesFigures(run, "2024-03-01", "2024-03-31", "");

  const std::vector<Row> rows = RowsWhere(run, "Part_Number", "RETURNED-IN-FULL");
  ASSERT_EQ(rows.size(), 1u);
  const Row* returned = &rows[0];
  EXPECT_EQ(Amount(returned->at("Qty_Sold")), 0);
  EXPECT_EQ(Cell(*returned, "Avg_Margin"), "");
  EXPECT_EQ(Cell(*returned, "Avg_Price"), "");
  // What the restocking fee kept.
  const double kept =
      Sum("select sum(totparts - discpart) from woparts inner join inventory on invinvid = invid "
          "where partnum = 'RETURNED-IN-FULL'");
  EXPECT_GT(kept, 0);
  EXPECT_NEAR(Amount(returned->at("Total_Revenue")), kept, 0.005);

  // The total line's margin is the average over the parts that have one.
  double sum = 0;
  int count = 0;
  for (size_t i = 0; i + 1 < run.rows.size(); ++i) {
    if (Cell(run.rows[i], "Avg_Margin").empty()) continue;
    sum += Amount(Cell(run.rows[i], "Avg_Margin"));
    ++count;
  }
  ASSERT_GT(count, 0);
  EXPECT_NEAR(Amount(run.rows.back().at("Avg_Margin")), sum / count, 0.01);
}

TEST(UntidyShop, DailyRecapCountsLinesWithoutAClassOnce) {
  const ReportRun run = Report("DSR01", {"5/31/2024", "false"});
  ASSERT_EQ(run.status, "0");
  const auto classes = ColumnOf(run, "Sales_Class");
  EXPECT_EQ(std::count(classes.begin(), classes.end(), ""), 0);
  EXPECT_EQ(std::count(classes.begin(), classes.end(), "UNCLASSIFIED"), 1);
  auto sales_from = [](const std::string& from) {
    const std::string lines =
        " from woparts inner join wo on woparts.woid = wo.woid where woparts.skip <> 'Yes' and "
        "(wo.invoiceid <> 0 or wo.credid <> 0) and not (presetpkg = 1 and presetheader = 0) and "
        "latestdate between '" +
        from +
        " 00:00:00' and '2024-05-31 00:00:00' and (salesclass = '' or salesclass in (select salesclass from "
        "SalesClassInventoryIndexPricing where salesclass <> 'UNCLASSIFIED'))";
    EXPECT_GT(Count("select count(*)" + lines), 0u) << from;
    return Sum("select sum(totparts - discpart + labour - disclab)" + lines) +
           Sum("select sum(otherchargeamt)" + lines + " and otherchargeid > 0");
  };
  // The last day of the month holds an invoice dated at midnight.
  EXPECT_NEAR(Amount(run.rows.back().at("Sales")), sales_from("2024-05-31"), 0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Sales_MTD")), sales_from("2024-05-01"), 0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Sales_YTD")), sales_from("2024-01-01"), 0.005);
  EXPECT_GT(
      Count("select count(*) from woparts inner join wo on woparts.woid = wo.woid where salesclass = '' and "
            "wo.invoiceid <> 0 and latestdate between '2024-01-01' and '2024-05-31'"),
      0u);
}

TEST(UntidyShop, InvoiceLookUpRefusesAMissingNumber) {
  for (const std::string number : {"", "0", "-3"}) {
    const ReportRun run = Report("ENTINVOICE", {number, "In"});
    EXPECT_FALSE(run.has_document) << number;
    EXPECT_NE(run.status.find("parameter p0 (lInvoiceId)"), std::string::npos) << run.status;
    EXPECT_NE(run.status.find("above 0"), std::string::npos) << run.status;
  }
}

TEST(UntidyShop, TrialBalanceLongAccountPathsFitAndTheColumnsBalance) {
  const ReportRun run = Report("TB01", {"12/31/2024"});
  ASSERT_EQ(run.status, "0");
  const auto names = ColumnOf(run, "Account_Name");
  EXPECT_TRUE(std::any_of(names.begin(), names.end(), [](const std::string& n) { return n.size() > 100; }));
  EXPECT_EQ(Cell(run.rows.back(), "Account_Name"), "[b]TOTAL");
  EXPECT_EQ(Cell(run.rows.back(), "Debit"), Cell(run.rows.back(), "Credit"));
  const double assets = Sum(
      "select sum(amt) from ChartOfAccountsGLPOSTINGTABLE g inner join chartofaccounts a on g.chid = a.chid "
      "where fivetypename = 'A' and transdate <= '2024-12-31 00:00:00'");
  double shown = 0;
  for (const Row& row : run.rows) {
    if (Cell(row, "Account_Name").find("Retained") == 0) break;
    shown += Amount(Cell(row, "Debit")) - Amount(Cell(row, "Credit"));
    if (Cell(row, "Account_Name").empty()) break;  // the end of the assets
  }
  EXPECT_NEAR(shown, assets, 0.005);
}

TEST(UntidyShop, TrialBalanceFailsOnALoopOrAMissingParentInTheChart) {
  // An asset account with postings that has a parent of its own.
  const std::string chid = Value(
      "select chid from chartofaccounts where fivetypename = 'A' and parentid <> 0 and chid in (select "
      "chid from ChartOfAccountsGLPOSTINGTABLE) order by accountnumber limit 1");
  const std::pair<std::string, std::string> cases[] = {
      {"update chartofaccounts set parentid = " + chid +
           " where chid = (select parentid from chartofaccounts where chid = " + chid + ")",
       "loop"},
      {"update chartofaccounts set parentid = 987654 where chid = " + chid,
       "987654 is not in the chart of accounts"},
  };
  for (const auto& [change, failure] : cases) {
    TempDir dir;
    const ReportRun run = RunReportOn(ChangedCopy(UntidySampleShop(), dir, change), "TB01", {"12/31/2024"});
    EXPECT_FALSE(run.has_document) << failure;
    EXPECT_NE(run.status.find(failure), std::string::npos) << run.status;
  }
}

}  // namespace
}  // namespace ent::test::untidy
