// Margins of the invoices in a range (GENMARG01) and of the vehicle makes (PROFBYVEH01).
#include <string>
#include <vector>

#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/report_rows.h"
#include "reports/rowset_helpers.h"
#include "reports/sales/report_figures.h"

namespace ent {

namespace {

const char kCostSql[] =
    "select screenparts, screentotpartsdisc, txtpartpermargin, screenlabour, screenTotLabourDisc, "
    "txtLabourPERmargin, screenTotLabourDisc, txtOtherPERmargin, screenother, screensubtotal, "
    "txtTotalPERmargin, "
    "screenlevy  from wo ";

const char kInvoiceSql[] =
    "select format(latestdate, 'MM/dd/yyyy') as RO_Date, StateAndNumber as Repair_Order, format(screenparts "
    "+ "
    "screentotpartsDisc, '###,###,##0.00') as Parts, format(txtPartPERmargin, '###,###,##0.00') as "
    "Parts_Margin, "
    "format(screenlabour + screentotlabourdisc, '###,###,##0.00') as Labor, format(txtLabourPERmargin, "
    "'###,###,##0.00') as Labor_Margin, format(screenother, '###,###,##0.00') as Other_Charges, "
    "format(txtOtherPERmargin, '###,###,##0.00') as Other_Charges_Margin, format(screenlevy, "
    "'###,###,##0.00') as "
    "Levy,  format(screentotpartsDisc + screentotlabourdisc, '###,###,##0.00') as Discount, "
    "format(screensubtotal, "
    "'###,###,##0.00') as Total, format(txtTotalPERmargin, '###,###,##0.00') as Total_Margin from wo ";

const char kMakeSql[] =
    "select vehicle.Make, sum(screenparts+screentotpartsDisc) as Total_Parts, "
    "sum(screenlabour+screentotlabourdisc) "
    "as Total_Labor, sum(screenother) as Total_Other_Charges, sum(screentotpartsDisc + screentotlabourdisc) "
    "as "
    "Total_Discounts, sum(screensubtotal) as Sub_Total, sum(txtTotalDolMargin) as Profit, "
    "format(iif(sum(screensubtotal) = 0, 0, (sum(txtTotalDolMargin)/sum(screensubtotal))*100), "
    "'###,###,##0.00') "
    "As Profit_Margin from WO inner join VEHICLE on wo.vehid = vehicle.vehid WHERE (wodeleted <> 1) and "
    "wo.vehid "
    "<> 0 and (invoiceid <> 0 or credid <> 0) and  (latestdate between  '";
const char kMakeGroupSql[] =
    "') group by vehicle.make order by iif(sum(screensubtotal) = 0, 0, "
    "(sum(txtTotalDolMargin)/sum(screensubtotal))*100) desc";

// The amount less the share the stored margin percentage keeps: what the amount cost. An empty
// percentage counts as 0 %.
double CostOf(double amount, const Variant& marginPercent) {
  return amount * (1.0 - clsRS::toCurrency(marginPercent).ToDouble() / 100.0);
}

double Amount(const Recordset& rs, const char* column) {
  return clsRS::toCurrency(rs.Get(column)).ToDouble();
}

bool IsTotalLine(const Recordset& rs) {
  if (rs.IsBof() || rs.IsEof()) return false;
  return TrimBlanks(rs.Get(size_t{0}).ToText()) == "[b]TOTAL";
}

// The invoice rows as text, ending with their total line, whose margins are weighted by the costs.
ReportRowSteps InvoiceSteps(Currency partsCost, Currency labourCost, Currency otherCost, Currency totalCost) {
  ReportRowSteps steps;
  steps.totals = {"Parts", "Labor", "Other_Charges", "Levy", "Discount", "Total"};
  steps.complete_total = [=](const std::vector<Field>& fields, std::vector<Variant>& total) {
    struct Margin {
      const char* sales;
      Currency cost;
      const char* margin;
    };
    auto cell = [&](const char* name) -> Variant& { return total[FieldIndexOf(fields, name)]; };
    for (const Margin& m :
         {Margin{"Parts", partsCost, "Parts_Margin"}, Margin{"Labor", labourCost, "Labor_Margin"},
          Margin{"Other_Charges", otherCost, "Other_Charges_Margin"},
          Margin{"Total", totalCost, "Total_Margin"}}) {
      const double sales = clsRS::toCurrency(cell(m.sales)).ToDouble();
      std::string text = "0.00";
      if (sales > 0)
        text = Format(Variant(sales::Round2(100.0 - m.cost.ToDouble() / sales * 100.0)), kAmountPattern);
      cell(m.margin) = Variant(text);
    }
  };
  return steps;
}

// The invoice query's columns, all computed but the repair order: texts.
const ComputedTypes kInvoiceTypes = {{"RO_Date", "nvarchar"},
                                     {"Parts", "nvarchar"},
                                     {"Parts_Margin", "nvarchar"},
                                     {"Labor", "nvarchar"},
                                     {"Labor_Margin", "nvarchar"},
                                     {"Other_Charges", "nvarchar"},
                                     {"Other_Charges_Margin", "nvarchar"},
                                     {"Levy", "nvarchar"},
                                     {"Discount", "nvarchar"},
                                     {"Total", "nvarchar"},
                                     {"Total_Margin", "nvarchar"}};

}  // namespace

std::unique_ptr<Recordset> clsRS::getGenMargReport(const std::string& startDate, const std::string& EndDate,
                                                   std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    const std::string range =
        "where wodeleted = 0 and (invoiceid > 0 or credid > 0) and latestdate between '" +
        SqlQuote(startDate) + "' and '" + SqlQuote(EndDate) + "' order by latestdate, invoiceid, credid";
    Currency partsCost, labourCost, otherCost, totalCost;
    std::unique_ptr<Recordset> costs = RunForwardOnly(conn_, kCostSql + range, strErr);
    if (costs) {
      for (Recordset& rs = *costs; !rs.IsEof(); rs.MoveNext()) {
        YieldToPendingWork();
        auto add = [](Currency& sum, double cost) { sum = Currency::FromDouble(sum.ToDouble() + cost); };
        add(partsCost,
            CostOf(Amount(rs, "screenparts") + Amount(rs, "screentotpartsdisc"), rs.Get("txtPartPERmargin")));
        add(labourCost, CostOf(Amount(rs, "screenlabour") + Amount(rs, "screenTotLabourDisc"),
                               rs.Get("txtLabourPERmargin")));
        add(otherCost, CostOf(Amount(rs, "screenother"), rs.Get("txtOtherPERmargin")));
        add(totalCost,
            CostOf(Amount(rs, "screensubtotal") - Amount(rs, "screenlevy"), rs.Get("txtTotalPERmargin")));
      }
    }
    std::string displayErr;
    std::unique_ptr<Recordset> invoices =
        StreamReportRows(conn_, kInvoiceSql + range, kInvoiceTypes,
                         InvoiceSteps(partsCost, labourCost, otherCost, totalCost), displayErr);
    Required(invoices, displayErr);
    strErr = "0";
    return invoices;
  });
}

