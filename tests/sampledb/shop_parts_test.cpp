// The generator's building blocks: days, the random source, rounding, invoice totals, the ledger.
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "sampledb/calendar.h"
#include "sampledb/ledger.h"
#include "sampledb/prng.h"
#include "sampledb/shop.h"
#include "sampledb/shop_schema.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent::sampledb {
namespace {

TEST(Day, CountsCalendarDays) {
  EXPECT_EQ(Day::FromYmd(1970, 1, 1).number, 0);
  EXPECT_EQ(Day::FromYmd(2024, 2, 29).Text(), "2024-02-29 00:00:00");
  EXPECT_EQ((Day::FromYmd(2024, 2, 28) + 2).Text(), "2024-03-01 00:00:00");
  EXPECT_EQ((Day::FromYmd(2023, 2, 28) + 1).Text(), "2023-03-01 00:00:00");
  EXPECT_EQ(Day::FromYmd(2023, 1, 1).Weekday(), 0);  // a Sunday
  EXPECT_EQ(Day::FromYmd(2025, 12, 31).Weekday(), 3);
  EXPECT_TRUE(Day::FromYmd(2024, 2, 29).IsLastOfMonth());
  EXPECT_FALSE(Day::FromYmd(2023, 2, 27).IsLastOfMonth());
  // Every day of the three years has the date the standard calendar gives its number.
  for (Day d = Day::FromYmd(2023, 1, 1); d <= Day::FromYmd(2025, 12, 31); d = d + 1) {
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{d.number}}};
    ASSERT_EQ(d.Year(), static_cast<int>(date.year()));
    ASSERT_EQ(d.Month(), static_cast<int>(static_cast<unsigned>(date.month())));
    ASSERT_EQ(d.DayOfMonth(), static_cast<int>(static_cast<unsigned>(date.day())));
  }
}

TEST(Prng, IsSplitMix64) {
  // The published first outputs for seed 0: the same shop on every platform depends on them.
  Prng rng(0);
  EXPECT_EQ(rng.Next(), 0xE220A8397B1DCDAFULL);
  EXPECT_EQ(rng.Next(), 0x6E789E6AA1B965F4ULL);
  EXPECT_EQ(rng.Next(), 0x06C45D188009454FULL);
  Prng draws(7);
  const int weights[] = {0, 5, 0, 5};
  for (int i = 0; i < 200; ++i) {
    const int64_t r = draws.Range(-2, 2);
    ASSERT_GE(r, -2);
    ASSERT_LE(r, 2);
    const size_t w = draws.Weighted(weights);
    ASSERT_TRUE(w == 1 || w == 3);
  }
}

TEST(SumLines, CountsWhatTheInvoiceCharges) {
  Line part;
  part.totparts = 10000;
  part.discpart = 1000;
  part.invcost = 4000;
  part.levy = 800;
  Line labour;
  labour.labour = 5000;
  labour.hourly = 1500;
  Line skipped = labour;
  skipped.skipped = true;
  Line content = part;  // listed inside a package, priced by its header
  content.pkg = true;
  Line fee;
  fee.otheramt = 250;
  fee.othcost = 100;
  const Totals t = SumLines({part, labour, skipped, content, fee}, false, false);
  EXPECT_EQ(t.parts_gross, 10000);
  EXPECT_EQ(t.parts_disc, 1000);
  EXPECT_EQ(t.labour_gross, 5000);
  EXPECT_EQ(t.subtotal, 9000 + 5000 + 250 + 800);
  EXPECT_EQ(t.tx1, 753);   // 5 % of 150.50, half a cent up
  EXPECT_EQ(t.tx2, 1140);  // 8 % of everything but the levy
  EXPECT_EQ(t.total, t.subtotal + t.tx1 + t.tx2);
  EXPECT_EQ(t.parts_cost, 4000);
  EXPECT_EQ(t.labour_cost, 1500);
  EXPECT_EQ(t.other_cost, 100);

  // Exempt customers pay no tax; a credit of the same lines is the exact negative.
  EXPECT_EQ(SumLines({part}, true, true).tx1 + SumLines({part}, true, true).tx2, 0);
  Line credit = part;
  for (Cents* c : {&credit.totparts, &credit.discpart, &credit.invcost, &credit.levy}) *c = -*c;
  const Totals back = SumLines({credit}, false, false);
  const Totals sold = SumLines({part}, false, false);
  EXPECT_EQ(back.tx1, -sold.tx1);
  EXPECT_EQ(back.tx2, -sold.tx2);
  EXPECT_EQ(back.total, -sold.total);
}

TEST(Ledger, WritesBalancedTransactionsOnly) {
  test::TempDir dir;
  Database db(dir.file("ledger.db"));
  CreateShopTables(db);
  Ledger ledger(db);
  Transaction sale;
  sale.Add(acct::kReceivables, 1130, "INVOICE", 100001, 7);
  sale.Add(acct::kLabourSales, -500, "INVOICE", 100001, 7);
  sale.Add(acct::kLabourSales, -500, "INVOICE", 100001, 7);  // merged with the line above
  sale.Add(acct::kPayables, -130, "TAX1", 100001, 1);
  sale.Add(acct::kShopFees, 0, "INVOICE", 100001, 7);  // zero: not written
  EXPECT_EQ(sale.postings().size(), 4u);
  ledger.Post(Day::FromYmd(2024, 3, 5), sale);
  EXPECT_EQ(ledger.Balance(acct::kReceivables), 1130);
  EXPECT_EQ(ledger.Balance(acct::kLabourSales), -1000);

  Transaction unbalanced;
  unbalanced.Add(acct::kChequing, 100, "CHEQUE", 1);
  EXPECT_THROW(ledger.Post(Day::FromYmd(2024, 3, 6), unbalanced), std::logic_error);
  ledger.Post(Day::FromYmd(2024, 3, 6), Transaction{});
  EXPECT_EQ(
      test::QueryValueOn(dir.file("ledger.db"),
                         "SELECT count(*) || ' ' || max(transid) || ' ' || round(sum(amt), 2) || ' ' || "
                         "min(transdate) FROM ChartOfAccountsGLPOSTINGTABLE"),
      "3 1 0.0 2024-03-05 00:00:00");
}

}  // namespace
}  // namespace ent::sampledb
