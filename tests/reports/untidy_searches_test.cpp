// The searches and inventory lists on the untidy shop: empty filters find the rows with nulls too,
// each filter narrows the rows to those our own LIKE over the same column finds (names with quotes
// and full-width texts included), and the default orders are the database's own.
#include <gtest/gtest.h>

#include "reports/untidy_figures.h"

namespace ent::test::untidy {
namespace {

// Inventory brought in, as the inventory value groups it; inventory with its supplier.
const std::string kStocked =
    " from invtrans inner join inventory on invtrans.invid = inventory.invid where invtrans.qty > 0";
const std::string kStockedParts = " group by partnum, description, category, qoh, lastlist, lastcost";
const std::string kListed = " inventory inner join supplier on inventory.supid = supplier.supid";

TEST(UntidySearches, EachFilterFindsWhatItsColumnMatches) {
  const std::string part = Value(
      "select substr(partnum, 1, 3) || '%' from inventory where partnum is not null "
      "group by 1 order by count(*) limit 1");
  // A customer without a company or a first name is found by the last name alone.
  const std::string last = Value(
      "select lname from customer where company is null and fname is null and lname is "
      "not null and lname not like '%''%' limit 1");
  const std::string area = Value("select ahtel from customer where ahtel <> '' limit 1");
  const std::string supplier = Value("select substr(company, 1, 4) || '%' from supplier where supid = 1");
  struct Case {
    std::string code;
    std::vector<std::string> params;
    std::string rows;  // what our own count runs over
    size_t total_lines;
  };
  const std::vector<Case> cases = {
      {"ENTCUSTSRCH", {"", "", "", "", "100000", "", ""}, "customer", 0},
      {"ENTCUSTSRCH",
       {"", "O'Reilly%", "", "", "100000", "", ""},
       "customer where company like 'O''Reilly%'",
       0},
      {"ENTCUSTSRCH", {"", "", "Max%", "", "100000", "", ""}, "customer where fname like 'Max%'", 0},
      {"ENTCUSTSRCH", {"", "", "", "Feather%", "100000", "", ""}, "customer where lname like 'Feather%'", 0},
      {"ENTCUSTSRCH", {"", "", "", last, "", "", ""}, "customer where lname like '" + last + "'", 0},
      {"ENTCUSTSRCH", {"", "", "", "", "100000", area, ""}, "customer where ahtel like '" + area + "'", 0},
      {"ENTINVSRCH", {"", "", "", "", "100000", "", "false"}, "inventory", 0},
      {"ENTINVSRCH", {"", "", "", "", "100000", "", "true"}, "inventory where qoh > 0", 0},
      {"ENTINVSRCH",
       {"", part, "", "", "100000", "", "false"},
       "inventory where partnum like '" + part + "'",
       0},
      {"ENTINVSRCH",
       {"", "", "HEAVY DUTY%", "", "100000", "", "false"},
       "inventory where description like 'HEAVY DUTY%'",
       0},
      {"ENTINVSRCH",
       {"", "", "", "BRAKE%", "100000", "", "false"},
       "inventory where category like 'BRAKE%'",
       0},
      {"ENTINVSRCH",
       {"", "", "", "", "100000", "AFTERMARKET%", "false"},
       "inventory where manufacturer like 'AFTERMARKET%'",
       0},
      {"INVVAL01", {}, "(select 1" + kStocked + kStockedParts + ")", 1},
      {"INVVAL01",
       {"", "", "BRAKE%"},
       "(select 1" + kStocked + " and category like 'BRAKE%'" + kStockedParts + ")",
       1},
      {"INVLIST01", {"", "", "", "", ""}, kListed, 1},
      {"INVLIST01", {"", "", "", "", "A%"}, kListed + " where location like 'A%'", 1},
      {"INVLIST01",
       {"", "", "", supplier, ""},
       kListed + " where supplier.company like '" + supplier + "'",
       1},
  };
  for (const Case& c : cases) {
    const size_t expected = Count("select count(*) from " + c.rows);
    EXPECT_GT(expected, 0u) << c.rows;
    const ReportRun run = Report(c.code, c.params);
    EXPECT_EQ(run.status, "0") << c.rows;
    EXPECT_EQ(run.rows.size(), expected + c.total_lines) << c.code << " over " << c.rows;
  }
}

TEST(UntidySearches, DefaultOrdersAndTheInventoryValue) {
  // Nulls first, as the database sorts them.
  EXPECT_EQ(ColumnOf(Report("ENTCUSTSRCH", {}), "Cusid"),
            Values("select cusid from customer order by company, lname, fname, cusid limit 100"));
  EXPECT_EQ(ColumnOf(Report("ENTINVSRCH", {}), "Part_Number"),
            Values("select ifnull(partnum, '') from inventory order by partnum, invid limit 100"));
  const ReportRun value = Report("INVVAL01", {});
  std::vector<std::string> parts = ColumnOf(value, "Part_Number");
  ASSERT_FALSE(parts.empty());
  parts.pop_back();  // the total line
  EXPECT_EQ(parts, Values("select ifnull(partnum, '')" + kStocked + kStockedParts + " order by partnum"));
  EXPECT_NEAR(TotalOf(value, "TotalCost"),
              Sum("select sum(coresea * invtrans.qty + costea * invtrans.qty)" + kStocked), 0.005);
  parts = ColumnOf(Report("INVLIST01", {"", "", "", "", ""}), "Part_Number");
  ASSERT_FALSE(parts.empty());
  parts.pop_back();
  EXPECT_EQ(parts, Values("select ifnull(partnum, '') from" + kListed + " order by partnum"));
}

}  // namespace
}  // namespace ent::test::untidy
