#include "common/format.h"

#include <cmath>

#include "common/number_format.h"
#include "common/numeric_text.h"
#include "common/value_helpers.h"

namespace ent {

namespace {

bool IsNumericPattern(std::string_view pattern) {
  return pattern.find_first_of("#0") != std::string_view::npos;
}

std::string FormatDate(const DateTime& d, std::string_view pattern) {
  return FormatDateParts(d.year(), d.month(), d.day(), d.hour(), d.minute(), d.second(), pattern,
                         FormatRules::kVisualBasic);
}

}  // namespace

std::string Format(const Variant& value, std::string_view pattern) {
  using K = Variant::Kind;
  const FormatRules vb = FormatRules::kVisualBasic;
  switch (value.kind()) {
    case K::kNull:
      return "";
    case K::kEmpty:
      return IsNumericPattern(pattern) ? FormatDecimal("0", pattern, vb) : "";
    case K::kBoolean:
      return FormatDecimal(value.boolean() ? "-1" : "0", pattern, vb);
    case K::kByte:
    case K::kInteger:
    case K::kLong:
    case K::kLongLong:
      return FormatScaled(value.whole(), 0, pattern, vb);
    case K::kSingle:
    case K::kDouble:
      return FormatDouble(value.floating(), pattern, vb);
    case K::kDecimal:
      return FormatDecimal(value.decimal().text, pattern, vb);
    case K::kCurrency:
      return FormatScaled(value.currency().raw(), 4, pattern, vb);
    case K::kDate:
      if (IsNumericPattern(pattern)) return FormatDouble(value.ToDouble(), pattern, vb);
      return FormatDate(value.date(), pattern);
    case K::kString: {
      if (IsNumericPattern(pattern)) {
        if (auto decimal = NumericTextToDecimal(value.text())) return FormatDecimal(*decimal, pattern, vb);
        return value.text();
      }
      if (auto d = DateTime::Parse(value.text())) return FormatDate(*d, pattern);
      return value.text();
    }
    case K::kObject:
      return value.ToText();  // raises the conversion's error
  }
  return value.ToText();
}

std::string FormatAsText(const Variant& value, std::string_view pattern) {
  using K = Variant::Kind;
  if (IsNumericPattern(pattern)) {
    switch (value.kind()) {
      case K::kByte:
      case K::kInteger:
      case K::kLong:
      case K::kLongLong:
      case K::kCurrency:
        return Format(value, pattern);
      case K::kDouble:
        // The text holds the double's 15 significant digits, rounded as Format rounds the double
        // itself (correctly, halves to even). Near the end of the range that text can pass the
        // largest double and, like the text of an infinity or NaN, read as no number at all.
        if (std::fabs(value.floating()) < 1e308) return Format(value, pattern);
        break;
      default:
        break;
    }
  }
  return Format(Variant(SafeString(value)), pattern);
}

}  // namespace ent
