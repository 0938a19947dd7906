// Sales by sales class (SC01): parts, labour and other charges of each class of the pricing table,
// with and without the technicians' costs.
#include <string>
#include <vector>

#include "common/format.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"
#include "reports/sales/report_figures.h"

namespace ent {

namespace {

const char kClassesSql[] =
    "select distinct salesclass from salesclassinventoryindexpricing order by salesclass";

// With the technicians' costs: parts cost includes the mechanics' parts, and the stored labour
// margin is the labour profit.
const char kWithTechCostsSql[] =
    "select sum(totparts-discpart) as [THETOTAL],sum(invcost + mechpartstot) as [THETOTAL2],sum(labour - "
    "disclab) "
    "as [THETOTAL3],sum(marglabdol) as [THETOTAL4],sum(otherchargeamt) as [THETOTAL5],sum(othCHRGcost) as "
    "[THETOTAL6] from woparts inner join wo on woparts.woid = wo.woid where ((woparts.woid <> 0) or "
    "((woparts.credid = wo.credid) and woparts.credid <> 0)) and  woparts.skip <> 'Yes' and (wo.invoiceid <> "
    "0 or "
    "wo.credid <> 0) and not (presetpkg = 1 and presetheader = 0) and salesclass = '";
const char kWithoutTechCostsSql[] =
    "select sum(totparts-discpart) as [THETOTAL],sum(invcost) as [THETOTAL2],sum(labour - disclab) as "
    "[THETOTAL3],sum(otherchargeamt) as [THETOTAL5],sum(othCHRGcost) as [THETOTAL6] from woparts inner join "
    "wo "
    "wo on woparts.woid = wo.woid where ((woparts.woid <> 0) or ((woparts.credid = wo.credid) and "
    "woparts.credid <> 0)) and  woparts.skip <> 'Yes' and (wo.invoiceid <> 0 or wo.credid <> 0) and not "
    "(presetpkg = 1 and presetheader = 0) and salesclass = '";

// Sold, cost, profit and margin of one group.
struct Group {
  Currency sold, cost, profit, margin;
};

// A sum of the class query in cents: empty counts 0.
Currency Aggregate(const Recordset& rs, const char* column) {
  const Currency value = clsRS::toCurrency(rs.Get(column));
  return value == Currency() ? value : sales::RoundWith(value, "##,###.00");
}

// The margin of a group that made a profit; a loss or nothing sold shows 0.
Currency GroupMargin(const Group& g) {
  if (g.sold == Currency() || g.profit <= Currency()) return Currency();
  return sales::RoundWith(sales::MarginPercent(g.sold, g.cost), "###.00");
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getSalesClassReport2(const std::string& dtStart, const std::string& dtEnd,
                                                       bool chkIncludeTechCosts, std::string& innerErr) {
  const std::string dates =
      " and latestdate >= '" + SqlQuote(dtStart) + "' and latestdate <= '" + SqlQuote(dtEnd) + "'";
  std::unique_ptr<Recordset> classes = runQuery(kClassesSql, innerErr, false);
  Recordset& list = Required(classes, innerErr);

  auto result = NewTextTable({"Sales_Class", "Parts_Sold", "Parts_Cost", "Parts_Profit", "Parts_Margin",
                              "Labor_Sold", "Labor_Cost", "Labor_Profit", "Labor_Margin", "Other_Charge_Sold",
                              "Other_Charge_Cost", "Other_Charge_Profit", "Other_Charge_Margin", "Total_Sold",
                              "Total_Cost", "Total_Margin", "Total_Profit"});
  for (; !list.IsEof(); list.MoveNext()) {
    const Variant& entry = list.Get("salesclass");
    if (entry.IsNull()) continue;  // a class without a name has no lines of its own
    std::string salesClass = entry.ToText();
    if (salesClass == "UNCLASSIFIED") salesClass.clear();  // lines without a sales class

    std::string sql = chkIncludeTechCosts ? kWithTechCostsSql : kWithoutTechCostsSql;
    sql += SqlQuote(salesClass) + "'" + dates;
    std::unique_ptr<Recordset> sums = runQuery(sql, innerErr, false);
    Recordset& row = Required(sums, innerErr);

    Group parts, labour, other, total;
    if (!row.IsEof()) {
      parts.sold = Aggregate(row, "THETOTAL");
      parts.cost = Aggregate(row, "THETOTAL2");
      parts.profit = sales::RoundWith(parts.sold - parts.cost, "##,###.00");
      parts.margin = GroupMargin(parts);

      labour.sold = Aggregate(row, "THETOTAL3");
      if (chkIncludeTechCosts) {
        labour.profit = Aggregate(row, "THETOTAL4");
        labour.cost = sales::RoundWith(labour.sold - labour.profit, "##,###.00");
        labour.margin = GroupMargin(labour);
      } else {
        labour.profit = sales::RoundWith(labour.sold, "###,###.00");
        labour.margin = labour.sold == Currency() ? Currency() : Currency::FromInt(100);
      }

      other.sold = Aggregate(row, "THETOTAL5");
      other.cost = Aggregate(row, "THETOTAL6");
      other.profit = other.sold - other.cost;
      other.margin = GroupMargin(other);

      total.sold = sales::RoundWith(parts.sold + labour.sold + other.sold, "###,###.00");
      total.cost = sales::RoundWith(parts.cost + labour.cost + other.cost, "###,###.00");
      total.profit = sales::RoundWith(total.sold - total.cost, "###,###.00");
      total.margin = GroupMargin(total);
    }

    result->AddNew();
    result->Set("Sales_Class", Variant(salesClass.empty() ? std::string("UNCLASSIFIED") : salesClass));
    auto put = [&](const char* prefix, const Group& g) {
      const std::string p = prefix;
      result->Set(p + "_Sold", Variant(Format(Variant(g.sold), kAmountPattern)));
      result->Set(p + "_Cost", Variant(Format(Variant(g.cost), kAmountPattern)));
      result->Set(p + "_Profit", Variant(Format(Variant(g.profit), kAmountPattern)));
      result->Set(p + "_Margin", Variant(Format(Variant(g.margin), kAmountPattern)));
    };
    put("Parts", parts);
    put("Labor", labour);
    put("Other_Charge", other);
    put("Total", total);
    result->Update();
    YieldToPendingWork();
  }

  appendTotalRow(*result, {"Parts_Sold", "Parts_Cost", "Parts_Profit", "Labor_Sold", "Labor_Cost",
                           "Labor_Profit", "Other_Charge_Sold", "Other_Charge_Cost", "Other_Charge_Profit",
                           "Total_Sold", "Total_Cost", "Total_Profit", ""});
  if (innerErr.empty()) innerErr = "0";
  return result;
}

}  // namespace ent
