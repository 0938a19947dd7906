// Balance sheet and profit and loss on a small chart of accounts with chosen postings.
#include <gtest/gtest.h>

#include "books.h"
#include "common/date_time.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// A statement line: label and the five amount columns (deepest first), blank where unused.
std::vector<std::string> L(const std::string& label, int column = -1, const std::string& amount = "") {
  std::vector<std::string> row = {label, " ", " ", " ", " ", " "};
  if (column >= 0) row[5 - column] = amount;  // column 0 is the total column, 4 the deepest
  return row;
}

// Current assets with two children and an empty one, a negative asset, a liability, owner's equity,
// and revenue and expenses in the year before and the year of the as-of date. The books balance.
class BalanceSheetBooks : public ::testing::Test {
 protected:
  BalanceSheetBooks() {
    books_.FiscalYear(2023);
    books_.FiscalYear(2024);
    books_.Account(1, 0, 100, "Current Assets", 'A', 0);
    books_.Account(2, 1, 110, "Cash", 'A', 1);
    books_.Account(3, 1, 120, "Bank", 'A', 1);
    books_.Account(9, 1, 130, "Petty Cash", 'A', 1);
    books_.Account(4, 0, 150, "Equipment", 'A', 0);
    books_.Account(5, 0, 200, "Payables", 'L', 0);
    books_.Account(6, 0, 300, "Owner Capital", 'Q', 0);
    books_.Account(7, 0, 400, "Sales", 'R', 0);
    books_.Account(8, 0, 500, "Rent", 'E', 0);
    books_.Post(2, "600", "3/1/2024");
    books_.Post(3, "400", "2/1/2023");
    books_.Post(4, "-150", "1/1/2024");
    books_.Post(5, "-250", "5/5/2024");
    books_.Post(6, "-100", "1/2/2023");
    books_.Post(7, "-300", "6/1/2023");
    books_.Post(8, "100", "7/1/2023");
    books_.Post(7, "-500", "3/15/2024");
    books_.Post(8, "200", "6/30/2024");
    // After the as-of date.
    books_.Post(2, "999", "7/1/2024");
    books_.Post(7, "-999", "7/1/2024");
  }
  test::Books books_;
};

TEST_F(BalanceSheetBooks, WritesEveryLineInOrderWithGroupsSignsAndTotals) {
  clsRS engine;
  engine.openConnections();
  std::string as_of = "6/30/2024", status;
  auto rs = engine.getBalanceSheet(as_of, status);
  ASSERT_EQ(status, "0");
  ASSERT_TRUE(rs);
  const Rows expected = {
      L("[b]ASSETS"),
      // The parent without postings: its subtotal, then its own line one level deeper, then its children.
      L("Current Assets Total", 0, "1,000.00"),
      L("[sp3]Current Assets", 1, "0.00"),
      L("[sp3]Cash", 1, "600.00"),
      L("[sp3]Bank", 1, "400.00"),
      L("Equipment", 0, "-150.00"),
      L("[b]TOTAL ASSETS", 0, "850.00"),
      L(""),
      L("[b]LIABILITIES & EQUITY"),
      L(""),
      L("[b]Liabilities"),
      L("Payables", 0, "250.00"),
      L("[b]Total Liabilities", 0, "250.00"),
      L(""),
      L("[b]Equity"),
      L("Owner Capital", 0, "100.00"),
      L("Retained Earnings", 0, "200.00"),
      L("Net Income", 0, "300.00"),
      L("[b]Total Equity", 0, "600.00"),
      L(""),
      L("[b]TOTAL LIABILITIES & EQUITY", 0, "850.00"),
  };
  EXPECT_EQ(test::Cells(rs.get()), expected);
}

TEST_F(BalanceSheetBooks, EarlierDateAndFailures) {
  clsRS engine;
  engine.openConnections();
  // At the end of 2023 the year's profit is the net income and nothing is retained yet.
  std::string as_of = "12/31/2023", status;
  Rows table = test::Cells(engine.getBalanceSheet(as_of, status).get());
  ASSERT_EQ(status, "0");
  EXPECT_EQ(test::RowsLabelled(table, "Retained Earnings"), Rows{L("Retained Earnings", 0, "0.00")});
  EXPECT_EQ(test::RowsLabelled(table, "Net Income"), Rows{L("Net Income", 0, "200.00")});
  EXPECT_EQ(test::RowsLabelled(table, "[b]TOTAL ASSETS"), Rows{L("[b]TOTAL ASSETS", 0, "400.00")});
  EXPECT_EQ(test::RowsLabelled(table, "[b]Total Liabilities"), Rows{L("[b]Total Liabilities", 0, "0.00")});

  // A text that is no date fails (its first query cannot read it as a date); no rowset.
  std::string bad = "the end of June";
  EXPECT_FALSE(engine.getBalanceSheet(bad, status));
  EXPECT_NE(status, "0");
  EXPECT_NE(status, "");

  // A quote in the date cannot break the SQL text.
  std::string quoted = "6/30/2024' or '1'='1";
  EXPECT_FALSE(engine.getBalanceSheet(quoted, status));
  EXPECT_NE(status, "0");
}

