#include "data/tsql_adapter.h"

#include <gtest/gtest.h>

#include "common/error.h"
#include "data/recordset.h"
#include "support/error_text.h"
#include "support/rowset_text.h"
#include "support/test_db.h"

namespace ent {
namespace {

using tsql::ToSqlite;

constexpr char kUnreadableDate[] =
    "Conversion failed when converting date and/or time from character string.";

TEST(TsqlAdapter, RewritesEachRule) {
  // TOP, with DISTINCT, in a subquery, with parentheses; plain columns keep their spelling.
  EXPECT_EQ(
      ToSqlite("select top 100 company, fname as FirstName from CUSTOMER order by Company, cusid"),
      "select company AS [company], fname as FirstName from CUSTOMER order by Company, cusid LIMIT 100");
  EXPECT_EQ(ToSqlite("SELECT DISTINCT TOP (2) [Make] FROM vehicle;"),
            "SELECT DISTINCT [Make] AS [Make] FROM vehicle LIMIT 2;");
  EXPECT_EQ(ToSqlite("select x from (select top 5 a from t order by a) as s"),
            "select x AS [x] from (select a AS [a] from t order by a LIMIT 5) as s");
  // isnull and concatenation with a string operand; arithmetic stays.
  EXPECT_EQ(
      ToSqlite("select isnull( sum(amt), 0) as s, (ahtel + '-' + htel) as HomePhone, a + b as c from t"),
      "select ifnull( sum(amt), 0) as s, (ahtel || '-' || htel) as HomePhone, a + b as c from t");
  // CREATE TABLE: text without case, amounts with REAL affinity, no IDENTITY.
  EXPECT_EQ(
      ToSqlite("create table t (id int IDENTITY(1,1) PRIMARY KEY, n varchar(20), c char(3) collate binary, "
               "m money, p decimal(18,4), note text)"),
      "create table t (id int  PRIMARY KEY, n varchar(20) COLLATE NOCASE, c char(3) collate binary, "
      "m money real, p decimal real(18,4), note text COLLATE NOCASE)");
}

TEST(TsqlAdapter, LiteralsMeetingDateColumnsAreReadAsTheServerReadsThem) {
  tsql::Schema schema;
  tsql::AddDeclaredColumn(schema, "WO", "woid", "int");
  tsql::AddDeclaredColumn(schema, "wo", "LatestDate", "datetime");
  tsql::AddDeclaredColumn(schema, "wo", "summary", "varchar(255) COLLATE NOCASE");
  tsql::AddDeclaredColumn(schema, "posting", "transdate", "DATETIME");
  tsql::AddDeclaredColumn(schema, "t1", "d", "datetime");
  tsql::AddDeclaredColumn(schema, "t2", "d", "varchar(10)");
  EXPECT_EQ(
      ToSqlite("where latestdate between '6/30/24' and '20240701' and ((wo.LatestDate)>='Jun 30 2024') "
               "and '2024-06-30T10:00:00' < max(transdate) and [latestdate] not in ('1/2/2024', '1/3/24') "
               "and transdate not between '' and '01/31/2024 1:05 PM'",
               schema),
      "where latestdate between '2024-06-30 00:00:00' and '2024-07-01 00:00:00' and "
      "((wo.LatestDate)>='2024-06-30 00:00:00') and '2024-06-30 10:00:00' < max(transdate) and [latestdate] "
      "not in ('2024-01-02 00:00:00', '2024-01-03 00:00:00') and transdate not between '1900-01-01 "
      "00:00:00' and '2024-01-31 13:05:00'");
  // Texts that meet no date column stay as they are: other columns, a name that is a date in one table
  // and text in another, a function of a date, a pattern; strings, comments and quoted names are never
  // rewritten.
  for (const char* same :
       {"where summary = '6/30/2024' and d = '1/1/2024' and woid = '20240630'",
        "select 'O''Brien + x' as q, [%$##@_Alias].invoiceid as i from t -- top 5 '1/1/2024' isnull(",
        "/* select top 1 a + 'x' */ select count(*) as n from [wo parts]",
        "select \"isnull\"(a) as v from t where a = '###,##0.00'",
        "where format(latestdate, 'MM/dd/yyyy') <> '13/45/2024' and year(latestdate) = '2024'",
        "select '6/30/24' as x from wo where summary like '1/1/24'"})
    EXPECT_EQ(ToSqlite(same, schema), same);
  // Writing: UPDATE ... SET, and INSERT into the table's date columns, listed or all.
  EXPECT_EQ(ToSqlite("update wo set latestdate = 'Jun 30 2024', summary = '6/30/24' where woid = 1", schema),
            "update wo set latestdate = '2024-06-30 00:00:00', summary = '6/30/24' where woid = 1");
  EXPECT_EQ(ToSqlite("insert into wo (summary, latestdate) values ('6/30/24', '6/30/24'), ('x', '20240101')",
                     schema),
            "insert into wo (summary, latestdate) values ('6/30/24', '2024-06-30 00:00:00'), ('x', "
            "'2024-01-01 00:00:00')");
  EXPECT_EQ(ToSqlite("insert into wo values (1, '1/2/24', '1/2/24')", schema),
            "insert into wo values (1, '2024-01-02 00:00:00', '1/2/24')");
  EXPECT_EQ(
      ToSqlite("create table p (id int, note text, d datetime); insert into p values (1, '1/2/24', "
               "'1/2/24')"),
      "create table p (id int, note text COLLATE NOCASE, d datetime); insert into p values (1, '1/2/24', "
      "'2024-01-02 00:00:00')");
  // What the server cannot read fails the statement with the server's message.
  for (const char* bad :
       {"select * from wo where latestdate <= 'junk'", "update wo set latestdate = '2/30/2024'",
        "insert into wo values (1, 'not a date', '')"})
    EXPECT_EQ(test::ErrorText([&] { ToSqlite(bad, schema); }), kUnreadableDate) << bad;
}

TEST(TsqlAdapter, TheSchemaIsReadOnlyWhenALiteralMeetsAColumn) {
  tsql::Schema schema;
  tsql::AddDeclaredColumn(schema, "wo", "latestdate", "datetime");
  int reads = 0;
  const tsql::SchemaSource source = [&]() -> const tsql::Schema& {
    ++reads;
    return schema;
  };
  EXPECT_EQ(ToSqlite("select format(amt, '#,##0.00'), a + '-' + b from wo where summary like '%x%'", source),
            "select format(amt, '#,##0.00'), a || '-' || b from wo where summary like '%x%'");
  EXPECT_EQ(reads, 0);
  EXPECT_EQ(
      ToSqlite("select 1 from wo where latestdate > '6/30/24' or latestdate < '1/1/24'", source),
      "select 1 from wo where latestdate > '2024-06-30 00:00:00' or latestdate < '2024-01-01 00:00:00'");
  EXPECT_EQ(reads, 1);
  ToSqlite("insert into wo values ('1/1/24')", source);
  EXPECT_EQ(reads, 2);
  // A text that creates a table still sees the database's own.
  EXPECT_EQ(ToSqlite("create table p (d datetime); select 1 from wo where latestdate > '6/30/24'", source),
            "create table p (d datetime); select 1 from wo where latestdate > '2024-06-30 00:00:00'");
}

// Sizes beyond the largest column are read as the largest.
TEST(TsqlAdapter, DeclaredTypes) {
  const std::pair<const char*, const char*> cases[] = {
      {"money real", "money 0 0"},
      {"varchar(50) COLLATE NOCASE", "varchar 50 0"},
      {"DECIMAL real(18,4)", "decimal 18 4"},
      {"varchar(99999999999)", "varchar 2147483647 0"},
      {"decimal(99999999999999999999, 99999999999)", "decimal 2147483647 2147483647"},
  };
  for (const auto& [text, expected] : cases) {
    const tsql::DeclaredType type = tsql::ParseDeclaredType(text);
    EXPECT_EQ(type.name + " " + std::to_string(type.size_or_precision) + " " + std::to_string(type.scale),
              expected);
  }
}

TEST(TsqlAdapter, DateTextsCompareAsDates) {
  // The short dates the program writes and the texts requests carry compare by date, not as text:
  // '9/30/2024' sorts after '10/1/2024' as text. Day zero (12/30/1899) and times keep their order.
  test::TestDb db;
  db.Exec(
      "create table posting (id int, transdate datetime);"
      "insert into posting values (1, '9/30/2024');"
      "insert into posting values (2, '10/1/2024 2:30 PM');"
      "insert into posting values (3, '2024-10-02');"
      "insert into posting values (4, '1/1/1900')");
  auto ids = [&](const std::string& where) { return test::IdsWhere(db, "posting", where); };
  EXPECT_EQ(ids("transdate >= '9/30/2024' and transdate <= '10/1/2024'"), "1");
  EXPECT_EQ(ids("transdate >= '9/30/2024' and transdate <= '10/2/2024'"), "123");
  EXPECT_EQ(ids("(transdate <= '10/01/2024 11:59 PM')and (transdate > '12/30/1899')"), "124");
  EXPECT_EQ(ids("transdate < '12/30/1899'"), "");
  // A table created on a connection that has already read the schema is known to it at once.
  auto connection = db.Connect();
  Recordset::OpenQuery(connection, "select id from posting", false);
  connection->Execute(
      "create table later (id int, due datetime); insert into later values (1, '2024-10-01')");
  EXPECT_EQ(
      Recordset::OpenQuery(connection, "select id from later where due = 'Oct 1 2024'", false)->RecordCount(),
      1u);
  EXPECT_EQ(test::ErrorText([&] {
              Recordset::OpenQuery(db.Connect(), "select id from posting where transdate <= 'junk'", false);
            }),
            kUnreadableDate);
}

}  // namespace
}  // namespace ent
