// The report codes on a shop whose data is as untidy as real shops' (nulls, full-width texts, a
// pricing band without a class, a part credited in full): every code answers, empty filters find
// rows with nulls, and the figures agree with SQL of our own over the same file.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using test::Amount;
using test::ReportRun;

const std::string& Shop() {
  return test::UntidySampleShop();
}

ReportRun Report(const std::string& code, const std::vector<std::string>& params) {
  return test::RunReportOn(Shop(), code, params);
}

std::string Q(const std::string& sql) {
  return test::QueryValueOn(Shop(), sql);
}
size_t Count(const std::string& sql) {
  return std::stoul(Q(sql));
}
double Sum(const std::string& sql) {
  const std::string value = Q(sql);
  return value.empty() ? 0 : std::stod(value);
}

std::vector<std::string> ColumnOf(const ReportRun& run, const std::string& name) {
  std::vector<std::string> cells;
  for (const auto& row : run.rows) cells.push_back(row.count(name) ? row.at(name) : "");
  return cells;
}

// Every row of a one-column query, as texts.
std::vector<std::string> Values(const std::string& path, const std::string& sql) {
  sqlite3* raw = nullptr;
  sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(raw, sqlite3_close);
  sqlite3_stmt* statement = nullptr;
  std::vector<std::string> values;
  if (sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sqlite3_errmsg(db.get());
    return values;
  }
  while (sqlite3_step(statement) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(statement, 0);
    values.push_back(text ? reinterpret_cast<const char*>(text) : "");
  }
  sqlite3_finalize(statement);
  return values;
}

TEST(UntidyShop, HoldsTheUntidinessItPromises) {
  EXPECT_GT(Count("select count(*) from customer where company is null"), 0u);
  EXPECT_GT(Count("select count(*) from customer where length(company) = 60"), 0u);
  EXPECT_GT(Count("select count(*) from inventory where description is null"), 0u);
  EXPECT_GT(Count("select count(*) from inventory where length(description) = 100"), 0u);
  EXPECT_GT(Count("select count(*) from wo where length(summary) = 255 and invoiceid <> 0"), 0u);
  EXPECT_EQ(Count("select count(*) from SalesClassInventoryIndexPricing where salesclass is null"), 1u);
  EXPECT_GT(Count("select count(*) from SalesClassInventoryIndexPricing where salesclass = 'UNCLASSIFIED'"),
            0u);
  EXPECT_GT(Count("select count(*) from woparts where salesclass = '' and (invoiceid <> 0 or credid <> 0)"),
            0u);
  EXPECT_GT(Count("select count(*) from wo where credid <> 0"), 0u);
  EXPECT_GT(Count("select count(*) from wo where wodeleted = 1 and invoiceid <> 0"), 0u);
  EXPECT_GT(Count("select count(*) from wo where invoiceid <> 0 and latestdate like '%23:59:59'"), 0u);
  EXPECT_EQ(Q("select sum(qty) from woparts inner join inventory on invinvid = invid where partnum = "
              "'RETURNED-IN-FULL'"),
            "0.0");
}