TEST(BalanceSheet, DeepChartEmptyDateAndEmptySections) {
  test::Books books;
  // A chain six levels deep, one unit on each account.
  for (int level = 0; level <= 5; ++level) {
    books.Account(level + 1, level, 100 + level, "A" + std::to_string(level), 'A', level);
    books.Post(level + 1, "1", "1/15/2024");
  }
  clsRS engine;
  engine.openConnections();
  std::string as_of, status;
  auto rs = engine.getBalanceSheet(as_of, status);
  ASSERT_EQ(status, "0");
  EXPECT_EQ(as_of, DateTime::Today().ShortDate());
  const Rows expected_assets = {
      L("[b]ASSETS"),
      L("A0 Total", 0, "6.00"),
      L("[sp3]A0", 1, "1.00"),
      L("[sp3]A1 Total", 1, "5.00"),
      L("[sp6]A1", 2, "1.00"),
      L("[sp6]A2 Total", 2, "4.00"),
      L("[sp9]A2", 3, "1.00"),
      L("[sp9]A3 Total", 3, "3.00"),
      L("[sp12]A3", 4, "1.00"),
      L("[sp12]A4 Total", 4, "2.00"),
      L("[sp15]A4"),  // deeper than the amount columns: the amount is not shown
      L("[sp15]A5"),
      L("[b]TOTAL ASSETS", 0, "6.00"),
  };
  Rows table = test::Cells(rs.get());
  ASSERT_GE(table.size(), expected_assets.size());
  EXPECT_EQ(Rows(table.begin(), table.begin() + static_cast<long>(expected_assets.size())), expected_assets);
  // Sections without accounts keep their headings and show zero totals.
  EXPECT_EQ(test::RowsLabelled(table, "[b]Total Liabilities"), Rows{L("[b]Total Liabilities", 0, "0.00")});
  EXPECT_EQ(test::RowsLabelled(table, "[b]Total Equity"), Rows{L("[b]Total Equity", 0, "0.00")});
}

// Revenue with a parent and two children, one expense, postings on and just outside the period ends.
TEST(ProfitLoss, PeriodEndsGroupsAndNetRevenue) {
  test::Books books;
  books.Account(1, 0, 400, "Revenue", 'R', 0);
  books.Account(2, 1, 410, "Parts", 'R', 1);
  books.Account(3, 1, 420, "Labour", 'R', 1);
  books.Account(4, 0, 500, "Rent", 'E', 0);
  books.Post(2, "-600", "4/1/2024");
  books.Post(3, "-400", "4/30/2024");
  books.Post(4, "600", "4/15/2024");
  books.Post(2, "-77", "3/31/2024");
  books.Post(3, "-88", "5/1/2024");
  books.Post(4, "99", "5/1/2024");

  clsRS engine;
  engine.openConnections();
  std::string start = "4/1/2024", end = "4/30/2024", status;
  auto rs = engine.getProfitLoss(start, end, status);
  ASSERT_EQ(status, "0");
  const Rows expected = {
      L("[b]REVENUE"),
      L("Revenue Total", 0, "1,000.00"),
      L("[sp3]Revenue", 1, "0.00"),
      L("[sp3]Parts", 1, "600.00"),
      L("[sp3]Labour", 1, "400.00"),
      L("[b]TOTAL REVENUE", 0, "1,000.00"),
      L(""),
      L("[b]EXPENSES"),
      L("Rent", 0, "600.00"),
      L("[b]TOTAL EXPENSES", 0, "600.00"),
      L(""),
      L("[b]NET REVENUE", 0, "400.00"),
  };
  EXPECT_EQ(test::Cells(rs.get()), expected);

  // A period without postings: headings and zero totals only.
  start = "1/1/2020";
  end = "12/31/2020";
  const Rows empty = {
      L("[b]REVENUE"),
      L("[b]TOTAL REVENUE", 0, "0.00"),
      L(""),
      L("[b]EXPENSES"),
      L("[b]TOTAL EXPENSES", 0, "0.00"),
      L(""),
      L("[b]NET REVENUE", 0, "0.00"),
  };
  EXPECT_EQ(test::Cells(engine.getProfitLoss(start, end, status).get()), empty);
  EXPECT_EQ(status, "0");
}

}  // namespace
}  // namespace ent
