// Reading one request parameter of a prebuilt report as its type. The catalogue (report/catalogue.h)
// describes each code's parameters and checks the request's texts with this before any SQL runs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"

namespace ent {

enum class ParamType {
  kText,
  kDate,         // text the shop database reads as a date
  kWholeNumber,  // 32-bit
  kTrueFalse,
  kCurrency,
};

struct ReportParam {
  int position;      // the request's "p<position>"
  const char* name;  // as in the report operation's signature: "lMaxRecords"
  ParamType type;
};

// The request's text of one parameter as its type: text as it is; a date as the en-US general date
// of the shop database's reading ("2024-06-30T10:00" gives "6/30/2024 10:00:00 AM"), so that every
// part of a report reads it alike; a whole number, true/false or currency by the standard
// conversions. The empty text stays empty text, 0, false or 0. A text that does not convert raises
// Error "Parameter p4 (lMaxRecords) of ENTCUSTSRCH is not a whole number: 'abc'".
Variant ReadReportParam(const std::string& code, const ReportParam& param, const std::string& text);

}  // namespace ent
