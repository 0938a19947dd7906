#include "common/currency.h"

#include <cfenv>
#include <cmath>
#include <limits>

#include "common/error.h"

namespace ent {

namespace {

__extension__ typedef __int128 int128;

[[noreturn]] void Overflow() {
  throw Error(err::kOverflow, "Overflow");
}

int64_t Checked(int128 v) {
  if (v > std::numeric_limits<int64_t>::max() || v < std::numeric_limits<int64_t>::min()) Overflow();
  return static_cast<int64_t>(v);
}

// Divides by a power of ten, rounding halves to even.
int128 DivideHalfEven(int128 value, int128 divisor) {
  int128 q = value / divisor;
  int128 r = value % divisor;
  int128 twice = (r < 0 ? -r : r) * 2;
  if (twice > divisor || (twice == divisor && (q % 2 != 0))) q += (value < 0) ? -1 : 1;
  return q;
}

}  // namespace

Currency Currency::FromInt(int64_t units) {
  return FromRaw(Checked(static_cast<int128>(units) * kScale));
}

Currency Currency::FromDouble(double value) {
  if (!std::isfinite(value)) Overflow();
  // The product in extended precision, then to nearest with ties to even, so that a double becomes
  // the same currency value it does in the shop's own tools.
  long double scaled = static_cast<long double>(value) * kScale;
  if (scaled >= 9223372036854775808.0L || scaled < -9223372036854775808.0L) Overflow();
  // rintl rounds as nearbyintl does (the current mode, to nearest) without saving and restoring the
  // floating-point environment around it, which cost more than the rest of the conversion.
  return FromRaw(static_cast<int64_t>(std::rintl(scaled)));
}

Currency Currency::FromDecimalText(std::string_view text) {
  size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  int128 value = 0;
  int fraction_digits = 0;
  bool seen_point = false, seen_digit = false;
  int extra_digits = 0;  // fraction digits beyond the sixth are only kept as a sticky flag
  bool sticky = false;
  for (; i < text.size(); ++i) {
    char c = text[i];
    if (c == '.' && !seen_point) {
      seen_point = true;
      continue;
    }
    if (c < '0' || c > '9') throw Error(err::kTypeMismatch, "Type mismatch");
    seen_digit = true;
    if (seen_point && fraction_digits >= 6) {
      ++extra_digits;
      sticky = sticky || c != '0';
      continue;
    }
    value = value * 10 + (c - '0');
    if (value > (static_cast<int128>(1) << 100)) Overflow();
    if (seen_point) ++fraction_digits;
  }
  if (!seen_digit) throw Error(err::kTypeMismatch, "Type mismatch");
  // Scale to six decimals, then round to four; a non-zero digit beyond the sixth breaks a tie upward.
  for (int d = fraction_digits; d < 6; ++d) value *= 10;
  value = value * 2 + (sticky ? 1 : 0);  // keep the sticky bit below the last digit
  int128 q = value / 200;
  int128 r = value % 200;
  if (r > 100 || (r == 100 && (q % 2 != 0))) ++q;
  return FromRaw(Checked(negative ? -q : q));
}

std::string Currency::ToString() const {
  int128 v = raw_;
  bool negative = v < 0;
  if (negative) v = -v;
  int64_t whole = static_cast<int64_t>(v / kScale);
  int frac = static_cast<int>(v % kScale);
  std::string text = negative ? "-" : "";
  text += std::to_string(whole);
  if (frac != 0) {
    char digits[5] = {static_cast<char>('0' + frac / 1000), static_cast<char>('0' + frac / 100 % 10),
                      static_cast<char>('0' + frac / 10 % 10), static_cast<char>('0' + frac % 10), 0};
    std::string f(digits);
    while (!f.empty() && f.back() == '0') f.pop_back();
    text += "." + f;
  }
  return text;
}

Currency Currency::operator-() const {
  return FromRaw(Checked(-static_cast<int128>(raw_)));
}

Currency Currency::operator+(Currency other) const {
  return FromRaw(Checked(static_cast<int128>(raw_) + other.raw_));
}

Currency Currency::operator-(Currency other) const {
  return FromRaw(Checked(static_cast<int128>(raw_) - other.raw_));
}

Currency Currency::operator*(Currency other) const {
  return FromRaw(Checked(DivideHalfEven(static_cast<int128>(raw_) * other.raw_, kScale)));
}

}  // namespace ent
