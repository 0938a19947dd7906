// The daily sales recap (DSR01): each sales class's units, sales, cost and margin for the day, the
// month to date and the year to date, a total line and, on request, a summary by category.
#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"
#include "reports/sales/report_figures.h"

namespace ent {

namespace {

enum Category { kParts, kLabour, kTires, kOther, kWheels };

const std::map<std::string, Category>& CategoryTable() {
  static const std::map<std::string, Category> table = [] {
    std::map<std::string, Category> t;
    for (const char* c :
         {"AIR CON PARTS", "AIR FILTERS", "ANTI-FREEZE", "ANTI FREEZE", "BATTERIES", "BRAKE PARTS", "EXHAUST",
          "MISC FLUIDS", "MISC MECH PARTS", "NON MECH PARTS", "NUTS ACESSORIES", "OIL", "OIL FILTERS",
          "SHOP SUPPLIES", "SUSPENSION PART", "TIRE TOTES", "TUNE UP PARTS", "VALVES", "WIPER BLADES"})
      t[c] = kParts;
    for (const char* c :
         {"ALIGNMENT LABOR", "BRAKE LABOR", "EMISSION TEST", "FLAT REPAIRS", "MAINT PACKAGE",
          "MISC MECH LABOR", "NON MECH LABOR", "OIL CHANGE LABOR", "SAFETY INSPECTION", "SUSPENSION LABOR",
          "SUSPENSION LABR", "TIRE LABOUR", "TIRE LABOR", "TUNE UP LABOR", "WHEEL BAL LABOR"})
      t[c] = kLabour;
    for (const char* c :
         {"BF GOODRICH", "BR FS PASS", "BR FS TRUCK", "GDYR PASS", "GDYR TRUCK", "KUMHO PASS", "KUMHO TRUCK",
          "MICHELIN PASS", "MICHELIN TRUCK", "OTHER TIRES", "PIRELLI PASS", "PIRELLI TRUCK",
          "TIRE SPECIALIST", "TOYO PASS", "TOYO TRUCK", "USED TIRES", "YOKOHAMA PASS", "YOKOHAMA TRUCK"})
      t[c] = kTires;
    for (const char* c : {"WHEEL MAG", "WHEEL STEEL", "WHEELS MAG", "WHEELS STEEL"}) t[c] = kWheels;
    return t;
  }();
  return table;
}

// The three periods of a row and their columns.
struct Period {
  const char* units;
  const char* sales;
  const char* cost;
  const char* margin;
};
const Period kPeriods[] = {{"Units", "Sales", "Cost", "Margin"},
                           {"Units_MTD", "Sales_MTD", "Cost_MTD", "Margin_MTD"},
                           {"Units_YTD", "Sales_YTD", "Cost_YTD", "Margin_YTD"}};

Variant Amount(Currency value) {
  return Variant(Format(Variant(value), kAmountPattern));
}

// A displayed figure read back as a number.
Currency Shown(const Recordset& rs, const char* column) {
  return rs.Get(column).ToCurrency();
}

// The daily recap's figures of one period: units, sales, cost, margin percent.
struct ClassTotals {
  Currency units, sales, cost, margin;
};

// One summary category's figures: units, units month-to-date, units year-to-date, cost (day, MTD,
// YTD), sales (day, MTD, YTD).
using CategoryFigures = std::array<Currency, 9>;

// (sales - cost) / sales * 100; 0 without sales.
Currency calcMarginPct(Currency sales, Currency cost) {
  if (sales == Currency()) return Currency();
  const double s = sales.ToDouble();
  return Currency::FromDouble((s - cost.ToDouble()) / s * 100.0);
}

// The lines of one sales class ("UNCLASSIFIED": lines without a class) dated from..to.
ClassTotals getClassTotals(clsRS& engine, std::string salesClass, const DateTime& from, const DateTime& to) {
  if (AsciiUpper(salesClass) == "UNCLASSIFIED") salesClass.clear();
  const std::string lines =
      " from woparts inner join wo on woparts.woid = wo.woid where ((woparts.woid <> 0) or ((woparts.credid "
      "= "
      "wo.credid) and woparts.credid <> 0)) and  woparts.skip <> 'Yes' and (wo.invoiceid <> 0 or wo.credid "
      "<> 0) "
      "and not (presetpkg = 1 and presetheader = 0) and salesclass = '" +
      SqlQuote(salesClass) + "' and latestdate >= '" + from.ShortDate() + "' and latestdate <= '" +
      to.ShortDate() + "'";
  std::string errA, errB;
  std::unique_ptr<Recordset> a = engine.runQuery(
      "SELECT sum(qty) as TotQTY, sum(totparts - discpart) As TotSales, sum(invcost + mechpartstot) as "
      "TotCost, "
      "sum(hrs) as TotHRS, sum(labour - disclab) As TotLSales, sum(mechlabtot) as TotLCost" +
          lines,
      errA, false);
  std::unique_ptr<Recordset> b = engine.runQuery(
      "SELECT count(*) as TotOTC, sum(otherchargeamt) As TotSales, sum(othCHRGcost) as TotCost" + lines +
          " and otherchargeid > 0",
      errB, false);
  Recordset& parts = Required(a, errA);
  ClassTotals totals;
  if (parts.IsEof()) return totals;
  Recordset& other = Required(b, errB);
  auto n = [](const Recordset& rs, const char* column) { return ToNumeric(rs.Get(column)).ToCurrency(); };
  totals.units = n(parts, "TotQTY") + n(parts, "TotHRS") + n(other, "TotOTC");
  totals.sales = n(parts, "TotSales") + n(parts, "TotLSales") + n(other, "TotSales");
  totals.cost = n(parts, "TotCost") + n(parts, "TotLCost") + n(other, "TotCost");
  totals.margin = calcMarginPct(totals.sales, totals.cost);
  return totals;
}

// Adds the figures into the category of the class; categories in the order PARTS, LABOUR, TIRES,
// OTHER, WHEELS.
void addClassToCategory(const std::string& salesClass, const CategoryFigures& figures,
                        std::array<CategoryFigures, 5>& categories) {
  const auto& table = CategoryTable();
  auto found = table.find(AsciiUpper(TrimBlanks(salesClass)));
  CategoryFigures& into = categories[found == table.end() ? kOther : found->second];
  for (size_t i = 0; i < figures.size(); ++i) into[i] += figures[i];
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getDailySalesRecap(const std::string& dDateAsOf, bool bDisFinSumm,
                                                     std::string& strErr) {
  const DateTime day = Variant(dDateAsOf).ToDate().DateOnly();  // an unreadable day goes to the caller
  try {
    auto result =
        NewTextTable({"Sales_Class", "Units", "Sales", "Cost", "Margin", "Units_MTD", "Sales_MTD", "Cost_MTD",
                      "Margin_MTD", "Units_YTD", "Sales_YTD", "Cost_YTD", "Margin_YTD"});
    std::string listErr;
    std::unique_ptr<Recordset> classes =
        runQuery("SELECT distinct salesclass FROM SalesClassInventoryIndexPricing ORDER BY salesclass",
                 listErr, false);
    Recordset& list = Required(classes, listErr);
    if (list.IsEof()) {  // no sales classes: the table stays empty
      strErr = "0";
      return result;
    }
    // A blank (or null) class and UNCLASSIFIED both stand for the lines without a class: when the
    // pricing table has both, the lines are shown once, under UNCLASSIFIED.
    std::vector<std::string> names;
    bool has_unclassified = false;
    for (; !list.IsEof(); list.MoveNext()) {
      names.push_back(SafeString(list.Get("salesclass")));
      if (AsciiUpper(TrimBlanks(names.back())) == "UNCLASSIFIED") has_unclassified = true;
    }
    if (has_unclassified) {
      std::erase_if(names, [](const std::string& name) { return TrimBlanks(name).empty(); });
    }
    const DateTime starts[] = {day, DateTime::FromParts(day.year(), day.month(), 1),
                               DateTime::FromParts(day.year(), 1, 1)};
    std::array<CategoryFigures, 5> categories{};
    for (const std::string& salesClass : names) {
      result->AddNew();
      YieldToPendingWork();
      result->Set("Sales_Class", Variant(salesClass));
      for (size_t p = 0; p < 3; ++p) {
        const ClassTotals t = getClassTotals(*this, salesClass, starts[p], day);
        result->Set(kPeriods[p].units, Amount(t.units));
        result->Set(kPeriods[p].cost, Amount(t.cost));
        result->Set(kPeriods[p].sales, Amount(t.sales));
        result->Set(kPeriods[p].margin, Amount(t.margin));
      }
      if (bDisFinSumm) {
        CategoryFigures shown;
        for (size_t p = 0; p < 3; ++p) {
          shown[p] = Shown(*result, kPeriods[p].units);
          shown[3 + p] = Shown(*result, kPeriods[p].cost);
          shown[6 + p] = Shown(*result, kPeriods[p].sales);
        }
        addClassToCategory(result->Get("Sales_Class").ToText(), shown, categories);
      }
      result->Update();
    }

    appendTotalRow(*result, {"Units", "Cost", "Sales", "Units_MTD", "Cost_MTD", "Sales_MTD", "Units_YTD",
                             "Cost_YTD", "Sales_YTD", ""});
    result->MoveLast();
    for (const Period& p : kPeriods)
      result->Set(p.margin, Amount(calcMarginPct(Shown(*result, p.sales), Shown(*result, p.cost))));
    result->Update();

    if (bDisFinSumm) {
      auto add_row = [&](const char* label) {
        result->AddNew();
        for (size_t c = 0; c < result->fields().size(); ++c) result->Set(c, Variant(std::string()));
        result->Set(size_t{0}, Variant(label));
      };
      auto put_figures = [&](const CategoryFigures& f) {
        for (size_t p = 0; p < 3; ++p) {
          result->Set(kPeriods[p].units, Amount(f[p]));
          result->Set(kPeriods[p].cost, Amount(f[3 + p]));
          result->Set(kPeriods[p].sales, Amount(f[6 + p]));
          result->Set(kPeriods[p].margin, Amount(calcMarginPct(Shown(*result, kPeriods[p].sales),
                                                               Shown(*result, kPeriods[p].cost))));
        }
        result->Update();
      };
      add_row("");
      add_row("[b]FINAL SUMMARY");
      CategoryFigures grand{};
      const std::pair<const char*, Category> shown_order[] = {
          {"TIRES", kTires}, {"PARTS", kParts}, {"LABOUR", kLabour}, {"WHEELS", kWheels}, {"OTHER", kOther}};
      for (const auto& [label, category] : shown_order) {
        add_row(label);
        put_figures(categories[category]);
        for (size_t i = 0; i < grand.size(); ++i) grand[i] += categories[category][i];
      }
      add_row("[b]GRAND TOTAL");
      put_figures(grand);
    }
    result->Update();
    strErr = "0";
    return result;
  } catch (const Error& e) {
    strErr = std::to_string(e.number()) + " - " + e.description();
    return nullptr;
  }
}

}  // namespace ent
