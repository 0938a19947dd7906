// Concurrent balance sheets on the small sample shop stay apart: each thread's work-table lines are
// its own.
#include "support/sample_shop.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "common/thread_values.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// The balance sheet as of `date`, on a shop connection of the calling thread's own.
Rows BalanceSheet(const std::string& date) {
  SetShopConnectionString("Provider=SQLite;Data Source=" + test::SmallSampleShop());
  clsRS engine;
  engine.openConnections();
  std::string as_of = date, status;
  Rows table = test::Cells(engine.getBalanceSheet(as_of, status).get());
  EXPECT_EQ(status, "0");
  return table;
}

TEST(StatementsOnSampleShop, ConcurrentBalanceSheetsStayApart) {
  const std::vector<std::string> dates = {"12/31/2023", "6/30/2025"};
  std::vector<Rows> expected;
  for (const auto& date : dates) expected.push_back(BalanceSheet(date));
  ASSERT_NE(expected[0], expected[1]);

  std::vector<std::vector<Rows>> got(dates.size());
  std::vector<std::thread> threads;
  for (size_t t = 0; t < dates.size(); ++t) {
    threads.emplace_back([&, t] {
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
