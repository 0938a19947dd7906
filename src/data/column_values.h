// Typing the values a database hands back: the drivers fetch raw values (whole numbers as LongLong,
// fractions as Double, text as String, or already-typed values) and these give them the types of
// their fields, so that every driver types a column the same way.
#pragma once

#include <vector>

#include "common/variant.h"
#include "data/field.h"

namespace ent {

// The field of a computed column (one without a declared type), from its raw values: whole numbers
// give int (bigint beyond its range); fractions give money when every value has at most four
// decimals (sums and differences of amounts), float otherwise; any text gives nvarchar.
Field FieldFromRawValues(const std::vector<std::vector<Variant>>& rows, size_t column);

// The raw value as the field's type; a value held in another form than the type stays as it is.
Variant TypedValue(const Field& field, Variant raw);

}  // namespace ent
