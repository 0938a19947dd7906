// Invoice revenue (INVSUM01) and average invoice (AVGINV01) on the small sample shop: the switched
// columns and the empty ranges (the figures of credit and deleted invoices, and the payment
// reconciliation, are the untidy shop's tests).
#include <gtest/gtest.h>

#include "support/sample_shop.h"

namespace ent {
namespace {

using test::Amount;
using test::QueryValue;
using test::RunReport;

const std::string kYear = "'2024-01-01 00:00:00' and '2024-12-31 00:00:00'";

TEST(InvoiceRevenueTest, ColumnsSwitchesRowsAndTotalLine) {
  test::ReportRun plain = RunReport("INVSUM01", {"1/1/2024", "12/31/2024"});
  ASSERT_EQ(plain.status, "0");
  const std::string where =
      " from wo inner join customer on customer.cusid = wo.cusid where wodeleted <> 1 and "
      "(invoiceid <> 0 or credid <> 0) and latestdate between " +
      kYear;
  ASSERT_EQ(plain.rows.size(), std::stoul(QueryValue("select count(*)" + where)) + 1);
  const auto& total = plain.rows.back();
  EXPECT_EQ(total.at("Repair_Order"), "[b]TOTAL");
  EXPECT_NEAR(Amount(total.at("Tax_Total")),
              std::stod(QueryValue("select sum(screentx1 + screentx2)" + where)), 0.005);
  // Amounts are shown with two decimals and thousands separators; dates as en-US text.
  EXPECT_NE(total.at("Total").find(','), std::string::npos);
  EXPECT_EQ(plain.rows.front().at("RO_Date"), "1/2/2024");

  test::ReportRun all = RunReport("INVSUM01", {"1/1/2024", "11/30/2024", "true", "TRUE", "1"});
  ASSERT_EQ(all.status, "0");
  EXPECT_EQ(all.columns,
            (std::vector<std::string>{"Repair_Order",  "RO_Date",   "Summary",   "Parts",    "Labor",
                                      "Other_Charges", "Levy",      "Discounts", "Subtotal", "Tax1",
                                      "Tax2",          "Tax_Total", "Total",     "Company",  "First_Name",
                                      "Last_Name",     "Year",      "Make",      "Model",    "Unit_Number"}));
  // Work orders without a vehicle stay in (left join).
  EXPECT_EQ(all.rows.size(), RunReport("INVSUM01", {"1/1/2024", "11/30/2024"}).rows.size());

  test::ReportRun none = RunReport("INVSUM01", {"1/1/1990", "12/31/1990"});
  EXPECT_EQ(none.status, "No records found.");
  EXPECT_FALSE(none.has_document);
}

TEST(InvoiceRevenueTest, AnEmptyRangeStillGivesItsAverageRow) {
  // A count of 0 and no averages.
  test::ReportRun empty = RunReport("AVGINV01", {"1/1/1990", "12/31/1990"});
  ASSERT_EQ(empty.status, "0");
  ASSERT_EQ(empty.rows.size(), 1u);
  EXPECT_EQ(empty.rows[0].at("Invoice_Count"), "0");
  EXPECT_EQ(empty.rows[0].at("Avg_Total"), "");
}

}  // namespace
}  // namespace ent