std::unique_ptr<Recordset> clsRS::getMarginByMake(const std::string& dtStart, const std::string& dtEnd,
                                                  std::string& innerErr) {
  const std::string sql = kMakeSql + SqlQuote(dtStart) + "' and '" + SqlQuote(dtEnd) + kMakeGroupSql;
  std::unique_ptr<Recordset> makes = runQuery(sql, innerErr, false);
  if (!makes) return nullptr;
  std::unique_ptr<Recordset> copy = copyRS(makes.get());
  Recordset& result = Required(copy, "The vehicle makes could not be copied.");
  const std::vector<std::string> amounts = {
      "Total_Parts", "Total_Labor", "Total_Other_Charges", "Total_Discounts", "Sub_total", "Profit", ""};
  appendTotalRow(result, amounts);
  if (result.RecordCount() > 0) {
    result.MoveLast();
    if (IsTotalLine(result)) {
      const Currency subTotal = toCurrency(result.Get("Sub_Total"));
      std::string margin = "0.00";
      if (subTotal > Currency())
        margin = Format(Variant(toCurrency(result.Get("Profit")).ToDouble() / subTotal.ToDouble() * 100.0),
                        kAmountPattern);
      result.Set("Profit_Margin", Variant(margin));
      result.Update();
    }
  }
  formatColumns(result, amounts, kAmountPattern);
  return copy;
}

}  // namespace ent
