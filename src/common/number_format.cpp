#include "common/number_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "common/error.h"

namespace ent {
namespace {

[[noreturn]] void Fail(int32_t number, std::string description) {
  throw Error(number, std::move(description), "Format");
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// A literal in a pattern: an escaped character ("\x") or quoted text ("..." and, where allowed,
// '...'; an open quote runs to the end).
struct Literal {
  std::string_view text;
  size_t used = 0;  // pattern characters taken; 0 when there is no literal
};

Literal ReadLiteral(std::string_view pattern, size_t i, bool single_quotes) {
  const char c = pattern[i];
  if (c == '\\') return {pattern.substr(i + 1, 1), std::min<size_t>(2, pattern.size() - i)};
  if (c == '"' || (c == '\'' && single_quotes)) {
    const size_t close = pattern.find(c, i + 1);
    const size_t end = close == std::string_view::npos ? pattern.size() : close;
    return {pattern.substr(i + 1, end - i - 1), (close == std::string_view::npos ? end : end + 1) - i};
  }
  return {};
}

// ---------------------------------------------------------------------------------------------
// Numbers

// A decimal number as its significant digits and the place of its point:
// value = 0.digits x 10^point, so 12.5 is {"125", 2} and 0.05 is {"5", -1}.
struct Decimal {
  bool negative = false;
  std::string digits;  // no leading or trailing zeros; empty for zero
  long point = 0;

  bool IsZero() const { return digits.empty(); }
};

void StripTrailingZeros(Decimal& d) {
  const size_t last = d.digits.find_last_not_of('0');
  d.digits.resize(last == std::string::npos ? 0 : last + 1);
  if (d.digits.empty()) d.point = 0;
}

Decimal ParseDecimalText(std::string_view text) {
  Decimal d;
  size_t i = 0;
  if (!text.empty() && text[0] == '-') {
    d.negative = true;
    i = 1;
  }
  long integer_digits = 0;
  bool point = false;
  bool any_digit = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (IsDigit(c)) {
      any_digit = true;
      if (d.digits.empty() && c == '0') {
        if (point) --d.point;  // a zero between the point and the first significant digit
        continue;
      }
      d.digits += c;
      if (!point) ++integer_digits;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      any_digit = false;
      break;
    }
  }
  if (!any_digit) {
    Fail(err::kTypeMismatch, "Not a plain decimal number: \"" + std::string(text) + "\"");
  }
  d.point += integer_digits;
  StripTrailingZeros(d);
  if (d.IsZero()) d.negative = false;
  return d;
}

// The 15-significant-digit decimal form of a finite double, correctly rounded.
Decimal Decimal15(double value) {
  Decimal d;
  if (value == 0) return d;
  d.negative = std::signbit(value);
  char buffer[32];
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value), std::chars_format::scientific, 14);
  const std::string_view text(buffer, result.ptr - buffer);  // d.ddddddddddddddde[+-]xx
  const size_t e = text.find('e');
  for (char c : text.substr(0, e)) {
    if (c != '.') d.digits += c;
  }
  const char* exponent_begin = text.data() + e + 1;
  if (*exponent_begin == '+') ++exponent_begin;
  int exponent = 0;
  std::from_chars(exponent_begin, result.ptr, exponent);
  d.point = exponent + 1;
  StripTrailingZeros(d);
  return d;
}

// The decimal form of value x 10^-scale.
Decimal ScaledDecimal(int64_t value, int scale) {
  Decimal d;
  d.negative = value < 0;
  const uint64_t magnitude = d.negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  char buffer[20];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude);
  d.digits.assign(buffer, result.ptr);
  d.point = static_cast<long>(d.digits.size()) - scale;
  StripTrailingZeros(d);
  return d;
}

std::string PlainText(const Decimal& d) {
  if (d.IsZero()) return "0";
  std::string text = d.negative ? "-" : "";
  const long n = static_cast<long>(d.digits.size());
  if (d.point <= 0) {
    text += "0.";
    text.append(-d.point, '0');
    text += d.digits;
  } else if (d.point >= n) {
    text += d.digits;
    text.append(d.point - n, '0');
  } else {
    text.append(d.digits, 0, d.point);
    text += '.';
    text.append(d.digits, d.point);
  }
  return text;
}

// Keeps the first `keep` digits, rounding half away from zero.
void RoundDigits(Decimal& d, long keep) {
  if (keep >= static_cast<long>(d.digits.size())) return;
  if (keep < 0) {
    d.digits.clear();
    d.point = 0;
    return;
  }
  const bool up = d.digits[keep] >= '5';
  d.digits.resize(keep);
  if (up) {
    size_t n = d.digits.size();
    while (n > 0 && d.digits[n - 1] == '9') --n;
    d.digits.resize(n);
    if (n == 0) {
      d.digits = "1";
      ++d.point;
    } else {
      ++d.digits[n - 1];
    }
  }
  StripTrailingZeros(d);
}

