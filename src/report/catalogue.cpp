// The catalogue: report codes of the head office bound to report operations. Codes are compared in
// upper case, in the order of the table; each code's parameters are read as its signature types them
// and all are checked before the operation runs.
#include <algorithm>
#include <cctype>
#include <functional>
#include <vector>

#include "common/error.h"
#include "common/log.h"
#include "common/variant.h"
#include "data/cls_rs.h"
#include "report/cls_prebuilt_report.h"
#include "report/report_params.h"

namespace ent {

namespace {

const char kNotFound[] = "Prebuilt report not found.";
const char kOldClient[] = "Prebuilt report not found. Please Run Version 4 of the Enterprise Client.";

// Reads the job's parameters "p0".."p6" as the code's signature types them (report_params.h). A
// parameter the request did not supply reads as the empty text, 0 or false.
class Params {
 public:
  Params(clsPrebuiltReport& job, const ReportSignature& signature) : job_(job), signature_(signature) {}
  std::string T(int n) { return Read(n, ParamType::kText).text(); }
  int32_t W(int n) { return Read(n, ParamType::kWholeNumber).ToLong(); }
  bool B(int n) { return Read(n, ParamType::kTrueFalse).boolean(); }
  Currency C(int n) { return Read(n, ParamType::kCurrency).currency(); }

  // Reads every parameter of the signature in order; the first that does not convert raises Error.
  void CheckAll() {
    for (const ReportParam& param : signature_.params) Read(param.position, param.type);
  }

 private:
  Variant Read(int n, ParamType type) {
    for (const ReportParam& param : signature_.params) {
      const bool same = param.type == type || (type == ParamType::kText && param.type == ParamType::kDate);
      if (param.position == n && same)
        return ReadReportParam(signature_.code, param, job_.getParam("p" + std::to_string(n)));
    }
    // The catalogue and the signatures disagree: a fault of this program, not of the request.
    throw Error(err::kInvalidProcedureCall,
                std::string("The report ") + signature_.code + " reads p" + std::to_string(n) +
                    " other than its signature says.");
  }

