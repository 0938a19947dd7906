// The sales reports on the untidy shop against queries of our own over the same file: invoice lists
// and averages, sales by class, margins, counts, and the marketing lists. Credit invoices count with
// their negative amounts, deleted work orders stay out where the report says so, and both ends of
// a range are in.
#include <gtest/gtest.h>

#include "reports/untidy_figures.h"

namespace ent::test::untidy {
namespace {

// Seven months of 2024 (with a deleted invoice), as the reports receive them and as the database
// stores the edges.
const std::vector<std::string> kPeriod = {"3/1/2024", "9/30/2024"};
const std::string kRange = " latestdate between '2024-03-01 00:00:00' and '2024-09-30 00:00:00'";
// Invoices and credit invoices of the range that are not deleted.
const std::string kDocuments =
    " from wo where wodeleted <> 1 and (invoiceid <> 0 or credid <> 0) and" + kRange;

TEST(UntidySales, InvoiceListsAndAveragesCountCreditsWithTheirSign) {
  ASSERT_GT(Count("select count(*)" + kDocuments + " and credid <> 0"), 0u);
  ASSERT_GT(Count("select count(*) from wo where wodeleted = 1 and invoiceid <> 0 and" + kRange), 0u);

  const ReportRun summary = Report("INVSUM01", {kPeriod[0], kPeriod[1], "true", "true", "true"});
  ASSERT_EQ(summary.status, "0");
  EXPECT_EQ(summary.rows.size(), Count("select count(*)" + kDocuments) + 1);
  EXPECT_NEAR(TotalOf(summary, "Total"), Sum("select sum(screentotal)" + kDocuments), 0.005);
  EXPECT_NEAR(TotalOf(summary, "Parts"), Sum("select sum(screenparts + screentotpartsdisc)" + kDocuments),
              0.005);
  EXPECT_EQ(
      Cell(summary.rows.front(), "Repair_Order"),
      Value("select ifnull(stateandnumber, '')" + kDocuments + " order by latestdate, invoiceid, credid"));

  const ReportRun average = Report("AVGINV01", kPeriod);
  ASSERT_EQ(average.status, "0");
  ASSERT_EQ(average.rows.size(), 1u);
  EXPECT_EQ(Cell(average.rows[0], "Invoice_Count"), Value("select count(*)" + kDocuments));
  EXPECT_NEAR(Amount(Cell(average.rows[0], "Avg_Total")), Sum("select avg(screentotal)" + kDocuments), 0.005);

  const ReportRun comparison = Report("SALESCOMP01", {kPeriod[0], kPeriod[1], "3/1/2023", "9/30/2023"});
  ASSERT_EQ(comparison.status, "0");
  ASSERT_EQ(comparison.rows.size(), 1u);
  const double first = Sum("select sum(screensubtotal)" + kDocuments);
  const double second =
      Sum("select sum(screensubtotal) from wo where wodeleted <> 1 and (invoiceid <> 0 or credid "
          "<> 0) and latestdate between '2023-03-01' and '2023-09-30 00:00:00'");
  EXPECT_NEAR(Amount(Cell(comparison.rows[0], "Total_Sales_1")), first, 0.005);
  EXPECT_NEAR(Amount(Cell(comparison.rows[0], "Difference")), first - second, 0.005);

  const ReportRun payments = Report("PAYREC01", kPeriod);
  ASSERT_EQ(payments.status, "0");
  const std::string paid =
      " from wopaymentadv inner join wo on wopaymentadv.id = wo.woid where trandate between "
      "'2024-03-01 00:00:00' and '2024-09-30 00:00:00'";
  EXPECT_EQ(payments.rows.size(), Count("select count(*)" + paid) + 1);
  // Each method in its own column; dates as MM/dd/yyyy.
  for (const auto& [column, type] :
       std::vector<std::pair<std::string, std::string>>{{"Cash", "cdCASH"},
                                                        {"Cheque", "cdCheque"},
                                                        {"VISA", "cdVISA"},
                                                        {"Master_Card", "cdMasterCard"},
                                                        {"AMEX", "cdAmex"},
                                                        {"Other_Card", "cdOtherCard"},
                                                        {"Debit_Card", "cdDebitCard"},
                                                        {"AR", "A/R"}}) {
    EXPECT_NEAR(TotalOf(payments, column), Sum("select sum(payment)" + paid + " and type = '" + type + "'"),
                0.005)
        << column;
  }
  EXPECT_EQ(Cell(payments.rows.front(), "Payment_Date").size(), 10u);
}

// The kinds of the car count are the hand-made shop's test; here, what only untidy data shows.
TEST(UntidySales, CarCountNewEmissionsAndCreditsOnBothRangeEnds) {
  auto count = [](const ReportRun& run, const std::string& kind) {
    const std::vector<Row> rows = RowsWhere(run, "Invoice_Type", kind);
    EXPECT_EQ(rows.size(), 1u) << kind;
    return rows.empty() ? std::string() : Cell(rows[0], "Count");
  };
  // Lines of emission tests, each invoice once in the new count.
  const std::string emission =
      " from woparts inner join wo on woparts.invoiceid = wo.invoiceid where wo.invoiceid "
      "<> 0 and salesclass = 'EMISSION TESTS' and skip <> 'Yes' and wo.credid = 0 and "
      "wodeleted <> 1 and" +
      kRange;
  EXPECT_GT(Count("select count(*)" + emission), 0u);
  EXPECT_EQ(count(Report("CARCOUNT01", kPeriod), "Emissions Test New"),
            Value("select count(distinct wo.invoiceid)" + emission));

  // Credit invoices on the first and the last day of a range both count.
  EXPECT_EQ(Count("select count(*) from wo where credid <> 0 and latestdate in ('2024-04-16 00:00:00', "
                  "'2024-04-26 00:00:00')"),
            2u);
  EXPECT_EQ(count(Report("CARCOUNT01", {"4/16/2024", "4/26/2024"}), "Credit Invoices"),
            Value("select count(*) from wo where credid <> 0 and latestdate between "
                  "'2024-04-16' and '2024-04-26 00:00:00'"));
}

TEST(UntidySales, SalesByClassAddUpTheLinesOfEachClass) {
  const std::string lines =
      " from woparts inner join wo on woparts.woid = wo.woid where woparts.skip <> 'Yes' and "
      "(wo.invoiceid <> 0 or wo.credid <> 0) and not (presetpkg = 1 and presetheader = 0) and" +
      kRange;
  const std::string classified = lines +
                                 " and (salesclass = '' or salesclass in (select salesclass from "
                                 "SalesClassInventoryIndexPricing where salesclass <> 'UNCLASSIFIED'))";
  const size_t classes = Count(
      "select count(distinct salesclass) from SalesClassInventoryIndexPricing where salesclass is not null");
  for (const std::string costs : {"false", "true"}) {
    const ReportRun run = Report("SC01", {kPeriod[0], kPeriod[1], costs});
    ASSERT_EQ(run.status, "0");
    // One row per named class of the pricing table (UNCLASSIFIED holds the lines without one).
    EXPECT_EQ(run.rows.size(), classes + 1) << costs;
    EXPECT_NEAR(TotalOf(run, "Parts_Sold"), Sum("select sum(totparts - discpart)" + classified),
                0.01 * classes);
    EXPECT_NEAR(TotalOf(run, "Labor_Sold"), Sum("select sum(labour - disclab)" + classified), 0.01 * classes);
    const std::vector<Row> unclassified = RowsWhere(run, "Sales_Class", "UNCLASSIFIED");
    ASSERT_EQ(unclassified.size(), 1u);
    EXPECT_NEAR(Amount(Cell(unclassified[0], "Parts_Sold")),
                Sum("select sum(totparts - discpart)" + lines + " and salesclass = ''"), 0.005);
    if (costs == "true") {
      EXPECT_NEAR(TotalOf(run, "Parts_Cost"), Sum("select sum(invcost + mechpartstot)" + classified),
                  0.01 * classes);
      EXPECT_NEAR(TotalOf(run, "Labor_Profit"), Sum("select sum(marglabdol)" + classified), 0.01 * classes);
    } else {
      EXPECT_NEAR(TotalOf(run, "Parts_Cost"), Sum("select sum(invcost)" + classified), 0.01 * classes);
    }
  }
}

// Margins, the order and the makes' ranking are the hand-made shop's tests; here, which invoices count.
TEST(UntidySales, MarginsOfTheInvoicesAndOfTheMakes) {
  const ReportRun general = Report("GENMARG01", kPeriod);
  ASSERT_EQ(general.status, "0");
  const std::string invoices = " from wo where wodeleted = 0 and (invoiceid > 0 or credid > 0) and" + kRange;
  EXPECT_EQ(general.rows.size(), Count("select count(*)" + invoices) + 1);
  const double sales = Sum("select sum(screensubtotal)" + invoices);
  EXPECT_NEAR(TotalOf(general, "Total"), sales, 0.005);

  const ReportRun makes = Report("PROFBYVEH01", kPeriod);
  ASSERT_EQ(makes.status, "0");
  const std::string vehicles =
      " from wo inner join vehicle on wo.vehid = vehicle.vehid where wodeleted <> 1 and "
      "wo.vehid <> 0 and (invoiceid <> 0 or credid <> 0) and" +
      kRange;
  EXPECT_EQ(makes.rows.size(), Count("select count(*) from (select 1" + vehicles + " group by make)") + 1);
  EXPECT_NEAR(TotalOf(makes, "Sub_Total"), Sum("select sum(screensubtotal)" + vehicles), 0.005);
}

// The thresholds, deleted invoices and old credits are the hand-made shop's test; here, the model
// year of a vehicle that passes the other thresholds: that vehicle is not newer.
TEST(UntidySales, LoyalCustomersPerVehicleOverTheirThresholds) {
  // Per vehicle: its owner's invoices of the range that are not deleted, and every credit invoice.
  const std::string per_vehicle =
      "select wo.vehid, count(*) as n, sum(screensubtotal) as s, sum(screentotal) as t, vehicle.year as y "
      "from customer inner join wo on customer.cusid = wo.cusid inner join vehicle on wo.vehid = "
      "vehicle.vehid and wo.cusid = vehicle.cusid where (" +
      kRange + " and wodeleted <> 1 and invoiceid > 0) or credid <> 0 group by wo.vehid";
  const std::string year = Value("select min(y) from (" + per_vehicle + ") where n >= 2 and s >= 150");
  ASSERT_FALSE(year.empty());
  const ReportRun run = Report("LOYAL01", {kPeriod[0], kPeriod[1], "2", "150", year});
  ASSERT_EQ(run.status, "0");
  const std::string loyal = " from (" + per_vehicle + ") where n >= 2 and s >= 150 and y > " + year;
  EXPECT_GT(Count("select count(*)" + loyal), 0u);
  EXPECT_EQ(run.rows.size(), Count("select count(*)" + loyal) + 1);
  EXPECT_NEAR(TotalOf(run, "Total"), Sum("select sum(t)" + loyal), 0.005);
}

// The oil-change job codes.
const std::string kOilChange =
    " jobheader.jobnum in ('LOFGTX-HO', 'LOFSEMI-HO', 'LOFHM-HO', 'LOFSYNT-HO', 'LOF2411-HO', 'LOF2412-HO', "
    "'LUBSUM-HO', 'LUBFAL-HO', 'LUBWIN-HO', 'LUBSPR-HO', 'LUBE-HO', 'VIP1-HO', 'VIP2-HO', 'VIP3-HO', "
    "'VIP4-HO')";

// The oil-change reminders are the hand-made shop's test; here, the postcards without an oil change.
TEST(UntidySales, PostcardsGoToSolicitedCustomersWhoDidNotComeBack) {
  const std::vector<std::string> params = {"1/1/2024", "12/31/2024", "1/1/2025", "6/30/2025"};
  const std::string first = " wo.latestdate between '2024-01-01' and '2024-12-31 00:00:00'";
  const std::string second = " wo.latestdate between '2025-01-01' and '2025-06-30 00:00:00'";
  const std::string oil_lines =
      " from wo inner join woparts on woparts.invoiceid = wo.invoiceid inner join jobheader on "
      "woparts.presetjobid = jobheader.jobid where wo.invoiceid <> 0 and wodeleted <> 1 and" +
      kOilChange;
  const ReportRun other = Report("POSTCARDNONLOF01", params);
  ASSERT_EQ(other.status, "0");
  const std::string visits =
      "select distinct company, fname, lname, street, city, postal, year, make, model, wo.latestdate, "
      "wo.vehid, wo.invoiceid from customer inner join wo on customer.cusid = wo.cusid inner join vehicle "
      "on wo.vehid = vehicle.vehid where chksolicit = 1 and wo.invoiceid <> 0 and wodeleted <> 1 and" +
      first + " and wo.invoiceid not in (select wo.invoiceid" + oil_lines + " and" + first +
      ") and wo.vehid not in (select vehid from wo where invoiceid <> 0 and wodeleted <> 1 and" + second +
      ")";
  EXPECT_GT(Count("select count(*) from (" + visits + ")"), 0u);
  EXPECT_EQ(other.rows.size(), Count("select count(*) from (" + visits + ")"));
}

}  // namespace
}  // namespace ent::test::untidy
