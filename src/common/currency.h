// Fixed-point currency: a 64-bit count of ten-thousandths, as the shop's money columns hold it.
// Conversions into Currency round to four decimals, halves to even; overflow raises Error 6.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace ent {

class Currency {
 public:
  static constexpr int64_t kScale = 10000;

  constexpr Currency() = default;
  static constexpr Currency FromRaw(int64_t ten_thousandths) {
    Currency c;
    c.raw_ = ten_thousandths;
    return c;
  }
  static Currency FromInt(int64_t units);
  // Rounds the double to four decimals, halves to even.
  static Currency FromDouble(double value);
  // Exact plain decimal text ("-12.34567"), rounded to four decimals, halves to even.
  static Currency FromDecimalText(std::string_view decimal_text);

  int64_t raw() const { return raw_; }
  double ToDouble() const { return static_cast<double>(raw_) / kScale; }
  // Plain decimal text without trailing zeros: "1234.5", "-7.89", "0".
  std::string ToString() const;

  Currency operator-() const;
  Currency operator+(Currency other) const;
  Currency operator-(Currency other) const;
  // The product rounded to four decimals, halves to even.
  Currency operator*(Currency other) const;
  Currency& operator+=(Currency other) { return *this = *this + other; }
  Currency& operator-=(Currency other) { return *this = *this - other; }
  auto operator<=>(const Currency&) const = default;

 private:
  int64_t raw_ = 0;
};

}  // namespace ent
