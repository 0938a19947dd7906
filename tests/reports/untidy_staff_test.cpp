// Purchases, technicians and the invoice look-ups on the untidy shop against queries of our own:
// the supplier purchases of a year, each technician's lines (their cost is the hand-made shop's
// test), and one invoice and one credit invoice as documents.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "reports/untidy_figures.h"

namespace ent::test::untidy {
namespace {

const std::string kYear = " between '2024-01-01 00:00:00' and '2024-12-31 00:00:00'";

TEST(UntidyStaff, SupplierPurchasesOfTheYearInCompanyOrder) {
  const ReportRun run = Report("TOTALSUPPURCH01", {"1/1/2024", "12/31/2024"});
  ASSERT_EQ(run.status, "0");
  std::vector<std::string> suppliers = ColumnOf(run, "Supplier");
  ASSERT_FALSE(suppliers.empty());
  suppliers.pop_back();  // the total line
  EXPECT_EQ(suppliers, Values("select ifnull(company, '') from supplier order by company"));
  double total = 0;
  for (const std::string& id : Values("select supid from supplier"))
    total += Sum("select sum(purchase) from suph" + id + " where purchdate" + kYear);
  EXPECT_GT(total, 0);
  EXPECT_NEAR(TotalOf(run, "Total_Purchases"), total, 0.005);
}

// The technicians in the reports' order, and the lines credited to each.
const std::string kTechnicians =
    "select usertable.userid from usertable inner join mechanic on usertable.userid = "
    "mechanic.userid where usertype in ('Service Advisor/Technician', 'Technician')";

TEST(UntidyStaff, TechnicianPerformanceSumsEachTechniciansLines) {
  struct Case {
    std::string pending, voided, lines;
  };
  const std::string packaged = " and (presetpkg = 0 or (presetpkg = 1 and presetheader = 1))";
  const std::vector<Case> cases = {
      {"false", "false",
       "wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid and (woparts.invoiceid <> 0 or "
       "woparts.credid <> 0)"},
      {"true", "false",
       "wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid and wo.estid = woparts.estid and "
       "(woparts.invoiceid <> 0 or woparts.credid <> 0 or (chkestpending = 0 and wo.estid <> 0))"},
      {"true", "true",
       "wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid and wo.woid = woparts.woid and "
       "wo.estid = woparts.estid and (woparts.invoiceid <> 0 or woparts.credid <> 0 or wo.chkvoid = 1 or "
       "(wo.estid <> 0 and wo.chkestpending = 0))"},
  };
  const std::vector<std::string> ids = Values(kTechnicians + " order by lname, fname");
  ASSERT_GT(ids.size(), 1u);
  for (const Case& c : cases) {
    const ReportRun run = Report("TECHPERF01", {"1/1/2024", "12/31/2024", c.pending, c.voided});
    ASSERT_EQ(run.status, "0");
    ASSERT_EQ(run.rows.size(), ids.size() + 1);
    const std::string lines = " from woparts, wo where " + c.lines + packaged +
                              " and wodeleted <> 1 and skip <> 'Yes' and latestdate" + kYear +
                              " and mechuserid = ";
    double total = 0;
    for (size_t i = 0; i < ids.size(); ++i) {
      const double figure =
          Sum("select sum(levyItemAmount + totparts + labour + otherchgdo - disclab - discpart)" + lines +
              "'" + ids[i] + "'");
      total += figure;
      EXPECT_NEAR(Amount(Cell(run.rows[i], "Total")), figure, 0.005) << ids[i];
    }
    EXPECT_GT(total, 0);
    EXPECT_NEAR(TotalOf(run, "Total"), total, 0.005) << c.pending;
  }
}

// One invoice's document: its lines (a credit's shown with the sign turned), totals and customer.
void ExpectInvoice(const std::string& number, bool credit) {
  const ReportRun run = Report("ENTINVOICE", {number, credit ? "Cr" : "In"});
  ASSERT_EQ(run.status, "0") << number;
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(run.document.c_str()));
  const std::string document = std::string(credit ? "credid" : "invoiceid") + " = " + number;
  const pugi::xpath_node_set items = doc.select_nodes("/RepairOrder/Items/item");
  EXPECT_EQ(items.size(), Count("select count(*) from woparts where " + document));
  double shown = 0;
  for (const pugi::xpath_node& item : items) shown += item.node().attribute("Total").as_double();
  EXPECT_NEAR(shown, (credit ? -1 : 1) * Sum("select sum(total) from woparts where " + document), 0.005);
  EXPECT_NEAR(doc.select_node("/RepairOrder/Totals/Total").node().text().as_double(),
              Sum("select screentotal from wo where " + document), 0.005);
  EXPECT_EQ(std::string(doc.select_node("/RepairOrder/Customer/Company").node().text().get()),
            Value("select ifnull(company, '') from customer where cusid = (select cusid from wo where " +
                  document + ")"));
}

TEST(UntidyStaff, InvoiceDocumentsAndACustomersInvoiceList) {
  // The part credited in full: its invoice and its credit.
  const std::string returned =
      "select woid from woparts where invinvid = (select invid from inventory where partnum "
      "= 'RETURNED-IN-FULL')";
  ExpectInvoice(Value("select max(invoiceid) from wo where woid in (" + returned + ")"), false);
  ExpectInvoice(Value("select max(credid) from wo where woid in (" + returned + ")"), true);
  // An invoice of a customer with a name at full width and lines without a description.
  const std::string wide = Value(
      "select wo.invoiceid from wo inner join customer on wo.cusid = customer.cusid where "
      "length(company) = 60 and invoiceid <> 0 and woid in (select woid from woparts where "
      "description is null) limit 1");
  ASSERT_FALSE(wide.empty());
  ExpectInvoice(wide, false);

  const std::string customer =
      Value("select cusid from wo where credid <> 0 group by cusid order by count(*) desc");
  const ReportRun list = Report("ENTCUSTINVOICES", {"", customer});
  ASSERT_EQ(list.status, "0");
  const std::string documents = " from wo where (invoiceid <> 0 or credid <> 0) and cusid = " + customer;
  EXPECT_EQ(list.rows.size(), Count("select count(*)" + documents));
  double total = 0;
  for (const Row& row : list.rows) total += Amount(Cell(row, "Total"));
  EXPECT_NEAR(total, Sum("select sum(screentotal)" + documents), 0.005);
  EXPECT_EQ(ColumnOf(list, "InvoiceNum"),
            Values("select ifnull(stateandnumber, '')" + documents + " order by latestdate, invoiceid"));
}

}  // namespace
}  // namespace ent::test::untidy
