// Typing the values a database hands back: the drivers fetch raw values (whole numbers as LongLong,
// fractions as Double, text as String, or already-typed values) and these give them the types of
// their fields, so that every driver types a column the same way.
#pragma once

#include <vector>

#include "data/connection.h"

namespace ent {

// Gives every column of a fetched result its field and its values their field's type. A column
// whose `declared[c]` is false is a computed one: its field comes from its raw values (whole
// numbers give int, bigint beyond its range; fractions give money when every value has at most
// four decimals, as sums and differences of amounts have, float otherwise; any text gives
// nvarchar) and keeps its name. A value held in another form than its type stays as it is.
void TypeColumns(QueryResult& result, const std::vector<bool>& declared);

// Gives one raw value the type of its declared field, in place, as TypeColumns gives it.
void TypeValue(const Field& field, Variant& value);

}  // namespace ent
