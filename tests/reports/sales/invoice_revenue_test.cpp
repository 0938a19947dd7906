// Invoice revenue (INVSUM01), payment reconciliation (PAYREC01) and average invoice (AVGINV01) on
// the small sample shop: the switched columns, every payment method and the empty ranges (the
// figures of credit and deleted invoices are the untidy shop's tests').
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

TEST(InvoiceRevenueTest, PaymentsSpreadOverTheirMethodColumns) {
  test::ReportRun run = RunReport("PAYREC01", {"1/1/2025", "3/31/2025"});
  ASSERT_EQ(run.status, "0");
  const std::string where =
      " from wopaymentadv inner join wo on wopaymentadv.id = wo.woid where "
      "wopaymentadv.trandate >= '2025-01-01 00:00:00' and wopaymentadv.trandate <= "
      "'2025-03-31 00:00:00'";
  ASSERT_EQ(run.rows.size(), std::stoul(QueryValue("select count(*)" + where)) + 1);
  const std::vector<std::pair<std::string, std::string>> methods = {{"Cash", "cdCASH"},
                                                                    {"Cheque", "cdCheque"},
                                                                    {"VISA", "cdVISA"},
                                                                    {"Master_Card", "cdMasterCard"},
                                                                    {"AMEX", "cdAmex"},
                                                                    {"Other_Card", "cdOtherCard"},
                                                                    {"Debit_Card", "cdDebitCard"},
                                                                    {"AR", "A/R"}};
  for (const auto& [column, type] : methods) {
    const std::string sum =
        QueryValue("select coalesce(sum(payment), 0)" + where + " and type = '" + type + "'");
    EXPECT_NEAR(Amount(run.rows.back().at(column)), std::stod(sum), 0.005) << column;
  }
  // Each payment shows its amount in one column and "0.00" in the other seven.
  for (size_t i = 0; i + 1 < run.rows.size(); ++i) {
    int zeros = 0;
    for (const auto& method : methods) zeros += run.rows[i].at(method.first) == "0.00";
    EXPECT_GE(zeros, 7);
  }
  EXPECT_EQ(run.rows.front().at("Payment_Date").size(), 10u);  // MM/dd/yyyy
  EXPECT_EQ(run.rows.front().at("Payment_Date").substr(6), "2025");
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
