// Parts gross profit (PARTGP01): every part line sold on an invoice or credit invoice in a range, with
// the margin recorded on the line beside the margin its sales-class pricing band aims at.
#include <map>
#include <utility>

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

// The cell's text; a null cell reads as the empty text.
std::string Text(const Variant& value) {
  return SafeString(value);
}

// An amount cell of the report: the value as text, formatted and trimmed.
std::string Amount(const Variant& value) {
  return TrimBlanks(Format(Variant(Text(value)), kAmountPattern));
}

// The first row's value of `column` as text; the empty text when there is none or it is null.
std::string FirstText(clsRS& engine, const std::string& sql, const char* column) {
  try {
    std::string err;
    std::unique_ptr<Recordset> rs = engine.runQuery(sql, err, false);
    if (!rs || rs->IsEof()) return "";
    return Text(rs->Get(column));
  } catch (const Error&) {
    return "";
  }
}

// The look-ups of a part line; each gives the empty text or 0 when nothing is found.
std::string getSupplierName(clsRS& engine, int32_t supplierId) {
  return FirstText(engine, "SELECT company FROM supplier WHERE supid = " + std::to_string(supplierId),
                   "Company");
}

std::string getJobNumber(clsRS& engine, int32_t jobId) {
  if (jobId == 0) return "";
  return FirstText(engine, "SELECT jobnum FROM jobheader WHERE jobheader.jobid = " + std::to_string(jobId),
                   "jobnum");
}

Currency getSalesClassMargin(clsRS& engine, Currency cost, const std::string& salesClass) {
  try {
    // The cost is written with a decimal point whatever the system's number format.
    const std::string amount = cost.ToString();
    std::string err;
    std::unique_ptr<Recordset> rs = engine.runQuery(
        "SELECT profitMargin From SalesClassInventoryIndexPricing WHERE "
        "(SalesClassInventoryIndexPricing.CostFrom <= " +
            amount + " AND SalesClassInventoryIndexPricing.CostTo >= " + amount +
            ") AND (SalesClassInventoryIndexPricing.salesclass = '" + SqlQuote(salesClass) + "');",
        err, false);
    if (!rs || rs->IsEof()) return Currency();
    return rs->Get("profitMargin").ToCurrency();
  } catch (const Error&) {
    return Currency();
  }
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getPartsGPReport(const std::string& startDate, const std::string& EndDate,
                                                   std::string& strErr) {
  const std::string from = SqlQuote(startDate), to = SqlQuote(EndDate);
  // Invoice lines with a cost, and every credit-invoice line; of a preset package only its header.
  std::string sql =
      "SELECT wo.stateandnumber AS Invoice, wo.LatestDate AS Invoice_Date, woparts.description AS "
      "Part_Description, ";
  sql +=
      " iif(woparts.qty = 0, 0, ([woparts].[invcost]/[woparts].[qty])) AS PartCost, woparts.partsea AS "
      "Sold_For, "
      "woparts.qty AS QTYSold,";
  sql +=
      "woparts.totparts, woparts.margpartsper AS WO_Profit_Margin, 'Sales_Class_And_Part_Cost' as "
      "Sales_Class_Profit_Margin, ";
  sql += "woparts.invsupid AS SuppID, woparts.SalesClass, woparts.presetjobid ";
  sql += "FROM woparts INNER JOIN wo ON (woparts.credid = wo.credid) AND (woparts.woid = wo.woid) ";
  sql += "WHERE (((wo.LatestDate)>='" + from + "' And (wo.LatestDate)<='" + to +
         "') AND ((wo.invoiceid)<>0) AND ((woparts.skip)<>'Yes') AND (NOT ([presetpkg]=1 And "
         "[presetheader]=0)) ";
  sql += " AND ((woparts.invcost)>0)) ";
  sql +=
      "OR (((wo.LatestDate)>='" + from + "' And (wo.LatestDate)<='" + to +
      "') AND ((woparts.skip)<>'Yes') AND (NOT ([presetpkg]=1 And [presetheader]=0)) AND ((wo.credid)<>0));";

  std::unique_ptr<Recordset> query = runQuery(sql, strErr, false);
  YieldToPendingWork();
  if (!query) return nullptr;
  try {
    std::unique_ptr<Recordset> result = NewTextTable(
        {"Invoice", "Invoice_Date", "Part_Description", "Part_Cost", "Sold_For", "QTY_Sold", "Total_Parts",
         "WO_Profit_Margin", "Sales_Class_Profit_Margin", "Supplier_Name", "Sales_Class", "Job_Number"});
    // Lines repeat the same supplier, preset job and sales class with the same cost: each look-up
    // runs once per distinct key and is remembered for this report (nothing writes meanwhile).
    std::map<int32_t, std::string> supplier_names, job_numbers;
    std::map<std::pair<Currency, std::string>, Currency> class_margins;
    auto remembered = [](auto& memo, const auto& key, auto look_up) {
      auto at = memo.find(key);
      if (at == memo.end()) at = memo.emplace(key, look_up()).first;
      return at->second;
    };
    // Columns by position, looked up on the first row (an empty result looks nothing up).
    enum In {
      kInvoice,
      kDate,
      kDescription,
      kCost,
      kSoldFor,
      kQty,
      kTotal,
      kMargin,
      kClass,
      kSupplier,
      kJob
    };
    static const char* const kIn[] = {"Invoice",    "Invoice_Date", "Part_Description", "PartCost",
                                      "Sold_For",   "QTYSold",      "totparts",         "WO_Profit_Margin",
                                      "SalesClass", "SuppID",       "presetjobid"};
    std::vector<size_t> in;  // the result's columns are set by position, in the order made above
    while (!query->IsEof()) {
      if (in.empty())
        for (const char* name : kIn) in.push_back(query->FieldIndex(name));
      auto cell = [&](In column) -> const Variant& { return query->Get(in[column]); };
      result->AddNew();
      result->Set(size_t{0}, Variant(TrimBlanks(Text(cell(kInvoice)))));
      result->Set(size_t{1}, Variant(TrimBlanks(Text(cell(kDate)))));
      result->Set(size_t{2}, Variant(TrimBlanks(Text(cell(kDescription)))));
      result->Set(size_t{3}, Variant(Amount(cell(kCost))));
      result->Set(size_t{4}, Variant(Amount(cell(kSoldFor))));
      result->Set(size_t{5}, Variant(Amount(cell(kQty))));
      result->Set(size_t{6}, Variant(Amount(cell(kTotal))));
      result->Set(size_t{7}, Variant(Amount(cell(kMargin))));
      const Currency cost = cell(kCost).ToCurrency();
      const std::string sales_class = Text(cell(kClass));
      const Currency margin = remembered(class_margins, std::make_pair(cost, sales_class),
                                         [&] { return getSalesClassMargin(*this, cost, sales_class); });
      result->Set(size_t{8}, Variant(Amount(Variant(margin))));
      const int32_t supplier = cell(kSupplier).ToLong();
      result->Set(size_t{9}, Variant(remembered(supplier_names, supplier,
                                                [&] { return getSupplierName(*this, supplier); })));
      result->Set(size_t{10}, Variant(TrimBlanks(sales_class)));
      const int32_t job = cell(kJob).ToLong();
      result->Set(
          size_t{11},
          Variant(TrimBlanks(remembered(job_numbers, job, [&] { return getJobNumber(*this, job); }))));
      result->Update();
      query->MoveNext();
    }
    appendTotalRow(*result, {"Part_Cost", "Sold_For", "QTY_Sold", "Total_Parts", ""});
    strErr = "0";
    return result;
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

}  // namespace ent
