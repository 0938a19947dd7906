// Reading the untidy sample shop for the figure tests: a report run on it, and our own queries over
// the same file to hold the report's figures against.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/sample_shop.h"

namespace ent::test::untidy {

using Row = std::map<std::string, std::string>;

// A report code run on the untidy shop.
ReportRun Report(const std::string& code, const std::vector<std::string>& params);

// The first value of a query on the untidy shop ("" for null or no row), as a count, as a sum (0 for
// null).
std::string Value(const std::string& sql);
size_t Count(const std::string& sql);
double Sum(const std::string& sql);
// Every row of a one-column query, as texts ("" for null).
std::vector<std::string> Values(const std::string& sql);

// A column of the run's rows, the empty text where a row has no value.
std::vector<std::string> ColumnOf(const ReportRun& run, const std::string& column);
// The cell of a row, "" when the row has none.
std::string Cell(const Row& row, const std::string& column);
// The amount of a column in the last row (the total line of most reports).
double TotalOf(const ReportRun& run, const std::string& column);
// The rows whose `column` reads `value`.
std::vector<Row> RowsWhere(const ReportRun& run, const std::string& column, const std::string& value);

}  // namespace ent::test::untidy
