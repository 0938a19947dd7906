// The catalogue: report codes of the head office bound to report operations, with the conversions
// of their parameters, all checked before the operation runs. Codes are compared in upper case, in the order
// of the table. The same table describes each code for people (report/catalogue.h): its parameters and its
// result columns.
#include "job/catalogue.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <vector>

#include "common/error.h"
#include "common/log.h"
#include "common/text.h"
#include "common/variant.h"
#include "job/cls_prebuilt_report.h"
#include "job/report_params.h"
#include "reports/cls_rs.h"

namespace ent {

namespace {

const char kNotFound[] = "Prebuilt report not found.";
const char kOldClient[] = "Prebuilt report not found. Please Run Version 4 of the Enterprise Client.";

// Reads the job's parameters "p0".."p6" as the code's description types them. A parameter the
// request did not supply reads as the empty text, 0 or false. Every read must match a described
// parameter, so that the description cannot drift from what the operation takes.
class Params {
 public:
  Params(clsPrebuiltReport& job, const ReportDescription& about) : job_(job), about_(about) {}
  std::string T(int n) { return Read(n, 'T').text(); }
  int32_t W(int n) { return Read(n, 'W').ToLong(); }
  bool B(int n) { return Read(n, 'B').boolean(); }
  Currency C(int n) { return Read(n, 'C').currency(); }

  // Reads every described parameter in order; the first that does not convert raises Error.
  void CheckAll() {
    for (const ReportParameter& p : about_.parameters) Read(p.position, p.type);
  }

 private:
  // Dates are read as text by the operations, after the check that they are dates.
  Variant Read(int n, char type) {
    for (const ReportParameter& p : about_.parameters) {
      if (p.position != n || !(p.type == type || (type == 'T' && p.type == 'D'))) continue;
      const ReportParam param{p.position, p.name, ParamTypeOfLetter(p.type)};
      return ReadReportParam(about_.code, param, job_.getParam("p" + std::to_string(n)));
    }
    // The catalogue and its description disagree: a fault of this program, not of the request.
    throw Error(err::kInvalidProcedureCall, std::string("The report ") + about_.code + " reads p" +
                                                std::to_string(n) + " other than its description says.");
  }

  static ParamType ParamTypeOfLetter(char type) {
    switch (type) {
      case 'D':
        return ParamType::kDate;
      case 'W':
        return ParamType::kWholeNumber;
      case 'B':
        return ParamType::kTrueFalse;
      case 'C':
        return ParamType::kCurrency;
      default:
        return ParamType::kText;
    }
  }

