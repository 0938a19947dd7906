// The statements on the small sample shop, whose ledger balances: every statement balances too,
// the catalogue answers each code, and concurrent balance sheets on one database stay apart.
#include "support/sample_shop.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/thread_values.h"
#include "common/variant.h"
#include "data/connection.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class StatementsOnSampleShop : public ::testing::Test {
 protected:
  static std::string ConnectionString() { return "Provider=SQLite;Data Source=" + test::SmallSampleShop(); }
  void SetUp() override { SetShopConnectionString(ConnectionString()); }

  // The amount in the given column of the one row labelled `label`.
  static Currency Amount(const Rows& table, const std::string& label, size_t column) {
    const Rows rows = test::RowsLabelled(table, label);
    EXPECT_EQ(rows.size(), 1u) << label;
    return rows.empty() ? Currency() : Variant(rows[0][column]).ToCurrency();
  }
  static Currency LedgerSum(const std::string& where) {
    QueryResult result = OpenConnection(ConnectionString())
                             ->Query("select sum(amt) from ChartOfAccountsGLPOSTINGTABLE where " + where);
    return clsRS::toCurrency(result.rows.at(0).at(0));
  }
  static Rows BalanceSheet(const std::string& date) {
    clsRS engine;
    engine.openConnections();
    std::string as_of = date, status;
    Rows table = test::Cells(engine.getBalanceSheet(as_of, status).get());
    EXPECT_EQ(status, "0");
    return table;
  }
};

constexpr size_t kTotal = 5, kDebit = 1, kCredit = 2, kBalance = 3;

TEST_F(StatementsOnSampleShop, StatementsBalanceWhereTheLedgerDoes) {
  ASSERT_EQ(LedgerSum("transdate <= '12/31/2024'"), Currency());

  const Rows sheet = BalanceSheet("12/31/2024");
  const Currency assets = Amount(sheet, "[b]TOTAL ASSETS", kTotal);
  EXPECT_GT(assets, Currency());
  EXPECT_EQ(assets, Amount(sheet, "[b]TOTAL LIABILITIES & EQUITY", kTotal));
  EXPECT_EQ(Amount(sheet, "[b]Total Equity", kTotal) + Amount(sheet, "[b]Total Liabilities", kTotal), assets);

  clsRS engine;
  engine.openConnections();
  std::string start = "1/1/2024", end = "12/31/2024", status;
  const Rows pl = test::Cells(engine.getProfitLoss(start, end, status).get());
  ASSERT_EQ(status, "0");
  // The fiscal year is the calendar year: the year's profit is the balance sheet's net income.
  EXPECT_EQ(Amount(pl, "[b]NET REVENUE", kTotal), Amount(sheet, "Net Income", kTotal));
  EXPECT_EQ(Amount(pl, "[b]TOTAL REVENUE", kTotal) - Amount(pl, "[b]TOTAL EXPENSES", kTotal),
            Amount(pl, "[b]NET REVENUE", kTotal));

  const Rows tb = test::Cells(engine.getTrialBalance(end, status).get());
  ASSERT_EQ(status, "0");
  EXPECT_GT(Amount(tb, "[b]TOTAL", kDebit), Currency());
  EXPECT_EQ(Amount(tb, "[b]TOTAL", kDebit), Amount(tb, "[b]TOTAL", kCredit));

  // The summaries add up to their control accounts: payables (10) owed by the shop, receivables (9)
  // owed to it.
  int32_t payables = 1, receivables = 0;
  const Rows ap = test::Cells(engine.getAPARSummary(payables, status, end).get());
  ASSERT_EQ(status, "0");
  EXPECT_EQ(Amount(ap, "[b]TOTAL", 2), -LedgerSum("chid = 10 and transdate <= '12/31/2024'"));
  const Rows ar = test::Cells(engine.getAPARSummary(receivables, status, end).get());
  ASSERT_EQ(status, "0");
  EXPECT_EQ(Amount(ar, "[b]TOTAL", kBalance), LedgerSum("chid = 9 and transdate <= '12/31/2024'"));
}

TEST_F(StatementsOnSampleShop, ConcurrentBalanceSheetsStayApart) {
  const std::vector<std::string> dates = {"12/31/2023", "6/30/2025"};
  std::vector<Rows> expected;
  for (const auto& date : dates) expected.push_back(BalanceSheet(date));
  ASSERT_NE(expected[0], expected[1]);

  std::vector<std::vector<Rows>> got(dates.size());
  std::vector<std::thread> threads;
  for (size_t t = 0; t < dates.size(); ++t) {
    threads.emplace_back([&, t] {
      SetShopConnectionString(ConnectionString());
      for (int run = 0; run < 3; ++run) got[t].push_back(BalanceSheet(dates[t]));
    });
  }
  for (auto& thread : threads) thread.join();
  for (size_t t = 0; t < dates.size(); ++t) {
    ASSERT_EQ(got[t].size(), 3u);
    for (const Rows& table : got[t]) EXPECT_EQ(table, expected[t]) << dates[t];
  }
}

}  // namespace
}  // namespace ent
