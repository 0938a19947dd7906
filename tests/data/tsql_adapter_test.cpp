#include "data/tsql_adapter.h"

#include <gtest/gtest.h>

#include "data/recordset.h"
#include "support/test_db.h"

namespace ent {
namespace {

using tsql::ToSqlite;

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
  // Date literals become the stored form; patterns and other texts stay.
  EXPECT_EQ(ToSqlite("where d between '1/5/2024' and '01/31/2024 1:05 PM' and e <= '2024-02-29' "
                     "and format(d, 'MM/dd/yyyy') <> '13/45/2024' and x = '2024' and y like '1/1/24'"),
            "where d between '2024-01-05 00:00:00' and '2024-01-31 13:05:00' and e <= '2024-02-29 00:00:00' "
            "and format(d, 'MM/dd/yyyy') <> '13/45/2024' and x = '2024' and y like '1/1/24'");
  // CREATE TABLE: text without case, amounts with REAL affinity, no IDENTITY.
  EXPECT_EQ(
      ToSqlite("create table t (id int IDENTITY(1,1) PRIMARY KEY, n varchar(20), c char(3) collate binary, "
               "m money, p decimal(18,4), note text)"),
      "create table t (id int  PRIMARY KEY, n varchar(20) COLLATE NOCASE, c char(3) collate binary, "
      "m money real, p decimal real(18,4), note text COLLATE NOCASE)");
}

TEST(TsqlAdapter, LeavesStringsCommentsAndNamesAlone) {
  for (const char* same : {
           "select 'O''Brien + x' as q, [%$##@_Alias].invoiceid as i from t -- top 5 '1/1/2024' isnull(",
           "/* select top 1 a + 'x' */ select count(*) as n from [wo parts]",
           "select \"isnull\"(a) as v from t where a = '###,##0.00'",
       })
    EXPECT_EQ(ToSqlite(same), same);
}

TEST(TsqlAdapter, DeclaredTypes) {
  auto money = tsql::ParseDeclaredType("money real");
  EXPECT_EQ(money.name, "money");
  auto text = tsql::ParseDeclaredType("varchar(50) COLLATE NOCASE");
  EXPECT_EQ(text.name, "varchar");
  EXPECT_EQ(text.size_or_precision, 50);
  auto dec = tsql::ParseDeclaredType("DECIMAL real(18,4)");
  EXPECT_EQ(dec.name, "decimal");
  EXPECT_EQ(dec.size_or_precision, 18);
  EXPECT_EQ(dec.scale, 4);
}

TEST(TsqlAdapter, AdaptedTextsBehaveAsOnSqlServer) {
  test::TestDb db;
  db.Exec(
      "create table customer (cusid int, Company varchar(30), ahtel varchar(3), htel varchar(8), "
      "sales money, visits money, latestdate datetime);"
      "insert into customer values (1, 'Zeta', '555', '555-0100', 100, 3, '1/15/2024');"
      "insert into customer values (2, 'alpha', '555', '555-0101', 50, 2, '2024-01-16');"
      "insert into customer values (3, 'Beta', null, null, 10, 4, '2/1/2024')");
  auto rs = Recordset::OpenQuery(
      db.Connect(),
      "select top 2 company, (ahtel + '-' + htel) as Phone, sales / visits as PerVisit from customer "
      "where latestdate >= '01/15/2024' and company <> 'ZETA' or cusid = 1 order by company",
      false);
  ASSERT_EQ(rs->RecordCount(), 2u);
  EXPECT_EQ(rs->fields()[0].name, "company");  // the text's spelling, not the table's
  EXPECT_EQ(rs->Get("company").text(), "alpha");
  EXPECT_EQ(rs->Get("Phone").text(), "555-555-0101");
  EXPECT_EQ(rs->Get("PerVisit").ToText(), "25");
  rs->MoveNext();
  EXPECT_EQ(rs->Get("company").text(), "Beta");
  EXPECT_TRUE(rs->Get("Phone").IsNull());          // null + text is null, as on SQL Server
  EXPECT_EQ(rs->Get("PerVisit").ToText(), "2.5");  // not a whole-number division
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
  auto ids = [&](const std::string& where) {
    auto rs =
        Recordset::OpenQuery(db.Connect(), "select id from posting where " + where + " order by id", false);
    std::string out;
    for (; !rs->IsEof(); rs->MoveNext()) out += rs->Get("id").ToText();
    return out;
  };
  EXPECT_EQ(ids("transdate >= '9/30/2024' and transdate <= '10/1/2024'"), "1");
  EXPECT_EQ(ids("transdate >= '9/30/2024' and transdate <= '10/2/2024'"), "123");
  EXPECT_EQ(ids("(transdate <= '10/01/2024 11:59 PM')and (transdate > '12/30/1899')"), "124");
  EXPECT_EQ(ids("transdate < '12/30/1899'"), "");
}

}  // namespace
}  // namespace ent
