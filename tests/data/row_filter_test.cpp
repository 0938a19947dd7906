#include "data/row_filter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/error.h"
#include "data/recordset.h"
#include "support/error_text.h"

using ent::Currency;
using ent::DataType;
using ent::DateTime;
using ent::Variant;

namespace {

// A rowset shaped like the marketing queries: numbers, text, money, a date and a year kept as text.
class RowFilterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    rs_.AppendField(ent::AppendedField("vehid", DataType::kInteger));
    rs_.AppendField(ent::AppendedField("invoiceid", DataType::kInteger));
    rs_.AppendField(ent::AppendedField("Last Name", DataType::kVarChar, 50));
    rs_.AppendField(ent::AppendedField("Sub_Total", DataType::kCurrency));
    rs_.AppendField(ent::AppendedField("latestdate", DataType::kDateTime));
    rs_.AppendField(ent::AppendedField("Year", DataType::kChar, 4));
    rs_.Open();
    Add({10, 5, "Smith", Currency::FromDecimalText("10.5"), DateTime::FromParts(2024, 1, 5), "2006"});
    Add({12, 6, "smithers", Currency::FromDecimalText("1000"), DateTime::FromParts(2024, 1, 31, 18), "1999"});
    Add({13, 7, "O'Brien", Currency(), DateTime::FromParts(2024, 2, 1), "2010"});
    Add({Variant::Null(), 8, Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null()});
    Add({15, 9, "Blacksmith", Currency::FromDecimalText("-3.25"), DateTime::FromParts(2023, 12, 31), "n/a"});
  }

  void Add(const std::vector<Variant>& values) {
    rs_.AddNew();
    for (size_t i = 0; i < values.size(); ++i) rs_.Set(i, values[i]);
    rs_.Update();
  }

  // The invoice ids the filter lets through, in order.
  std::vector<int> Shown(std::string_view criteria) {
    rs_.SetFilter(criteria);
    std::vector<int> ids;
    for (rs_.MoveFirst(); !rs_.IsEof(); rs_.MoveNext())
      ids.push_back(static_cast<int>(rs_.Get("invoiceid").whole()));
    return ids;
  }

  ent::Recordset rs_;
};

using Ids = std::vector<int>;

void ExpectBadArguments(const std::string& criteria, const std::vector<ent::Field>& fields) {
  EXPECT_EQ(ent::test::ErrorNumber([&] { ent::RowFilter::Parse(criteria, fields); }), 3001) << criteria;
}

}  // namespace

TEST_F(RowFilterTest, CriteriaShowTheRowsTheyMatch) {
  const std::pair<const char*, Ids> cases[] = {
      // Quoted or not, a literal against a number column is a number.
      {"vehid <> 12 and invoiceid <> '5'", {7, 9}},
      {"VEHID<>12 AND INVOICEID<>'5'", {7, 9}},
      // A bare number against a text column compares numbers where the text is one, text elsewhere
      // ("n/a" sorts after "2005").
      {"(invoiceid >= 6) AND (Year > 2005)", {7, 9}},
      {"Year < 2005", {6}},
      {"", {5, 6, 7, 8, 9}},
      // Nulls match only tests for null.
      {"vehid = NULL", {8}},
      {"[Last Name] <> null", {5, 6, 7, 9}},
      {"vehid <> 12", {5, 7, 9}},
      {"vehid < 100 or [Last Name] like '*'", {5, 6, 7, 9}},
      // Text compares without case; LIKE takes wildcards at the ends.
      {"[Last Name] = 'SMITH'", {5}},
      {"[Last Name] = 'o''brien'", {7}},
      {"[Last Name] < 'P'", {7, 9}},
      {"[Last Name] LIKE 'smi*'", {5, 6}},
      {"[Last Name] like '%SMITH'", {5, 9}},
      {"[Last Name] Like '*MIT*'", {5, 6, 9}},
      {"[Last Name] LIKE 'smith'", {5}},
      {"Year = 'N/A'", {9}},
      {"Year <> 2006", {6, 7, 9}},
      // Money and dates compare as values.
      {"Sub_Total = 10.50", {5}},
      {"Sub_Total >= $10.5 and Sub_Total < '1,000.01'", {5, 6}},
      {"Sub_Total > -3.5 and Sub_Total < -3 and vehid > -16", {9}},
      {"latestdate >= #1/5/2024# AND latestdate < '2024-02-01'", {5, 6}},
      {"latestdate > #1/31/2024 12:00 PM#", {6, 7}},
      {"latestdate = #2023-12-31#", {9}},
      // Four or more "<>" tests on one column are matched as one list (the reports' exclusion lists).
      {"vehid <> 10 and vehid <> 12 and vehid <> 99 and vehid <> 2.5 and invoiceid <> '9'", {7}},
      {"[Last Name] <> 'SMITH' and [Last Name] <> 'x' and [Last Name] <> 'o''brien' and [Last Name] <> 'y'",
       {6, 9}},
      {"Year <> 2006 and Year <> '1999' and Year <> 'N/A' and Year <> 5", {7}},
      // AND binds tighter than OR.
      {"invoiceid = 5 or invoiceid = 6 and vehid = 13", {5}},
      {"(invoiceid = 5 or invoiceid = 6) and vehid = 12", {6}},
      {"((((invoiceid = 9))))", {9}},
  };
  for (const auto& [criteria, ids] : cases) EXPECT_EQ(Shown(criteria), ids) << criteria;
}

TEST_F(RowFilterTest, BadCriteriaRaiseInvalidArguments) {
  for (const char* criteria : {"nosuch = 1",
                               "vehid",
                               "vehid <> ",
                               "vehid 12",
                               "vehid <> 'abc'",
                               "(vehid = 1",
                               "vehid = 1)",
                               "vehid = 1 and",
                               "vehid = 1 vehid = 2",
                               "[Last Name] like 'a*b'",
                               "latestdate = #not a date#",
                               "latestdate = 'x'",
                               "vehid < NULL",
                               "Sub_Total = #1/1/2024#",
                               "[Last Name = 'x'",
                               "vehid = 'x",
                               "vehid = 12abc",
                               "vehid = --1",
                               "   ",
                               "vehid = 1 xor vehid = 2"})
    ExpectBadArguments(criteria, rs_.fields());
  ExpectBadArguments(std::string(300, '(') + "vehid = 1" + std::string(300, ')'), rs_.fields());
  EXPECT_EQ(
      ent::test::ErrorText([&] { ent::RowFilter::Parse("vehid", rs_.fields()); }),
      "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
  // A failed filter leaves the rowset as it was.
  Shown("vehid = 10");
  EXPECT_THROW(rs_.SetFilter("vehid = "), ent::Error);
  EXPECT_EQ(rs_.RecordCount(), 1u);
}
