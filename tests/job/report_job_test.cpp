#include <gtest/gtest.h>

#include "common/error.h"
#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/result_document.h"
#include "reports/cls_rs.h"
#include "support/test_db.h"

namespace ent {
namespace {

class ReportJobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Exec(
        "create table customer (cusid int primary key, company varchar(50), fname varchar(30), "
        "lname varchar(30), ahtel varchar(3), htel varchar(8), abtel varchar(3), btel varchar(8));"
        "insert into customer values (1, 'O''Brien Auto', 'Pat', 'Lee', '555', '555-0100', '', '');"
        "insert into customer values (2, 'Acme', null, 'Smith', '555', '555-0101', '', '');");
    SetShopConnectionString(db_.connection_string());
  }
  // What a job posts: its status and its document's text ("" for none).
  static std::pair<std::string, std::string> Posted(clsPrebuiltReport& job) {
    auto result = job.generateDOC();
    EXPECT_TRUE(result);
    return {job.StatusStr, result && result->XMLDocument() ? result->XMLDocument()->Text() : ""};
  }
  static std::pair<std::string, std::string> CustomSql(const std::string& sql) {
    clsPrebuiltReport job;
    job.CustomReport = true;
    job.sqlString = sql;
    return Posted(job);
  }
  test::TestDb db_;
};

TEST_F(ReportJobTest, CustomSqlGivesTheRowsetDocumentOrSaysWhyNot) {
  // No rs:insert here.
  const auto [status, xml] = CustomSql("select cusid, company, fname from customer order by cusid");
  EXPECT_EQ(status, "0");
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(xml.c_str()));
  EXPECT_EQ(doc.select_nodes("/xml/rs:data/z:row").size(), 2u);
  EXPECT_EQ(std::string(doc.select_node("//rs:data/z:row").node().attribute("company").value()),
            "O'Brien Auto");
  EXPECT_FALSE(doc.select_node("//rs:data/z:row[2]").node().attribute("fname"));  // null left out

  EXPECT_EQ(CustomSql("select * from customer where cusid = 99"),
            std::make_pair(std::string("No records found."), std::string()));
  EXPECT_EQ(CustomSql("select * from nosuch"),
            std::make_pair(std::string("no such table: nosuch"), std::string()));
}

TEST_F(ReportJobTest, AddedRowsStandDirectlyUnderRsData) {
  auto added = [](Recordset& rs, std::initializer_list<const char*> labels) {
    for (const char* c : labels) {
      rs.AddNew();
      rs.Set(size_t{0}, Variant(c));
    }
    rs.Update();
  };
  Recordset rs;
  rs.AppendField(AppendedField("Sales_Class"));
  for (const char* name : {"Amount", "Note", "Extra"}) rs.AppendField(AppendedField(name));
  rs.Open();
  added(rs, {"OIL", "TIRES", "[b]TOTAL"});
  rs.MoveFirst();
  // Long enough to wrap before the fourth attribute.
  rs.Set(1, Variant(std::string(50, '9')));
  rs.Set(2, Variant(std::string(50, 'n')));
  rs.Set(3, Variant("x"));
  EXPECT_NE(rs.SaveToString().find("<rs:insert>"), std::string::npos);
  auto document = ResultDocument::FromRowset(rs);
  const std::string text = document->Text();
  EXPECT_EQ(document->rows(), 3u);
  EXPECT_EQ(document->bytes(), text.size());
  EXPECT_EQ(text.find("rs:insert"), std::string::npos);
  // Written at the depth of query rows, wrapped with the continuation of that depth.
  EXPECT_NE(text.find("<rs:data>\r\n\t<z:row Sales_Class='OIL' Amount='" + std::string(50, '9') + "' Note='" +
                      std::string(50, 'n') + "'\r\n\t\t Extra='x'/>"),
            std::string::npos)
      << text;
  EXPECT_NE(
      text.find("\r\n\t<z:row Sales_Class='TIRES'/>\r\n\t<z:row Sales_Class='[b]TOTAL'/>\r\n</rs:data>"),
      std::string::npos)
      << text;

  // Rows of a query come first and rows added to it stay in rs:insert after them.
  auto query = Recordset::OpenQuery(db_.Connect(), "select company from customer order by cusid", true);
  query->Detach();
  added(*query, {"Added"});
  const std::string mixed = ResultDocument::FromRowset(*query)->Text();
  EXPECT_NE(mixed.find("\t<z:row company='Acme'/>\r\n\t<rs:insert>\r\n\t\t<z:row company='Added'/>"),
            std::string::npos)
      << mixed;
}

