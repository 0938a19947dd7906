// Inventory value (INVVAL01), inventory list (INVLIST01), parts sales performance (PARTSALPER01) and
// purchases per supplier (TOTALSUPPURCH01).
#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

// An empty filter matches anything, nulls included (LikeFilter leaves it out).
void MatchAnyWhenEmpty(std::string& filter) {
  if (filter.empty()) filter = "%";
}

// The plain average of a column's non-blank cells (0 when there is none); leaves the rowset on its
// first row.
double averageColumn(Recordset* rs, const std::string& columnName) {
  if (!rs) return 0;
  try {
    Currency sum;
    int count = 0;
    if (!rs->IsBof() || !rs->IsEof()) rs->MoveFirst();
    while (!rs->IsEof()) {
      const Variant value = ToNumeric(rs->Get(columnName));
      if (!TrimBlanks(value.ToText()).empty()) {
        sum += value.ToCurrency();
        ++count;
      }
      rs->MoveNext();
    }
    if (rs->RecordCount() > 0) rs->MoveFirst();
    if (count == 0) return 0;
    return sum.ToDouble() / count;
  } catch (const Error&) {
    return 0;
  }
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getInvValue(std::string& sPartNum, std::string& sDesc,
                                              std::string& sCategory, std::string& strErr) {
  try {
    MatchAnyWhenEmpty(sPartNum);
    MatchAnyWhenEmpty(sDesc);
    MatchAnyWhenEmpty(sCategory);
    // Only transactions that brought stock in count towards the cost of what is on hand.
    std::string sql =
        "select inventory.partnum as Part_Number, inventory.Description, inventory.Category, "
        "format(inventory.QOH, '###,###,##0.00') as QOH, ";
    sql +=
        "format(inventory.LastList, '###,###,##0.00') as LastList, format(inventory.LastCost, "
        "'###,###,##0.00') as LastCost, format(sum(((invtrans.coresea * invtrans.qty)) + ((invtrans.costea * "
        "invtrans.qty))), '###,###,0.00') as TotalCost, ";
    sql +=
        "format((inventory.lastlist * inventory.qoh), '###,###,##0.00') as List_Times_QOH from invtrans "
        "right "
        "join inventory on invtrans.invid = inventory.invid where invtrans.qty > 0 ";
    sql += LikeFilter("inventory.partnum", sPartNum) + LikeFilter("inventory.description", sDesc) +
           LikeFilter("inventory.category", sCategory) + " ";
    sql +=
        "group by  inventory.partnum, inventory.description, inventory.category, inventory.qoh, "
        "inventory.lastlist, inventory.lastcost order by inventory.partnum ";
    std::unique_ptr<Recordset> query = runQuery(sql, strErr, false);
    std::unique_ptr<Recordset> copy = copyRS(query.get());
    if (!copy) return nullptr;
    appendTotalRow(*copy, {"QOH", "LastList", "LastCost", "TotalCost", "List_Times_QOH", ""});
    strErr = "0";
    return copy;
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

std::unique_ptr<Recordset> clsRS::getInvList(std::string& sPartNum, std::string& sDesc,
                                             std::string& sCategory, std::string& sSupp, std::string& sLoc,
                                             std::string& strErr) {
  try {
    MatchAnyWhenEmpty(sPartNum);
    MatchAnyWhenEmpty(sDesc);
    MatchAnyWhenEmpty(sCategory);
    MatchAnyWhenEmpty(sSupp);
    MatchAnyWhenEmpty(sLoc);
    std::string sql =
        "select partnum as Part_Number, Description, Manufacturer, Location, supplier.company as Supplier, "
        "Category, format(lastlist, '###,###,##0.00') as List_Price, format(lastcost, '###,###,##0.00') as "
        "Last_Cost, format(qoh,'###,###,##0.00') as QOH ";
    sql += "from inventory inner join supplier on inventory.supid = supplier.supid ";
    sql += "where 1 = 1" + LikeFilter("location", sLoc) + LikeFilter("partnum", sPartNum) +
           LikeFilter("description", sDesc) + LikeFilter("category", sCategory) +
           LikeFilter("supplier.company", sSupp) + " order by partnum";
    std::unique_ptr<Recordset> query = runQuery(sql, strErr, false);
    std::unique_ptr<Recordset> copy = copyRS(query.get());
    if (!copy) return nullptr;
    appendTotalRow(*copy, {"List_Price", "Last_Cost", "QOH", ""});
    strErr = "0";
    return copy;
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

std::unique_ptr<Recordset> clsRS::getPartsSalesPerformance(const std::string& sDateStart,
                                                           const std::string& sDateEnd, std::string& sPartNum,
                                                           std::string& sDesc, std::string& sCategory,
                                                           bool bIncVoidWOs, std::string& strErr) {
  MatchAnyWhenEmpty(sPartNum);
  MatchAnyWhenEmpty(sDesc);
  MatchAnyWhenEmpty(sCategory);
  std::string sql = "SELECT ";
  sql += "inventory.partnum as Part_Number,";
  sql += "inventory.Description,";
  sql += "(sum(qty)) as Qty_Sold ,";
  // A part sold and credited in full in the range has no quantity: its averages stay empty (and out
  // of the margin average), its revenue still counts.
  sql += "(sum(invcost+invcorecost) / nullif(sum(qty), 0))  as Avg_Cost,";
  sql += "(sum(totparts-discpart)/nullif(sum(qty), 0)) as Avg_Price,";
  sql += "(sum(invcost)) as Total_Cost,";
  sql += "(sum(totparts-discpart)) as Total_Revenue,";
  sql +=
      "iif((sum(totparts-discpart)/nullif(sum(qty), 0)) <> 0, ((((sum(totparts-discpart)/sum(qty)) - "
      "(sum(invcost+invcorecost) / sum(qty))) / (sum(totparts-discpart)/sum(qty)))*100), "
      "iif(sum(qty) = 0, null, 0)) as Avg_Margin,";
  sql += " (Supplier.Company) as Supplier_Name";
  sql += " FROM";
  sql +=
      " woparts,wo,inventory inner join supplier on (inventory.supid = supplier.supid) where "
      "((woparts.invoiceid = "
      "wo.invoiceid and woparts.invoiceid <> 0) or (woparts.credid = wo.credid and wo.credid <> 0)";
  sql += bIncVoidWOs ? " or (woparts.woid = wo.woid and wo.chkvoid = 1) " : " ";
  sql += " )";
  sql += " and woparts.invinvid = inventory.invid and wodeleted = 0 and invcost <> 0 and skip <> 'Yes'";
  sql += LikeFilter("inventory.description", sDesc) + LikeFilter("inventory.category", sCategory) +
         " and latestdate >= '" + SqlQuote(sDateStart) + "' AND latestdate <= '" + SqlQuote(sDateEnd) + "'" +
         LikeFilter("partnum", sPartNum);
  sql +=
      " and Qty <> 0 and invcost <> 0 group by partnum,inventory.description, supplier.company order by "
      "partnum";

  // A query the database rejects keeps its failure text for the caller.
  std::unique_ptr<Recordset> query = runQuery(sql, strErr, false);
  if (!query) return nullptr;
  std::unique_ptr<Recordset> copy = copyRS(query.get());
  if (copy) {
    const double average_margin = averageColumn(copy.get(), "Avg_Margin");
    appendTotalRow(*copy, {"Total_Cost", "Total_Revenue", ""});
    try {
      // The total line carries the average of the parts' margins, not a sum.
      copy->MoveLast();
      if (!copy->IsEof()) copy->Set("Avg_Margin", Variant(average_margin));
    } catch (const Error&) {
    }
    formatColumns(*copy,
                  {"Qty_Sold", "Avg_Cost", "Avg_Price", "Avg_Margin", "Total_Cost", "Total_Revenue", ""},
                  kAmountPattern);
  }
  strErr = "0";
  return copy;
}

std::unique_ptr<Recordset> clsRS::GetSupplierExpenseSummary(const std::string& sDTFrom,
                                                            const std::string& sDTTo, std::string& sErr) {
  std::string list_err;
  std::unique_ptr<Recordset> suppliers =
      runQuery("SELECT supid, company FROM supplier  ORDER BY company", list_err, false);
  Required(suppliers, list_err, &sErr);

  std::unique_ptr<Recordset> result = NewTextTable({"Supplier", "Total_Purchases"});
  while (!suppliers->IsEof()) {
    // Every supplier has a purchase table of its own, named after its id.
    std::string purchase_err;
    std::unique_ptr<Recordset> purchases =
        runQuery("SELECT sum(purchase) as TotPurch FROM suph" + SafeString(suppliers->Get("SupID")) +
                     " WHERE purchdate BETWEEN '" + SqlQuote(sDTFrom) + "' and '" + SqlQuote(sDTTo) + "'",
                 purchase_err, false);
    Required(purchases, purchase_err, &sErr);
    result->AddNew();
    result->Set("Supplier", Variant(SafeString(suppliers->Get("Company"))));
    result->Set("Total_Purchases",
                Variant(purchases->IsEof() ? std::string("0.00")
                                           : Format(ToNumeric(purchases->Get("TotPurch")), kAmountPattern)));
    result->Update();
    suppliers->MoveNext();
    YieldToPendingWork();
  }
  appendTotalRow(*result, {"Total_Purchases", ""});
  sErr = "0";
  return result;
}

}  // namespace ent
