// The program's Format(value, pattern) with Visual Basic rules: numbers and numeric text are
// formatted with a numeric pattern ("###,###,##0.00"), dates with a date pattern ("MM/dd/yyyy");
// text that is not numeric comes back unchanged; null gives the empty text.
#pragma once

#include <string>
#include <string_view>

#include "common/variant.h"

namespace ent {

std::string Format(const Variant& value, std::string_view pattern);

// Format of the value's text (a null's is the empty text), for values the reports hold as text.
// Under a numeric pattern a currency, a whole number or a double below 1E308 is formatted from the
// number itself, which is what its text reads back as.
std::string FormatAsText(const Variant& value, std::string_view pattern);

// The display pattern of amounts.
inline constexpr std::string_view kAmountPattern = "###,###,##0.00";

}  // namespace ent
