#include "job/cls_prebuilt_report.h"

#include "common/error.h"
#include "common/log.h"
#include "common/phase_clock.h"
#include "job/result_document.h"
#include "reports/cls_rs.h"

namespace ent {

bool clsPrebuiltReport::addParam(const std::string& sKey, const std::string& sValue) {
  if (!params_.emplace(sKey, sValue).second)
    throw Error(err::kDuplicateKey, "This key is already associated with an element of this collection");
  return false;
}

std::string clsPrebuiltReport::getParam(const std::string& sKey) {
  return params_[sKey];
}

std::shared_ptr<ISendable> clsPrebuiltReport::generateDOC() {
  std::shared_ptr<ISendable> result;
  ReportOutput output;
  try {
    if (CustomReport) {
      WriteLog("generateDOC:CustomReport");
      clsRS engine;
      output.rowset = engine.getCustomRS(sqlString, StatusStr);
    } else {
      WriteLog("generateDOC: Pre Built Report :" + reportName);
      // No report takes a long parameter; a padded one would only make its SQL slow to build and run.
      for (const auto& [name, value] : params_)
        if (value.size() > kMaxParameterLength)
          throw Error(err::kReportStatus,
                      "The report parameter " + name + " is " + std::to_string(value.size()) +
                          " bytes long; a parameter may have at most " + std::to_string(kMaxParameterLength) +
                          ".",
                      "generateDoc");
      output = getPrebuiltReport(reportName);
    }
    EnterPhase(Phase::kBuild);  // the rows are read; what follows builds the document
    if (StatusStr != "0") throw Error(err::kReportStatus, StatusStr, "generateDoc");

    if (output.document) {
      auto report = std::make_shared<clsGenericReport>();
      report->SetXMLDocument(ResultDocument::FromXml(*output.document));
      result = report;
    } else if (!output.rowset || output.rowset->IsBof() || output.rowset->IsEof()) {
      StatusStr = "No records found.";
      result = std::make_shared<clsGenericReport>();
    } else {
      auto report = std::make_shared<clsGenericReport>();
      report->SetXMLDocument(ResultDocument::FromRowset(*output.rowset));
      result = report;
    }
    return result;
  } catch (const Error& e) {
    StatusStr = e.description();
  } catch (const std::exception& e) {
    StatusStr = e.what();
  }
  WriteLog("generateDoc:" + StatusStr);
  return std::make_shared<clsGenericReport>();
}

}  // namespace ent
