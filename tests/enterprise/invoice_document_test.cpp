// The RepairOrder document of one invoice, on the small sample shop and on copies of it changed
// by hand for the cases the sample does not hold.
#include <gtest/gtest.h>

#include <filesystem>
#include <pugixml.hpp>
#include <regex>
#include <sstream>
#include <vector>

#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/sendable.h"
#include "reports/cls_rs.h"
#include "sampledb/sqlite_out.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using test::QueryValue;

std::string Raw(const pugi::xml_node& node) {
  std::ostringstream out;
  node.print(out, "", pugi::format_raw);
  return out.str();
}

// The document's values at the paths (relative to RepairOrder) that `expected` names, one
// "path=value" a line, written as `expected` is: one comparison checks them all.
std::string ValuesAt(const pugi::xml_document& doc, const std::string& expected) {
  std::istringstream lines(expected);
  std::string line, values;
  while (std::getline(lines, line)) {
    const std::string path = line.substr(0, line.find('='));
    values += path + "=" + pugi::xpath_query(path.c_str()).evaluate_string(doc.child("RepairOrder")) + "\n";
  }
  return values;
}

// A number as one text whatever its written form ("35", "35.0", "-0"); other texts as they are.
std::string Normal(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0' ? std::to_string(number + 0.0) : text;
}

// Rows as one text, a line each, their cells run together with "|".
std::string Lines(const std::vector<std::vector<std::string>>& rows) {
  std::string out;
  for (const auto& row : rows) {
    for (const std::string& cell : row) out += Normal(cell) + "|";
    out += "\n";
  }
  return out;
}

// The document's lines, with their `attributes`.
std::string Items(const pugi::xml_document& doc, std::initializer_list<const char*> attributes) {
  std::vector<std::vector<std::string>> rows;
  for (pugi::xpath_node item : doc.select_nodes("/RepairOrder/Items/item")) {
    rows.emplace_back();
    for (const char* a : attributes) rows.back().push_back(item.node().attribute(a).value());
  }
  return Lines(rows);
}

// The invoice document as clsRS hands it back, with its status.
struct Invoice {
  std::unique_ptr<pugi::xml_document> doc;
  std::string status;
};

Invoice Generate(int32_t number, const std::string& state) {
  Invoice result;
  clsRS engine;
  result.doc = engine.generateEnterpriseInvoice(number, state, result.status);
  return result;
}

// A private copy of the small sample shop, set as the thread's shop.
class InvoiceDocumentTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(test::SmallSampleShop(), dir_.file("shop.db"));
    SetShopConnectionString("Provider=SQLite;Data Source=" + dir_.file("shop.db"));
  }
  // The document of an invoice that is expected to load; an empty document when it does not.
  const pugi::xml_document& Load(int32_t number, const std::string& state) {
    Invoice inv = Generate(number, state);
    EXPECT_EQ(inv.status, "0");
    loaded_ = inv.doc ? std::move(inv.doc) : std::make_unique<pugi::xml_document>();
    return *loaded_;
  }

  test::TempDir dir_;
  std::unique_ptr<pugi::xml_document> loaded_;
};

TEST_F(InvoiceDocumentTest, OneSampleInvoiceAsTheJobPostsIt) {
  clsPrebuiltReport job;
  job.reportName = "entinvoice";
  job.addParam("p0", "100002");
  job.addParam("p1", "");
  std::shared_ptr<ISendable> result = job.generateDOC();
  EXPECT_EQ(job.StatusStr, "0");
  ASSERT_TRUE(result && result->XMLDocument());
  // The document of invoice 100002 of the small sample shop, worked out by hand.
  pugi::xml_document expected;
  ASSERT_TRUE(expected.load_file(ENTPRCREQ_SOURCE_DIR "/tests/enterprise/invoice_100002.xml"));
  const std::string posted = result->XMLDocument()->Text();
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(posted.c_str()));
  EXPECT_EQ(Raw(doc), Raw(expected));
  // Nothing in front of the root: no declaration, no processing instruction.
  EXPECT_EQ(posted.rfind("<RepairOrder", 0), 0u);
}

