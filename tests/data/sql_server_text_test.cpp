#include "data/sql_server_text.h"

#include <gtest/gtest.h>

#include "data/recordset.h"
#include "support/test_db.h"

namespace ent {
namespace {

TEST(SqlServerText, LikePatterns) {
  struct Case {
    const char* value;
    const char* pattern;
    bool matches;
  };
  const std::vector<Case> cases = {
      {"BRAKE LABOR", "brake%", true},
      {"BRAKE LABOR", "%LAB%", true},
      {"BRAKE LABOR", "%LAB", false},
      {"BRAKE LABOR  ", "%LABOR", true},
      {"BRAKE LABOR", "BRAKE LABOR ", false},
      {"abc", "a_c", true},
      {"abbc", "a_c", false},
      {"", "%", true},
      {"", "", true},
      {"x", "", false},
      {"abc", "%%c", true},
      {"Alpha", "[A-C]%", true},
      {"beta", "[A-C]%", true},
      {"Delta", "[A-C]%", false},
      {"Alpha", "[^A]%", false},
      {"Beta", "[^A]%", true},
      {"b", "[abc]", true},
      {"d", "[abc]", false},
      {"5%", "5[%]", true},
      {"55", "5[%]", false},
      {"a_b", "a[_]b", true},
      {"axb", "a[_]b", false},
      {"[x", "[x", true},
      {"-", "[a-]", true},
      {"]", "[]]", true},
      {"ab", "[^a-c]b", false},
      {"10% off", "10!% %", true},
      {"10x off", "10!% %", false},
      {"a!b", "a!!b", true},
      {"émile", "_mile", true},
      {"mississippi", "%iss%pi", true},
      {"mississippi", "m%s%s%q", false},
  };
  for (const Case& c : cases) {
    const bool escaped = std::string(c.pattern).find('!') != std::string::npos;
    EXPECT_EQ(SqlServerLike(c.value, c.pattern, escaped ? std::optional<char32_t>('!') : std::nullopt),
              c.matches)
        << "'" << c.value << "' LIKE '" << c.pattern << "'";
  }
}

TEST(SqlServerText, ComparisonIgnoresCaseAndTrailingBlanks) {
  EXPECT_EQ(CompareSqlServerText("BRAKE LABOR ", "brake labor"), 0);
  EXPECT_EQ(CompareSqlServerText("a", "a   "), 0);
  EXPECT_LT(CompareSqlServerText(" a", "a"), 0);  // leading blanks count
  EXPECT_LT(CompareSqlServerText("abc", "ABD"), 0);
  EXPECT_GT(CompareSqlServerText("abc d", "ABC"), 0);
  EXPECT_LT(CompareSqlServerText("", "a"), 0);
}

TEST(SqlServerText, SqliteConnectionsCompareAndMatchAsTheServer) {
  test::TestDb db;
  db.Exec(
      "create table cls (id int, salesclass varchar(30));"
      "insert into cls values (1, 'BRAKE LABOR ');"
      "insert into cls values (2, 'Alignment');"
      "insert into cls values (3, 'CAR WASH');"
      "insert into cls values (4, 'brake labor');"
      "insert into cls values (5, null);"
      "insert into cls values (6, '100% SYNTHETIC')");
  auto ids = [&](const std::string& where) { return test::IdsWhere(db, "cls", where); };
  EXPECT_EQ(ids("salesclass = 'BRAKE LABOR'"), "14");
  EXPECT_EQ(ids("'Brake Labor   ' = salesclass"), "14");
  EXPECT_EQ(ids("salesclass <> 'brake labor'"), "236");
  EXPECT_EQ(ids("salesclass like '[A-C]%'"), "1234");
  EXPECT_EQ(ids("salesclass like '[^AB]%'"), "36");
  EXPECT_EQ(ids("salesclass not like '%a%'"), "6");
  EXPECT_EQ(ids("salesclass like '100!%%' escape '!'"), "6");
  EXPECT_EQ(ids("salesclass like '%'"), "12346");  // null matches nothing
  auto groups = Recordset::OpenQuery(
      db.Connect(), "select count(*) as n from (select distinct salesclass from cls where id < 5) as d",
      false);
  EXPECT_EQ(groups->Get("n").ToText(), "3");  // 'BRAKE LABOR ' and 'brake labor' are one class
}

}  // namespace
}  // namespace ent