TEST(UntidyShop, EveryCodeAnswersWithStatusZero) {
  const std::string invoice =
      Q("select invoiceid from wo where invoiceid <> 0 and wodeleted = 0 and summary is null limit 1");
  const std::string credit = Q("select credid from wo where credid <> 0 and wodeleted = 0 limit 1");
  const std::string customer =
      Q("select cusid from wo where invoiceid <> 0 and cusid in (select cusid from customer where "
        "length(company) "
        "= 60) limit 1");
  const std::vector<std::pair<std::string, std::vector<std::string>>> requests = {
      {"TOTALSUPPURCH01", {"1/1/2024", "12/31/2024"}},
      {"ENTINVOICE", {invoice, "In"}},
      {"ENTINVOICE", {credit, "Cr"}},
      {"ENTCUSTSRCH", {"", "", "", "", "", "", ""}},
      {"ENTINVSRCH", {"", "", "", "", "", "", "false"}},
      {"ENTCUSTINVOICES", {"", customer}},
      {"INVSUM01", {"1/1/2024", "12/31/2024", "true", "true", "true"}},
      {"PAYREC01", {"1/1/2024", "12/31/2024"}},
      {"GENMARG01", {"1/1/2024", "12/31/2024"}},
      {"AVGINV01", {"1/1/2024", "12/31/2024"}},
      {"PROFBYVEH01", {"1/1/2024", "12/31/2024"}},
      {"SC01", {"1/1/2024", "12/31/2024", "true"}},
      {"TB01", {"12/31/2024"}},
      {"BL01", {"12/31/2024"}},
      {"PROFALOSS01", {"1/1/2024", "12/31/2024"}},
      {"AP01", {"12/31/2024"}},
      {"AR01", {"12/31/2024"}},
      {"INVVAL01", {}},
      {"INVLIST01", {"", "", "", "", ""}},
      {"PARTSALPER01", {"1/1/2024", "12/31/2024", "", "", "", "true"}},
      {"TECHPERF01", {"1/1/2024", "12/31/2024", "true", "true"}},
      {"TECHCOST01", {"1/1/2024", "12/31/2024", "true", "true", "true"}},
      {"SALESCOMP01", {"1/1/2024", "6/30/2024", "1/1/2023", "6/30/2023"}},
      {"LOYAL01", {"1/1/2023", "12/31/2025", "1", "0", "0"}},
      {"PARTGP01", {"1/1/2024", "12/31/2024"}},
      {"CARCOUNT01", {"1/1/2024", "12/31/2024"}},
      {"POSTCARDLOF01", {"1/1/2024", "12/31/2024", "1/1/2025", "12/31/2025"}},
      {"POSTCARDNONLOF01", {"1/1/2024", "12/31/2024", "1/1/2025", "12/31/2025"}},
      {"DSR01", {"12/31/2024", "true"}},
  };
  std::set<std::string> codes;
  for (const auto& [code, params] : requests) {
    const ReportRun run = Report(code, params);
    EXPECT_EQ(run.status, "0") << code;
    EXPECT_TRUE(run.has_document) << code;
    codes.insert(code);
  }
  EXPECT_EQ(codes.size(), 28u);  // every code but the two retired ones
}

TEST(UntidyShop, EmptyFiltersFindRowsWithNulls) {
  const ReportRun customers = Report("ENTCUSTSRCH", {"", "", "", "", "100000", "", ""});
  ASSERT_EQ(customers.status, "0");
  EXPECT_EQ(customers.rows.size(), Count("select count(*) from customer"));
  // The default order, nulls first as the database sorts them.
  const ReportRun by_default = Report("ENTCUSTSRCH", {});
  EXPECT_EQ(ColumnOf(by_default, "Cusid"),
            Values(Shop(), "select cusid from customer order by company, lname, fname, cusid limit 100"));

  // A customer without a company or a first name is found by the last name alone.
  const std::string last =
      Q("select lname from customer where company is null and fname is null and lname is "
        "not null and lname not like '%''%' limit 1");
  ASSERT_FALSE(last.empty());
  const ReportRun named = Report("ENTCUSTSRCH", {"", "", "", last, "", "", ""});
  EXPECT_EQ(named.rows.size(), Count("select count(*) from customer where lname like '" + last + "'"));
  EXPECT_GT(named.rows.size(), 0u);
  // A filter still filters: a home area code.
  const std::string area = Q("select ahtel from customer where ahtel <> '' limit 1");
  EXPECT_EQ(Report("ENTCUSTSRCH", {"", "", "", "", "100000", area, ""}).rows.size(),
            Count("select count(*) from customer where ahtel like '" + area + "'"));

  const ReportRun items = Report("ENTINVSRCH", {"", "", "", "", "100000", "", "false"});
  ASSERT_EQ(items.status, "0");
  EXPECT_EQ(items.rows.size(), Count("select count(*) from inventory"));
  const ReportRun first_items = Report("ENTINVSRCH", {});
  EXPECT_EQ(ColumnOf(first_items, "Part_Number"),
            Values(Shop(), "select ifnull(partnum, '') from inventory order by partnum, invid limit 100"));
  EXPECT_EQ(Report("ENTINVSRCH", {"", "", "", "", "100000", "", "true"}).rows.size(),
            Count("select count(*) from inventory where qoh > 0"));
  EXPECT_EQ(Report("ENTINVSRCH", {"", "", "", "BRAKE%", "100000", "", "false"}).rows.size(),
            Count("select count(*) from inventory where category like 'BRAKE%'"));

  const ReportRun value = Report("INVVAL01", {});
  ASSERT_EQ(value.status, "0");
  const std::string stocked =
      " from invtrans inner join inventory on invtrans.invid = inventory.invid where invtrans.qty > 0";
  EXPECT_EQ(value.rows.size(), Count("select count(*) from (select 1" + stocked +
                                     " group by partnum, description, category, qoh, lastlist, lastcost)") +
                                   1);
  EXPECT_NEAR(Amount(value.rows.back().at("TotalCost")),
              Sum("select sum(coresea * invtrans.qty + costea * invtrans.qty)" + stocked), 0.005);
  EXPECT_EQ(
      Report("INVVAL01", {"", "", "BRAKE%"}).rows.size(),
      Count("select count(*) from (select 1" + stocked +
            " and category like 'BRAKE%' group by partnum, description, category, qoh, lastlist, lastcost)") +
          1);

  const ReportRun list = Report("INVLIST01", {"", "", "", "", ""});
  ASSERT_EQ(list.status, "0");
  const std::string listed = " from inventory inner join supplier on inventory.supid = supplier.supid";
  EXPECT_EQ(list.rows.size(), Count("select count(*)" + listed) + 1);
  EXPECT_NEAR(Amount(list.rows.back().at("QOH")), Sum("select sum(qoh)" + listed), 0.005);
  EXPECT_EQ(Report("INVLIST01", {"", "", "", "", "A%"}).rows.size(),
            Count("select count(*)" + listed + " where location like 'A%'") + 1);
  const std::string supplier = Q("select substr(company, 1, 4) || '%' from supplier where supid = 1");
  EXPECT_EQ(Report("INVLIST01", {"", "", "", supplier, ""}).rows.size(),
            Count("select count(*)" + listed + " where supplier.company like '" + supplier + "'") + 1);
}

