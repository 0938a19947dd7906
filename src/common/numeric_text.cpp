// Placeholder until the full reader lands.
#include "common/numeric_text.h"

#include <cstdlib>
#include <string>

namespace ent {

std::optional<std::string> NumericTextToDecimal(std::string_view text) {
  std::string t;
  for (char c : text)
    if (c != ',' && c != ' ') t += c;
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  std::strtod(t.c_str(), &end);
  if (*end != 0) return std::nullopt;
  return t;
}

std::optional<double> ParseNumericText(std::string_view text) {
  auto d = NumericTextToDecimal(text);
  if (!d) return std::nullopt;
  return std::strtod(d->c_str(), nullptr);
}

bool IsNumericText(std::string_view text) { return ParseNumericText(text).has_value(); }

}  // namespace ent
