#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "common/error.h"
#include "data/column_values.h"
#include "data/recordset.h"
#include "support/error_text.h"
#include "support/rowset_text.h"
#include "support/temp_dir.h"
#include "support/test_db.h"

namespace ent {
namespace {

class SqliteDriverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Exec(
        "create table wo (woid int primary key, Summary varchar(20), screentotal money, latestdate datetime, "
        "chkvoid bit, ratio float, notes text);"
        "insert into wo values (1, 'Brakes', 100.5, '1/15/2024', 0, 0.25, 'long note');"
        "insert into wo values (2, 'Oil', 35, '2024-02-01', 1, null, null);"
        "insert into wo values (3, null, 17.5, '03/01/2024', 0, 1.5, 'x');");
  }
  int32_t ErrorNumberOf(const std::string& sql) {
    return test::ErrorNumber([&] { Recordset::OpenQuery(db_.Connect(), sql, false); });
  }
  test::TestDb db_;
};

// A driver may hand an int column's value over as a float (an expression's result); whole ones
// become ints, others keep their float.
TEST(ColumnTyping, WholeFloatsInIntColumnsBecomeInts) {
  const std::pair<Variant, Variant::Kind> cases[] = {{Variant(42.0), Variant::Kind::kLong},
                                                     {Variant(42.5), Variant::Kind::kDouble},
                                                     {Variant(3e9), Variant::Kind::kDouble}};
  for (auto [value, kind] : cases) {
    const std::string text = value.ToText();
    TypeValue(FieldOfSqlServerType("int"), value);
    EXPECT_EQ(value.kind(), kind) << text;
    EXPECT_EQ(value.ToText(), text);
  }
}

TEST_F(SqliteDriverTest, FailuresCarryTheReferenceNumbersAndSqliteMessages) {
  EXPECT_EQ(ErrorNumberOf("select * from nosuchtable"), static_cast<int32_t>(0x80040E37));
  EXPECT_EQ(ErrorNumberOf("selec * from wo"), static_cast<int32_t>(0x80040E14));
  EXPECT_EQ(test::ErrorNumber([&] { db_.Exec("DROP TABLE entAPAR"); }), -2147217865);
  EXPECT_EQ(test::ErrorText([&] { db_.Exec("DROP TABLE entAPAR"); }), "no such table: entAPAR");
  EXPECT_EQ(test::ErrorText([] {
              OpenConnection("Provider=SQLite;Data Source=/nonexistent/dir/shop.db");
            }).rfind("Cannot open the shop database", 0),
            0u);
  EXPECT_THROW(OpenConnection("Provider=Jet;Data Source=x.mdb"), Error);
}

// Text set by position is moved into the rowset rather than copied; it is checked all the same.
TEST(FreeStandingRowset, TextMovedInIsCheckedAndWidensItsColumn) {
  Recordset rs;
  rs.AppendField(AppendedField("Fixed", DataType::kChar, 5));
  rs.AppendField(ResultTextField("Wide"));
  rs.Open();
  EXPECT_THROW(rs.Set(0, Variant(std::string("abc"))), Error);  // no current row
  rs.AddNew();
  EXPECT_THROW(rs.Set(0, Variant(std::string("sixsix"))), Error);
  EXPECT_THROW(rs.Set(0, Variant(std::string("\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"))), Error);
  rs.Set(0, Variant(std::string("\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4")));  // five characters, ten bytes
  EXPECT_EQ(rs.Get(0).text(), "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4");
  const std::string long_text(80, 'w');
  rs.Set(1, Variant(long_text));
  EXPECT_EQ(rs.fields()[1].defined_size, 80);
  EXPECT_EQ(rs.Get(1).text(), long_text);
  rs.Set(1, Variant(std::string("short")));
  EXPECT_EQ(rs.fields()[1].defined_size, 80);  // a column never narrows
}

TEST_F(SqliteDriverTest, TheSqlLogIsAScriptOfWhatRanWithItsValues) {
  test::TempDir dir;
  const std::string log = dir.file("sql.log");
  setenv("ENTPRCREQ_SQL_LOG", log.c_str(), 1);
  {
    auto connection = db_.Connect();
    connection->InsertRow("wo", {"woid", "Summary"}, {Variant(9), Variant(std::string("it's"))});
    connection->Query("select top 1 woid from wo where latestdate >= '1/1/2024'");
  }
  unsetenv("ENTPRCREQ_SQL_LOG");
  std::ifstream in(log);
  std::stringstream text;
  text << in.rdbuf();
  // Adapted for SQLite, bound values written in, one statement per line: sqlite3 replays it as is.
  // The driver's own reads of the schema (for the adapter) are left out here.
  std::string ran;
  for (std::string line; std::getline(text, line);)
    if ((line.rfind("INSERT", 0) == 0 || line.rfind("select", 0) == 0) &&
        line.find("sqlite_master") == std::string::npos)
      ran += line + "\n";
  EXPECT_EQ(ran,
            "INSERT INTO [wo] ([woid], [Summary]) VALUES (9, 'it''s');\n"
            "select woid AS [woid] from wo where latestdate >= '2024-01-01 00:00:00' LIMIT 1;\n");
  auto quiet = db_.Connect();
  quiet->Query("select 1");
  EXPECT_EQ(std::ifstream(log).rdbuf()->pubseekoff(0, std::ios::end), text.str().size())
      << "logged without the variable";
}

}  // namespace
}  // namespace ent
