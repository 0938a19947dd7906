// The RepairOrder document of one invoice, on the small sample shop and on copies of it changed
// by hand for the cases the sample does not hold.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
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

// The document of invoice 100002 of the small sample shop, worked out by hand.
std::string ExpectedInvoice100002() {
  std::ifstream in(std::string(ENTPRCREQ_SOURCE_DIR) + "/tests/enterprise/invoice_100002.xml");
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string Raw(const pugi::xml_node& node) {
  std::ostringstream out;
  node.print(out, "", pugi::format_raw);
  return out.str();
}

std::string Text(const pugi::xml_document& doc, const char* path) {
  return doc.select_node(path).node().text().get();
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
  void Exec(const std::string& sql) {
    sampledb::Database db(dir_.file("shop.db"));
    db.Exec(sql);
  }
  // The document of an invoice that is expected to load; an empty document when it does not.
  const pugi::xml_document& Load(int32_t number, const std::string& state) {
    Invoice inv = Generate(number, state);
    EXPECT_EQ(inv.status, "0");
    loaded_ = inv.doc ? std::move(inv.doc) : std::make_unique<pugi::xml_document>();
    return *loaded_;
  }

 private:
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
  pugi::xml_document expected;
  ASSERT_TRUE(expected.load_string(ExpectedInvoice100002().c_str()));
  const std::string posted = result->XMLDocument()->Text();
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(posted.c_str()));
  EXPECT_EQ(Raw(doc), Raw(expected));
  // Nothing in front of the root: no declaration, no processing instruction.
  EXPECT_EQ(posted.rfind("<RepairOrder", 0), 0u);
}

TEST_F(InvoiceDocumentTest, NormalInvoiceLinesInOrderAndPayments) {
  // A second payment, by card, beside the sample's own.
  Exec(
      "insert into wopaymentadv (payid, id, trandate, type, payment) values (9001, 6, '2023-02-03 00:00:00', "
      "'cdMasterCard Business Plus', 1234.5)");
  const pugi::xml_document& doc = Load(100006, "");
  // Every line, in line-number order (the elements and attributes are those of invoice 100002's).
  pugi::xpath_node_set items = doc.select_nodes("/RepairOrder/Items/item");
  ASSERT_EQ(std::to_string(items.size()),
            QueryValue("select count(*) from woparts where invoiceid = 100006"));
  for (size_t i = 0; i < items.size(); ++i) {
    pugi::xml_node item = items[i].node();
    const std::string line =
        "from woparts where invoiceid = 100006 order by linenum limit 1 offset " + std::to_string(i);
    EXPECT_EQ(item.attribute("Desc").value(), QueryValue("select description " + line));
    EXPECT_EQ(item.attribute("Total").as_double(), std::stod(QueryValue("select total " + line)));
    EXPECT_EQ(
        item.attribute("PartNum").value(),
        QueryValue("select ifnull(partnum, '') from inventory where invid = (select invinvid " + line + ")"));
  }

  // The sample's payment and the card payment, in the order the database keeps them.
  pugi::xpath_node_set paid = doc.select_nodes("/RepairOrder/Messages/PaidByMsg/PayDetails");
  ASSERT_EQ(paid.size(), 2u);
  EXPECT_EQ(paid[1].node().text().get(), std::string("2/3/2023   MasterCard Busi   1,234.50"));
  const std::string type = QueryValue("select type from wopaymentadv where id = 6 and payid <> 9001");
  EXPECT_NE(std::string(paid[0].node().text().get()).find("   " + type.substr(2) + "   "), std::string::npos);
  EXPECT_EQ(Text(doc, "/RepairOrder/InvoiceAdmin/WOID"), "6");
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

  pugi::xpath_node_set items = doc.select_nodes("/RepairOrder/Items/item");
  ASSERT_EQ(std::to_string(items.size()),
            QueryValue("select count(*) from woparts where credid = " + credit));
  ASSERT_GT(items.size(), 0u);
  bool some_nonzero = false;
  for (size_t i = 0; i < items.size(); ++i) {
    pugi::xml_node item = items[i].node();
    const std::string line =
        " from woparts where credid = " + credit + " order by linenum limit 1 offset " + std::to_string(i);
    for (auto [attribute, column] : {std::pair{"Qty", "qty"},
                                     {"Hrs", "hrs"},
                                     {"PartsTot", "totparts"},
                                     {"Lab", "labour"},
                                     {"Total", "total"}}) {
      const double stored = std::stod(QueryValue(std::string("select ") + column + line));
      EXPECT_DOUBLE_EQ(item.attribute(attribute).as_double(), -stored) << attribute;
      some_nonzero = some_nonzero || stored != 0;
    }
    // The unit price keeps its sign.
    EXPECT_DOUBLE_EQ(item.attribute("PartsEa").as_double(), std::stod(QueryValue("select partsea" + line)));
  }
  EXPECT_TRUE(some_nonzero);

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
