// Every sales and marketing code answers through the catalogue on the small sample shop.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/sample_shop.h"

namespace ent {
namespace {

TEST(SalesCatalogue, EveryCodeAnswersOnTheSampleShop) {
  struct Case {
    std::string code;
    std::vector<std::string> params;
    std::string first_column;
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
    const test::ReportRun run = test::RunReport(c.code, c.params);
    EXPECT_EQ(run.status, "0");
    ASSERT_TRUE(run.has_document);
    EXPECT_FALSE(run.rows.empty());
    ASSERT_FALSE(run.columns.empty());
    EXPECT_EQ(run.columns[0], c.first_column);
  }
}

}  // namespace
}  // namespace ent