enum class Tok { kHash, kZero, kPoint, kComma, kPercent, kLiteral, kSection };

struct Token {
  Tok kind;
  std::string_view text;  // for literals
};

constexpr std::string_view kSymbols = "#0.,%;";
constexpr Tok kSymbolKinds[] = {Tok::kHash,  Tok::kZero,    Tok::kPoint,
                                Tok::kComma, Tok::kPercent, Tok::kSection};

bool IsScientific(std::string_view pattern, size_t i, FormatRules rules) {
  const std::string_view rest = pattern.substr(i + 1);
  const bool sign = !rest.empty() && (rest[0] == '+' || rest[0] == '-');
  if (rules == FormatRules::kVisualBasic) return sign;
  const size_t digit = sign ? 1 : 0;
  return rest.size() > digit && rest[digit] == '0';
}

std::vector<Token> TokenizeNumberPattern(std::string_view pattern, FormatRules rules) {
  std::vector<Token> tokens;
  tokens.reserve(pattern.size());
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (const size_t k = kSymbols.find(c); k != std::string_view::npos) {
      tokens.push_back({kSymbolKinds[k], {}});
      continue;
    }
    if (const Literal literal = ReadLiteral(pattern, i, rules == FormatRules::kSqlServer); literal.used > 0) {
      tokens.push_back({Tok::kLiteral, literal.text});
      i += literal.used - 1;
      continue;
    }
    if ((c == 'E' || c == 'e') && IsScientific(pattern, i, rules)) {
      Fail(err::kInvalidProcedureCall,
           "Scientific number patterns are not supported: \"" + std::string(pattern) + "\"");
    }
    tokens.push_back({Tok::kLiteral, pattern.substr(i, 1)});
  }
  return tokens;
}

using Section = std::span<const Token>;

// What one section of a number pattern asks for.
struct Layout {
  Section tokens;
  int int_places = 0;   // digit placeholders before the point
  int min_int = 0;      // integer digits always printed (from the first '0')
  int frac_places = 0;  // digit placeholders after the point
  int min_frac = 0;     // decimals always printed (up to the last '0')
  bool grouping = false;
  int shift = 0;  // powers of ten: +2 per '%', -3 per scaling ','
};

Layout ScanSection(Section tokens, FormatRules rules) {
  Layout layout;
  layout.tokens = tokens;
  int digits = 0;
  int point_at = -1;
  int first_zero = -1;
  int last_zero = 0;
  int trailing_commas = 0;  // Visual Basic: commas with no placeholder after them yet
  int comma_pos = -1;       // .NET: placeholders before the last comma run, and its length
  int comma_run = 0;
  for (const Token& token : tokens) {
    const bool integer_part = point_at < 0;
    switch (token.kind) {
      case Tok::kZero:
        if (first_zero < 0) first_zero = digits;
        last_zero = digits + 1;
        [[fallthrough]];
      case Tok::kHash:
        if (integer_part) {
          if (trailing_commas > 0 && rules == FormatRules::kVisualBasic) layout.grouping = true;
          trailing_commas = 0;
        }
        ++digits;
        break;
      case Tok::kPoint:
        if (integer_part) point_at = digits;
        break;
      case Tok::kComma:
        if (!integer_part) break;
        ++trailing_commas;
        if (digits == 0) break;
        if (comma_pos == digits) {
          ++comma_run;
        } else {
          if (comma_pos >= 0 && rules == FormatRules::kSqlServer) layout.grouping = true;
          comma_pos = digits;
          comma_run = 1;
        }
        break;
      case Tok::kPercent:
        layout.shift += 2;
        break;
      default:
        break;
    }
  }
  if (point_at < 0) point_at = digits;
  if (rules == FormatRules::kVisualBasic) {
    layout.shift -= 3 * trailing_commas;
  } else if (comma_pos == point_at) {
    layout.shift -= 3 * comma_run;
  } else if (comma_pos >= 0) {
    layout.grouping = true;
  }
  layout.int_places = point_at;
  layout.frac_places = digits - point_at;
  layout.min_int = first_zero >= 0 && first_zero < point_at ? point_at - first_zero : 0;
  layout.min_frac = std::max(0, last_zero - point_at);
  return layout;
}

