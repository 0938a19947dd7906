#include "report/report_params.h"

#include <algorithm>

#include "common/error.h"
#include "common/sql_server_date.h"

namespace ent {

namespace {

constexpr ParamType T = ParamType::kText;
constexpr ParamType D = ParamType::kDate;
constexpr ParamType W = ParamType::kWholeNumber;
constexpr ParamType B = ParamType::kTrueFalse;
constexpr ParamType C = ParamType::kCurrency;

const char* Expected(ParamType type) {
  switch (type) {
    case ParamType::kDate: return "is not a date";
    case ParamType::kWholeNumber: return "is not a whole number";
    case ParamType::kTrueFalse: return "is not true or false";
    case ParamType::kCurrency: return "is not an amount";
    case ParamType::kText: break;
  }
  return "is not text";
}

}  // namespace

const std::vector<ReportSignature>& ReportSignatures() {
  static const std::vector<ReportSignature> signatures = {
      {"TOTALSUPPURCH01", {{0, "sDTFrom", D}, {1, "sDTTo", D}}},
      {"ENTINVOICE", {{0, "lInvoiceId", W}, {1, "sInvState", T}}},
      {"ENTCUSTSRCH",
       {{0, "sOrderBy", T},
        {1, "sCompany", T},
        {2, "sFName", T},
        {3, "sLname", T},
        {4, "lMaxRecords", W},
        {5, "sHomePhone", T},
        {6, "sBusPhone", T}}},
      {"ENTINVSRCH",
       {{0, "sOrderBy", T},
        {1, "sPartNum", T},
        {2, "sDesc", T},
        {3, "sCat", T},
        {4, "lRecCount", W},
        {5, "sMfg", T},
        {6, "bQOHOnly", B}}},
      {"ENTCUSTINVOICES", {{0, "sOrderBy", T}, {1, "lCusID", W}}},
      {"INVSUM01",
       {{0, "dtStart", D}, {1, "dtEnd", D}, {2, "bIncCustInfo", B}, {3, "bIncVehInfo", B}, {4, "bIncInvSumm", B}}},
      {"PAYREC01", {{0, "dtStart", D}, {1, "dtEnd", D}}},
      {"GENMARG01", {{0, "startDate", D}, {1, "EndDate", D}}},
      {"AVGINV01", {{0, "dtStart", D}, {1, "dtEnd", D}}},
      {"PROFBYVEH01", {{0, "dtStart", D}, {1, "dtEnd", D}}},
      {"SC01", {{0, "dtStart", D}, {1, "dtEnd", D}, {2, "chkIncludeTechCosts", B}}},
      {"TB01", {{0, "dtEnd", D}}},
      {"BL01", {{0, "dtAsOf", D}}},
      {"PROFALOSS01", {{0, "dtStart", D}, {1, "dtEnd", D}}},
      {"AP01", {{0, "dtEnd", D}}},
      {"AR01", {{0, "dtEnd", D}}},
      {"INVVAL01", {{0, "sPartNum", T}, {1, "sDesc", T}, {2, "sCategory", T}}},
      {"INVLIST01", {{0, "sPartNum", T}, {1, "sDesc", T}, {2, "sCategory", T}, {3, "sSupp", T}, {4, "sLoc", T}}},
      {"PARTSALPER01",
       {{0, "sDateStart", D},
        {1, "sDateEnd", D},
        {2, "sPartNum", T},
        {3, "sDesc", T},
        {4, "sCategory", T},
        {5, "bIncVoidWOs", B}}},
      {"TECHPERF01", {{0, "startDate", D}, {1, "EndDate", D}, {2, "chkIncNonPend", B}, {3, "chkVoidWO", B}}},
      {"TECHCOST01",
       {{0, "startDate", D}, {1, "EndDate", D}, {2, "chkIncNonPend", B}, {3, "chkVoidWO", B}, {4, "chkHours", B}}},
      {"SALESCOMP01", {{0, "startDate", D}, {1, "EndDate", D}, {2, "startDate2", D}, {3, "EndDate2", D}}},
      {"LOYAL01",
       {{0, "startDate", D}, {1, "EndDate", D}, {2, "lInvCount", W}, {3, "cSubTot", C}, {4, "lVehYear", W}}},
      {"PARTGP01", {{0, "startDate", D}, {1, "EndDate", D}}},
      {"CARCOUNT01", {{0, "startDate", D}, {1, "EndDate", D}}},
      {"POSTCARDLOF01", {{0, "startDate", D}, {1, "EndDate", D}, {2, "startDate2", D}, {3, "EndDate2", D}}},
      {"POSTCARDNONLOF01", {{0, "startDate", D}, {1, "EndDate", D}, {2, "startDate2", D}, {3, "EndDate2", D}}},
      {"DSR01", {{0, "dDateAsOf", D}, {1, "bDisFinSumm", B}}},
  };
  return signatures;
}

const ReportSignature* FindReportSignature(std::string_view code) {
  const auto& all = ReportSignatures();
  auto it = std::find_if(all.begin(), all.end(), [&](const ReportSignature& s) { return code == s.code; });
  return it == all.end() ? nullptr : &*it;
}

Variant ReadReportParam(const std::string& code, const ReportParam& param, const std::string& text) {
  try {
    switch (param.type) {
      case ParamType::kText: return Variant(text);
      case ParamType::kDate: return text.empty() ? Variant(text) : Variant(SqlServerDate(text).GeneralDate());
      case ParamType::kWholeNumber: return text.empty() ? Variant(int32_t{0}) : Variant(Variant(text).ToLong());
      case ParamType::kTrueFalse: return Variant(!text.empty() && Variant(text).ToBool());
      case ParamType::kCurrency: return text.empty() ? Variant(Currency()) : Variant(Variant(text).ToCurrency());
    }
  } catch (const Error&) {
  }
  throw Error(err::kTypeMismatch, "Parameter p" + std::to_string(param.position) + " (" + param.name + ") of " +
                                      code + " " + Expected(param.type) + ": '" + text + "'");
}

}  // namespace ent
