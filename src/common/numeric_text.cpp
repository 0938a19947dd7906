#include "common/numeric_text.h"

#include <algorithm>
#include <charconv>

namespace ent {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Numeric text taken apart: value = digits x 10^scale.
struct NumericParts {
  bool negative = false;
  std::string digits;  // as written, leading zeros dropped; empty for zero
  long scale = 0;
  long written_decimals = 0;  // digits written after the point
};

std::optional<NumericParts> Scan(std::string_view s) {
  const size_t n = s.size();
  size_t i = 0;
  bool plus = false, minus = false, currency = false, paren = false;
  for (; i < n; ++i) {
    const char c = s[i];
    if (IsBlank(c)) continue;
    if (c == '+' && !plus) {
      plus = true;
    } else if (c == '-' && !minus) {
      minus = true;
    } else if (c == '$' && !currency) {
      currency = true;
    } else if (c == '(' && !paren) {
      paren = true;
    } else {
      break;
    }
  }

  NumericParts parts;
  bool any_digit = false, point = false;
  for (; i < n; ++i) {
    const char c = s[i];
    if (IsDigit(c)) {
      any_digit = true;
      if (!parts.digits.empty() || c != '0') parts.digits += c;
      if (point) ++parts.written_decimals;
    } else if (c == ',' && any_digit && !point) {
      // Visual Basic does not check where separators stand.
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (!any_digit) return std::nullopt;

  long exponent = 0;
  if (i < n && (s[i] == 'E' || s[i] == 'e' || s[i] == 'D' || s[i] == 'd')) {
    ++i;
    const bool negative_exponent = i < n && s[i] == '-';
    if (i < n && (s[i] == '+' || s[i] == '-')) ++i;
    if (i == n || !IsDigit(s[i])) return std::nullopt;
    for (; i < n && IsDigit(s[i]); ++i) exponent = std::min(exponent * 10 + (s[i] - '0'), 1'000'000'000L);
    if (negative_exponent) exponent = -exponent;
  }

  bool trailing_plus = false, trailing_minus = false, closed = false;
  for (; i < n; ++i) {
    const char c = s[i];
    if (IsBlank(c)) continue;
    if (c == '+' && !plus && !trailing_plus) {
      trailing_plus = true;
    } else if (c == '-' && !minus && !trailing_minus) {
      trailing_minus = true;
    } else if (c == ')' && paren && !closed) {
      closed = true;
    } else if (c == '$' && !currency) {
      currency = true;
    } else {
      return std::nullopt;
    }
  }
  if (paren != closed) return std::nullopt;

  parts.negative = (minus || trailing_minus || paren) && !parts.digits.empty();
  parts.scale = exponent - parts.written_decimals;
  return parts;
}

// The number of digits before the point (negative: zeros after it before the first digit).
long Magnitude(const NumericParts& parts) {
  return static_cast<long>(parts.digits.size()) + parts.scale;
}

// The value as a double, or nothing when it overflows.
std::optional<double> ToDouble(const NumericParts& parts) {
  if (parts.digits.empty()) return 0.0;
  const std::string text = parts.digits + "e" + std::to_string(parts.scale);
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    if (Magnitude(parts) > 0) return std::nullopt;
    value = 0;
  }
  return parts.negative ? -value : value;
}

// Whether the value is beyond the double range; one below 10^308 never is, so only longer numbers
// are converted to find out.
bool Overflows(const NumericParts& parts) {
  return Magnitude(parts) > 308 && !ToDouble(parts);
}

}  // namespace

std::optional<double> ParseNumericText(std::string_view text) {
  const std::optional<NumericParts> parts = Scan(text);
  if (!parts) return std::nullopt;
  return ToDouble(*parts);
}

bool IsNumericText(std::string_view text) {
  const std::optional<NumericParts> parts = Scan(text);
  return parts && !Overflows(*parts);
}

std::optional<std::string> NumericTextToDecimal(std::string_view text) {
  const std::optional<NumericParts> parts = Scan(text);
  if (!parts || Overflows(*parts)) return std::nullopt;
  const long magnitude = Magnitude(*parts);
  if (parts->digits.empty() || magnitude <= -400) {
    return parts->digits.empty() && parts->written_decimals > 0 && parts->scale < 0
               ? "0." + std::string(std::min(parts->written_decimals, -parts->scale), '0')
               : "0";
  }
  std::string decimal = parts->negative ? "-" : "";
  if (parts->scale >= 0) {
    decimal += parts->digits;
    decimal.append(parts->scale, '0');
  } else if (magnitude > 0) {
    decimal.append(parts->digits, 0, magnitude);
    decimal += '.';
    decimal.append(parts->digits, magnitude);
  } else {
    decimal += "0.";
    decimal.append(-magnitude, '0');
    decimal += parts->digits;
  }
  return decimal;
}

}  // namespace ent
