// Parts gross profit (PARTGP01): every part line sold on an invoice or credit invoice in a range, with
// the margin recorded on the line beside the margin its sales-class pricing band aims at.
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/report_rows.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

// The cell's text; a null cell reads as the empty text.
std::string Text(const Variant& value) {
  return SafeString(value);
}

// An amount cell of the report: the value as text, formatted and trimmed.
std::string Amount(const Variant& value) {
  return TrimBlanks(FormatAsText(value, kAmountPattern));
}

// The first row's value of `column` as text; the empty text when there is none or it is null.
std::string FirstText(const std::shared_ptr<Connection>& connection, const std::string& sql,
                      const char* column) {
  try {
    std::string err;
    std::unique_ptr<Recordset> rs = RunQuery(connection, sql, err, false);
    if (!rs || rs->IsEof()) return "";
    return Text(rs->Get(column));
  } catch (const Error&) {
    return "";
  }
}

// The look-ups of a part line; each gives the empty text or 0 when nothing is found.
std::string getSupplierName(const std::shared_ptr<Connection>& connection, int32_t supplierId) {
  return FirstText(connection, "SELECT company FROM supplier WHERE supid = " + std::to_string(supplierId),
                   "Company");
}

std::string getJobNumber(const std::shared_ptr<Connection>& connection, int32_t jobId) {
  if (jobId == 0) return "";
  return FirstText(connection,
                   "SELECT jobnum FROM jobheader WHERE jobheader.jobid = " + std::to_string(jobId), "jobnum");
}

Currency getSalesClassMargin(const std::shared_ptr<Connection>& connection, Currency cost,
                             const std::string& salesClass) {
  try {
    // The cost is written with a decimal point whatever the system's number format.
    const std::string amount = cost.ToString();
    std::string err;
    std::unique_ptr<Recordset> rs =
        RunQuery(connection,
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

  // Lines repeat the same supplier, preset job and sales class with the same cost: each look-up
  // runs once per distinct key and is remembered for this report (nothing writes meanwhile).
  struct LookUps {
    std::map<int32_t, std::string> supplier_names, job_numbers;
    std::map<std::pair<Currency, std::string>, Currency> class_margins;
    std::vector<size_t> in;  // the query's columns by position, looked up on the first row
  };
  auto memo = std::make_shared<LookUps>();
  std::shared_ptr<Connection> connection = conn_;
  ReportRowSteps steps;
  steps.columns = {"Invoice",       "Invoice_Date",     "Part_Description",
                   "Part_Cost",     "Sold_For",         "QTY_Sold",
                   "Total_Parts",   "WO_Profit_Margin", "Sales_Class_Profit_Margin",
                   "Supplier_Name", "Sales_Class",      "Job_Number"};
  steps.make = [memo, connection](const std::vector<Field>& fields, const std::vector<Variant>& in,
                                  std::vector<Variant>& row) {
    auto remembered = [](auto& table, const auto& key, auto look_up) {
      auto at = table.find(key);
      if (at == table.end()) at = table.emplace(key, look_up()).first;
      return at->second;
    };
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
    if (memo->in.empty()) {
      for (const char* name : kIn) memo->in.push_back(FieldIndexOf(fields, name));
    }
    auto cell = [&](In column) -> const Variant& { return in[memo->in[column]]; };
    row[0] = Variant(TrimBlanks(Text(cell(kInvoice))));
    row[1] = Variant(TrimBlanks(Text(cell(kDate))));
    row[2] = Variant(TrimBlanks(Text(cell(kDescription))));
    row[3] = Variant(Amount(cell(kCost)));
    row[4] = Variant(Amount(cell(kSoldFor)));
    row[5] = Variant(Amount(cell(kQty)));
    row[6] = Variant(Amount(cell(kTotal)));
    row[7] = Variant(Amount(cell(kMargin)));
    const Currency cost = cell(kCost).ToCurrency();
    const std::string sales_class = Text(cell(kClass));
    const Currency margin = remembered(memo->class_margins, std::make_pair(cost, sales_class),
                                       [&] { return getSalesClassMargin(connection, cost, sales_class); });
    row[8] = Variant(Amount(Variant(margin)));
    const int32_t supplier = cell(kSupplier).ToLong();
    row[9] = Variant(
        remembered(memo->supplier_names, supplier, [&] { return getSupplierName(connection, supplier); }));
    row[10] = Variant(TrimBlanks(sales_class));
    const int32_t job = cell(kJob).ToLong();
    row[11] = Variant(
        TrimBlanks(remembered(memo->job_numbers, job, [&] { return getJobNumber(connection, job); })));
  };
  steps.totals = {"Part_Cost", "Sold_For", "QTY_Sold", "Total_Parts"};
  // PartCost divides (a fraction); the literal column is text.
  return StreamReportRows(conn_, sql, {{"PartCost", "float"}, {"Sales_Class_Profit_Margin", "nvarchar"}},
                          std::move(steps), strErr);
}

}  // namespace ent
