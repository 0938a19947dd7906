// The catalogue's description as JSON (for programs and GET /reports) and as text (for people).
#include <nlohmann/json.hpp>

#include "job/catalogue.h"

namespace ent {

const char* ParameterTypeName(char type) {
  switch (type) {
    case 'D':
      return "date";
    case 'W':
      return "whole number";
    case 'B':
      return "true/false";
    case 'C':
      return "currency";
    default:
      return "text";
  }
}

std::string ReportCatalogueJson() {
  nlohmann::json reports = nlohmann::json::array();
  for (const ReportDescription& r : ReportCatalogue()) {
    nlohmann::json parameters = nlohmann::json::array();
    for (const ReportParameter& p : r.parameters)
      parameters.push_back({{"position", p.position},
                            {"key", "p" + std::to_string(p.position)},
                            {"name", p.name},
                            {"type", ParameterTypeName(p.type)},
                            {"meaning", p.meaning},
                            {"default", p.fallback}});
    nlohmann::json columns = nlohmann::json::array();
    for (const char* c : r.columns) columns.push_back(c);
    reports.push_back({{"code", r.code},
                       {"title", r.title},
                       {"result", r.result},
                       {"parameters", parameters},
                       {"columns", columns},
                       {"notes", r.notes}});
  }
  return nlohmann::json{{"reports", reports}}.dump(2) + "\n";
}

std::string ReportCatalogueText() {
  std::string out;
  for (const ReportDescription& r : ReportCatalogue()) {
    out += std::string(r.code) + "  " + r.title + "\n";
    if (r.parameters.empty()) out += "    no parameters\n";
    for (const ReportParameter& p : r.parameters) {
      out += "    p" + std::to_string(p.position) + "  " + p.name + " (" + ParameterTypeName(p.type) +
             "): " + p.meaning;
      out += std::string("; absent: ") + (*p.fallback ? p.fallback : "empty") + "\n";
    }
    if (!r.columns.empty()) {
      out += "    columns:";
      for (const char* c : r.columns) out += std::string(" ") + c;
      out += "\n";
    } else if (std::string(r.result) != "rowset") {
      out += std::string("    result: ") + r.result + "\n";
    }
    if (*r.notes) out += std::string("    ") + r.notes + "\n";
    out += "\n";
  }
  return out;
}

}  // namespace ent
