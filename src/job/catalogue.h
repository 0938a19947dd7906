// What the catalogue offers a head office, read from the same table that runs the reports
// (report/catalogue.cpp): every code with its parameters and its result columns.
#pragma once

#include <string>
#include <vector>

namespace ent {

// One parameter of a code, as a request carries it ("p" + position).
struct ReportParameter {
  int position = 0;
  const char* name = "";  // the report operation's argument
  char type = 'T';        // T text, D date, W whole number, B true/false, C currency
  const char* meaning = "";
  const char* fallback = "";  // what an absent parameter reads as
};

struct ReportDescription {
  const char* code = "";
  const char* title = "";
  const char* result = "";  // "rowset", "RepairOrder document" or "none"
  std::vector<ReportParameter> parameters;
  std::vector<const char*> columns;  // of the result, in order; empty when there is no rowset
  const char* notes = "";            // fixed arguments, columns that vary, the status of a retired code
};

// Every code, in the order in which a request's code is looked up.
const std::vector<ReportDescription>& ReportCatalogue();

// The type letter's name: "text", "date", "whole number", "true/false", "currency".
const char* ParameterTypeName(char type);

// The catalogue as JSON ({"reports": [...]}) and as text for people.
std::string ReportCatalogueJson();
std::string ReportCatalogueText();

}  // namespace ent
