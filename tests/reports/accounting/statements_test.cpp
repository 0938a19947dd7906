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
