#include <gtest/gtest.h>

#include "common/error.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"
#include "support/test_db.h"

namespace ent {
namespace {

std::unique_ptr<Recordset> TextRowset(const std::vector<std::string>& columns,
                                      const std::vector<std::vector<std::string>>& rows) {
  auto rs = std::make_unique<Recordset>();
  for (const auto& c : columns) rs->AppendField(AppendedField(c));
  rs->Open();
  for (const auto& row : rows) {
    rs->AddNew();
    for (size_t i = 0; i < row.size(); ++i) rs->Set(i, Variant(row[i]));
  }
  rs->Update();
  return rs;
}

TEST(RowsetHelpers, TotalRowSumsNumericCellsOfTheListedColumnsOnly) {
  auto rs = TextRowset({"Name", "A", "B", "C"},
                       {{"x", "10.00", "1,234.50", "7"}, {"y", "abc", "", "8"}, {"z", "5.5", "-0.5", "9"}});
  // The last entry of the list is the spare that is never read: C stays out.
  clsRS::appendTotalRow(*rs, {"A", "B", "C"});
  EXPECT_EQ(rs->RecordCount(), 4u);
  EXPECT_EQ(rs->Get("Name").text(), "x");  // left on the first row
  rs->MoveLast();
  EXPECT_EQ(rs->Get("Name").text(), "[b]TOTAL");
  EXPECT_EQ(rs->Get("A").text(), "15.50");
  EXPECT_EQ(rs->Get("B").text(), "1,234.00");
  EXPECT_TRUE(rs->Get("C").IsNull());

  auto empty = TextRowset({"Name", "A"}, {});
  clsRS::appendTotalRow(*empty, {"A", ""});
  EXPECT_EQ(empty->RecordCount(), 0u);
}

TEST(RowsetHelpers, FormatColumnsRewritesNumbersAndLeavesTextAlone) {
  auto rs = TextRowset({"Name", "A"}, {{"x", "1234.5"}, {"y", "abc"}, {"z", "-0.004"}});
  clsRS::formatColumns(*rs, {"A", ""}, "###,###,##0.00");
  EXPECT_EQ(test::Column(*rs, "A"), (std::vector<std::string>{"1,234.50", "abc", "-0.00"}));
}

TEST(RowsetHelpers, CopyIsTextAndKeepsLongValuesWhole) {
  test::TestDb db;
  db.Exec(
      "create table t (id int, amount money, d datetime, note varchar(80));"
      "insert into t values (1, 12.5, '2024-01-15', null);"
      "insert into t values (2, 3, '2024-01-16 13:05:00', 'ok')");
  auto source = Recordset::OpenQuery(db.Connect(), "select * from t order by id", false);
  auto copy = clsRS::copyRS(source.get());
  ASSERT_TRUE(copy);
  EXPECT_TRUE(source->IsEof());
  EXPECT_EQ(copy->fields()[1].type, DataType::kChar);
  EXPECT_EQ(copy->fields()[1].defined_size, 50);
  EXPECT_EQ(test::Column(*copy, "amount"), (std::vector<std::string>{"12.5", "3"}));
  EXPECT_EQ(test::Column(*copy, "d"), (std::vector<std::string>{"1/15/2024", "1/16/2024 1:05:00 PM"}));
  EXPECT_EQ(test::Column(*copy, "note"), (std::vector<std::string>{"", "ok"}));
  EXPECT_EQ(clsRS::copyRS(nullptr), nullptr);

  // A longer value is copied whole and widens its column, and only its column.
  const std::string long_note = std::string(59, 'n') + "\xC3\xA9";  // 60 characters, 61 bytes
  db.Exec("insert into t values (3, 0, null, '" + long_note + "')");
  source = Recordset::OpenQuery(db.Connect(), "select * from t order by id", false);
  copy = clsRS::copyRS(source.get());
  ASSERT_TRUE(copy);
  EXPECT_EQ(test::Column(*copy, "note").back(), long_note);
  EXPECT_EQ(copy->fields()[3].defined_size, 60);
  EXPECT_EQ(copy->fields()[1].defined_size, 50);
  EXPECT_NE(copy->SaveToString().find("dt:maxLength='60'"), std::string::npos);
}

TEST(RowsetHelpers, ToCurrencyAndRunQuery) {
  EXPECT_EQ(clsRS::toCurrency(Variant::Null()).raw(), 0);
  EXPECT_EQ(clsRS::toCurrency(Variant("")).raw(), 0);
  EXPECT_EQ(clsRS::toCurrency(Variant("x1")).raw(), 0);
  EXPECT_EQ(clsRS::toCurrency(Variant("1,000.12345")).ToString(), "1000.1234");
  // Text is read exactly, halves to even, with every form numeric text takes; beyond a double: 0.
  EXPECT_EQ(clsRS::toCurrency(Variant(" ($1,234.56785) ")).ToString(), "-1234.5678");
  EXPECT_EQ(clsRS::toCurrency(Variant("0.00015")).ToString(), "0.0002");
  EXPECT_EQ(clsRS::toCurrency(Variant("2.5E-3")).ToString(), "0.0025");
  EXPECT_EQ(clsRS::toCurrency(Variant("1E309")).raw(), 0);
  EXPECT_THROW(clsRS::toCurrency(Variant("1E15")), Error);
  EXPECT_EQ(clsRS::toCurrency(Variant(2.5)).ToString(), "2.5");

  test::TestDb db;
  db.Exec("create table t (id int)");
  SetShopConnectionString(db.connection_string());
  clsRS engine;
  engine.openConnections();
  std::string status = "untouched";
  EXPECT_EQ(engine.runQuery("select * from missing", status, false), nullptr);
  EXPECT_EQ(status, "no such table: missing");
  auto rs = engine.runQuery("select * from t", status, true);
  ASSERT_TRUE(rs);
  EXPECT_EQ(status, "0");
  rs->AddNew();
  rs->Set("id", Variant(7));
  rs->Update();
  EXPECT_EQ(engine.runQuery("select * from t", status, false)->RecordCount(), 1u);
}

TEST(SqlText, QuotesAndSortOrders) {
  EXPECT_EQ(SqlQuote("O'Brien's"), "O''Brien''s");
  for (const char* ok : {"lname", "lname DESC, fname asc", " Company , [Last Name] ", "customer.cusid"})
    EXPECT_FALSE(CheckSortOrder(ok)) << ok;
  for (const char* bad :
       {"", "lname;drop table wo", "lname desc desc", "1", "lname,", "(select 1)", "lname -- x"})
    EXPECT_TRUE(CheckSortOrder(bad)) << bad;
}

}  // namespace
}  // namespace ent
