#include <gtest/gtest.h>

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
  SetShopConnectionString("Provider=SQLite;Data Source=/nonexistent/shop.db");
  const auto [unreachable, none] = CustomSql("select 1");
  EXPECT_EQ(unreachable.rfind("Cannot open the shop database", 0), 0u) << unreachable;
  EXPECT_EQ(none, "");
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

}  // namespace
}  // namespace ent
