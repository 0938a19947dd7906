// The small sample shop, created once per test process and shared read-only by the tests that use
// it, and a way to run a report code on it the way a request does.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ent::test {

// The path of the small sample shop (seed 1).
const std::string& SmallSampleShop();

// The small sample shop made untidy (sample-db --untidy), created once per test process.
const std::string& UntidySampleShop();

// What a prebuilt report posted: its status and, when it has a document, the document's columns in
// order and its rows (attribute name to text; null columns are missing).
struct ReportRun {
  std::string status;
  bool has_document = false;
  std::vector<std::string> columns;
  std::vector<int> widths;  // each column's declared width (dt:maxLength)
  std::vector<std::map<std::string, std::string>> rows;
  std::string document;  // the document's text, for reports that answer with another kind of document
};

// Runs a code with parameters p0, p1, ... on the small sample shop.
ReportRun RunReport(const std::string& code, const std::vector<std::string>& params);
// The same on the shop database file `shop`.
ReportRun RunReportOn(const std::string& shop, const std::string& code,
                      const std::vector<std::string>& params);

// The first column of the first row of a query run directly with SQLite on the small sample shop,
// as text ("" for null): the independent check of a report's figures.
std::string QueryValue(const std::string& sql);
std::string QueryValueOn(const std::string& path, const std::string& sql);
// Every row of such a query, each cell as text ("" for null).
std::vector<std::vector<std::string>> QueryRowsOn(const std::string& path, const std::string& sql);
// A count from such a query on the small sample shop.
int64_t QueryCount(const std::string& sql);

// A displayed amount ("1,234.50") as a number; 0 for the empty text.
double Amount(std::string text);

}  // namespace ent::test
