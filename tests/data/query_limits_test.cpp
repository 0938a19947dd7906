// Runaway SQL texts are stopped by the query limits, and an interruption stops what runs now.
#include "data/query_limits.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "common/error.h"
#include "common/thread_values.h"
#include "data/connection_string.h"
#include "data/odbc_driver.h"
#include "data/recordset.h"
#include "job/cls_prebuilt_report.h"
#include "reports/cls_rs.h"
#include "support/error_text.h"
#include "support/test_db.h"

namespace ent {
namespace {

// Counts up forever; with `where` it may return nothing while it runs.
std::string Endless(const std::string& where = "") {
  return "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x, "
         "'some text to make the rows larger' AS pad FROM c " +
         where;
}

class QueryLimitsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    QueryLimits limits;
    limits.seconds = 1;
    limits.result_bytes = 4 << 20;
    SetQueryLimits(limits);
  }
  void TearDown() override { SetQueryLimits(QueryLimits{}); }

  // The description of the Error a query raises ("" when it returns).
  static std::string Failure(Connection& connection, const std::string& sql) {
    return test::ErrorText([&] { connection.Query(sql); });
  }

  test::TestDb db_;
};

TEST_F(QueryLimitsTest, RunawayTextsFailWithTheLimitThatStoppedThem) {
  std::shared_ptr<Connection> sqlite = db_.Connect();
  const std::string odbc_text =
      "Driver=SQLite3;Database=" + db_.path() + ";LoadExt=" + ENTPRCREQ_SQLITE_EXTENSION;
  std::shared_ptr<Connection> odbc = OpenOdbcConnection(*OdbcTargetOf(ConnectionString::Parse(odbc_text)));
  EXPECT_EQ(Failure(*sqlite, Endless()).rfind("The query's result grew beyond its size limit of 4 MB", 0),
            0u);
  for (Connection* connection : {sqlite.get(), odbc.get()}) {
    const auto start = std::chrono::steady_clock::now();
    // The SQLite ODBC driver gathers every row inside one call: there the time limit stops it.
    const std::string growing = Failure(*connection, Endless());
    EXPECT_TRUE(growing.find("size limit of 4 MB") != std::string::npos ||
                growing.find("time limit of 1 seconds") != std::string::npos)
        << growing;
    EXPECT_NE(
        Failure(*connection, Endless("WHERE x < 0")).find("ran longer than its time limit of 1 seconds"),
        std::string::npos);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    // Texts within the limits run as before.
    EXPECT_EQ(connection->Query(Endless("LIMIT 1000")).rows.size(), 1000u);
  }
  // The time limit holds for statements that return no rows, too.
  EXPECT_THROW(sqlite->Execute("create table t as " + Endless("WHERE x < 0")), Error);
}

TEST_F(QueryLimitsTest, AnInterruptionStopsTheQueriesRunningNowOnly) {
  SetQueryLimits(QueryLimits{});
  std::shared_ptr<Connection> connection = db_.Connect();
  auto running = std::async(std::launch::async, [&] { return Failure(*connection, Endless("WHERE x < 0")); });
  // Interrupt until the query has seen it (it may not have started at the first call).
  while (running.wait_for(std::chrono::milliseconds(200)) != std::future_status::ready)
    InterruptRunningQueries();
  EXPECT_EQ(running.get(), "The query was interrupted: the server is stopping.");
  EXPECT_EQ(connection->Query(Endless("LIMIT 3")).rows.size(), 3u);
}

// What a driver asks between steps. The watchdog also stops a statement whose time is up, but only
// once; the watch must tell a statement started after that, or after the program began stopping.
TEST(QueryWatch, MustStopOnceItsTimeIsUpOrItWasInterrupted) {
  SetQueryLimits(QueryLimits{0, 1 << 20});
  EXPECT_TRUE(QueryWatch().MustStop());
  SetQueryLimits(QueryLimits{});
  QueryWatch watch;
  EXPECT_FALSE(watch.MustStop());
  InterruptRunningQueries();
  EXPECT_TRUE(watch.MustStop());
  EXPECT_FALSE(QueryWatch().MustStop());
  // Stopping is for good, so it is tried in a process of its own.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        StopAllQueries();
        std::_Exit(QueryWatch().MustStop() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// SQLite checks its time limit as it steps, so a process that runs its queries there starts no
// watchdog thread.
TEST(QueryWatch, QueriesOnTheEmbeddedDatabaseStartNoThread) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        // (A sanitizer's runtime may run threads of its own.)
        const auto before = threads();
        test::TestDb db;
        db.Connect()->Query("select 1 as one");
        std::_Exit(threads() == before ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(QueryLimitsTest, AFreeSqlRequestPostsTheLimitAsItsStatus) {
  SetShopConnectionString(db_.connection_string());
  clsRS engine;
  std::string status;
  EXPECT_EQ(engine.getCustomRS(Endless(), status), nullptr);
  EXPECT_EQ(status.rfind("The query's result grew beyond", 0), 0u) << status;
}

// Mode=Read refuses writes and keeps the database; the query command opens it so unless told to
// write.
TEST(ReadOnlyMode, ModeReadAndTheQueryCommandRefuseWritesUnlessToldTo) {
  test::TestDb db;
  db.Exec("create table t (x int)");
  std::shared_ptr<Connection> reader = OpenConnection(db.connection_string() + ";Mode=Read");
  EXPECT_THROW(reader->Execute("insert into t values (1)"), Error);
  EXPECT_THROW(reader->Query("delete from t; select 1 as one"), Error);
  EXPECT_EQ(test::FirstValue(*reader, "select count(*) as n from t"), "0");
  OpenConnection(db.connection_string() + ";Mode=ReadWrite")->Execute("insert into t values (1)");
  EXPECT_EQ(test::FirstValue(*reader, "select count(*) as n from t"), "1");

  auto run = [&](const std::string& extra) {
    const std::string command =
        std::string(ENTPRCREQ_BINARY) + " query --connection '" + db.connection_string() +
        "' --sql 'insert into t values (5); select 1 as one'" + extra + " >/dev/null 2>&1";
    return WEXITSTATUS(std::system(command.c_str()));
  };
  EXPECT_EQ(run(""), 1);
  EXPECT_EQ(test::FirstValue(*reader, "select count(*) as n from t"), "1");
  EXPECT_EQ(run(" --write"), 0);
  EXPECT_EQ(test::FirstValue(*reader, "select count(*) as n from t"), "2");
}

TEST(LongParameters, APaddedParameterFailsAtOnceNamingIt) {
  test::TestDb db;
  SetShopConnectionString(db.connection_string());
  clsPrebuiltReport job;
  job.reportName = "TB01";
  job.addParam("p0", "12/31/2024" + std::string(20 << 20, ' '));
  job.generateDOC();
  EXPECT_EQ(job.StatusStr,
            "The report parameter p0 is 20971530 bytes long; a parameter may have at most 4000.");
}

TEST(SqlFormatFunction, APatternItRefusesFailsTheStatementInsteadOfTheProcess) {
  test::TestDb db;
  std::shared_ptr<Connection> connection = db.Connect();
  EXPECT_THROW(
      connection->Query("select format('2024-02-29 13:05:09', '12.5O#,##0.00;(#,##0.00);zero') as f"), Error);
  EXPECT_EQ(test::FirstValue(*connection, "select format(1234.5, '#,##0.00') as f"), "1,234.50");
}

}  // namespace
}  // namespace ent