TEST_F(ReportJobTest, FreeSqlRowsetReadsForwardOnly) {
  const std::string sql = "select cusid, company, fname, cusid * 2 as twice from customer order by cusid";
  clsRS engine;
  std::string status;
  auto rs = engine.getCustomRS(sql, status);
  ASSERT_EQ(status, "0");
  EXPECT_EQ(rs->Get("company").text(), "O'Brien Auto");
  EXPECT_THROW(rs->MovePrevious(), Error);
  // Saving writes the current row and every later one, then stands at the end.
  rs->MoveNext();
  const std::string rest = rs->SaveToString();
  EXPECT_TRUE(rs->IsEof());
  EXPECT_EQ(rest.find("O&#x27;Brien"), std::string::npos);
  EXPECT_NE(rest.find("<z:row cusid='2' company='Acme' twice='4'/>"), std::string::npos) << rest;

  // The same text as a rowset holding every row, for declared and computed columns alike.
  db_.Exec(
      "create table visit (id int, at datetime, paid money);"
      "insert into visit values (1, '2024-03-01 10:20:30', 0.1);");
  for (const std::string& declared : {sql, std::string("select * from visit")})
    EXPECT_EQ(engine.getCustomRS(declared, status)->SaveToString(),
              Recordset::OpenQuery(db_.Connect(), declared, false)->SaveToString());
  EXPECT_NE(engine.getCustomRS("select * from visit", status)
                ->SaveToString()
                .find("at='2024-03-01T10:20:30' paid='0.1'"),
            std::string::npos);

  auto passed = engine.getCustomRS("select cusid from customer", status);
  passed->MoveNext();
  passed->MoveNext();
  EXPECT_TRUE(passed->IsEof());
  EXPECT_THROW(passed->MoveNext(), Error);
}

TEST_F(ReportJobTest, CatalogueCodesNoticesAndParameters) {
  auto run = [](const std::string& code, std::vector<std::string> params = {}) {
    clsPrebuiltReport job;
    job.reportName = code;
    for (size_t i = 0; i < params.size(); ++i) job.addParam("p" + std::to_string(i), params[i]);
    const auto [status, xml] = Posted(job);
    return status + (xml.empty() ? "" : " and a document");
  };
  EXPECT_EQ(run("NOSUCH01"), "Prebuilt report not found.");
  EXPECT_EQ(run("transreq"), "Prebuilt report not found. Please Run Version 4 of the Enterprise Client.");
  EXPECT_EQ(run("entcustsrch", {"", "O'Brien%"}), "0 and a document");

  clsPrebuiltReport job;
  job.addParam("p0", "x");
  EXPECT_THROW(job.addParam("p0", "y"), Error);
  EXPECT_EQ(job.getParam("p9"), "");
}

TEST_F(ReportJobTest, ConnectionFailureBecomesTheStatus) {
  SetShopConnectionString("Provider=SQLite;Data Source=/nonexistent/shop.db");
  clsPrebuiltReport job;
  job.reportName = "INVSUM01";
  const auto [status, xml] = Posted(job);
  EXPECT_NE(status.find("Cannot open the shop database"), std::string::npos) << status;
  EXPECT_EQ(xml, "");
}

}  // namespace
}  // namespace ent
