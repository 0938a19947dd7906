// Report rows written as they are read must give the document the copied rowset gives.
#include <gtest/gtest.h>

#include "common/format.h"
#include "common/thread_values.h"
#include "job/result_document.h"
#include "reports/cls_rs.h"
#include "reports/report_rows.h"
#include "support/test_db.h"

namespace ent {
namespace {

class StreamedReportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The long name comes after the first rows: its column's width is known only at the end.
    db_.Exec(
        "create table line (id int primary key, name varchar(200), amt money, a money, b money);"
        "insert into line values (1, 'Brake pads', 120.5, 10, 2.25);"
        "insert into line values (2, null, 1234.567, 0.1, 0.2);"
        "insert into line values (3, 'Fl\xC3\xBCssigkeit & <Oel> ''synthetisch'' "
        "0123456789012345678901234567890123456789', -20, 5, null);"
        "insert into line values (4, 'Labour', null, 1.005, 2);");
    SetShopConnectionString(db_.connection_string());
  }

  // The copied form: every row fetched, copied as text, totalled, then formatted.
  std::string Copied(const std::string& sql, std::vector<std::string> totals = {"Amt", "Sum"},
                     std::vector<std::string> amounts = {"Amt", "Sum"}) {
    clsRS engine;
    engine.openConnections();
    std::string status;
    auto query = engine.runQuery(sql, status, false);
    auto copy = clsRS::copyRS(query.get());
    totals.emplace_back();  // the lists' spare last entry
    amounts.emplace_back();
    clsRS::appendTotalRow(*copy, totals);
    clsRS::formatColumns(*copy, amounts, kAmountPattern);
    return ResultDocument::FromRowset(*copy)->Text();
  }

  test::TestDb db_;
};

TEST_F(StreamedReportTest, RowsReadAsWrittenGiveTheCopiedDocument) {
  const std::string sql = "select name as Name, amt as Amt, a + b as Sum from line order by id";
  std::string status;
  std::unique_ptr<Recordset> rows;
  {
    clsRS engine;
    engine.openConnections();
    ReportRowSteps steps;
    steps.totals = {"Amt", "Sum"};
    steps.amounts = steps.totals;
    rows = StreamReportRows(engine.connection(), sql, {{"Sum", "money"}}, std::move(steps), status);
    ASSERT_EQ(status, "0");
    rows->Detach();
  }  // the engine is gone; the rowset still reads from its connection
  const auto document = ResultDocument::FromRowset(*rows);
  const std::string text = document->Text();
  EXPECT_EQ(text, Copied(sql));
  EXPECT_NE(text.find("dt:maxLength='74'"), std::string::npos) << text;
  EXPECT_NE(text.find("Name='[b]TOTAL' Amt='1,335.07' Sum='15.56'"), std::string::npos) << text;
  EXPECT_EQ(document->rows(), 5u);
  // Read back in pieces across the head's end, as the post reads it.
  std::string pieces;
  char piece[7];
  for (uint64_t at = 0; size_t n = document->Read(at, piece, sizeof piece); at += n) pieces.append(piece, n);
  EXPECT_EQ(pieces, text);
  EXPECT_EQ(document->bytes(), text.size());
}

TEST_F(StreamedReportTest, AmountsHeldAsNumbersGiveWhatTheirTextsGive) {
  // Money and whole numbers stay numbers until formatted: signs, zero, halves of a cent, large
  // values and nulls. Doubles are summed from their text, which rounds differently: 0.00015 reads
  // as 0.0002 and makes the total 0.01 where the doubles themselves would sum to 0.0049.
  db_.Exec(
      "create table amount (id int primary key, m money, n bigint, f float);"
      "insert into amount values (1, 0.005, 5, 0.00015), (2, -0.005, -7, 0.0048), (3, 0, 0, 0),"
      " (4, 2.675, 123456789012, -0), (5, -0.0049, null, null), (6, 900000000000000.9999, -2147483649, 1e-7),"
      " (7, null, 1, 2.5);");
  const std::string sql = "select id as Id, m as M, n as N, f as F from amount order by id";
  ReportRowSteps steps;
  steps.totals = {"M", "N", "F"};
  steps.amounts = steps.totals;
  std::string status;
  auto rows = StreamReportRows(db_.Connect(), sql, {}, std::move(steps), status);
  ASSERT_EQ(status, "0");
  const std::string text = ResultDocument::FromRowset(*rows)->Text();
  EXPECT_EQ(text, Copied(sql, {"M", "N", "F"}, {"M", "N", "F"}));
  EXPECT_NE(text.find("Id='[b]TOTAL' M='900,000,000,000,003.67' N='121,309,305,362.00' F='2.51'"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace ent
