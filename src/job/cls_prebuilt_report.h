// One report job: what the request asked for (a report code or a free SQL text, the parameters,
// the client and session identifiers), run by generateDOC into the result that is posted.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "job/report_output.h"
#include "job/sendable.h"

namespace ent {

// The longest parameter of a prebuilt report (bytes); a longer one fails the report, naming it.
inline constexpr size_t kMaxParameterLength = 4000;

class clsPrebuiltReport {
 public:
  std::string reportName;
  std::string SessionID;
  bool CustomReport = false;
  std::string sqlString;
  std::string StatusStr;  // "0" after success, else the notice or failure text
  int32_t ClientID = 0;

  // Adds a parameter; a key already present raises Error 457. Always returns false.
  bool addParam(const std::string& sKey, const std::string& sValue);
  // The parameter's text; a missing key reads as the empty text (and is present from then on).
  std::string getParam(const std::string& sKey);

  // Runs the report and wraps its result for posting. Never fails: failures become StatusStr and a
  // result without document.
  std::shared_ptr<ISendable> generateDOC();

 private:
  ReportOutput getPrebuiltReport(const std::string& code);

  std::map<std::string, std::string> params_;
};

}  // namespace ent