TEST_F(InvoiceDocumentTest, NormalInvoiceLinesInOrderAndPayments) {
  // A second payment, by card, beside the sample's own.
  sampledb::Database(dir_.file("shop.db"))
      .Exec(
          "insert into wopaymentadv (payid, id, trandate, type, payment) values (9001, 6, '2023-02-03 "
          "00:00:00', "
          "'cdMasterCard Business Plus', 1234.5)");
  const pugi::xml_document& doc = Load(100006, "");
  // Every line, in line-number order (the elements and attributes are those of invoice 100002's).
  EXPECT_EQ(Items(doc, {"Desc", "Total", "PartNum"}),
            Lines(test::QueryRowsOn(
                test::SmallSampleShop(),
                "select w.description, w.total, ifnull(i.partnum, '') from woparts w left join inventory i "
                "on i.invid = w.invinvid where w.invoiceid = 100006 order by w.linenum")));

  // The sample's payment and the card payment, in the order the database keeps them.
  pugi::xpath_node_set paid = doc.select_nodes("/RepairOrder/Messages/PaidByMsg/PayDetails");
  ASSERT_EQ(paid.size(), 2u);
  EXPECT_EQ(paid[1].node().text().get(), std::string("2/3/2023   MasterCard Busi   1,234.50"));
  const std::string type = QueryValue("select type from wopaymentadv where id = 6 and payid <> 9001");
  EXPECT_NE(std::string(paid[0].node().text().get()).find("   " + type.substr(2) + "   "), std::string::npos);
  EXPECT_STREQ(doc.select_node("/RepairOrder/InvoiceAdmin/WOID").node().text().get(), "6");
}

TEST_F(InvoiceDocumentTest, CreditInvoiceNegatesLinesAndHasNoWorkOrderOrPayments) {
  // A credit with labour hours, so that every negated column is seen with a value.
  const std::string credit = QueryValue("select min(credid) from woparts where credid > 0 and hrs <> 0");
  const pugi::xml_document& doc = Load(std::stoi(credit), "Cr");
  const std::string expected =
      "@InvoiceType=Cr\nInvoiceAdmin/RONum=" + credit +
      "\nInvoiceAdmin/WOID=0\nInvoiceAdmin/WODate=\nInvoiceAdmin/WOTime=\nMessages/CustReq=\n"
      "count(Messages/PaidByMsg/PayDetails)=0\nTotals/Total=" +
      QueryValue("select screentotal from wo where credid = " + credit) + "\n";
  EXPECT_EQ(ValuesAt(doc, expected), expected);

  // Every amount negated but the unit price.
  EXPECT_EQ(Items(doc, {"Qty", "Hrs", "PartsTot", "Lab", "Total", "PartsEa"}),
            Lines(test::QueryRowsOn(
                test::SmallSampleShop(),
                "select -qty, -hrs, -totparts, -labour, -total, partsea from woparts where credid = " +
                    credit + " order by linenum")));

  // Only "Cr" exactly asks for a credit: "cr" looks for an invoice number, which this is not.
  EXPECT_FALSE(Generate(std::stoi(credit), "cr").doc);
}

TEST_F(InvoiceDocumentTest, UnknownInvoiceNumberGivesNumberedErrorAndNoDocument) {
  // The header query finds no row: the data layer's "no current record" failure.
  Invoice inv = Generate(4242, "");
  EXPECT_FALSE(inv.doc);
  EXPECT_EQ(inv.status.rfind("3021 - Either BOF or EOF is True", 0), 0u) << inv.status;

  // Through the job the same text is what the head office receives, without a document.
  clsPrebuiltReport job;
  job.reportName = "ENTINVOICE";
  job.addParam("p0", "4242");
  std::shared_ptr<ISendable> result = job.generateDOC();
  EXPECT_EQ(job.StatusStr, inv.status);
  EXPECT_TRUE(!result || !result->XMLDocument());

  // A shop that cannot be reached is reported the same way.
  SetShopConnectionString("Provider=SQLite;Data Source=/nonexistent/dir/shop.db");
  inv = Generate(100002, "");
  EXPECT_FALSE(inv.doc);
  EXPECT_TRUE(std::regex_match(inv.status, std::regex(R"(-?\d+ - \S.*)"))) << inv.status;
}

}  // namespace
}  // namespace ent