TEST(UntidyShop, NullsReadAsEmptyTextInPartsGrossProfit) {
  const ReportRun gross = Report("PARTGP01", {"1/1/2024", "12/31/2024"});
  ASSERT_EQ(gross.status, "0");
  const std::string lines =
      " from woparts inner join wo on woparts.credid = wo.credid and woparts.woid = wo.woid where "
      "wo.latestdate between '2024-01-01 00:00:00' and '2024-12-31 00:00:00' and woparts.skip <> 'Yes' and "
      "not "
      "(presetpkg = 1 and presetheader = 0) and ((wo.invoiceid <> 0 and woparts.invcost > 0) or wo.credid <> "
      "0)";
  ASSERT_EQ(gross.rows.size(), Count("select count(*)" + lines) + 1);
  EXPECT_NEAR(Amount(gross.rows.back().at("Total_Parts")), Sum("select sum(totparts)" + lines), 0.005);
  const auto descriptions = ColumnOf(gross, "Part_Description");
  EXPECT_EQ(static_cast<size_t>(std::count(descriptions.begin(), descriptions.end() - 1, "")),
            Count("select count(*)" + lines + " and woparts.description is null"));
}

// The parts sales performance of a range agrees with our own sums: rows, revenue and cost.
void ExpectPartsSalesFigures(const ReportRun& run, const std::string& from, const std::string& to,
                             const std::string& description) {
  ASSERT_EQ(run.status, "0");
  const std::string lines =
      " from woparts inner join wo on (woparts.invoiceid = wo.invoiceid and woparts.invoiceid <> 0) or "
      "(woparts.credid = wo.credid and wo.credid <> 0) inner join inventory on woparts.invinvid = "
      "inventory.invid "
      "inner join supplier on inventory.supid = supplier.supid where wodeleted = 0 and invcost <> 0 and skip "
      "<> "
      "'Yes' and qty <> 0 and latestdate between '" +
      from + " 00:00:00' and '" + to + " 00:00:00'" +
      (description.empty() ? "" : " and inventory.description like '" + description + "'");
  EXPECT_EQ(run.rows.size(), Count("select count(*) from (select 1" + lines +
                                   " group by partnum, inventory.description, "
                                   "supplier.company)") +
                                 1);
  EXPECT_NEAR(Amount(run.rows.back().at("Total_Revenue")), Sum("select sum(totparts - discpart)" + lines),
              0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Total_Cost")), Sum("select sum(invcost)" + lines), 0.005);
}

TEST(UntidyShop, PartsSalesFiguresAgreeOnMonthsEndingWithAnInvoiceAtMidnight) {
  // May 2024 ends with an invoice dated at midnight of its last day.
  ASSERT_GT(Count("select count(*) from wo where latestdate = '2024-05-31 00:00:00' and invoiceid <> 0"), 0u);
  ExpectPartsSalesFigures(Report("PARTSALPER01", {"5/1/2024", "5/31/2024", "", "", "", "false"}),
                          "2024-05-01", "2024-05-31", "");
  ExpectPartsSalesFigures(Report("PARTSALPER01", {"5/1/2024", "5/31/2024", "", "%OIL%", "", "false"}),
                          "2024-05-01", "2024-05-31", "%OIL%");
}

TEST(UntidyShop, PartCreditedInFullKeepsItsRevenueAndStaysOutOfTheMarginAverage) {
  const ReportRun run = Report("PARTSALPER01", {"3/1/2024", "3/31/2024", "", "", "", "false"});
  ExpectPartsSalesFigures(run, "2024-03-01", "2024-03-31", "");

  const auto returned = std::find_if(run.rows.begin(), run.rows.end(), [](const auto& row) {
    return row.count("Part_Number") && row.at("Part_Number") == "RETURNED-IN-FULL";
  });
  ASSERT_NE(returned, run.rows.end());
  EXPECT_EQ(Amount(returned->at("Qty_Sold")), 0);
  EXPECT_EQ(returned->count("Avg_Margin") ? returned->at("Avg_Margin") : "", "");
  EXPECT_EQ(returned->count("Avg_Price") ? returned->at("Avg_Price") : "", "");
  // What the restocking fee kept.
  const double kept =
      Sum("select sum(totparts - discpart) from woparts inner join inventory on invinvid = invid "
          "where partnum = 'RETURNED-IN-FULL'");
  EXPECT_GT(kept, 0);
  EXPECT_NEAR(Amount(returned->at("Total_Revenue")), kept, 0.005);

  // The total line's margin is the average over the parts that have one.
  double sum = 0;
  int count = 0;
  for (size_t i = 0; i + 1 < run.rows.size(); ++i) {
    const auto cell = run.rows[i].find("Avg_Margin");
    if (cell == run.rows[i].end() || cell->second.empty()) continue;
    sum += Amount(cell->second);
    ++count;
  }
  ASSERT_GT(count, 0);
  EXPECT_NEAR(Amount(run.rows.back().at("Avg_Margin")), sum / count, 0.01);
}

TEST(UntidyShop, DailyRecapCountsLinesWithoutAClassOnce) {
  const ReportRun run = Report("DSR01", {"5/31/2024", "false"});
  ASSERT_EQ(run.status, "0");
  const auto classes = ColumnOf(run, "Sales_Class");
  EXPECT_EQ(std::count(classes.begin(), classes.end(), ""), 0);
  EXPECT_EQ(std::count(classes.begin(), classes.end(), "UNCLASSIFIED"), 1);
  auto sales_from = [](const std::string& from) {
    const std::string lines =
        " from woparts inner join wo on woparts.woid = wo.woid where woparts.skip <> 'Yes' and (wo.invoiceid "
        "<> 0 "
        "or wo.credid <> 0) and not (presetpkg = 1 and presetheader = 0) and latestdate between '" +
        from +
        " 00:00:00' and '2024-05-31 00:00:00' and (salesclass = '' or salesclass in (select salesclass from "
        "SalesClassInventoryIndexPricing where salesclass <> 'UNCLASSIFIED'))";
    EXPECT_GT(Count("select count(*)" + lines), 0u) << from;
    return Sum("select sum(totparts - discpart + labour - disclab)" + lines) +
           Sum("select sum(otherchargeamt)" + lines + " and otherchargeid > 0");
  };
  // The last day of the month holds an invoice dated at midnight.
  EXPECT_NEAR(Amount(run.rows.back().at("Sales")), sales_from("2024-05-31"), 0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Sales_MTD")), sales_from("2024-05-01"), 0.005);
  EXPECT_NEAR(Amount(run.rows.back().at("Sales_YTD")), sales_from("2024-01-01"), 0.005);
  EXPECT_GT(
      Count("select count(*) from woparts inner join wo on woparts.woid = wo.woid where salesclass = '' and "
            "wo.invoiceid <> 0 and latestdate between '2024-01-01' and '2024-05-31'"),
      0u);
}

TEST(UntidyShop, InvoiceLookUpRefusesAMissingNumber) {
  for (const std::string number : {"", "0", "-3"}) {
    const ReportRun run = Report("ENTINVOICE", {number, "In"});
    EXPECT_FALSE(run.has_document) << number;
    EXPECT_NE(run.status.find("parameter p0 (lInvoiceId)"), std::string::npos) << run.status;
    EXPECT_NE(run.status.find("above 0"), std::string::npos) << run.status;
  }
}

// The trial balance on a copy of the untidy shop whose chart of accounts is changed first.
class BrokenChart : public ::testing::Test {
 protected:
  std::string Copy(const std::string& change) {
    const std::string path = dir_.file("chart.db");
    std::filesystem::copy_file(Shop(), path, std::filesystem::copy_options::overwrite_existing);
    sqlite3* raw = nullptr;
    sqlite3_open(path.c_str(), &raw);
    std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(raw, sqlite3_close);
    if (!change.empty()) {
      EXPECT_EQ(sqlite3_exec(db.get(), change.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    }
    return path;
  }
  // An asset account with postings that has a parent of its own.
  std::string Posted() {
    return Q(
        "select chid from chartofaccounts where fivetypename = 'A' and parentid <> 0 and chid in (select "
        "chid from ChartOfAccountsGLPOSTINGTABLE) order by accountnumber limit 1");
  }
  test::TempDir dir_;
};

TEST_F(BrokenChart, LongAccountPathsFitAndTheColumnsBalance) {
  const ReportRun run = Report("TB01", {"12/31/2024"});
  ASSERT_EQ(run.status, "0");
  const auto names = ColumnOf(run, "Account_Name");
  EXPECT_TRUE(std::any_of(names.begin(), names.end(), [](const std::string& n) { return n.size() > 100; }));
  EXPECT_EQ(run.rows.back().at("Account_Name"), "[b]TOTAL");
  EXPECT_EQ(run.rows.back().at("Debit"), run.rows.back().at("Credit"));
  const double assets = Sum(
      "select sum(amt) from ChartOfAccountsGLPOSTINGTABLE inner join chartofaccounts on "
      "ChartOfAccountsGLPOSTINGTABLE.chid = chartofaccounts.chid where fivetypename = 'A' and transdate <= "
      "'2024-12-31 00:00:00'");
  double shown = 0;
  for (const auto& row : run.rows) {
    if (row.count("Account_Name") && row.at("Account_Name").find("Retained") == 0) break;
    if (row.count("Debit")) shown += Amount(row.at("Debit"));
    if (row.count("Credit")) shown -= Amount(row.at("Credit"));
    if (row.count("Account_Name") && row.at("Account_Name").empty()) break;  // the end of the assets
  }
  EXPECT_NEAR(shown, assets, 0.005);
}

TEST_F(BrokenChart, ALoopInTheParentsIsAFailure) {
  const std::string chid = Posted();
  const std::string path = Copy("update chartofaccounts set parentid = " + chid +
                                " where chid = (select parentid "
                                "from chartofaccounts where chid = " +
                                chid + ")");
  const ReportRun run = test::RunReportOn(path, "TB01", {"12/31/2024"});
  EXPECT_FALSE(run.has_document);
  EXPECT_NE(run.status.find("loop"), std::string::npos) << run.status;
}

TEST_F(BrokenChart, AMissingParentIsAFailure) {
  const std::string path = Copy("update chartofaccounts set parentid = 987654 where chid = " + Posted());
  const ReportRun run = test::RunReportOn(path, "TB01", {"12/31/2024"});
  EXPECT_FALSE(run.has_document);
  EXPECT_NE(run.status.find("987654 is not in the chart of accounts"), std::string::npos) << run.status;
}

}  // namespace
}  // namespace ent