  clsPrebuiltReport& job_;
  const ReportDescription& about_;
};

ReportOutput Rows(std::unique_ptr<Recordset> rowset) {
  ReportOutput output;
  output.rowset = std::move(rowset);
  return output;
}

using Operation = std::function<ReportOutput(clsRS& rs, Params& p, std::string& status)>;

struct Entry {
  ReportDescription about;
  Operation run;  // empty: no operation, the status is `notice`
  const char* notice = nullptr;
};

const char kRowset[] = "rowset";

// A parameter whose absence reads as the empty value of its type.
ReportParameter P(int position, const char* name, char type, const char* meaning) {
  const char* fallback = type == 'W' || type == 'C' ? "0" : type == 'B' ? "false" : "";
  return {position, name, type, meaning, fallback};
}

// The two dates of a period, as most reports take them.
std::vector<ReportParameter> Period(const char* from, const char* to) {
  return {P(0, from, 'D', "first day of the period"), P(1, to, 'D', "last day of the period")};
}

std::vector<ReportParameter> TwoPeriods(const char* from, const char* to, const char* from2,
                                        const char* to2) {
  return {P(0, from, 'D', "first day of the first period"), P(1, to, 'D', "last day of the first period"),
          P(2, from2, 'D', "first day of the second period"),
          P(3, to2, 'D', "last day of the second period")};
}

template <typename... Rest>
std::vector<ReportParameter> With(std::vector<ReportParameter> first, Rest... rest) {
  (first.push_back(rest), ...);
  return first;
}

const std::vector<Entry>& Catalogue() {
  static const std::vector<Entry> entries = {
      {{"TRANSROREQ",
        "Retired code of an older head-office client",
        "none",
        {},
        {},
        "Answers the status \"Prebuilt report not found. Please Run Version 4 of the Enterprise Client.\""},
       nullptr,
       kOldClient},
      {{"TRANSREQ",
        "Retired code of an older head-office client",
        "none",
        {},
        {},
        "Answers the status \"Prebuilt report not found. Please Run Version 4 of the Enterprise Client.\""},
       nullptr,
       kOldClient},
      {{"TOTALSUPPURCH01",
        "Supplier expense summary",
        kRowset,
        Period("sDTFrom", "sDTTo"),
        {"Supplier", "Total_Purchases"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string from = p.T(0), to = p.T(1);
         return Rows(rs.GetSupplierExpenseSummary(from, to, status));
       }},
      {{"ENTINVOICE",
        "One invoice as a repair-order document",
        "RepairOrder document",
        {P(0, "lInvoiceId", 'W', "the invoice number (the credit number for a credit invoice)"),
         P(1, "sInvState", 'T', "\"Cr\" for a credit invoice, anything else for a normal one")},
        {},
        "The answer is a RepairOrder document: CompanyInfo, Customer, Vehicle, InvoiceAdmin, Items, Totals, "
        "Messages"},
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t invoice = p.W(0);
         std::string state = p.T(1);
         ReportOutput output;
         output.document = rs.generateEnterpriseInvoice(invoice, state, status);
         return output;
       }},
      {{"ENTCUSTSRCH",
        "Customer search",
        kRowset,
        {P(0, "sOrderBy", 'T',
           "sort order: column names, each with optional ASC or DESC; empty: company and name"),
         P(1, "sCompany", 'T', "company begins with (LIKE wildcards allowed)"),
         P(2, "sFName", 'T', "first name begins with"), P(3, "sLname", 'T', "last name begins with"),
         P(4, "lMaxRecords", 'W', "at most this many customers; 0: 100"),
         P(5, "sHomePhone", 'T', "home telephone begins with"),
         P(6, "sBusPhone", 'T', "business telephone begins with")},
        {"company", "FirstName", "LastName", "HomePhone", "BusPhone", "Cusid"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0), company = p.T(1), first = p.T(2), last = p.T(3);
         int32_t max_records = p.W(4);
         std::string home = p.T(5), business = p.T(6);
         return Rows(
             rs.getEnterpriseCustomer(order, company, first, last, max_records, home, business, status));
       }},
      {{"ENTINVSRCH",
        "Inventory search",
        kRowset,
        {P(0, "sOrderBy", 'T',
           "sort order: column names, each with optional ASC or DESC; empty: the report's own order"),
         P(1, "sPartNum", 'T', "part number begins with (LIKE wildcards allowed)"),
         P(2, "sDesc", 'T', "description begins with"), P(3, "sCat", 'T', "category begins with"),
         P(4, "lRecCount", 'W', "at most this many parts; 0: 100"),
         P(5, "sMfg", 'T', "manufacturer begins with"),
         P(6, "bQOHOnly", 'B', "only parts with a quantity on hand")},
        {"Part_Number", "Description", "Manufacturer", "Category", "QOH", "LastList"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0), part = p.T(1), desc = p.T(2), category = p.T(3);
         int32_t count = p.W(4);
         std::string maker = p.T(5);
         bool on_hand_only = p.B(6);
         return Rows(
             rs.getEnterpriseInventory(order, part, desc, category, count, maker, on_hand_only, status));
       }},
      {{"ENTCUSTINVOICES",
        "A customer's invoices",
        kRowset,
        {P(0, "sOrderBy", 'T',
           "sort order: column names, each with optional ASC or DESC; empty: the report's own order"),
         P(1, "lCusID", 'W', "the customer's number")},
        {"InvDate", "InvoiceNum", "JobDesc", "Total"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0);
         int32_t customer = p.W(1);
         return Rows(rs.generateEnterpriseInvoiceList(order, customer, status));
       }},
      {{"INVSUM01",
        "Invoice revenue summary",
        kRowset,
        With(Period("dtStart", "dtEnd"), P(2, "bIncCustInfo", 'B', "add the customer's company and name"),
             P(3, "bIncVehInfo", 'B', "add the vehicle's year, make, model and unit"),
             P(4, "bIncInvSumm", 'B', "add the invoice's summary text")),
        {"Repair_Order", "RO_Date", "Parts", "Labor", "Other_Charges", "Levy", "Discounts", "Subtotal",
         "Tax1", "Tax2", "Tax_Total", "Total"},
        "p4 puts Summary first; p2 adds Company, First_Name, Last_Name and p3 Year, Make, Model, Unit_Number "
        "at the end"},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool customer = p.B(2), vehicle = p.B(3), summary = p.B(4);
         return Rows(rs.getInvoiceRevenueSummary(start, end, customer, vehicle, summary, status));
       }},
      {{"PAYREC01",
        "Repair-order payment reconciliation",
        kRowset,
        Period("dtStart", "dtEnd"),
        {"Payment_Date", "Invoice_ID", "WorkOrder_ID", "Cash", "Cheque", "VISA", "Master_Card", "AMEX",
         "Other_Card", "Debit_Card", "AR"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getRepairOrderPaymentRecon(start, end, status));
       }},
      {{"GENMARG01",
        "General margin",
        kRowset,
        Period("startDate", "EndDate"),
        {"RO_Date", "Repair_Order", "Parts", "Parts_Margin", "Labor", "Labor_Margin", "Other_Charges",
         "Other_Charges_Margin", "Levy", "Discount", "Total", "Total_Margin"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getGenMargReport(start, end, status));
       }},
      {{"AVGINV01",
        "Average invoice",
        kRowset,
        Period("dtStart", "dtEnd"),
        {"Invoice_Count", "Avg_Parts", "Avg_Labor", "Avg_Other_Charges", "Avg_Levy", "Avg_Discounts",
         "Avg_Subtotal", "Avg_Tax1", "Avg_Tax2", "Avg_Total"},
        "Credit invoices are always included"},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getAvgInvoiceData(start, end, true, status));
       }},
      {{"PROFBYVEH01",
        "Margin by vehicle make",
        kRowset,
        Period("dtStart", "dtEnd"),
        {"Make", "Total_Parts", "Total_Labor", "Total_Other_Charges", "Total_Discounts", "Sub_Total",
         "Profit", "Profit_Margin"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getMarginByMake(start, end, status));
       }},
      {{"SC01",
        "Sales by sales class",
        kRowset,
        With(Period("dtStart", "dtEnd"),
             P(2, "chkIncludeTechCosts", 'B', "count the technicians' costs in the labour cost")),
        {"Sales_Class", "Parts_Sold", "Parts_Cost", "Parts_Profit", "Parts_Margin", "Labor_Sold",
         "Labor_Cost", "Labor_Profit", "Labor_Margin", "Other_Charge_Sold", "Other_Charge_Cost",
         "Other_Charge_Profit", "Other_Charge_Margin", "Total_Sold", "Total_Cost", "Total_Margin",
         "Total_Profit"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool tech_costs = p.B(2);
         return Rows(rs.getSalesClassReport2(start, end, tech_costs, status));
       }},
      {{"TB01",
        "Trial balance",
        kRowset,
        {P(0, "dtEnd", 'D', "the last day the balance covers")},
        {"Account_Name", "Debit", "Credit"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string end = p.T(0);
         return Rows(rs.getTrialBalance(end, status));
       }},
      {{"BL01",
        "Balance sheet",
        kRowset,
        {P(0, "dtAsOf", 'D', "the day the balance sheet is drawn up for")},
        {"hide_Account_Name", "hide_cTot5", "hide_cTot4", "hide_cTot3", "hide_cTot2", "hide_Total"},
        "Lines carry [b] (bold) and [sp n] (indent) markers; no column has a heading"},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string as_of = p.T(0);
         return Rows(rs.getBalanceSheet(as_of, status));
       }},
      {{"PROFALOSS01",
        "Profit and loss",
        kRowset,
        Period("dtStart", "dtEnd"),
        {"hide_Account_Name", "hide_cTot5", "hide_cTot4", "hide_cTot3", "hide_cTot2", "hide_Total"},
        "Lines carry [b] (bold) and [sp n] (indent) markers; no column has a heading"},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getProfitLoss(start, end, status));
       }},
      {{"AP01",
        "Payables summary",
        kRowset,
        {P(0, "dtEnd", 'D', "the last day the balances cover")},
        {"Company", "Contact", "Balance"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t payables = 1;
         std::string end = p.T(0);
         return Rows(rs.getAPARSummary(payables, status, end));
       }},
      {{"AR01",
        "Receivables summary",
        kRowset,
        {P(0, "dtEnd", 'D', "the last day the balances cover")},
        {"Company", "FirstName", "LastName", "Balance"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t receivables = 0;
         std::string end = p.T(0);
         return Rows(rs.getAPARSummary(receivables, status, end));
       }},
      {{"INVVAL01",
        "Inventory value",
        kRowset,
        {P(0, "sPartNum", 'T', "part number begins with; empty: all"),
         P(1, "sDesc", 'T', "description begins with"), P(2, "sCategory", 'T', "category begins with")},
        {"Part_Number", "Description", "Category", "QOH", "LastList", "LastCost", "TotalCost",
         "List_Times_QOH"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string part = p.T(0), desc = p.T(1), category = p.T(2);
         return Rows(rs.getInvValue(part, desc, category, status));
       }},
      {{"INVLIST01",
        "Inventory list",
        kRowset,
        {P(0, "sPartNum", 'T', "part number begins with; empty: all"),
         P(1, "sDesc", 'T', "description begins with"), P(2, "sCategory", 'T', "category begins with"),
         P(3, "sSupp", 'T', "supplier begins with"), P(4, "sLoc", 'T', "location begins with")},
        {"Part_Number", "Description", "Manufacturer", "Location", "Supplier", "Category", "List_Price",
         "Last_Cost", "QOH"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string part = p.T(0), desc = p.T(1), category = p.T(2), supplier = p.T(3), location = p.T(4);
         return Rows(rs.getInvList(part, desc, category, supplier, location, status));
       }},
      {{"PARTSALPER01",
        "Parts sales performance",
        kRowset,
        With(Period("sDateStart", "sDateEnd"), P(2, "sPartNum", 'T', "part number begins with; empty: all"),
             P(3, "sDesc", 'T', "description begins with"), P(4, "sCategory", 'T', "category begins with"),
             P(5, "bIncVoidWOs", 'B', "count voided work orders too")),
        {"Part_Number", "Description", "Qty_Sold", "Avg_Cost", "Avg_Price", "Total_Cost", "Total_Revenue",
         "Avg_Margin", "Supplier_Name"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), part = p.T(2), desc = p.T(3), category = p.T(4);
         bool voided = p.B(5);
         return Rows(rs.getPartsSalesPerformance(start, end, part, desc, category, voided, status));
       }},
      {{"TECHPERF01",
        "Technician performance",
        kRowset,
        With(Period("startDate", "EndDate"),
             P(2, "chkIncNonPend", 'B', "count work orders that are not pending too"),
             P(3, "chkVoidWO", 'B', "count voided work orders too")),
        {"First_Name", "Last_Name", "Total_Parts", "Total_Labor", "Total_Other", "Total_Levy",
         "Discount_Parts", "Discount_Labor", "Total"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool not_pending = p.B(2), voided = p.B(3);
         return Rows(rs.getTechPerf(start, end, not_pending, voided, status));
       }},
      {{"TECHCOST01",
        "Technician cost",
        kRowset,
        With(Period("startDate", "EndDate"),
             P(2, "chkIncNonPend", 'B', "count work orders that are not pending too"),
             P(3, "chkVoidWO", 'B', "count voided work orders too"),
             P(4, "chkHours", 'B', "hours from the time clock instead of the work orders")),
        {"First_Name", "Last_Name", "Total_Hours", "Hourly", "Flat_Rate", "Comm_Parts", "Comm_Labor",
         "Total"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool not_pending = p.B(2), voided = p.B(3), clock = p.B(4);
         return Rows(rs.getTechCost(start, end, not_pending, voided, clock, status));
       }},
      {{"SALESCOMP01",
        "Sales comparison of two periods",
        kRowset,
        TwoPeriods("startDate", "EndDate", "startDate2", "EndDate2"),
        {"Total_Sales_1", "Total_Sales_2", "Difference"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getSalesComp(start, end, start2, end2, status));
       }},
      {{"LOYAL01",
        "Loyal customers",
        kRowset,
        With(Period("startDate", "EndDate"), P(2, "lInvCount", 'W', "at least this many invoices"),
             P(3, "cSubTot", 'C', "invoices of more than this subtotal"),
             P(4, "lVehYear", 'W', "vehicles newer than this model year")),
        {"Company", "First_Name", "Last_Name", "Postal", "Invoice_Count", "Sub_Total", "Total", "Plate",
         "Year", "Make", "Model", "VIN"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         int32_t invoices = p.W(2);
         Currency subtotal = p.C(3);
         int32_t year = p.W(4);
         return Rows(rs.getLoyaltyReport(start, end, invoices, subtotal, year, status));
       }},
      {{"PARTGP01",
        "Parts gross profit",
        kRowset,
        Period("startDate", "EndDate"),
        {"Invoice", "Invoice_Date", "Part_Description", "Part_Cost", "Sold_For", "QTY_Sold", "Total_Parts",
         "WO_Profit_Margin", "Sales_Class_Profit_Margin", "Supplier_Name", "Sales_Class", "Job_Number"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getPartsGPReport(start, end, status));
       }},
      {{"CARCOUNT01", "Car count", kRowset, Period("startDate", "EndDate"), {"Invoice_Type", "Count"}, ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getCarCount(start, end, status));
       }},
      {{"POSTCARDLOF01",
        "Oil-change reminder postcards",
        kRowset,
        TwoPeriods("startDate", "EndDate", "startDate2", "EndDate2"),
        {"Company", "First_Name", "Last_Name", "Street", "City", "Postal_Code", "Year", "Make", "Model",
         "Invoice_Date", "Job_Number"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getPostCardLOF(start, end, start2, end2, status));
       }},
      {{"POSTCARDNONLOF01",
        "Service reminder postcards (no oil change)",
        kRowset,
        TwoPeriods("startDate", "EndDate", "startDate2", "EndDate2"),
        {"Company", "First_Name", "Last_Name", "Street", "City", "Postal_Code", "Year", "Make", "Model",
         "Invoice_Date"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getPostcardNONLOF(start, end, start2, end2, status));
       }},
      {{"DSR01",
        "Daily sales recap",
        kRowset,
        {P(0, "dDateAsOf", 'D', "the day of the recap"),
         P(1, "bDisFinSumm", 'B', "add the final summary lines")},
        {"Sales_Class", "Units", "Sales", "Cost", "Margin", "Units_MTD", "Sales_MTD", "Cost_MTD",
         "Margin_MTD", "Units_YTD", "Sales_YTD", "Cost_YTD", "Margin_YTD"},
        ""},
       [](clsRS& rs, Params& p, std::string& status) {
         std::string day = p.T(0);
         bool summary = p.B(1);
         return Rows(rs.getDailySalesRecap(day, summary, status));
       }},
  };
  return entries;
}

}  // namespace

const std::vector<ReportDescription>& ReportCatalogue() {
  static const std::vector<ReportDescription> described = [] {
    std::vector<ReportDescription> list;
    for (const Entry& e : Catalogue()) list.push_back(e.about);
    return list;
  }();
  return described;
}

ReportOutput clsPrebuiltReport::getPrebuiltReport(const std::string& code) {
  WriteLog("getPrebuiltReport Start:" + code);
  clsRS engine;
  engine.openConnections();  // a connection failure goes to generateDOC
  WriteLog("After OPEN DB Connections:" + code);
  ReportOutput output;
  try {
    const std::string key = AsciiUpper(code);
    const auto& entries = Catalogue();
    auto entry =
        std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return key == e.about.code; });
    if (entry == entries.end()) {
      StatusStr = kNotFound;
    } else if (!entry->run) {
      StatusStr = entry->notice;
    } else {
      Params params(*this, entry->about);
      params.CheckAll();  // before any SQL runs
      output = entry->run(engine, params, StatusStr);
    }
    WriteLog("getPrebuiltReport End:" + code);
    if (output.rowset) output.rowset->Detach();
  } catch (const Error& e) {
    WriteLog("getPrebuiltReport:ERROR:" + e.description());
    // A failure always reaches the head office as its description, never as an empty status or "0".
    if (StatusStr.empty() || StatusStr == "0") StatusStr = e.description();
  } catch (const std::exception& e) {
    WriteLog(std::string("getPrebuiltReport:ERROR:") + e.what());
    if (StatusStr.empty() || StatusStr == "0") StatusStr = e.what();
  }
  return output;
}

}  // namespace ent