  clsPrebuiltReport& job_;
  const ReportSignature& signature_;
};

ReportOutput Rows(std::unique_ptr<Recordset> rowset) {
  ReportOutput output;
  output.rowset = std::move(rowset);
  return output;
}

using Operation = std::function<ReportOutput(clsRS& rs, Params& p, std::string& status)>;

struct Entry {
  const char* code;
  Operation run;  // empty: no operation, the status is `notice`
  const char* notice = nullptr;
};

const std::vector<Entry>& Catalogue() {
  static const std::vector<Entry> entries = {
      {"TRANSROREQ", nullptr, kOldClient},
      {"TRANSREQ", nullptr, kOldClient},
      {"TOTALSUPPURCH01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string from = p.T(0), to = p.T(1);
         return Rows(rs.GetSupplierExpenseSummary(from, to, status));
       }},
      {"ENTINVOICE",
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t invoice = p.W(0);
         std::string state = p.T(1);
         ReportOutput output;
         output.document = rs.generateEnterpriseInvoice(invoice, state, status);
         return output;
       }},
      {"ENTCUSTSRCH",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0), company = p.T(1), first = p.T(2), last = p.T(3);
         int32_t max_records = p.W(4);
         std::string home = p.T(5), business = p.T(6);
         return Rows(
             rs.getEnterpriseCustomer(order, company, first, last, max_records, home, business, status));
       }},
      {"ENTINVSRCH",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0), part = p.T(1), desc = p.T(2), category = p.T(3);
         int32_t count = p.W(4);
         std::string maker = p.T(5);
         bool on_hand_only = p.B(6);
         return Rows(
             rs.getEnterpriseInventory(order, part, desc, category, count, maker, on_hand_only, status));
       }},
      {"ENTCUSTINVOICES",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string order = p.T(0);
         int32_t customer = p.W(1);
         return Rows(rs.generateEnterpriseInvoiceList(order, customer, status));
       }},
      {"INVSUM01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool customer = p.B(2), vehicle = p.B(3), summary = p.B(4);
         return Rows(rs.getInvoiceRevenueSummary(start, end, customer, vehicle, summary, status));
       }},
      {"PAYREC01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getRepairOrderPaymentRecon(start, end, status));
       }},
      {"GENMARG01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getGenMargReport(start, end, status));
       }},
      {"AVGINV01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getAvgInvoiceData(start, end, true, status));
       }},
      {"PROFBYVEH01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getMarginByMake(start, end, status));
       }},
      {"SC01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool tech_costs = p.B(2);
         return Rows(rs.getSalesClassReport2(start, end, tech_costs, status));
       }},
      {"TB01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string end = p.T(0);
         return Rows(rs.getTrialBalance(end, status));
       }},
      {"BL01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string as_of = p.T(0);
         return Rows(rs.getBalanceSheet(as_of, status));
       }},
      {"PROFALOSS01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getProfitLoss(start, end, status));
       }},
      {"AP01",
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t payables = 1;
         std::string end = p.T(0);
         return Rows(rs.getAPARSummary(payables, status, end));
       }},
      {"AR01",
       [](clsRS& rs, Params& p, std::string& status) {
         int32_t receivables = 0;
         std::string end = p.T(0);
         return Rows(rs.getAPARSummary(receivables, status, end));
       }},
      {"INVVAL01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string part = p.T(0), desc = p.T(1), category = p.T(2);
         return Rows(rs.getInvValue(part, desc, category, status));
       }},
      {"INVLIST01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string part = p.T(0), desc = p.T(1), category = p.T(2), supplier = p.T(3), location = p.T(4);
         return Rows(rs.getInvList(part, desc, category, supplier, location, status));
       }},
      {"PARTSALPER01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), part = p.T(2), desc = p.T(3), category = p.T(4);
         bool voided = p.B(5);
         return Rows(rs.getPartsSalesPerformance(start, end, part, desc, category, voided, status));
       }},
      {"TECHPERF01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool not_pending = p.B(2), voided = p.B(3);
         return Rows(rs.getTechPerf(start, end, not_pending, voided, status));
       }},
      {"TECHCOST01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         bool not_pending = p.B(2), voided = p.B(3), clock = p.B(4);
         return Rows(rs.getTechCost(start, end, not_pending, voided, clock, status));
       }},
      {"SALESCOMP01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getSalesComp(start, end, start2, end2, status));
       }},
      {"LOYAL01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         int32_t invoices = p.W(2);
         Currency subtotal = p.C(3);
         int32_t year = p.W(4);
         return Rows(rs.getLoyaltyReport(start, end, invoices, subtotal, year, status));
       }},
      {"PARTGP01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getPartsGPReport(start, end, status));
       }},
      {"CARCOUNT01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1);
         return Rows(rs.getCarCount(start, end, status));
       }},
      {"POSTCARDLOF01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getPostCardLOF(start, end, start2, end2, status));
       }},
      {"POSTCARDNONLOF01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string start = p.T(0), end = p.T(1), start2 = p.T(2), end2 = p.T(3);
         return Rows(rs.getPostcardNONLOF(start, end, start2, end2, status));
       }},
      {"DSR01",
       [](clsRS& rs, Params& p, std::string& status) {
         std::string day = p.T(0);
         bool summary = p.B(1);
         return Rows(rs.getDailySalesRecap(day, summary, status));
       }},
  };
  return entries;
}

std::string Upper(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return s;
}

}  // namespace

ReportOutput clsPrebuiltReport::getPrebuiltReport(const std::string& code) {
  WriteLog("getPrebuiltReport Start:" + code);
  clsRS engine;
  engine.openConnections();  // a connection failure goes to generateDOC
  WriteLog("After OPEN DB Connections:" + code);
  ReportOutput output;
  try {
    const std::string key = Upper(code);
    const auto& entries = Catalogue();
    auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return key == e.code; });
    if (entry == entries.end()) {
      StatusStr = kNotFound;
    } else if (!entry->run) {
      StatusStr = entry->notice;
    } else {
      const ReportSignature* signature = FindReportSignature(key);
      if (!signature) throw Error(err::kInvalidProcedureCall, "The report " + key + " has no signature.");
      Params params(*this, *signature);
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
