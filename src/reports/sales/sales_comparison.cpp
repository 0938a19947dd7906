// Sales of two date ranges side by side (SALESCOMP01) and the count of invoices of eight kinds in a
// range (CARCOUNT01).
#include <string>

#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"
#include "reports/sales/report_figures.h"

namespace ent {

namespace {

// A count query: first fragment, start date, second fragment, end date, third fragment.
struct CountQuery {
  const char* label;
  const char* first;
  const char* second;
  const char* third;
  const char* column;
};

// The two "New" counts keep to invoices: work orders not yet invoiced all have invoice number 0,
// and would otherwise count together as one more invoice.
const CountQuery kCounts[] = {
    {"Invoices",
     "select count(invoiceid) as Inv1 from wo where wodeleted <> 1 and invoiceid > 0 and latestdate >= '",
     "' and latestdate <= '", "'", "Inv1"},
    {"Zero Invoices",
     "select count(invoiceid) as Inv2 from wo where wodeleted <> 1 and invoiceid > 0 and screentotal = 0 and "
     "latestdate >= '",
     "' and latestdate <= '", "'", "Inv2"},
    {"Drive Clean",
     "select count(wo.invoiceid) as Inv3 from woparts,wo where ((wo.invoiceid = woparts.invoiceid and "
     "woparts.invoiceid <> 0) or (wo.credid = woparts.credid and woparts.credid <> 0 )) and description like "
     "'%DRIVE_CLEAN%' and wodeleted <> 1 and skip <> 'Yes' and latestdate >= '",
     "' and latestdate <= '", "'", "Inv3"},
    {"Emissions Test",
     "select count(wo.invoiceid) as Inv4 from woparts,wo where (wo.invoiceid = woparts.invoiceid and "
     "wo.invoiceid <> 0) and woparts.SalesClass = 'EMISSION TESTS' and wodeleted <> 1 and wo.credid = 0 and "
     "skip "
     "<> 'Yes' and latestdate >= '",
     "' and latestdate <= '", "'", "Inv4"},
    {"Emissions Test 2",
     "select count(wo.invoiceid) as Inv5 from woparts,wo where (wo.invoiceid = woparts.invoiceid and "
     "woparts.invoiceid <> 0) and woparts.SalesClass = 'EMISSION TESTS' and wodeleted <> 1 and wo.credid = 0 "
     "and "
     "skip <> 'Yes' and (screensubtotal = 35 or screensubtotal = 17.5) and latestdate >= '",
     "' and latestdate <= '", "'", "Inv5"},
    {"Credit Invoices", "select count(credid) as Inv5 from wo where credid <> 0 and latestdate >= '",
     "' and latestdate <= '", "'", "Inv5"},
    {"Emissions Test New",
     "SELECT Count([%$##@_Alias].invoiceid) AS CountOfInvoiceId FROM (SELECT DISTINCT wo.invoiceid FROM "
     "WOparts "
     "INNER JOIN wo ON WOparts.invoiceid = wo.invoiceid WHERE (((WOparts.SalesClass)='EMISSION TESTS') AND "
     "((wo.invoiceid)<>0) AND "
     "((WOparts.skip)<>'Yes') AND ((wo.LatestDate)>='",
     "') AND ((wo.LatestDate)<='", "') AND ((wo.credid)=0) AND ((wo.WOdeleted)<>1))) AS [%$##@_Alias];",
     "CountOfinvoiceid"},
    {"Emissions Test 2 New",
     "SELECT Count([%$##@_Alias].invoiceid) AS CountOfInvScrnTot FROM (SELECT DISTINCT wo.invoiceid FROM "
     "WOparts "
     "INNER JOIN wo ON WOparts.invoiceid = wo.invoiceid WHERE (((WOparts.SalesClass)='EMISSION TESTS') AND "
     "((wo.invoiceid)<>0) AND "
     "((WOparts.skip)<>'Yes') AND ((wo.LatestDate)>='",
     "') AND ((wo.LatestDate)<='",
     "') and ((screensubtotal = 35 or screensubtotal = 17.5) ) AND ((wo.credid)<>1) AND "
     "((wo.WOdeleted)<>1))) AS "
     "[%$##@_Alias];",
     "CountOfInvScrnTot"},
};

}  // namespace

std::unique_ptr<Recordset> clsRS::getSalesComp(const std::string& startDate, const std::string& EndDate,
                                               const std::string& startDate2, const std::string& EndDate2,
                                               std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    auto result = NewTextTable({"Total_Sales_1", "Total_Sales_2", "Difference"});
    result->AddNew();
    auto sales_between = [&](const std::string& from, const std::string& to) {
      const std::string sql =
          "select sum(screensubtotal) as TS from wo where wodeleted <> 1 and (invoiceid <> 0 or credid <> 0) "
          "and "
          "latestdate >= '" +
          SqlQuote(from) + "' and latestdate <= '" + SqlQuote(to) + "'";
      std::unique_ptr<Recordset> rs = runQuery(sql, strErr, false);
      return ToNumeric(Required(rs, strErr).Get("TS")).ToCurrency();
    };
    const Currency first = sales_between(startDate, EndDate);
    const Currency second = sales_between(startDate2, EndDate2);
    result->Set(size_t{0}, Variant(Format(Variant(first), kAmountPattern)));
    result->Set(size_t{1}, Variant(Format(Variant(second), kAmountPattern)));
    result->Set(size_t{2}, Variant(Format(Variant(first - second), kAmountPattern)));
    result->Update();
    strErr = "0";
    return result;
  });
}

std::unique_ptr<Recordset> clsRS::getCarCount(const std::string& startDate, const std::string& EndDate,
                                              std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    auto result = NewTextTable({"Invoice_Type", "Count"});
    const std::string from = SqlQuote(startDate), to = SqlQuote(EndDate);
    for (const CountQuery& q : kCounts) {
      result->AddNew();
      result->Set("Invoice_Type", Variant(q.label));
      std::string queryErr;
      std::unique_ptr<Recordset> rs = runQuery(q.first + from + q.second + to + q.third, queryErr, false);
      result->Set("Count", Variant(TrimBlanks(ToNumeric(Required(rs, queryErr).Get(q.column)).ToText())));
      result->Update();
    }
    strErr = "0";
    return result;
  });
}

}  // namespace ent
