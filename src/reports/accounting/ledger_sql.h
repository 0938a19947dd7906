// Reading the sums the accounting statements are made of.
#pragma once

#include <memory>
#include <string>

#include "common/currency.h"
#include "data/recordset.h"
#include "reports/cls_rs.h"

namespace ent::accounting {

// The named column of the first row of a sum query, as currency (null counts as 0). The query reports
// into status.
Currency SumOf(clsRS& engine, const std::string& sql, const char* column, std::string& status);

}  // namespace ent::accounting