std::string Render(const Decimal& value, const Layout& layout, bool sign, FormatRules rules) {
  std::string integer;
  if (value.point > 0) {
    integer.assign(value.digits, 0, std::min<size_t>(value.point, value.digits.size()));
    integer.append(value.point - integer.size(), '0');
  }
  if (static_cast<int>(integer.size()) < layout.min_int)
    integer.insert(0, layout.min_int - integer.size(), '0');
  std::string fraction;
  if (static_cast<long>(value.digits.size()) > value.point) {
    if (value.point < 0) fraction.assign(-value.point, '0');
    fraction.append(value.digits, std::max(0L, value.point));
  }
  if (static_cast<int>(fraction.size()) < layout.min_frac)
    fraction.append(layout.min_frac - fraction.size(), '0');

  std::string out;  // most results are short enough to stay inside the string itself
  if (sign) out += '-';
  size_t next = 0;  // the next integer digit to print
  auto print_integer_digits = [&](long up_to) {
    for (; static_cast<long>(next) < up_to; ++next) {
      out += integer[next];
      const size_t after = integer.size() - next - 1;
      if (layout.grouping && after > 0 && after % 3 == 0) out += ',';
    }
  };
  int int_seen = 0;
  size_t frac_seen = 0;
  bool point_done = false;
  for (const Token& token : layout.tokens) {
    switch (token.kind) {
      case Tok::kHash:
      case Tok::kZero:
        if (!point_done) {
          // This placeholder stands for the digit with (int_places - int_seen) digits after it; the
          // first one also takes every digit the pattern has no place for.
          ++int_seen;
          print_integer_digits(static_cast<long>(integer.size()) - (layout.int_places - int_seen));
        } else if (frac_seen < fraction.size()) {
          out += fraction[frac_seen++];
        }
        break;
      case Tok::kPoint:
        if (point_done) break;
        point_done = true;
        print_integer_digits(static_cast<long>(integer.size()));
        if (rules == FormatRules::kVisualBasic || !fraction.empty()) out += '.';
        break;
      case Tok::kPercent:
        out += '%';
        break;
      case Tok::kLiteral:
        out += token.text;
        break;
      default:
        break;
    }
  }
  return out;
}

// A number pattern read: its tokens and what each of its sections asks for. Sections: positive (and
// everything else when alone); negative; zero. Any further ones are ignored; a missing or empty one
// falls back to the first.
struct NumberPattern {
  std::vector<Token> tokens;
  std::array<Layout, 3> sections;  // over `tokens`
  size_t count = 0;

  size_t SectionFor(size_t wanted) const {
    return wanted < count && !sections[wanted].tokens.empty() ? wanted : 0;
  }
};

void ReadSections(NumberPattern& read, FormatRules rules) {
  const Section tokens(read.tokens);
  read.count = 0;
  size_t begin = 0;
  for (size_t i = 0; i <= tokens.size() && read.count < read.sections.size(); ++i) {
    if (i == tokens.size() || tokens[i].kind == Tok::kSection) {
      read.sections[read.count++] = ScanSection(tokens.subspan(begin, i - begin), rules);
      begin = i + 1;
    }
  }
}

// A report formats whole columns with one pattern, so the last pattern read on this thread is kept
// (over a copy of its text, which the literal tokens point into).
const NumberPattern& ReadNumberPattern(std::string_view pattern, FormatRules rules) {
  struct Cache {
    bool valid = false;
    FormatRules rules = FormatRules::kVisualBasic;
    std::string pattern;
    NumberPattern read;
  };
  thread_local Cache cache;
  if (!cache.valid || cache.rules != rules || cache.pattern != pattern) {
    cache.valid = false;
    cache.pattern.assign(pattern);
    cache.rules = rules;
    cache.read.tokens = TokenizeNumberPattern(cache.pattern, rules);
    ReadSections(cache.read, rules);
    cache.valid = true;
  }
  return cache.read;
}

std::string FormatNumber(Decimal value, std::string_view pattern, FormatRules rules) {
  const NumberPattern& read = ReadNumberPattern(pattern, rules);
  const bool was_zero = value.IsZero();
  size_t section = read.SectionFor(was_zero ? 2 : value.negative ? 1 : 0);
  if (!was_zero) {
    value.point += read.sections[section].shift;
    RoundDigits(value, value.point + read.sections[section].frac_places);
    if (value.IsZero() && rules == FormatRules::kSqlServer) {
      // .NET drops the sign of a value that rounds to zero and formats it as a zero.
      value.negative = false;
      section = read.SectionFor(2);
    }
  }
  return Render(value, read.sections[section], value.negative && section == 0, rules);
}

// ---------------------------------------------------------------------------------------------
// Dates

