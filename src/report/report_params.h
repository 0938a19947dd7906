// The parameters of the prebuilt reports, as data: for each report code, the request's parameters
// p0, p1, ... that its report operation takes, each with its name in the operation's signature and
// its type. The catalogue converts and checks the request's texts with it before any SQL runs.
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

struct ReportSignature {
  const char* code;  // upper case
  std::vector<ReportParam> params;
};

// Every code that runs a report operation, in the catalogue's order.
const std::vector<ReportSignature>& ReportSignatures();

// The code's signature (the code in upper case); nullptr for a code without a report operation.
const ReportSignature* FindReportSignature(std::string_view code);

// The request's text of one parameter as its type: text as it is; a date as the en-US general date
// of the shop database's reading ("2024-06-30T10:00" gives "6/30/2024 10:00:00 AM"), so that every
// part of a report reads it alike; a whole number, true/false or currency by the standard
// conversions. The empty text stays empty text, 0, false or 0. A text that does not convert raises
// Error "Parameter p4 (lMaxRecords) of ENTCUSTSRCH is not a whole number: 'abc'".
Variant ReadReportParam(const std::string& code, const ReportParam& param, const std::string& text);

}  // namespace ent
