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
  // The report finds the rows our own count runs over, and a total line when it has one.
  auto expect_rows = [](const std::string& code, const std::vector<std::string>& params,
                        const std::string& rows, size_t total_lines = 0) {
    const size_t expected = Count("select count(*) from " + rows);
    EXPECT_GT(expected, 0u) << rows;
    const ReportRun run = Report(code, params);
    EXPECT_EQ(run.status, "0") << rows;
    EXPECT_EQ(run.rows.size(), expected + total_lines) << code << " over " << rows;
  };
  expect_rows("ENTCUSTSRCH", {"", "", "", "", "100000", "", ""}, "customer");
  expect_rows("ENTCUSTSRCH", {"", "O'Reilly%", "", "", "100000", "", ""},
              "customer where company like 'O''Reilly%'");
  expect_rows("ENTCUSTSRCH", {"", "", "Max%", "", "100000", "", ""}, "customer where fname like 'Max%'");
  expect_rows("ENTCUSTSRCH", {"", "", "", "Feather%", "100000", "", ""},
              "customer where lname like 'Feather%'");
  expect_rows("ENTCUSTSRCH", {"", "", "", last, "", "", ""}, "customer where lname like '" + last + "'");
  expect_rows("ENTCUSTSRCH", {"", "", "", "", "100000", area, ""},
              "customer where ahtel like '" + area + "'");
  expect_rows("ENTINVSRCH", {"", "", "", "", "100000", "", "false"}, "inventory");
  expect_rows("ENTINVSRCH", {"", "", "", "", "100000", "", "true"}, "inventory where qoh > 0");
  expect_rows("ENTINVSRCH", {"", part, "", "", "100000", "", "false"},
              "inventory where partnum like '" + part + "'");
  expect_rows("ENTINVSRCH", {"", "", "HEAVY DUTY%", "", "100000", "", "false"},
              "inventory where description like 'HEAVY DUTY%'");
  expect_rows("ENTINVSRCH", {"", "", "", "BRAKE%", "100000", "", "false"},
              "inventory where category like 'BRAKE%'");
  expect_rows("ENTINVSRCH", {"", "", "", "", "100000", "AFTERMARKET%", "false"},
              "inventory where manufacturer like 'AFTERMARKET%'");
  expect_rows("INVVAL01", {}, "(select 1" + kStocked + kStockedParts + ")", 1);
  expect_rows("INVVAL01", {"", "", "BRAKE%"},
              "(select 1" + kStocked + " and category like 'BRAKE%'" + kStockedParts + ")", 1);
  expect_rows("INVLIST01", {"", "", "", "", ""}, kListed, 1);
  expect_rows("INVLIST01", {"", "", "", "", "A%"}, kListed + " where location like 'A%'", 1);
  expect_rows("INVLIST01", {"", "", "", supplier, ""},
              kListed + " where supplier.company like '" + supplier + "'", 1);
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