constexpr std::array<const char*, 12> kMonthNames = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};
constexpr std::array<const char*, 7> kDayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

struct DateParts {
  int year, month, day, hour, minute, second;

  bool IsLeapYear() const { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }
  int DaysInMonth() const {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear() ? 29 : kDays[month - 1];
  }
  int DayOfYear() const {
    static constexpr int kBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    return kBefore[month - 1] + day + (month > 2 && IsLeapYear() ? 1 : 0);
  }
  int Weekday() const {  // 0 = Sunday
    static constexpr int kOffset[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const int y = month < 3 ? year - 1 : year;
    return (y + y / 4 - y / 100 + y / 400 + kOffset[month - 1] + day) % 7;
  }
  int Hour12() const { return hour % 12 == 0 ? 12 : hour % 12; }
  bool IsPm() const { return hour >= 12; }
};

void AppendNumber(std::string& out, int value, int min_width) {
  const std::string digits = std::to_string(value);
  if (static_cast<int>(digits.size()) < min_width) out.append(min_width - digits.size(), '0');
  out += digits;
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (Lower(text[i]) != Lower(prefix[i])) return false;
  }
  return true;
}

size_t RunLength(std::string_view text, size_t i, bool ignore_case) {
  size_t n = 1;
  const auto same = [&](char a, char b) { return ignore_case ? Lower(a) == Lower(b) : a == b; };
  while (i + n < text.size() && same(text[i + n], text[i])) ++n;
  return n;
}

[[noreturn]] void FailUnsupported(std::string_view pattern) {
  Fail(err::kInvalidProcedureCall, "Unsupported date pattern: \"" + std::string(pattern) + "\"");
}

// The AM/PM designator a Visual Basic token at the start of `text` asks for, and the token's length.
std::pair<std::string, size_t> VisualBasicAmPm(std::string_view text, const DateParts& p) {
  if (text.starts_with("AM/PM")) return {p.IsPm() ? "PM" : "AM", 5};
  if (text.starts_with("am/pm")) return {p.IsPm() ? "pm" : "am", 5};
  if (StartsWithNoCase(text, "AMPM")) return {p.IsPm() ? "PM" : "AM", 4};
  if (StartsWithNoCase(text, "tt")) return {p.IsPm() ? "PM" : "AM", 2};
  if (text.size() >= 3 && (text[0] == 'A' || text[0] == 'a') && text[1] == '/' && Lower(text[2]) == 'p') {
    const bool upper = text[0] == 'A';
    return {p.IsPm() ? (upper ? "P" : "p") : (upper ? "A" : "a"), 3};
  }
  return {"", 0};
}

std::string FormatDateVisualBasic(const DateParts& p, std::string_view pattern) {
  bool twelve_hour = false;
  std::string out;
  for (size_t i = 0; i < pattern.size() && !twelve_hour;) {
    const size_t used = ReadLiteral(pattern, i, false).used;
    twelve_hour = used == 0 && VisualBasicAmPm(pattern.substr(i), p).second > 0;
    i += std::max<size_t>(used, 1);
  }
  bool after_hour = false;  // "m"/"mm" means minutes right after an hour token, once
  bool wrote_minutes = false;
  for (size_t i = 0; i < pattern.size();) {
    if (const Literal literal = ReadLiteral(pattern, i, false); literal.used > 0) {
      out += literal.text;
      i += literal.used;
      continue;
    }
    const char c = Lower(pattern[i]);
    size_t n = RunLength(pattern, i, true);
    if (c == 't' && n >= 5) FailUnsupported(pattern);  // the system's long time
    if (const auto [designator, used] = VisualBasicAmPm(pattern.substr(i), p); used > 0) {
      out += designator;
      i += used;
      continue;
    }
    switch (c) {
      case 'd':
        if (n >= 5) FailUnsupported(pattern);
        if (n <= 2) AppendNumber(out, p.day, static_cast<int>(n));
        if (n == 3) out.append(kDayNames[p.Weekday()], 3);
        if (n == 4) out += kDayNames[p.Weekday()];
        after_hour = false;
        break;
      case 'm':
        n = std::min<size_t>(n, 4);
        if (n <= 2 && after_hour && !wrote_minutes) {
          AppendNumber(out, p.minute, static_cast<int>(n));
          wrote_minutes = true;
        } else if (n <= 2) {
          AppendNumber(out, p.month, static_cast<int>(n));
        } else {
          out += std::string_view(kMonthNames[p.month - 1]).substr(0, n == 3 ? 3 : std::string_view::npos);
        }
        break;
      case 'n':
        n = std::min<size_t>(n, 2);
        AppendNumber(out, p.minute, static_cast<int>(n));
        break;
      case 'h':
        n = std::min<size_t>(n, 2);
        AppendNumber(out, twelve_hour ? p.Hour12() : p.hour, static_cast<int>(n));
        after_hour = true;
        break;
      case 's':
        n = std::min<size_t>(n, 2);
        AppendNumber(out, p.second, static_cast<int>(n));
        break;
      case 'y':
        n = std::min<size_t>(n, 4);
        if (n == 3) n = 2;  // "yyy" reads as "yy" and "y"
        if (n == 1) AppendNumber(out, p.DayOfYear(), 1);
        if (n == 2) AppendNumber(out, p.year % 100, 2);
        if (n == 4) AppendNumber(out, p.year, 4);
        break;
      case 'q':
        n = 1;
        AppendNumber(out, (p.month + 2) / 3, 1);
        break;
      case 'w':
        if (n >= 2) FailUnsupported(pattern);
        AppendNumber(out, p.Weekday() + 1, 1);
        break;
      case 'c':
        FailUnsupported(pattern);  // the system's general date
      default:
        n = 1;
        out += pattern[i];
        break;
    }
    i += n;
  }
  return out;
}

