#include "common/numeric_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace ent {
namespace {

TEST(NumericText, ReadsTheWayIsNumericDoes) {
  struct Case {
    const char* text;
    std::string decimal;
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
      {"0.1", "0.1"},
      {"-1.5E-3", "-0.0015"},
      {"1.7976931348623157E308", "17976931348623157" + std::string(292, '0')},
  };
  // The value is the correctly rounded double of the decimal.
  for (const auto& c : cases) {
    EXPECT_TRUE(IsNumericText(c.text)) << c.text;
    EXPECT_EQ(NumericTextToDecimal(c.text).value_or("<none>"), c.decimal) << c.text;
    EXPECT_EQ(ParseNumericText(c.text), std::strtod(c.decimal.c_str(), nullptr)) << c.text;
  }
  for (const char* text :
       {"abc", "",    ".",  "-",  "$",  "   ", "1.2.3", "12abc", ",5",    "1.234,5", "1 2",          "--5",
        "5--", "+5+", "(5", "5)", "1E", "1E+", "E3",    "&H10",  "1E309", "1.8E308", "-180,000E303", "$$5"}) {
    EXPECT_FALSE(IsNumericText(text)) << text;
    EXPECT_FALSE(NumericTextToDecimal(text).has_value()) << text;
  }
  EXPECT_EQ(ParseNumericText("12abc"), std::nullopt);
}

}  // namespace
}  // namespace ent
