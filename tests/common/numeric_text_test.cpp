#include "common/numeric_text.h"

#include <gtest/gtest.h>

namespace ent {
namespace {

TEST(NumericText, ReadsTheWayIsNumericDoes) {
  struct Case {
    const char* text;
    const char* decimal;  // nullptr: not numeric
  };
  const Case cases[] = {
      {"1,234.56", "1234.56"},
      {"1,234.50", "1234.50"},
      {"  12  ", "12"},
      {"\t-7\r\n", "-7"},
      {"+5", "5"},
      {"5+", "5"},
      {"5-", "-5"},
      {"- 5", "-5"},
      {"$1,234.50", "1234.50"},
      {"-$5", "-5"},
      {"$-5", "-5"},
      {"5$", "5"},
      {"(5)", "-5"},
      {"( $1,000.00 )", "-1000.00"},
      {"1E3", "1000"},
      {"1e-3", "0.001"},
      {"2.5D2", "250"},
      {"1.50E1", "15.0"},
      {"-.5", "-0.5"},
      {".5", "0.5"},
      {"5.", "5"},
      {"007", "7"},
      {"0", "0"},
      {"-0.00", "0.00"},
      {"1,2,34", "1234"},
      {"12,", "12"},
      {"1E-401", "0"},
      {"abc", nullptr},
      {"", nullptr},
      {".", nullptr},
      {"-", nullptr},
      {"$", nullptr},
      {"   ", nullptr},
      {"1.2.3", nullptr},
      {"12abc", nullptr},
      {",5", nullptr},
      {"1.234,5", nullptr},
      {"1 2", nullptr},
      {"--5", nullptr},
      {"5--", nullptr},
      {"+5+", nullptr},
      {"(5", nullptr},
      {"5)", nullptr},
      {"1E", nullptr},
      {"1E+", nullptr},
      {"E3", nullptr},
      {"&H10", nullptr},
      {"1E309", nullptr},
      {"1.8E308", nullptr},
      {"-180,000E303", nullptr},
      {"$$5", nullptr},
  };
  for (const auto& c : cases) {
    const auto decimal = NumericTextToDecimal(c.text);
    EXPECT_EQ(IsNumericText(c.text), c.decimal != nullptr) << c.text;
    if (c.decimal == nullptr) {
      EXPECT_FALSE(decimal.has_value()) << c.text;
    } else {
      EXPECT_EQ(decimal.value_or("<none>"), c.decimal) << c.text;
    }
  }
}

TEST(NumericText, ValuesAreCorrectlyRoundedDoubles) {
  EXPECT_EQ(ParseNumericText("1,234.56"), 1234.56);
  EXPECT_EQ(ParseNumericText("0.1"), 0.1);
  EXPECT_EQ(ParseNumericText("(5)"), -5.0);
  EXPECT_EQ(ParseNumericText("1.7976931348623157E308"), 1.7976931348623157e308);
  EXPECT_EQ(ParseNumericText("1E-401"), 0.0);
  EXPECT_EQ(NumericTextToDecimal("1E308"), "1" + std::string(308, '0'));
  EXPECT_TRUE(IsNumericText("1.79E308"));
  EXPECT_EQ(NumericTextToDecimal("-1.5E-3"), "-0.0015");
  EXPECT_EQ(ParseNumericText("12abc"), std::nullopt);
}

}  // namespace
}  // namespace ent
