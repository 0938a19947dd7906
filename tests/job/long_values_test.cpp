// Texts longer than 50 characters reach the head office whole, in result columns declared at least as
// wide as their longest value, on the sample shop and on a copy whose names fill their columns.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

size_t Characters(const std::string& s) {
  size_t n = 0;
  for (unsigned char c : s) n += (c & 0xC0) != 0x80;
  return n;
}

// Every column is declared 50 or wider and no value is longer than its column's declared width.
void ExpectValuesFitTheirColumns(const test::ReportRun& run, const std::string& what) {
  ASSERT_EQ(run.widths.size(), run.columns.size()) << what;
  for (size_t c = 0; c < run.columns.size(); ++c) {
    EXPECT_GE(run.widths[c], 50) << what << " " << run.columns[c];
    for (const auto& row : run.rows) {
      auto cell = row.find(run.columns[c]);
      if (cell != row.end()) {
        EXPECT_LE(Characters(cell->second), static_cast<size_t>(run.widths[c])) << what;
      }
    }
  }
}

size_t LongestIn(const test::ReportRun& run, const std::string& column) {
  size_t longest = 0;
  for (const auto& row : run.rows)
    if (auto cell = row.find(column); cell != row.end())
      longest = std::max(longest, Characters(cell->second));
  return longest;
}

// A copy of the sample shop whose customer, supplier and part names fill their columns (60, 30, 100).
class FullWidthShop {
 public:
  FullWidthShop() {
    std::filesystem::copy_file(test::SmallSampleShop(), path_);
    sqlite3* db = nullptr;
    sqlite3_open(path_.c_str(), &db);
    const char* widen =
        "update customer set company = substr(company || ' AUTOMOTIVE FLEET SERVICES AND LEASING "
        "INTERNATIONAL', 1, 60), fname = substr(fname || ' MAXIMILIAN-ALEXANDER', 1, 30), "
        "lname = substr(lname || ' VON HOHENZOLLERN-SIGMARINGEN', 1, 30);"
        "update supplier set company = substr(company || ' WHOLESALE AUTOMOTIVE PARTS DISTRIBUTION CORP', "
        "1, 60);"
        "update inventory set description = substr(description || ' WITH MOUNTING HARDWARE, GASKETS, "
        "INSTRUCTIONS AND A LIFETIME LIMITED WARRANTY', 1, 100);"
        "update woparts set description = substr(description || ' WITH MOUNTING HARDWARE, GASKETS, "
        "INSTRUCTIONS AND A LIFETIME LIMITED WARRANTY', 1, 100);";
    EXPECT_EQ(sqlite3_exec(db, widen, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
  }
  const std::string& path() const { return path_; }

 private:
  test::TempDir dir_;
  std::string path_ = dir_.file("shop.db");
};

TEST(LongValues, NamesAtTheirColumnsFullWidthsReachEveryReport) {
  FullWidthShop shop;
  struct Case {
    std::string code;
    std::vector<std::string> params;
    std::string long_column;  // a column that now holds values over 50 characters
  };
  const std::vector<Case> cases = {
      {"AP01", {"12/31/2025"}, "Company"},
      {"AR01", {"12/31/2025"}, "Company"},
      {"LOYAL01", {"1/1/2023", "12/31/2025", "1", "0", "0"}, "Company"},
      {"INVSUM01", {"1/1/2024", "12/31/2024", "true", "false", "false"}, "Company"},
      {"INVVAL01", {"%", "%", "%"}, "Description"},
      {"INVLIST01", {"%", "%", "%", "%", "%"}, "Description"},
      {"ENTCUSTSRCH", {"", "", "", "", "100"}, "company"},
      {"PARTGP01", {"1/1/2024", "12/31/2024"}, "Part_Description"},
  };
  for (const Case& c : cases) {
    test::ReportRun run = test::RunReportOn(shop.path(), c.code, c.params);
    ASSERT_EQ(run.status, "0") << c.code;
    ASSERT_GT(run.rows.size(), 1u) << c.code;
    EXPECT_GT(LongestIn(run, c.long_column), 50u) << c.code << " " << c.long_column;
    ExpectValuesFitTheirColumns(run, c.code);
    // Every supplier's purchases keep their full names too.
    if (c.code == "PARTGP01") {
      EXPECT_EQ(LongestIn(run, "Supplier_Name"), 60u);
    }
  }
}

}  // namespace
}  // namespace ent
