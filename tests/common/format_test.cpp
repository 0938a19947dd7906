// Format of a value the reports hold as text: the numbers whose text reads back as themselves are
// formatted from the number, and must give what their text gives.
#include "common/format.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "common/value_helpers.h"

namespace ent {
namespace {

std::string OfItsText(const Variant& value, std::string_view pattern) {
  return Format(Variant(SafeString(value)), pattern);
}

// Signs, zero, halves at the pattern's last place, values rounding to zero, the ends of the ranges,
// every section; doubles also with ties at the fifteenth digit (to even in the text and in Format).
TEST(FormatAsText, NumbersGiveWhatTheirTextsGive) {
  constexpr int64_t kMax = std::numeric_limits<int64_t>::max(), kMin = std::numeric_limits<int64_t>::min();
  std::vector<Variant> values = {Variant::Byte(255), Variant::Integer(-32768), Variant::Long(0),
                                 Variant::LongLong(kMin), Variant::LongLong(kMax)};
  for (int64_t raw : {0L, 1L, -1L, 49L, 50L, -50L, 5000L, -12345L, 99995000L, -1234567890L, kMax, kMin})
    values.emplace_back(Currency::FromRaw(raw));
  for (double d : {0.0, -0.0, 0.005, -0.005, 2.675, 123456789012345.5, 123456789012344.5, 999999999999999.5,
                   1e21, 1.5e-7, 5e-324, 9.999999999999999e307, 1e308, DBL_MAX, -DBL_MAX})
    values.emplace_back(d);
  std::mt19937_64 bits(20240105);
  for (int i = 0; i < 20000; ++i) {
    const uint64_t b = bits();
    double d;
    std::memcpy(&d, &b, sizeof d);
    if (std::isfinite(d)) values.emplace_back(d);
  }
  for (const Variant& value : values) {
    for (std::string_view pattern : {kAmountPattern, std::string_view("#.##"), std::string_view("0.0%"),
                                     std::string_view("0.00;(0.00);\"zero\""), std::string_view("0;;\"nil\""),
                                     std::string_view("#,##0,"), std::string_view("0.0000000000000000000")}) {
      ASSERT_EQ(FormatAsText(value, pattern), OfItsText(value, pattern))
          << value.ToText() << " with " << pattern;
    }
  }
}

TEST(FormatAsText, OtherValuesAndPatternsGoThroughTheirText) {
  // A single's text has 7 digits where Format of the single has 15; an infinity's or a date's text
  // is no number; a date pattern reads a number's text as a date.
  EXPECT_EQ(FormatAsText(Variant::Single(0.1f), "0.000000000"), "0.100000000");
  EXPECT_EQ(FormatAsText(Variant(std::numeric_limits<double>::infinity()), kAmountPattern), "INF");
  EXPECT_EQ(FormatAsText(Variant::Null(), kAmountPattern), "");
  EXPECT_EQ(FormatAsText(Variant(Currency::FromInt(2024)), "yyyy"), OfItsText(Variant("2024"), "yyyy"));
  EXPECT_EQ(FormatAsText(Variant(DateTime::FromSeconds(0)), kAmountPattern),
            OfItsText(Variant(DateTime::FromSeconds(0)), kAmountPattern));
}

}  // namespace
}  // namespace ent
