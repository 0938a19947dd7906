// Building SQL texts from request values: the one quoting helper, and the check that a sort order
// from a request is only column names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ent {

// The value with every single quote doubled, ready to stand between single quotes in SQL.
std::string SqlQuote(std::string_view value);

// " and <column> like '<pattern>'" for one filter of a search; nothing for an empty filter or one
// of '%' only, so that such a filter also finds the rows whose column is null.
std::string LikeFilter(std::string_view column, std::string_view pattern);

// Accepts column names (letters, digits, '_', optionally qualified with '.' or in [brackets])
// separated by commas, each optionally followed by ASC or DESC. Returns the failure text for
// anything else, nothing when the order is acceptable.
std::optional<std::string> CheckSortOrder(std::string_view order_by);

// "INSERT INTO [table] ([a], [b]) VALUES (?, ?)": one row with a parameter per column (DEFAULT
// VALUES for no columns).
std::string InsertStatement(const std::string& table, const std::vector<std::string>& columns);

}  // namespace ent