std::string FormatDateDotNet(const DateParts& p, std::string_view pattern) {
  std::string out;
  for (size_t i = 0; i < pattern.size();) {
    if (const Literal literal = ReadLiteral(pattern, i, true); literal.used > 0) {
      out += literal.text;
      i += literal.used;
      continue;
    }
    const char c = pattern[i];
    const size_t n = RunLength(pattern, i, false);
    const int width = n >= 2 ? 2 : 1;
    switch (c) {
      case 'd':
        if (n <= 2) AppendNumber(out, p.day, width);
        if (n == 3) out.append(kDayNames[p.Weekday()], 3);
        if (n >= 4) out += kDayNames[p.Weekday()];
        break;
      case 'M':
        if (n <= 2) AppendNumber(out, p.month, width);
        if (n == 3) out.append(kMonthNames[p.month - 1], 3);
        if (n >= 4) out += kMonthNames[p.month - 1];
        break;
      case 'y':
        if (n <= 2) {
          AppendNumber(out, p.year % 100, width);
        } else {
          AppendNumber(out, p.year, static_cast<int>(n));
        }
        break;
      case 'h':
        AppendNumber(out, p.Hour12(), width);
        break;
      case 'H':
        AppendNumber(out, p.hour, width);
        break;
      case 'm':
        AppendNumber(out, p.minute, width);
        break;
      case 's':
        AppendNumber(out, p.second, width);
        break;
      case 't':
        out += n == 1 ? (p.IsPm() ? "P" : "A") : (p.IsPm() ? "PM" : "AM");
        break;
      case 'f':
      case 'F':
        if (n > 7) FailUnsupported(pattern);
        if (c == 'f') out.append(n, '0');
        break;
      case 'g':
        out += "A.D.";
        break;
      case 'z':
      case 'K':
        FailUnsupported(pattern);
      case '%':
        if (i + 1 < pattern.size() && pattern[i + 1] == '%') FailUnsupported(pattern);
        i += 1;  // the next character is a specifier standing alone
        continue;
      default:
        out.append(n, c);
        break;
    }
    i += n;
  }
  return out;
}

}  // namespace

std::string FormatDecimal(std::string_view decimal_text, std::string_view pattern, FormatRules rules) {
  return FormatNumber(ParseDecimalText(decimal_text), pattern, rules);
}

std::string FormatScaled(int64_t value, int scale, std::string_view pattern, FormatRules rules) {
  return FormatNumber(ScaledDecimal(value, scale), pattern, rules);
}

std::string FormatDouble(double value, std::string_view pattern, FormatRules rules) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return FormatNumber(Decimal15(value), pattern, rules);
}

std::string DecimalText15(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "INF" : "-INF";
  return PlainText(Decimal15(value));
}

std::string FormatDateParts(int year, int month, int day, int hour, int minute, int second,
                            std::string_view pattern, FormatRules rules) {
  const DateParts parts{year, month, day, hour, minute, second};
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > parts.DaysInMonth() ||
      hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
    Fail(err::kInvalidProcedureCall, "Invalid date or time: " + std::to_string(year) + "-" +
                                         std::to_string(month) + "-" + std::to_string(day) + " " +
                                         std::to_string(hour) + ":" + std::to_string(minute) + ":" +
                                         std::to_string(second));
  }
  return rules == FormatRules::kVisualBasic ? FormatDateVisualBasic(parts, pattern)
                                            : FormatDateDotNet(parts, pattern);
}

}  // namespace ent
