#include <gtest/gtest.h>

#include "common/currency.h"
#include "common/date_time.h"
#include "common/error.h"
#include "common/value_helpers.h"
#include "common/variant.h"
#include "support/error_text.h"

using ent::Currency;
using ent::DateTime;
using ent::Variant;

TEST(Currency, RoundsToFourDecimalsHalvesToEven) {
  EXPECT_EQ(Currency::FromDecimalText("12.34567").ToString(), "12.3457");
  EXPECT_EQ(Currency::FromDecimalText("0.00005").ToString(), "0");       // tie -> even (0)
  EXPECT_EQ(Currency::FromDecimalText("0.00015").ToString(), "0.0002");  // tie -> even (2)
  EXPECT_EQ(Currency::FromDecimalText("0.000050001").ToString(), "0.0001");
  EXPECT_EQ(Currency::FromDecimalText("-2.00025").ToString(), "-2.0002");
  EXPECT_EQ(Currency::FromDouble(2.5).ToString(), "2.5");
  EXPECT_EQ(Currency::FromDouble(0.125 / 1000).raw(), 1);  // 1.25 ten-thousandths, exact: rounds down
  EXPECT_EQ(Currency::FromDouble(0.375 / 1000).raw(), 4);  // 3.75: rounds up
  EXPECT_EQ(Currency::FromDouble(-1234.56789).ToString(), "-1234.5679");
  EXPECT_EQ((Currency::FromDecimalText("1.5") * Currency::FromDecimalText("0.00003")).raw(), 0);
  EXPECT_EQ(Currency::FromDecimalText("106.30").ToString(), "106.3");
  EXPECT_EQ(Currency::FromRaw(INT64_MIN).ToString(), "-922337203685477.5808");
}

TEST(Currency, OverflowAndBadTextRaise) {
  EXPECT_EQ(ent::test::ErrorNumber([] { Currency::FromDouble(1e300); }), 6);
  EXPECT_THROW(Currency::FromRaw(INT64_MAX) + Currency::FromRaw(1), ent::Error);
  EXPECT_THROW(Currency::FromDecimalText("12x"), ent::Error);
  EXPECT_THROW(Currency::FromDecimalText(""), ent::Error);
}

TEST(DateTime, ParsesTheFormsTheServerMeets) {
  struct Case {
    const char* text;
    const char* stored;
  } cases[] = {
      {"1/5/2024", "2024-01-05 00:00:00"},
      {"01/31/2024", "2024-01-31 00:00:00"},
      {"2024-02-29", "2024-02-29 00:00:00"},
      {"2024-03-01 13:45:10", "2024-03-01 13:45:10"},
      {"3/1/2024 1:05 PM", "2024-03-01 13:05:00"},
      {"3/1/2024 12:00:00 AM", "2024-03-01 00:00:00"},
      {"2024-03-01T08:09:10", "2024-03-01 08:09:10"},
      {" 12/31/99 ", "1999-12-31 00:00:00"},
  };
  for (const auto& c : cases) {
    auto d = DateTime::Parse(c.text);
    ASSERT_TRUE(d) << c.text;
    EXPECT_EQ(d->StoredText(), c.stored) << c.text;
  }
  for (const char* bad :
       {"", "abc", "2/30/2024", "13/1/2024", "2023-02-29", "1/1/2024 25:00", "1/1/2024x", "12"})
    EXPECT_FALSE(DateTime::Parse(bad)) << bad;
}

TEST(DateTime, WritesEnUsTexts) {
  DateTime d = DateTime::FromParts(2024, 1, 5, 15, 4, 5);
  EXPECT_EQ(d.ShortDate(), "1/5/2024");
  EXPECT_EQ(d.GeneralDate(), "1/5/2024 3:04:05 PM");
  EXPECT_EQ(d.DateOnly().GeneralDate(), "1/5/2024");
  EXPECT_EQ(DateTime::FromParts(2024, 1, 5, 0, 30).GeneralDate(), "1/5/2024 12:30:00 AM");
  EXPECT_EQ(d.IsoText(), "2024-01-05T15:04:05");
  EXPECT_EQ(DateTime().ShortDate(), "12/30/1899");
  EXPECT_EQ(DateTime::FromParts(1800, 2, 3).StoredText(), "1800-02-03 00:00:00");
  EXPECT_THROW(DateTime::FromParts(2023, 2, 29), ent::Error);
}

TEST(Variant, StandardConversions) {
  EXPECT_EQ(Variant(2.5).ToText(), "2.5");
  EXPECT_EQ(Variant(0.1 + 0.2).ToText(), "0.3");
  EXPECT_EQ(Variant(1e16).ToText(), "1E+16");
  EXPECT_EQ(Variant(true).ToText(), "True");
  EXPECT_EQ(Variant(Currency::FromDecimalText("1234.5000")).ToText(), "1234.5");
  EXPECT_EQ(Variant(DateTime::FromParts(2024, 2, 1)).ToText(), "2/1/2024");
  EXPECT_EQ(Variant().ToText(), "");
  EXPECT_EQ(Variant("2.5").ToLong(), 2);  // halves to even
  EXPECT_EQ(Variant("3.5").ToLong(), 4);
  EXPECT_EQ(Variant(-2.5).ToLong(), -2);
  EXPECT_EQ(Variant(Currency::FromDecimalText("2.5")).ToLong(), 2);
  EXPECT_TRUE(Variant("tRuE").ToBool());
  EXPECT_FALSE(Variant("0").ToBool());
  EXPECT_TRUE(Variant("-1").ToBool());
  EXPECT_EQ(Variant("1,234.50").ToCurrency().ToString(), "1234.5");
  EXPECT_EQ(Variant("1/5/2024").ToDate().ShortDate(), "1/5/2024");

  using ent::test::ErrorNumber;
  EXPECT_EQ(ErrorNumber([] { Variant::Null().ToText(); }), 94);
  EXPECT_EQ(ErrorNumber([] { Variant("abc").ToLong(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant("yes").ToBool(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant(3e9).ToLong(); }), 6);
  EXPECT_EQ(ErrorNumber([] { Variant("not a date").ToDate(); }), 13);
}

TEST(ValueHelpers, ToNumericAndSafeString) {
  EXPECT_EQ(ent::ToNumeric(Variant::Null()).kind(), Variant::Kind::kLong);
  EXPECT_EQ(ent::ToNumeric(Variant()).whole(), 0);
  EXPECT_EQ(ent::ToNumeric(Variant::Integer(7)).kind(), Variant::Kind::kLong);
  Variant c = ent::ToNumeric(Variant(2.5));
  ASSERT_EQ(c.kind(), Variant::Kind::kCurrency);
  EXPECT_EQ(c.currency().raw(), 25000);
  EXPECT_EQ(ent::ToNumeric(Variant(12.34565)).currency().raw(), 123456);
  EXPECT_EQ(ent::ToNumeric(Variant("12")).text(), "12");  // text stays text
  EXPECT_THROW(ent::ToNumeric(Variant(1e300)), ent::Error);
  EXPECT_EQ(ent::SafeString(Variant::Null()), "");
  EXPECT_EQ(ent::SafeString(Variant::LongLong(-5)), "-5");
  EXPECT_THROW(ent::SafeString(Variant::Object(nullptr)), ent::Error);
}
