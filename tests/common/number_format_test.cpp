#include "common/number_format.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include "common/error.h"

namespace ent {
namespace {

constexpr auto kVb = FormatRules::kVisualBasic;
constexpr auto kSql = FormatRules::kSqlServer;

// A number as both rule sets format it; `sql` only where .NET rules give another text.
struct NumberCase {
  const char* value;
  const char* pattern;
  const char* vb;
  const char* sql = nullptr;
};

TEST(FormatDecimal, BothRuleSets) {
  const NumberCase cases[] = {
      // The reports' patterns; large values keep every digit.
      {"1234.5", "###,###,##0.00", "1,234.50"},
      {"0", "###,###,##0.00", "0.00"},
      {"-1234.5", "###,###,##0.00", "-1,234.50"},
      {"1234567.891", "###,###,##0.00", "1,234,567.89"},
      {"1234567", "###,###,0.00", "1,234,567.00"},
      {"0.5", "##,###.00", ".50"},
      {"0", "##,###.00", ".00"},
      {"1234", "###.00", "1234.00"},
      {"-922337203685477.5808", "###,##0.00", "-922,337,203,685,477.58"},
      {"1000000000000000", "###,###,0.00", "1,000,000,000,000,000.00"},
      {"12345678901234567890.125", "###.00", "12345678901234567890.13"},
      // Halves round away from zero.
      {"0.005", "0.00", "0.01"},
      {"0.075", "0.00", "0.08"},
      {"2.675", "0.00", "2.68"},
      {"-2.5", "0", "-3"},
      {"0.5", "#", "1"},
      {"999999.995", "#,##0.00", "1,000,000.00"},
      {"1.0049999999", "0.00", "1.00"},
      // A negative value rounding to zero.
      {"-0.001", "0.00", "-0.00", "0.00"},
      {"-0.004", "##,###.00", "-.00", ".00"},
      {"-0.4", "0", "-0", "0"},
      {"-0", "0.00", "0.00"},
      // The point, grouping and scaling.
      {"5", "#.##", "5.", "5"},
      {"0", "#.#", ".", ""},
      {"0", "#", ""},
      {"123456789", "#,#.#", "123,456,789.", "123,456,789"},
      {"1234", ",##0", "1,234", "1234"},
      {"123456789", "###, ###, ###", "123, 456, 789"},
      {"1", "0,000,000,000", "0,000,000,001"},
      {"1234567", "#,##0,", "1,235"},
      {"123456789", "0,,", "123"},
      {"1500", "0,.0", "1.5"},
      {"1234.5", "0.00,", "1234.50"},
      // Placeholders, literals and sections.
      {"1.2", "0#.0#0#0#0#0", "01.200000000"},
      {"9.87654321", "#0.#0#0#0#0#", "9.87654321"},
      {"17", "#000", "017"},
      {"-0.1", ".#", "-.1"},
      {"0.256", "0.0%", "25.6%"},
      {"12", "0\\%", "12%"},
      {"-1234.5", "$#,##0.00", "-$1,234.50"},
      {"12", "0 \"units\"", "12 units"},
      {"12", "0 'x'", "12 'x'", "12 x"},
      {"-5", "0;(0)", "(5)"},
      {"0", "0;(0);\"zero\"", "zero"},
      {"-5", "0;;\"zero\"", "-5"},
      {"-0.001", "0.00;(0.00);\"zero\"", "(0.00)", "zero"},
      {"-0.001", "0.00;(0.00)", "(0.00)", "0.00"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormatDecimal(c.value, c.pattern, kVb), c.vb) << c.value << " with " << c.pattern;
    EXPECT_EQ(FormatDecimal(c.value, c.pattern, kSql), c.sql ? c.sql : c.vb)
        << c.value << " with " << c.pattern;
  }
}

TEST(FormatDecimal, RejectsBadTextAndScientificPatterns) {
  for (const char* text : {"", ".", "-", "abc", "1e5", "1,234", "--1", "+1", "1.2.3", " 1"}) {
    EXPECT_THROW(FormatDecimal(text, "0.00", kVb), Error) << text;
  }
  EXPECT_THROW(FormatDecimal("1", "0.00E+00", kVb), Error);
  EXPECT_THROW(FormatDecimal("1", "0.00E0", kSql), Error);
  EXPECT_EQ(FormatDecimal("1", "0E", kSql), "1E");
}

TEST(FormatDouble, UsesTheFifteenDigitForm) {
  const std::tuple<double, const char*, const char*> cases[] = {
      {1.005, "###,###,##0.00", "1.01"},
      {2.675, "0.00", "2.68"},
      {0.1 + 0.2, "0.00000000000000000", "0.30000000000000000"},
      {1e15, "###,###,##0.00", "1,000,000,000,000,000.00"},
      {-0.0, "0.00", "0.00"},
      {std::numeric_limits<double>::quiet_NaN(), "0.00", "NaN"},
      {-std::numeric_limits<double>::infinity(), "0.00", "-Infinity"},
  };
  for (const auto& [value, pattern, expected] : cases) {
    EXPECT_EQ(FormatDouble(value, pattern, kVb), expected) << value;
    EXPECT_EQ(FormatDouble(value, pattern, kSql), expected) << value;
  }
  EXPECT_EQ(FormatDouble(-0.001, "0.00", kVb), "-0.00");
  EXPECT_EQ(FormatDouble(-0.001, "0.00", kSql), "0.00");
}

TEST(DecimalText15, ShortestPlainText) {
  const std::pair<double, const char*> cases[] = {
      {0.075, "0.075"},
      {1234.5, "1234.5"},
      {-3, "-3"},
      {0, "0"},
      {-0.0, "0"},
      {0.1 + 0.2, "0.3"},
      {2.0 / 3, "0.666666666666667"},
      {1e20, "100000000000000000000"},
      {123456789012345678.0, "123456789012346000"},
      {1.5e-7, "0.00000015"},
      {922337203685477.5807, "922337203685478"},
      {std::numeric_limits<double>::quiet_NaN(), "NaN"},
      {std::numeric_limits<double>::infinity(), "INF"},
      {-std::numeric_limits<double>::infinity(), "-INF"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(DecimalText15(value), expected) << value;
  EXPECT_EQ(DecimalText15(DBL_MAX).size(), 309u);
  EXPECT_EQ(DecimalText15(-5e-324), "-0." + std::string(323, '0') + "494065645841247");
}

TEST(FormatDateParts, BothRuleSets) {
  // Friday 5 January 2024, 13:07:09; `sql` null where .NET rules refuse the pattern's letters.
  const struct {
    const char* pattern;
    const char* vb;
    const char* sql;
  } cases[] = {
      {"MM/dd/yyyy", "01/05/2024", "01/05/2024"},
      {"M/d/yy", "1/5/24", "1/5/24"},
      {"HH:mm:ss", "13:07:09", "13:07:09"},
      {"hh:mm:ss", "13:07:09", "01:07:09"},
      {"h:mm tt", "1:07 PM", "1:07 PM"},
      {"mm", "01", "07"},
      {"dddd, MMMM d, yyyy", "Friday, January 5, 2024", "Friday, January 5, 2024"},
      {"ddd MMM", "Fri Jan", "Fri Jan"},
      {"yyyy-MM-dd'T'HH", "2024-01-05'T'13", "2024-01-05T13"},
      {"\\d\\a\\y d", "day 5", "day 5"},
      // Visual Basic: a day token ends the hour's claim on "mm"; only the first "mm" after an hour
      // is minutes.
      {"hh:dd mm", "13:05 01", nullptr},
      {"hh:mm mm", "13:07 01", nullptr},
      {"h:nn AM/PM", "1:07 PM", nullptr},
      {"h:nn am/pm", "1:07 pm", nullptr},
      {"h:nn a/p", "1:07 p", nullptr},
      {"h:nn AMPM", "1:07 PM", nullptr},
      {"q y w", "1 5 6", nullptr},
      {"MMM mmmm", "Jan January", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormatDateParts(2024, 1, 5, 13, 7, 9, c.pattern, kVb), c.vb) << c.pattern;
    if (c.sql) {
      EXPECT_EQ(FormatDateParts(2024, 1, 5, 13, 7, 9, c.pattern, kSql), c.sql) << c.pattern;
    }
  }
  EXPECT_EQ(FormatDateParts(2024, 3, 1, 0, 5, 0, "y h:nn AM/PM", kVb), "61 12:05 AM");
  EXPECT_EQ(FormatDateParts(2024, 3, 1, 0, 5, 0, "h:mm t yyy ss.fff", kSql), "12:05 A 2024 00.000");
}

TEST(FormatDateParts, RejectsImpossibleDatesAndUnsupportedSpecifiers) {
  EXPECT_NO_THROW(FormatDateParts(2024, 2, 29, 0, 0, 0, "MM/dd/yyyy", kVb));
  EXPECT_THROW(FormatDateParts(2023, 2, 29, 0, 0, 0, "MM/dd/yyyy", kVb), Error);
  EXPECT_THROW(FormatDateParts(2024, 13, 1, 0, 0, 0, "MM/dd/yyyy", kSql), Error);
  EXPECT_THROW(FormatDateParts(2024, 1, 1, 24, 0, 0, "MM/dd/yyyy", kSql), Error);
  EXPECT_THROW(FormatDateParts(0, 1, 1, 0, 0, 0, "MM/dd/yyyy", kSql), Error);
  EXPECT_THROW(FormatDateParts(2024, 1, 1, 0, 0, 0, "HH zzz", kSql), Error);
  EXPECT_THROW(FormatDateParts(2024, 1, 1, 0, 0, 0, "c", kVb), Error);
  EXPECT_THROW(FormatDateParts(2024, 1, 1, 0, 0, 0, "ttttt", kVb), Error);
}

}  // namespace
}  // namespace ent
