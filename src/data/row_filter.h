// The criteria of a rowset filter, in the recordset filter syntax: comparisons
// "Field op value" (op one of = <> < > <= >= LIKE; value a number, 'text' with '' for a quote,
// #date#, or NULL) joined with AND / OR, with parentheses. Values are compared in the column's type.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "common/variant.h"
#include "data/field.h"

namespace ent {

class RowFilter {
 public:
  virtual ~RowFilter() = default;
  // Raises Error 3001 (invalid arguments) for criteria that do not parse or name an unknown column.
  static std::unique_ptr<RowFilter> Parse(std::string_view criteria, const std::vector<Field>& fields);
  virtual bool Matches(const std::vector<Variant>& row) const = 0;
};

}  // namespace ent
