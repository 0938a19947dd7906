#include "job/report_params.h"

#include <algorithm>

#include "common/error.h"
#include "common/sql_server_date.h"

namespace ent {

namespace {

const char* Expected(ParamType type) {
  switch (type) {
    case ParamType::kDate:
      return "is not a date";
    case ParamType::kWholeNumber:
      return "is not a whole number";
    case ParamType::kTrueFalse:
      return "is not true or false";
    case ParamType::kCurrency:
      return "is not an amount";
    case ParamType::kText:
      break;
  }
  return "is not text";
}

}  // namespace

Variant ReadReportParam(const std::string& code, const ReportParam& param, const std::string& text) {
  try {
    switch (param.type) {
      case ParamType::kText:
        return Variant(text);
      case ParamType::kDate:
        return text.empty() ? Variant(text) : Variant(SqlServerDate(text).GeneralDate());
      case ParamType::kWholeNumber:
        return text.empty() ? Variant(int32_t{0}) : Variant(Variant(text).ToLong());
      case ParamType::kTrueFalse:
        return Variant(!text.empty() && Variant(text).ToBool());
      case ParamType::kCurrency:
        return text.empty() ? Variant(Currency()) : Variant(Variant(text).ToCurrency());
    }
  } catch (const Error&) {
  }
  throw Error(err::kTypeMismatch, "Parameter p" + std::to_string(param.position) + " (" + param.name +
                                      ") of " + code + " " + Expected(param.type) + ": '" + text + "'");
}

}  // namespace ent
