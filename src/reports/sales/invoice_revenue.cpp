// Invoice revenue summary (INVSUM01), payment reconciliation (PAYREC01), average invoice (AVGINV01).
#include "common/format.h"
#include "common/log.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/report_rows.h"

namespace ent {

std::unique_ptr<Recordset> clsRS::getInvoiceRevenueSummary(const std::string& dtStart,
                                                           const std::string& dtEnd, bool bIncCustInfo,
                                                           bool bIncVehInfo, bool bIncInvSumm,
                                                           std::string& innerErr) {
  WriteLog("Invoice Revenue Summary Start");
  std::string sql = "Select ";
  sql += "stateandnumber as Repair_Order, ";
  sql += "latestdate as RO_Date, ";
  if (bIncInvSumm) sql += "Summary, ";
  sql += "screenparts + screentotpartsdisc as Parts, ";
  sql += "screenlabour + screentotlabourdisc as Labor, ";
  sql += "screenother as Other_Charges, ";
  sql += "screenlevy as Levy, ";
  sql += "screentotdiscount as Discounts, ";
  sql += "screensubtotal as Subtotal,";
  sql += "screentx1 as Tax1, ";
  sql += "screentx2 as Tax2, ";
  sql += "(screentx1+screentx2) as Tax_Total, ";
  sql += "screentotal As Total ";
  if (bIncCustInfo) sql += ", Company, fname as First_Name, lname as Last_Name ";
  if (bIncVehInfo) sql += ", Year, Make, Model, unitno as Unit_Number ";
  sql += "from ((wo ";
  sql += "inner join customer on customer.cusid=wo.cusid) ";
  sql += "left join vehicle on vehicle.vehid=wo.vehid) ";
  sql += "Where (wodeleted <> 1)";
  sql += " and (invoiceid <> 0 or credid <> 0)";
  sql += " and  (latestdate between  '";
  sql += SqlQuote(dtStart) + "' and '" + SqlQuote(dtEnd) + "')";
  sql += " order by latestdate, invoiceid, credid";

  // The rows go to the document as they are read, each as text, its amounts summed and formatted.
  ReportRowSteps steps;
  steps.totals = {"Parts",    "Labor", "Other_Charges", "Levy",      "Discounts",
                  "Subtotal", "Tax1",  "Tax2",          "Tax_Total", "Total"};
  steps.amounts = steps.totals;
  std::unique_ptr<Recordset> rows =
      StreamReportRows(conn_, sql, {{"Parts", "money"}, {"Labor", "money"}, {"Tax_Total", "money"}},
                       std::move(steps), innerErr);
  if (!rows) return nullptr;
  WriteLog("Invoice Revenue Summary End");
  return rows;
}

std::unique_ptr<Recordset> clsRS::getRepairOrderPaymentRecon(const std::string& dtStart,
                                                             const std::string& dtEnd,
                                                             std::string& innerErr) {
  std::string sql =
      "SELECT format(trandate, 'MM/dd/yyyy') as Payment_Date, invoiceid As Invoice_ID ,id As WorkOrder_ID";
  sql += ", IIF([type]='cdCASH',format([payment], '###,###,##0.00'),'0.00') AS Cash";
  sql += ", IIF([type]='cdCheque',format([payment], '###,###,##0.00'),'0.00') AS Cheque";
  sql += ", IIF([type]='cdVISA',format([payment], '###,###,##0.00'),'0.00') AS VISA";
  sql += ", IIF([type]='cdMasterCard',format([payment], '###,###,##0.00'),'0.00') AS Master_Card";
  sql += ", IIF([type]='cdAmex',format([payment], '###,###,##0.00'),'0.00') AS AMEX";
  sql += ", IIF([type]='cdOtherCard',format([payment], '###,###,##0.00'),'0.00') AS Other_Card";
  sql += ", IIF([type]='cdDebitCard',format([payment], '###,###,##0.00'),'0.00') AS Debit_Card";
  sql += ", IIF([type]='A/R',format([payment], '###,###,##0.00'),'0.00') AS AR";
  sql += " FROM wopaymentadv inner join wo on wopaymentadv.id = wo.woid where wopaymentadv.trandate >= '";
  sql += SqlQuote(dtStart) + "' and wopaymentadv.trandate <='" + SqlQuote(dtEnd) + "'";
  sql += " ORDER BY wopaymentadv.trandate, wo.invoiceid";

  ReportRowSteps steps;
  steps.totals = {"Cash", "Cheque", "VISA", "Master_Card", "AMEX", "Other_Card", "Debit_Card", "AR"};
  ComputedTypes computed = {{"Payment_Date", "nvarchar"}};
  for (const std::string& column : steps.totals) computed.emplace_back(column, "nvarchar");
  return StreamReportRows(conn_, sql, computed, std::move(steps), innerErr);
}

std::unique_ptr<Recordset> clsRS::getAvgInvoiceData(const std::string& dtStart, const std::string& dtEnd,
                                                    bool bIncCredInvoices, std::string& innerErr) {
  const std::string filter =
      bIncCredInvoices ? "and (invoiceid <> 0 or credid <> 0) " : "and (invoiceid > 0) ";
  std::string sql = "Select count(*) as Invoice_Count, ";
  sql += "format(avg(screenparts + screentotpartsdisc), '###,###,##0.00') as Avg_Parts, ";
  sql += "format(avg(screenlabour + screentotlabourdisc), '###,###,##0.00') as Avg_Labor, ";
  sql += "format(avg(screenother), '###,###,##0.00') as Avg_Other_Charges, ";
  sql += "format(avg(screenlevy), '###,###,##0.00') as Avg_Levy, ";
  sql += "format(avg(screentotdiscount), '###,###,##0.00') as Avg_Discounts, ";
  sql += "format(avg(screensubtotal), '###,###,##0.00') as Avg_Subtotal, ";
  sql += "format(avg(screentx1), '###,###,##0.00') as Avg_Tax1, ";
  sql += "format(avg(screentx2), '###,###,##0.00') as Avg_Tax2, ";
  sql += "format(avg(screentotal), '###,###,##0.00') As Avg_Total ";
  sql += "From wo ";
  sql += "Where (wodeleted <> 1) ";
  sql += filter;
  sql += "and  (latestdate between  '" + SqlQuote(dtStart) + "' and '" + SqlQuote(dtEnd) + "')";
  std::unique_ptr<Recordset> query = runQuery(sql, innerErr, false);
  return copyRS(query.get());
}

}  // namespace ent
