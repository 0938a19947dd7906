// Trial balance on a small chart of accounts with chosen postings.
#include <gtest/gtest.h>

#include "books.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// Cash three levels down, a loan under a top account without a name, owner's capital, and revenue
// and expense accounts numbered in turn. 2023 closed with a profit of 1,200.
class TrialBalanceBooks : public ::testing::Test {
 protected:
  TrialBalanceBooks() {
    books_.FiscalYear(2023);
    books_.FiscalYear(2024);
    books_.Account(1, 0, 100, "Assets", 'A', 0);
    books_.Account(2, 1, 110, "Current Assets", 'A', 1);
    books_.Account(3, 2, 111, "Cash", 'A', 2);
    books_.Account(4, 0, 200, "", 'L', 0);
    books_.Account(5, 4, 210, "Loan", 'L', 1);
    books_.Account(6, 0, 300, "Capital", 'Q', 0);
    books_.Account(7, 0, 400, "Sales", 'R', 0);
    books_.Account(8, 0, 500, "Rent", 'E', 0);
    books_.Account(9, 0, 600, "Other Income", 'R', 0);
    books_.Account(10, 0, 700, "Unused", 'E', 0);
    books_.Post(3, "2500", "1/3/2023");
    books_.Post(5, "-300", "1/3/2023");
    books_.Post(6, "-300", "1/3/2023");
    books_.Post(7, "-1500", "6/1/2023");
    books_.Post(8, "300", "12/31/2023");
    books_.Post(7, "-800", "1/1/2024");
    books_.Post(8, "200", "6/30/2024");
    books_.Post(9, "-100", "3/3/2024");
    // After the end date.
    books_.Post(3, "50", "7/1/2024");
    books_.Post(7, "-50", "7/1/2024");
  }
  test::Books books_;
};

TEST_F(TrialBalanceBooks, PlacesBalancesWithPathsRetainedEarningsAndClassBreaks) {
  clsRS engine;
  engine.openConnections();
  // Whatever order the database gives a table read without ordering, the lines keep theirs.
  engine.connection()->Execute("PRAGMA reverse_unordered_selects = 1");
  std::string end = "6/30/2024", status;
  auto rs = engine.getTrialBalance(end, status);
  ASSERT_EQ(status, "0");
  ASSERT_TRUE(rs);
  const Rows expected = {
      {"Assets: Current Assets: Cash", "2,500.00", ""},
      {"", "", ""},
      {"Loan", "", "300.00"},
      {"", "", ""},
      {"Capital", "", "300.00"},
      {"Retained Earnings", "", "1,200.00"},
      // Only this fiscal year's postings; an empty line wherever the class changes.
      {"Sales", "", "800.00"},
      {"", "", ""},
      {"Rent", "200.00", ""},
      {"", "", ""},
      {"Other Income", "", "100.00"},
      {"", "", ""},
      {"[b]TOTAL", "2,700.00", "2,700.00"},
  };
  EXPECT_EQ(test::Cells(rs.get()), expected);
}

TEST_F(TrialBalanceBooks, OutsideEveryFiscalYearAndNoDate) {
  clsRS engine;
  engine.openConnections();
  std::string end = "1/1/2030", status;
  EXPECT_FALSE(engine.getTrialBalance(end, status));
  EXPECT_EQ(status, "The Date you have selected does not fall in to any Fiscal Year period. ");
  end = "not a date";
  EXPECT_FALSE(engine.getTrialBalance(end, status));
  EXPECT_EQ(status, "Type mismatch");
  // The first and the last day of a fiscal year belong to it.
  for (std::string day : {"1/1/2023", "12/31/2024"}) {
    EXPECT_TRUE(engine.getTrialBalance(day, status)) << day;
    EXPECT_EQ(status, "0");
  }
}

TEST(TrialBalance, PriorLossIsADebitAndTotalsShowZero) {
  test::Books books;
  books.FiscalYear(2023);
  books.FiscalYear(2024);
  books.Account(1, 0, 100, "Cash", 'A', 0);
  books.Account(2, 0, 500, "Rent", 'E', 0);
  books.Post(1, "-200", "5/5/2023");
  books.Post(2, "200", "5/5/2023");
  clsRS engine;
  engine.openConnections();
  std::string end = "2/1/2024", status;
  const Rows expected = {
      {"Cash", "", "200.00"},           {"", "", ""}, {"", "", ""}, {"Retained Earnings", "200.00", ""},
      {"[b]TOTAL", "200.00", "200.00"},
  };
  EXPECT_EQ(test::Cells(engine.getTrialBalance(end, status).get()), expected);

  // Nothing posted before the date: only the class breaks and a zero total.
  end = "1/2/2023";
  books.Exec("delete from ChartOfAccountsGLPOSTINGTABLE");
  const Rows nothing = {{"", "", ""}, {"", "", ""}, {"[b]TOTAL", "0.00", "0.00"}};
  EXPECT_EQ(test::Cells(engine.getTrialBalance(end, status).get()), nothing);
}

}  // namespace
}  // namespace ent
