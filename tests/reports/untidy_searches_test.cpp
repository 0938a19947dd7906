// Every filter of the two searches on the untidy shop: each one narrows the rows to those our own
// LIKE over the same column finds (names with quotes and full-width texts included).
#include <gtest/gtest.h>

#include "reports/untidy_figures.h"

namespace ent::test::untidy {
namespace {

TEST(UntidySearches, EachFilterFindsWhatItsColumnMatches) {
  const std::string part = Value(
      "select substr(partnum, 1, 3) || '%' from inventory where partnum is not null "
      "group by 1 order by count(*) limit 1");
  struct Case {
    std::string code;
    std::vector<std::string> params;
    std::string where;  // over customer or inventory
  };
  const std::vector<Case> cases = {
      {"ENTCUSTSRCH",
       {"", "O'Reilly%", "", "", "100000", "", ""},
       "customer where company like 'O''Reilly%'"},
      {"ENTCUSTSRCH", {"", "", "Max%", "", "100000", "", ""}, "customer where fname like 'Max%'"},
      {"ENTCUSTSRCH", {"", "", "", "Feather%", "100000", "", ""}, "customer where lname like 'Feather%'"},
      {"ENTINVSRCH",
       {"", part, "", "", "100000", "", "false"},
       "inventory where partnum like '" + part + "'"},
      {"ENTINVSRCH",
       {"", "", "HEAVY DUTY%", "", "100000", "", "false"},
       "inventory where description like 'HEAVY DUTY%'"},
      {"ENTINVSRCH",
       {"", "", "", "", "100000", "AFTERMARKET%", "false"},
       "inventory where manufacturer like 'AFTERMARKET%'"},
  };
  for (const Case& c : cases) {
    const size_t expected = Count("select count(*) from " + c.where);
    EXPECT_GT(expected, 0u) << c.where;
    EXPECT_LT(expected, Count("select count(*) from " + c.where.substr(0, c.where.find(' ')))) << c.where;
    const ReportRun run = Report(c.code, c.params);
    EXPECT_EQ(run.status, "0") << c.where;
    EXPECT_EQ(run.rows.size(), expected) << c.where;
  }
}

TEST(UntidySearches, InventoryListsComeInPartNumberOrder) {
  const std::vector<std::string> value = ColumnOf(Report("INVVAL01", {}), "Part_Number");
  ASSERT_FALSE(value.empty());
  EXPECT_EQ(
      std::vector<std::string>(value.begin(), value.end() - 1),
      Values(
          "select ifnull(partnum, '') from invtrans inner join inventory on invtrans.invid = inventory.invid "
          "where invtrans.qty > 0 group by partnum, description, category, qoh, lastlist, lastcost order by "
          "partnum"));
  const std::vector<std::string> list = ColumnOf(Report("INVLIST01", {"", "", "", "", ""}), "Part_Number");
  ASSERT_FALSE(list.empty());
  EXPECT_EQ(
      std::vector<std::string>(list.begin(), list.end() - 1),
      Values(
          "select ifnull(partnum, '') from inventory inner join supplier on inventory.supid = supplier.supid "
          "order by partnum"));
}

}  // namespace
}  // namespace ent::test::untidy
