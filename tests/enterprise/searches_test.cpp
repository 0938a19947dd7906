// The head office's searches on the small sample shop.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "support/reports_shop_copy.h"
#include "support/sample_shop.h"

namespace ent {
namespace {

using test::QueryValue;
using test::RunReport;

TEST(SearchesTest, CustomerSearchPatternsLimitsAndOrder) {
  test::ReportRun all = RunReport("ENTCUSTSRCH", {});
  ASSERT_EQ(all.status, "0");
  EXPECT_EQ(all.columns,
            (std::vector<std::string>{"company", "FirstName", "LastName", "HomePhone", "BusPhone", "Cusid"}));
  // Every customer, those with missing names or phone parts too, up to 100.
  EXPECT_EQ(all.rows.size(), std::min<size_t>(100, std::stoul(QueryValue("select count(*) from customer"))));
  {
    // A shop with more customers than that: copies of them under other numbers.
    test::TempDir dir;
    const std::string shop = test::ChangedCopy(
        test::SmallSampleShop(), dir,
        "create table copies as select * from customer; update copies set cusid = cusid + 100000; "
        "insert into customer select * from copies; drop table copies;");
    ASSERT_GT(std::stoul(test::QueryValueOn(shop, "select count(*) from customer")), 100u);
    EXPECT_EQ(test::RunReportOn(shop, "ENTCUSTSRCH", {}).rows.size(), 100u);
    EXPECT_EQ(test::RunReportOn(shop, "ENTCUSTSRCH", {"", "", "", "", "101"}).rows.size(), 101u);
  }

  EXPECT_EQ(RunReport("ENTCUSTSRCH", {"", "", "", "", "5"}).rows.size(), 5u);

  // Sorted by the requested column, customer number breaking ties.
  test::ReportRun by_name = RunReport("ENTCUSTSRCH", {"LastName desc", "", "", "", "20"});
  ASSERT_EQ(by_name.status, "0");
  for (size_t i = 1; i < by_name.rows.size(); ++i) {
    const auto& a = by_name.rows[i - 1];
    const auto& b = by_name.rows[i];
    EXPECT_GE(a.at("LastName"), b.at("LastName"));
    if (a.at("LastName") == b.at("LastName")) {
      EXPECT_LT(std::stoi(a.at("Cusid")), std::stoi(b.at("Cusid")));
    }
  }

  // A telephone typed as ten digits finds the customers with that area code and number, the home
  // telephone (p5) and the business one (p6) alike; a number cut short is compared as it stands,
  // without a wildcard added.
  for (const auto& [area_column, number_column, column, param] :
       {std::tuple{"ahtel", "htel", "HomePhone", 5}, {"abtel", "btel", "BusPhone", 6}}) {
    const std::string first = std::string(" from customer where ") + number_column + " <> '' order by cusid";
    const std::string area = QueryValue(std::string("select ") + area_column + first);
    const std::string number = QueryValue(std::string("select ") + number_column + first);
    std::string digits = area + number;
    digits.erase(std::remove(digits.begin(), digits.end(), '-'), digits.end());
    std::vector<std::string> params = {"", "", "", "", "", "", ""};
    params[param] = digits;
    test::ReportRun phone = RunReport("ENTCUSTSRCH", params);
    ASSERT_EQ(phone.status, "0") << column;
    ASSERT_FALSE(phone.rows.empty()) << column;
    for (const auto& row : phone.rows) EXPECT_EQ(row.at(column), area + "-" + number);
    params[param] = digits.substr(0, 4);  // the area code and one digit
    EXPECT_EQ(RunReport("ENTCUSTSRCH", params).status, "No records found.") << column;
  }
}

TEST(SearchesTest, InventoryLimitAndInvoiceOrderByDefault) {
  const std::string customer =
      QueryValue("select cusid from wo where invoiceid <> 0 group by cusid order by count(*) desc limit 1");
  const std::string latest =
      QueryValue("select max(invoiceid) from wo where invoiceid <> 0 and cusid = " + customer);
  // More parts than the default limit; the customer's last invoice dated before all the others.
  test::TempDir dir;
  const std::string shop = test::ChangedCopy(
      test::SmallSampleShop(), dir,
      "create table copies as select * from inventory; update copies set invid = invid + 100000; "
      "insert into inventory select * from copies; update copies set invid = invid + 100000; "
      "insert into inventory select * from copies; drop table copies; "
      "update wo set latestdate = '2001-01-01 00:00:00' where invoiceid = " +
          latest);
  ASSERT_GT(std::stoul(test::QueryValueOn(shop, "select count(*) from inventory")), 100u);
  EXPECT_EQ(test::RunReportOn(shop, "ENTINVSRCH", {}).rows.size(), 100u);
  const test::ReportRun invoices = test::RunReportOn(shop, "ENTCUSTINVOICES", {"", customer});
  ASSERT_EQ(invoices.status, "0");
  EXPECT_EQ(invoices.rows.front().at("InvoiceNum"), "INV-" + latest);
}

}  // namespace
}  // namespace ent
