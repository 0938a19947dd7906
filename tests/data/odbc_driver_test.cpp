// The ODBC driver through unixODBC, with the SQLite ODBC driver standing in for SQL Server: the same
// requests give the same documents as through the native SQLite driver.
#include "data/odbc_driver.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "common/error.h"
#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/result_document.h"
#include "job/sendable.h"
#include "support/error_text.h"
#include "support/program.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"
#include "support/test_db.h"

namespace ent {
namespace {

std::string OdbcFor(const std::string& path) {
  return "Driver=SQLite3;Database=" + path + ";LoadExt=" + ENTPRCREQ_SQLITE_EXTENSION;
}

OdbcTarget TargetOf(const std::string& text) {
  std::optional<OdbcTarget> target = OdbcTargetOf(ConnectionString::Parse(text));
  EXPECT_TRUE(target.has_value()) << text;
  return target.value_or(OdbcTarget{});
}

// The status and the document text a job posts on the given shop connection.
std::pair<std::string, std::string> Posted(const std::string& connection, const std::string& code,
                                           const std::vector<std::string>& params,
                                           const std::string& sql = "") {
  SetShopConnectionString(connection);
  clsPrebuiltReport job;
  job.CustomReport = !sql.empty();
  job.sqlString = sql;
  job.reportName = code;
  for (size_t i = 0; i < params.size(); ++i) job.addParam("p" + std::to_string(i), params[i]);
  auto result = job.generateDOC();
  return {job.StatusStr, result && result->XMLDocument() ? result->XMLDocument()->Text() : ""};
}

TEST(OdbcConnectionStringTest, SqlServerProvidersMapToFreeTds) {
  // ODBC strings pass as they are, without the provider.
  const std::pair<const char*, const char*> cases[] = {
      {"Provider=SQLOLEDB.1;Data Source=SHOP01\\SQLEXPRESS;Initial Catalog=Ent;User ID=sa;Password='p;w}d';"
       "Persist Security Info=False",
       "Driver=FreeTDS;Server=SHOP01\\SQLEXPRESS;Database=Ent;UID=sa;PWD={p;w}}d};TDS_Version=7.4;"
       "ClientCharset=UTF-8"},
      {"provider=msoledbsql;server=10.0.0.5,1433;database=Ent;uid=u;pwd=p;Connect Timeout=3",
       "Driver=FreeTDS;Server=10.0.0.5;Port=1433;Database=Ent;UID=u;PWD=p;TDS_Version=7.4;ClientCharset=UTF-"
       "8"},
      {"Data Source=(local);User ID=u",
       "Driver=FreeTDS;Server=127.0.0.1;UID=u;TDS_Version=7.4;ClientCharset=UTF-8"},
      {"Provider=MSDASQL;DSN=shop;UID=u", "DSN=shop;UID=u"},
      {"Driver={SQLite3};Database=/srv/shop.db", "Driver={SQLite3};Database=/srv/shop.db"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(TargetOf(text).connection_string, expected);
  EXPECT_EQ(TargetOf("provider=msoledbsql;server=s;uid=u;Connect Timeout=3").login_timeout_seconds, 3);
  EXPECT_EQ(TargetOf("Provider=SQLNCLI11;Data Source=.").login_timeout_seconds, 15);
  EXPECT_FALSE(OdbcTargetOf(ConnectionString::Parse("Provider=SQLite;Data Source=shop.db")));

  for (const char* bad :
       {"Provider=sqloledb;Data Source=s;Integrated Security=SSPI", "Provider=sqloledb;User ID=u",
        "Provider=sqloledb;Data Source=s;Connect Timeout=soon"})
    EXPECT_NE(test::ErrorText([&] { OdbcTargetOf(ConnectionString::Parse(bad)); }), "") << bad;
}

TEST(OdbcDriverTest, UnreadableDatesFailAsOnTheShopServer) {
  EXPECT_EQ(Posted(OdbcFor(test::SmallSampleShop()), "", {},
                   "select count(*) as n from wo where latestdate <= 'junk'")
                .first,
            "Conversion failed when converting date and/or time from character string.");
}

TEST(OdbcDriverTest, EditableRowsetsInsertAndTypesRoundTrip) {
  test::TestDb db;
  db.Exec(
      "create table t (id int primary key, amt money, d datetime, b bit, f float, v varchar(20), n text)");
  auto connection = OpenConnection(OdbcFor(db.path()));
  connection->InsertRow("t", {"id", "amt", "d", "b", "f", "v", "n"},
                        {Variant::Long(1), Variant(Currency::FromDecimalText("12.3456")),
                         Variant(DateTime::FromParts(2024, 3, 5, 14, 30, 0)), Variant(true), Variant(0.1),
                         Variant("O'Brien"), Variant::Null()});
  QueryResult result = connection->Query("select * from t");
  ASSERT_EQ(result.rows.size(), 1u);
  const auto& row = result.rows[0];
  EXPECT_EQ(row[0].kind(), Variant::Kind::kLong);
  EXPECT_EQ(row[1].currency().raw(), 123456);
  EXPECT_EQ(row[2].date().IsoText(), "2024-03-05T14:30:00");
  EXPECT_TRUE(row[3].boolean());
  EXPECT_EQ(row[4].floating(), 0.1);
  EXPECT_EQ(row[5].text(), "O'Brien");
  EXPECT_TRUE(row[6].IsNull());
  EXPECT_TRUE(result.fields[0].key_column);
  EXPECT_EQ(result.fields[1].type, DataType::kCurrency);
  EXPECT_EQ(result.fields[6].type, DataType::kLongVarChar);

  EXPECT_EQ(test::ErrorNumber([&] { connection->Query("select * from nosuch"); }), err::kTableNotFound);
}

TEST(OdbcDriverTest, AnUnreachableSqlServerFailsWithAClearStatus) {
  auto posted = Posted(
      "Provider=sqloledb;Data Source=127.0.0.1,1;Initial Catalog=Ent;User ID=u;Password=p;"
      "Connect Timeout=2",
      "INVSUM01", {"1/1/2024", "12/31/2024"});
  EXPECT_EQ(posted.first.rfind("Cannot connect to the shop database: ", 0), 0u) << posted.first;
  EXPECT_EQ(posted.second, "");
}

// The program links SQLite in. The SQLite ODBC driver (and the format() extension it loads) bring the
// shared SQLite along, but must call the program's copy: two copies of SQLite over one file do not
// see each other's locks.
TEST(OdbcDriverTest, TheProgramAndTheDriverShareOneSqlite) {
  test::TestDb db;
  db.Exec("create table t (x int, d datetime); insert into t values (1, '2025-01-02'), (2, '2025-03-04')");
  test::TempDir dir;
  const test::ProgramRun run =
      test::RunProgram({"query", "--connection", OdbcFor(db.path()), "--format", "csv", "--sql",
                        "select x, format(x * 1.5, '0.00') as f from t where d > '2/1/2025'"},
                       dir.path().string(), {"LD_DEBUG=bindings", "LD_DEBUG_OUTPUT=" + dir.file("loader")});
  EXPECT_EQ(run.out, "x,f\r\n2,3.00\r\n") << run.err;

  // Where the loader bound the driver's and the extension's calls to SQLite.
  std::set<std::string> targets;
  const std::regex binding(R"(binding file (\S+) \[\d+\] to (\S+) \[\d+\]: normal symbol `sqlite3_)");
  for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
    if (entry.path().filename().string().rfind("loader.", 0) != 0) continue;
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      std::smatch m;
      if (!std::regex_search(line, m, binding)) continue;
      const std::string from = m[1].str(), to = m[2].str();
      // (The extension's own entry point is found in the extension.)
      const bool extension = from.find("entprcreq_sqlite") != std::string::npos;
      if ((extension || from.find("odbc") != std::string::npos) &&
          to.find("entprcreq_sqlite") == std::string::npos)
        targets.insert(to);
    }
  }
  ASSERT_EQ(targets.size(), 1u) << testing::PrintToString(targets);
  // The sanitizer builds keep SQLite shared.
  const bool linked_in =
      test::ShellOutput("ldd '" ENTPRCREQ_BINARY "'").find("libsqlite3") == std::string::npos;
  if (linked_in)
    EXPECT_EQ(std::filesystem::path(*targets.begin()).filename(), "entprcreq");
  else
    EXPECT_NE(targets.begin()->find("libsqlite3"), std::string::npos);
}

}  // namespace
}  // namespace ent
