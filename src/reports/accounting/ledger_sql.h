// Small pieces the accounting statements share: reading query rowsets and sums, trimming names.
#pragma once

#include <memory>
#include <string>

#include "common/currency.h"
#include "data/cls_rs.h"
#include "data/recordset.h"

namespace ent::accounting {

// The rowset a query returned; a query that returned none fails here, as reading from it would
// (error 91), so the caller's trap reports that failure.
Recordset& Rows(const std::unique_ptr<Recordset>& rs);

// The named column of the first row of a sum query, as currency (null counts as 0). The query reports
// into status.
Currency SumOf(clsRS& engine, const std::string& sql, const char* column, std::string& status);

// The text without blanks at either end.
std::string TrimBlanks(const std::string& s);

}  // namespace ent::accounting
