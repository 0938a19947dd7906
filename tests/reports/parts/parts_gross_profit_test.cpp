// Parts gross profit on a shop made by hand: which lines are listed, the unit cost, and the margin
// of the sales-class pricing band at its edges.
#include <gtest/gtest.h>

#include "reports/parts/parts_shop.h"

namespace ent {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class PartsGrossProfitTest : public ::testing::Test {
 protected:
  PartsGrossProfitTest() {
    shop.Insert("supplier", {{"supid", "1"}, {"company", "'Acme Parts'"}});
    shop.Insert("jobheader", {{"jobid", "7"}, {"jobnum", "' J-7 '"}});
    Band(1, "'BRAKES'", "0", "10", "40");
    Band(2, "'BRAKES'", "10.01", "50", "30");
    Band(3, "'OIL'", "1", "100", "20");
    Order(1, 11, 0, "'ON-11'", "'2024-05-10'");
    Order(2, 0, 5, "'CR-5'", "'2024-05-20'");
    Order(3, 12, 0, "'ON-12'", "'2024-06-01'");
  }
  void Band(int id, const std::string& sales_class, const std::string& from, const std::string& to,
            const std::string& margin) {
    shop.Insert("SalesClassInventoryIndexPricing", {{"pricingid", std::to_string(id)},
                                                    {"salesclass", sales_class},
                                                    {"CostFrom", from},
                                                    {"CostTo", to},
                                                    {"profitMargin", margin}});
  }
  void Order(int woid, int invoice, int credit, const std::string& number, const std::string& date) {
    shop.Insert("wo", {{"woid", std::to_string(woid)},
                       {"invoiceid", std::to_string(invoice)},
                       {"credid", std::to_string(credit)},
                       {"stateandnumber", number},
                       {"latestdate", date}});
  }
  // A line of work order `woid` (credit invoice `credit`): {column, literal} pairs beyond the ids.
  void Line(int id, int woid, int credit, std::map<std::string, std::string> values) {
    values["wopartsid"] = std::to_string(id);
    values["woid"] = std::to_string(woid);
    values["credid"] = std::to_string(credit);
    if (!values.count("invsupid")) values["invsupid"] = "1";
    if (!values.count("SalesClass")) values["SalesClass"] = "'BRAKES'";
    shop.Insert("woparts", values);
  }
  Rows Run(const std::string& from, const std::string& to, std::string& err) {
    auto rs = shop.engine().getPartsGPReport(from, to, err);
    return rs ? test::Cells(*rs) : Rows{{"<none>"}};
  }

  test::PartsShop shop;
};

TEST_F(PartsGrossProfitTest, ListsInvoiceLinesWithACostAndEveryCreditLine) {
  Line(1, 1, 0,
       {{"description", "'Brake pad'"},
        {"qty", "2"},
        {"invcost", "20"},
        {"partsea", "25"},
        {"totparts", "50"},
        {"margpartsper", "60"},
        {"presetjobid", "7"}});
  // Unit cost 10.01 is where the second band starts; the supplier has no row; no preset job.
  Line(2, 1, 0,
       {{"description", "'Rotor'"},
        {"qty", "1"},
        {"invcost", "10.01"},
        {"partsea", "15"},
        {"totparts", "15"},
        {"margpartsper", "33.27"},
        {"invsupid", "99"}});
  Line(3, 1, 0, {{"description", "'Free sample'"}, {"qty", "1"}, {"invcost", "0"}, {"partsea", "0"}});
  // Quantity 0: no division, unit cost 0.00, below the only OIL band.
  Line(4, 1, 0,
       {{"description", "'Zero qty'"},
        {"qty", "0"},
        {"invcost", "5"},
        {"partsea", "9"},
        {"SalesClass", "'OIL'"}});
  Line(5, 1, 0, {{"description", "'Kit bolt'"}, {"qty", "1"}, {"invcost", "5"}, {"presetpkg", "1"}});
  Line(6, 1, 0,
       {{"description", "'Brake kit'"},
        {"qty", "1"},
        {"invcost", "30"},
        {"partsea", "60"},
        {"totparts", "60"},
        {"margpartsper", "50"},
        {"presetpkg", "1"},
        {"presetheader", "1"},
        {"presetjobid", "7"}});
  Line(7, 2, 5,
       {{"description", "'Returned pad'"},
        {"qty", "1"},
        {"invcost", "0"},
        {"partsea", "25"},
        {"totparts", "-25"}});
  Line(8, 1, 0, {{"description", "'Skipped'"}, {"qty", "1"}, {"invcost", "10"}, {"skip", "'Yes'"}});
  Line(9, 3, 0, {{"description", "'Next month'"}, {"qty", "1"}, {"invcost", "10"}});

  std::string err;
  EXPECT_EQ(Run("5/1/2024", "5/31/2024", err),
            (Rows{{"ON-11", "5/10/2024", "Brake pad", "10.00", "25.00", "2.00", "50.00", "60.00", "40.00",
                   "Acme Parts", "BRAKES", "J-7"},
                  {"ON-11", "5/10/2024", "Rotor", "10.01", "15.00", "1.00", "15.00", "33.27", "30.00", "",
                   "BRAKES", ""},
                  {"ON-11", "5/10/2024", "Zero qty", "0.00", "9.00", "0.00", "0.00", "0.00", "0.00",
                   "Acme Parts", "OIL", ""},
                  {"ON-11", "5/10/2024", "Brake kit", "30.00", "60.00", "1.00", "60.00", "50.00", "30.00",
                   "Acme Parts", "BRAKES", "J-7"},
                  {"CR-5", "5/20/2024", "Returned pad", "0.00", "25.00", "1.00", "-25.00", "0.00", "40.00",
                   "Acme Parts", "BRAKES", ""},
                  {"[b]TOTAL", "", "", "50.01", "134.00", "5.00", "100.00", "", "", "", "", ""}}));
  EXPECT_EQ(err, "0");

  auto empty = shop.engine().getPartsGPReport("1/1/2020", "1/31/2020", err);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->fields().size(), 12u);
  EXPECT_EQ(empty->RecordCount(), 0u);
}

TEST_F(PartsGrossProfitTest, AMissingOrOverlongValueEndsTheReport) {
  Line(1, 1, 0, {{"description", "null"}, {"qty", "1"}, {"invcost", "3"}});
  std::string err;
  EXPECT_EQ(Run("5/1/2024", "5/31/2024", err), (Rows{{"<none>"}}));
  EXPECT_EQ(err, "Invalid use of Null");

  shop.Exec("update woparts set description = '" + std::string(51, 'x') + "'");
  EXPECT_EQ(Run("5/1/2024", "5/31/2024", err), (Rows{{"<none>"}}));
  EXPECT_NE(err, "0");

  // A quote in a date stays inside the SQL literal: nothing matches, nothing else is selected.
  EXPECT_EQ(Run("5/1/2024' or 1=1 --", "5/31/2024", err), Rows{});
  EXPECT_EQ(err, "0");
}

}  // namespace
}  // namespace ent
