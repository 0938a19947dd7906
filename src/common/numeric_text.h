// Numeric text as the en-US IsNumeric/CDbl read it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ent {

std::optional<double> ParseNumericText(std::string_view text);
bool IsNumericText(std::string_view text);
std::optional<std::string> NumericTextToDecimal(std::string_view text);

}  // namespace ent
