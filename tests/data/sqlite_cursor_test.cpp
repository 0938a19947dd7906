// A SQLite cursor reads long results ahead on a thread of its own: the rows still arrive whole and
// in order, the connection stays usable between them, and failures and early ends behave as when
// the rows were read one at a time.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "common/error.h"
#include "data/connection.h"
#include "data/query_limits.h"
#include "support/test_db.h"

namespace ent {
namespace {

// Rows 1..count of (n, a text whose length varies with n, a few long enough to end a batch early).
void FillNumbers(const test::TestDb& db, int count) {
  db.Exec("CREATE TABLE numbers (n INT NOT NULL, label VARCHAR(8000))");
  db.Exec("WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < " +
          std::to_string(count) +
          ") INSERT INTO numbers SELECT n, CASE WHEN n % 997 = 0 THEN printf('%.*c', 400000, 'x') "
          "ELSE substr('" +
          std::string(49, 'a') + "', 1, n % 50) || n END FROM c");
}

// Look-ups made while rows are read ahead answer as the connection itself would: they see its temp
// tables, what it has written and not committed, and what a look-up text itself writes.
TEST(SqliteCursor, LookUpsWhileReadingAheadSeeWhatTheConnectionSees) {
  test::TestDb db;
  FillNumbers(db, 2000);
  std::shared_ptr<Connection> connection = db.Connect();
  auto value = [&](const std::string& sql) { return test::FirstValue(*connection, sql); };
  connection->Execute("CREATE TEMP TABLE seen (n INT)");
  connection->Execute("INSERT INTO seen VALUES (7)");
  std::vector<Variant> row;
  {
    std::unique_ptr<RowCursor> cursor = connection->OpenCursor("select n from numbers order by n", {});
    for (int n = 1; n <= 600; ++n) ASSERT_TRUE(cursor->Next(row));
    EXPECT_EQ(value("select n from seen"), "7");
    EXPECT_EQ(value("select count(*) as c from numbers where n > 1990"), "10");
    EXPECT_EQ(value("select 'first' as a; select 'second' as a"), "first");
    EXPECT_EQ(
        value("update numbers set label = 'changed' where n = 1; select label from numbers where n = 1"),
        "changed");
    EXPECT_EQ(value("update numbers set label = 'returned' where n = 2 returning label"), "returned");
    int n = 600;
    while (cursor->Next(row)) ASSERT_EQ(row[0].ToLong(), ++n);
    EXPECT_EQ(n, 2000);
  }
  connection->Execute("BEGIN TRANSACTION");
  connection->Execute("INSERT INTO numbers (n, label) VALUES (-1, 'not committed')");
  std::unique_ptr<RowCursor> cursor = connection->OpenCursor("select n from numbers order by n", {});
  for (int n = 1; n <= 600; ++n) ASSERT_TRUE(cursor->Next(row));
  EXPECT_EQ(value("select label from numbers where n < 0"), "not committed");
  cursor.reset();
  connection->Execute("ROLLBACK");
  EXPECT_EQ(value("select count(*) as c from numbers where n < 0"), "0");
}

TEST(SqliteCursor, AFailureWhileReadingAheadComesAfterTheRowsBeforeIt) {
  test::TestDb db;
  FillNumbers(db, 6000);
  QueryLimits limits;
  limits.result_bytes = 2 << 20;
  SetQueryLimits(limits);
  std::shared_ptr<Connection> connection = db.Connect();
  std::unique_ptr<RowCursor> cursor = connection->OpenCursor("select n, label from numbers order by n", {});
  std::vector<Variant> row;
  int n = 0;
  std::string failure;
  try {
    while (cursor->Next(row)) ASSERT_EQ(row[0].ToLong(), ++n);
  } catch (const Error& e) {
    failure = e.description();
  }
  SetQueryLimits(QueryLimits{});
  EXPECT_EQ(failure.rfind("The query's result grew beyond its size limit of 2 MB", 0), 0u) << failure;
  // Four 400 KB labels fit, the fifth (row 4985) does not: every row before it arrives.
  EXPECT_EQ(n, 4984);
  cursor.reset();
  EXPECT_EQ(test::FirstValue(*connection, "select count(*) as c from numbers"), "6000");
}

TEST(SqliteCursor, ACursorLeftEarlyOrOutlivingItsConnectionHoldsNothingBack) {
  test::TestDb db;
  FillNumbers(db, 3000);
  std::shared_ptr<Connection> connection = db.Connect();
  std::vector<Variant> row;
  {
    // A result without end, left after a few batches: the reader stops and the statement goes.
    std::unique_ptr<RowCursor> endless = connection->OpenCursor(
        "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c", {{"x", "int"}});
    for (int i = 0; i < 2000; ++i) ASSERT_TRUE(endless->Next(row));
    EXPECT_EQ(row[0].ToLong(), 2000);
    std::unique_ptr<RowCursor> left = connection->OpenCursor("select n from numbers", {});
    for (int i = 0; i < 300; ++i) ASSERT_TRUE(left->Next(row));
    const auto start = std::chrono::steady_clock::now();
    endless.reset();
    left.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  }
  // Nothing reads the table any more: it can be dropped.
  connection->Execute("CREATE TABLE copy AS SELECT * FROM numbers");
  connection->Execute("DROP TABLE copy");

  // The caller lets go of the connection; the cursor still reads every row.
  std::unique_ptr<RowCursor> cursor = connection->OpenCursor("select n from numbers order by n", {});
  connection.reset();
  int n = 0;
  while (cursor->Next(row)) ASSERT_EQ(row[0].ToLong(), ++n);
  EXPECT_EQ(n, 3000);
}

}  // namespace
}  // namespace ent
