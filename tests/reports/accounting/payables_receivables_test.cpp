// Payables and receivables summaries on chosen postings of the two control accounts.
#include <gtest/gtest.h>

#include "books.h"
#include "common/error.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

constexpr int kReceivables = 9;
constexpr int kPayables = 10;

TEST(Payables, SuppliersWithABalanceAndBothTaxLines) {
  test::Books books;
  books.Exec(
      "insert into supplier values (1, 'Zed Supply', 'Ann');"
      "insert into supplier values (2, 'Acme Parts', 'Bob');"
      "insert into supplier values (3, 'Paid Up Ltd', 'Cy')");
  books.Post(kPayables, "-150", "3/1/2024", "SUPTRANS", 11, 2);
  books.Post(kPayables, "-500", "3/1/2024", "SUPTRANS", 12, 1);
  books.Post(kPayables, "200", "3/9/2024", "SUPMAKEPAYMENT", 13, 1);
  books.Post(kPayables, "-20", "3/9/2024", "LEVYSUP", 14, 1);
  books.Post(kPayables, "-100", "3/1/2024", "SUPTRANS", 15, 3);
  books.Post(kPayables, "100", "3/20/2024", "SUPMAKEPAYMENT", 16, 3);
  books.Post(kPayables, "-999", "4/1/2024", "SUPTRANS", 17, 2);  // after the end date
  books.Post(kPayables, "-30", "3/1/2024", "TAX1", 12, 1);
  books.Post(kPayables, "-4", "3/1/2024", "LEVYTAX", 12, 1);
  books.Post(kPayables, "-7", "3/1/2024", "OTHER", 12, 1);        // neither a supplier's nor a tax posting
  books.Post(kReceivables, "-5", "3/1/2024", "SUPTRANS", 12, 1);  // another account

  clsRS engine;
  engine.openConnections();
  int32_t type = 1;
  std::string status, end = "3/31/2024";
  auto rs = engine.getAPARSummary(type, status, end);
  ASSERT_EQ(status, "0");
  const Rows expected = {
      {"Acme Parts", "", "150.00"}, {"Tax 1", "", "34.00"},     {"Tax 2", "", "0.00"},  // always listed
      {"Zed Supply", "", "320.00"}, {"[b]TOTAL", "", "504.00"},
  };
  EXPECT_EQ(test::Cells(rs.get()), expected);

  // No supplier owed anything: the two tax lines still come back.
  end = "1/1/2024";
  const Rows taxes_only = {{"Tax 1", "", "0.00"}, {"Tax 2", "", "0.00"}, {"[b]TOTAL", "", "0.00"}};
  EXPECT_EQ(test::Cells(engine.getAPARSummary(type, status, end).get()), taxes_only);

  // An end date that is no date is the caller's failure.
  end = "soon";
  EXPECT_THROW(engine.getAPARSummary(type, status, end), Error);
}

TEST(Receivables, BranchesDatesAndRoundingLimits) {
  test::Books books;
  books.Exec(
      "insert into customer values (1, 'Alpha', 'Al', 'Ames', '', '', '', '');"
      "insert into customer values (2, 'Beta', 'Bo', 'Banks', '', '', '', '');"
      "insert into customer values (3, 'Gamma', 'Gil', 'Grey', '', '', '', '');"
      "insert into customer values (4, 'Delta', 'Di', 'Dunn', '', '', '', '');"
      "insert into customer values (5, 'Eps', 'Ed', 'East', '', '', '', '');"
      // Work orders: an invoice and a credit invoice of Gamma, a later invoice of Delta, an archived
      // one of Eps and Eps's own deductible.
      "insert into wo values (1, 3, 501, 0, 0, '3/1/2024', 0, 0);"
      "insert into wo values (2, 3, 0, 601, 0, '3/2/2024', 0, 0);"
      "insert into wo values (3, 4, 502, 0, 0, '4/2/2024', 0, 0);"
      "insert into wo values (4, 5, 503, 0, 1, '3/3/2024', 0, 0);"
      "insert into wo values (5, 5, 504, 0, 0, '3/3/2024', 5, 80)");
  books.Post(kReceivables, "0.02", "3/1/2024", "AR", 0, 1);      // Alpha: 0.02 is listed
  books.Post(kReceivables, "0.004", "3/1/2024", "ARPAY", 0, 2);  // Beta: 0.004 is left out
  books.Post(kReceivables, "100", "3/1/2024", "INVOICE", 501, 3);
  books.Post(kReceivables, "-40", "3/2/2024", "CREDINVOICE", 601, 3);
  books.Post(kReceivables, "25", "3/5/2024", "NSF", 0, 3);
  books.Post(kReceivables, "70", "4/2/2024", "INVOICE", 502, 4);  // work order after the end date
  books.Post(kReceivables, "90", "3/3/2024", "INVOICE", 503, 5);  // archived
  books.Post(kReceivables, "80", "3/3/2024", "INVOICE_DED", 504, 5);
  books.Post(kReceivables, "33", "4/1/2024", "AR", 0, 5);  // after the end date

  clsRS engine;
  engine.openConnections();
  int32_t type = 0;
  std::string status, end = "3/31/2024";
  auto rs = engine.getAPARSummary(type, status, end);
  ASSERT_EQ(status, "0");
  ASSERT_TRUE(rs);
  const Rows expected = {
      {"Alpha", "Al", "Ames", "0.02"},
      {"Eps", "Ed", "East", "80"},
      {"Gamma", "Gil", "Grey", "85"},
      {"[b]TOTAL", "", "", "165.02"},
  };
  EXPECT_EQ(test::Cells(rs.get()), expected);

  // Nobody owes anything: no rows and no total line.
  end = "1/1/2024";
  rs = engine.getAPARSummary(type, status, end);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->RecordCount(), 0u);
}

}  // namespace
}  // namespace ent
