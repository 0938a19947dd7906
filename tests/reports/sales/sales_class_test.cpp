#include <gtest/gtest.h>

#include "reports/sales/sales_shop.h"

namespace ent {
namespace {

using Row = std::map<std::string, std::string>;

// Sold, cost, profit, margin of one group of the row labelled `label`.
std::vector<std::string> Group(Recordset& rs, const std::string& label, const std::string& prefix) {
  Row row = test::RowOf(rs, label);
  return {row[prefix + "_Sold"], row[prefix + "_Cost"], row[prefix + "_Profit"], row[prefix + "_Margin"]};
}
using V = std::vector<std::string>;

class SalesClassReport : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* c : {"'BRAKE PARTS'", "'OIL'", "'UNCLASSIFIED'", "'TOWING'", "null"})
      shop_.SalesClass(c);
    shop_.WorkOrder(1, 101, 0, "3/5/2024");
    shop_.WorkOrder(2, 102, 0, "4/2/2024");  // after the range
    shop_.WorkOrder(3, 0, 0, "3/6/2024");    // still open
    // Parts sold at a loss.
    shop_.Line(
        1, {{"SalesClass", "'BRAKE PARTS'"}, {"totparts", "100"}, {"invcost", "120"}, {"mechpartstot", "5"}});
    shop_.Line(1, {{"SalesClass", "'OIL'"},
                   {"totparts", "50"},
                   {"discpart", "5"},
                   {"invcost", "20"},
                   {"mechpartstot", "2"},
                   {"labour", "250"},
                   {"marglabdol", "150"},
                   {"otherchargeid", "1"},
                   {"otherchargeamt", "10"},
                   {"othCHRGcost", "4"}});
    shop_.Line(1, {{"SalesClass", "''"}, {"labour", "80"}});
    // Left out: a skipped line, a package's content line, a line out of range, an open work order.
    shop_.Line(1, {{"SalesClass", "'OIL'"}, {"totparts", "999"}, {"skip", "'Yes'"}});
    shop_.Line(1, {{"SalesClass", "'OIL'"}, {"totparts", "888"}, {"presetpkg", "1"}});
    shop_.Line(2, {{"SalesClass", "'OIL'"}, {"totparts", "1000"}});
    shop_.Line(3, {{"SalesClass", "'OIL'"}, {"totparts", "1000"}});
  }
  std::unique_ptr<Recordset> Run(bool techCosts) {
    std::string status;
    auto rs = shop_.engine().getSalesClassReport2("3/1/2024", "3/31/2024", techCosts, status);
    EXPECT_EQ(status, "0");
    return rs;
  }
  test::SalesShop shop_;
};

TEST_F(SalesClassReport, WithTechnicianCostsTheStoredLabourMarginIsTheProfit) {
  auto rs = Run(true);
  ASSERT_TRUE(rs);
  EXPECT_EQ(Group(*rs, "BRAKE PARTS", "Parts"), (V{"100.00", "125.00", "-25.00", "0.00"}));

  EXPECT_EQ(Group(*rs, "OIL", "Parts"), (V{"45.00", "22.00", "23.00", "51.11"}));
  EXPECT_EQ(Group(*rs, "OIL", "Labor"), (V{"250.00", "100.00", "150.00", "60.00"}));
  EXPECT_EQ(Group(*rs, "OIL", "Total"), (V{"305.00", "126.00", "179.00", "58.69"}));

  // No stored labour margin: all of the labour is cost.
  EXPECT_EQ(Group(*rs, "UNCLASSIFIED", "Labor"), (V{"80.00", "80.00", "0.00", "0.00"}));

  EXPECT_EQ(Group(*rs, "[b]TOTAL", "Labor"), (V{"330.00", "180.00", "150.00", "<null>"}));
  EXPECT_EQ(Group(*rs, "[b]TOTAL", "Total"), (V{"485.00", "331.00", "154.00", "<null>"}));
}

}  // namespace
}  // namespace ent
