// Every sales and marketing code answers through the catalogue on the small sample shop.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/thread_values.h"
#include "report/cls_prebuilt_report.h"
#include "report/result_document.h"
#include "sampledb/sample_db.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

TEST(SalesCatalogue, EveryCodeAnswersOnTheSampleShop) {
  test::TempDir dir;
  sampledb::Options options;
  options.size = sampledb::Size::kSmall;
  const std::string path = dir.file("shop.db");
  sampledb::CreateSampleDb(path, options);
  SetShopConnectionString("Provider=SQLite;Data Source=" + path);

  struct Case {
    std::string code;
    std::vector<std::string> params;
    const char* first_column;
  };
  const std::vector<Case> cases = {
      {"sc01", {"1/1/2024", "12/31/2024", "true"}, "Sales_Class"},
      {"SC01", {"1/1/2024", "12/31/2024", "false"}, "Sales_Class"},
      {"SALESCOMP01", {"1/1/2024", "12/31/2024", "1/1/2023", "12/31/2023"}, "Total_Sales_1"},
      {"CARCOUNT01", {"1/1/2023", "12/31/2025"}, "Invoice_Type"},
      {"GENMARG01", {"1/1/2024", "3/31/2024"}, "RO_Date"},
      {"PROFBYVEH01", {"1/1/2024", "12/31/2024"}, "Make"},
      {"DSR01", {"6/28/2024", "true"}, "Sales_Class"},
      {"POSTCARDLOF01", {"1/1/2023", "12/31/2023", "1/1/2025", "12/31/2025"}, "Company"},
      {"POSTCARDNONLOF01", {"1/1/2023", "12/31/2023", "6/1/2025", "12/31/2025"}, "Company"},
      {"LOYAL01", {"1/1/2023", "12/31/2025", "2", "100", "1990"}, "Company"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.code);
    clsPrebuiltReport job;
    job.reportName = c.code;
    for (size_t i = 0; i < c.params.size(); ++i) job.addParam("p" + std::to_string(i), c.params[i]);
    auto result = job.generateDOC();
    EXPECT_EQ(job.StatusStr, "0");
    ASSERT_TRUE(result && result->XMLDocument());
    const pugi::xml_document& doc = *result->XMLDocument();
    EXPECT_GT(doc.select_nodes("//rs:data/z:row").size(), 0u);
    EXPECT_TRUE(doc.select_node("//rs:data/z:row").node().attribute(c.first_column))
        << DocumentXmlText(doc).substr(0, 3000);
  }
}

}  // namespace
}  // namespace ent
