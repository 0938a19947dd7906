// A report's rows made while its query is read, for results too large to copy first. The rowset it
// hands back is forward-only: as the document is written it reads the next query row, makes the
// result row from it and forgets both, so a report holds one row at a time. It ends, when asked, with
// the "[b]TOTAL" line appendTotalRow would add, and keeps the shop connection until its last row.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/variant.h"
#include "data/connection.h"
#include "data/recordset.h"

namespace ent {

struct ReportRowSteps {
  // The result's text columns; empty: one per query column, with its name.
  std::vector<std::string> columns;
  // Makes a result row (one null per column on entry) from a query row; unset: every value as
  // text, a null as the empty text, as copyRS copies them.
  std::function<void(const std::vector<Field>& query_fields, const std::vector<Variant>& query_row,
                     std::vector<Variant>& row)>
      make;
  // Columns summed, as appendTotalRow sums them, into a closing "[b]TOTAL" line; none: no such line.
  // The line closes a result of at least one row.
  std::vector<std::string> totals;
  // Completes the total line once its sums are in.
  std::function<void(const std::vector<Field>& fields, std::vector<Variant>& total)> complete_total;
  // Columns rewritten with the amount pattern on every row, the total line included, as
  // formatColumns rewrites them.
  std::vector<std::string> amounts;
};

// Runs `sql` on `connection` (`computed` types its computed columns, so that SQLite can hand its rows
// over one by one) and returns the rowset with "0" in `status`, or nothing and the failure's
// description (logged as "getRS:").
std::unique_ptr<Recordset> StreamReportRows(const std::shared_ptr<Connection>& connection,
                                            const std::string& sql, const ComputedTypes& computed,
                                            ReportRowSteps steps, std::string& status);

}  // namespace ent
