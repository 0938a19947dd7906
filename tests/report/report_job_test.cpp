#include <gtest/gtest.h>

#include "common/error.h"
#include "common/thread_values.h"
#include "report/cls_prebuilt_report.h"
#include "report/result_document.h"
#include "support/test_db.h"

namespace ent {
namespace {

class ReportJobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Exec("create table customer (cusid int primary key, company varchar(50), fname varchar(30), "
             "lname varchar(30), ahtel varchar(3), htel varchar(8), abtel varchar(3), btel varchar(8));"
             "insert into customer values (1, 'O''Brien Auto', 'Pat', 'Lee', '555', '555-0100', '', '');"
             "insert into customer values (2, 'Acme', null, 'Smith', '555', '555-0101', '', '');");
    SetShopConnectionString(db_.connection_string());
  }
  static std::string XmlOf(const std::shared_ptr<ISendable>& result) {
    return result && result->XMLDocument() ? DocumentXmlText(*result->XMLDocument()) : "";
  }
  test::TestDb db_;
};

TEST_F(ReportJobTest, CustomSqlGivesTheRowsetDocument) {
  clsPrebuiltReport job;
  job.CustomReport = true;
  job.sqlString = "select cusid, company, fname from customer order by cusid";  // no rs:insert here
  auto result = job.generateDOC();
  EXPECT_EQ(job.StatusStr, "0");
  ASSERT_TRUE(result && result->XMLDocument());
  const pugi::xml_document& doc = *result->XMLDocument();
  EXPECT_EQ(std::string(doc.first_child().name()), "xml");
  EXPECT_EQ(doc.select_nodes("//rs:data/z:row").size(), 2u);
  EXPECT_EQ(std::string(doc.select_node("//rs:data/z:row").node().attribute("company").value()), "O'Brien Auto");
  EXPECT_FALSE(doc.select_node("//rs:data/z:row[2]").node().attribute("fname"));  // null left out
}

TEST_F(ReportJobTest, EmptyAndFailingCustomSql) {
  clsPrebuiltReport empty;
  empty.CustomReport = true;
  empty.sqlString = "select * from customer where cusid = 99";
  auto result = empty.generateDOC();
  EXPECT_EQ(empty.StatusStr, "No records found.");
  EXPECT_TRUE(result && !result->XMLDocument());

  clsPrebuiltReport failing;
  failing.CustomReport = true;
  failing.sqlString = "select * from nosuch";
  result = failing.generateDOC();
  EXPECT_EQ(failing.StatusStr, "no such table: nosuch");
  EXPECT_TRUE(result && !result->XMLDocument());
}

TEST_F(ReportJobTest, AddedRowsAreFlattenedUnderRsData) {
  Recordset rs;
  rs.AppendField(AppendedField("Sales_Class"));
  rs.Open();
  for (const char* c : {"OIL", "TIRES", "[b]TOTAL"}) {
    rs.AddNew();
    rs.Set(size_t{0}, Variant(c));
  }
  rs.Update();
  auto doc = SaveRowsetToDocument(rs);
  EXPECT_EQ(doc->select_nodes("//rs:data/rs:insert/z:row").size(), 3u);
  std::string failure;
  ASSERT_TRUE(FlattenRowsetDocument(*doc, failure));
  EXPECT_EQ(doc->select_nodes("//rs:data/z:row").size(), 3u);
  EXPECT_FALSE(doc->select_node("//rs:insert"));
  const std::string text = DocumentXmlText(*doc);
  EXPECT_NE(text.find("<rs:data>\r\n\t<z:row Sales_Class='OIL'/>\r\n\t<z:row Sales_Class='TIRES'/>"), std::string::npos)
      << text;
  EXPECT_EQ(text.substr(text.size() - 20), "\r\n</rs:data>\r\n</xml>");
  // A document without rs:insert is left as it is.
  const std::string before = DocumentXmlText(*doc);
  ASSERT_TRUE(FlattenRowsetDocument(*doc, failure));
  EXPECT_EQ(DocumentXmlText(*doc), before);
}

TEST_F(ReportJobTest, CatalogueCodesNoticesAndConversions) {
  auto run = [](const std::string& code, std::vector<std::string> params = {}) {
    clsPrebuiltReport job;
    job.reportName = code;
    for (size_t i = 0; i < params.size(); ++i) job.addParam("p" + std::to_string(i), params[i]);
    auto result = job.generateDOC();
    return std::make_pair(job.StatusStr, result && result->XMLDocument());
  };
  EXPECT_EQ(run("NOSUCH01").first, "Prebuilt report not found.");
  EXPECT_EQ(run("transreq").first, "Prebuilt report not found. Please Run Version 4 of the Enterprise Client.");
  // A W parameter that does not convert stops the branch; the status says which and why.
  EXPECT_EQ(run("ENTCUSTINVOICES", {"", "abc"}).first,
            "Parameter p1 (lCusID) of ENTCUSTINVOICES is not a whole number: 'abc'");
  EXPECT_EQ(run("entcustsrch", {"", "O'Brien%"}), std::make_pair(std::string("0"), true));

  clsPrebuiltReport job;
  job.addParam("p0", "x");
  EXPECT_THROW(job.addParam("p0", "y"), Error);
  EXPECT_EQ(job.getParam("p9"), "");
}

TEST_F(ReportJobTest, ConnectionFailureBecomesTheStatus) {
  SetShopConnectionString("Provider=SQLite;Data Source=/nonexistent/shop.db");
  clsPrebuiltReport job;
  job.reportName = "INVSUM01";
  auto result = job.generateDOC();
  EXPECT_NE(job.StatusStr.find("Cannot open the shop database"), std::string::npos);
  EXPECT_TRUE(result && !result->XMLDocument());
}

}  // namespace
}  // namespace ent
