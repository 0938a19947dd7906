// Invariants of the sample shop that the reports depend on, checked by SQL on real files.
#include "sampledb/sample_db.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common/error.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent::sampledb {
namespace {

using test::QueryCount;

std::string Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string Create(const test::TempDir& dir, const std::string& name, Size size, uint64_t seed) {
  Options options;
  options.size = size;
  options.seed = seed;
  CreateSampleDb(dir.file(name), options);
  return dir.file(name);
}

TEST(SampleDb, SameSeedGivesTheSameFile) {
  test::TempDir dir;
  for (Size size : {Size::kSmall, Size::kMedium}) {
    const std::string a = Bytes(Create(dir, "a.db", size, 42));
    EXPECT_EQ(a, Bytes(Create(dir, "b.db", size, 42)));
    EXPECT_NE(a, Bytes(Create(dir, "c.db", size, 43)));
    for (const char* name : {"a.db", "b.db", "c.db"}) std::filesystem::remove(dir.file(name));
  }
}

TEST(SampleDb, RefusesAnExistingFileUnlessToldToReplaceIt) {
  test::TempDir dir;
  const std::string path = dir.file("existing.db");
  std::ofstream(path) << "keep me";
  Options options;
  options.size = Size::kSmall;
  EXPECT_THROW(CreateSampleDb(path, options), Error);
  EXPECT_EQ(Bytes(path), "keep me");
  EXPECT_FALSE(std::filesystem::exists(path + ".partial"));

  options.replace = true;
  EXPECT_FALSE(CreateSampleDb(path, options).empty());
  EXPECT_EQ(test::QueryValueOn(path, "select count(*) from wo"), "300");
  EXPECT_THROW(CreateSampleDb(dir.file("no-such-folder/x.db"), options), Error);
}

TEST(SampleDb, CommandLine) {
  test::TempDir dir;
  const std::string path = dir.file("cli.db");
  auto run = [&](const std::string& args) {
    const int status =
        std::system((std::string(ENTPRCREQ_BINARY) + " sample-db " + args + " >/dev/null 2>&1").c_str());
    return WEXITSTATUS(status);
  };
  EXPECT_EQ(run("--out " + path + " --size small --seed 3"), 0);
  const std::string first = Bytes(path);
  EXPECT_EQ(run("--out " + path + " --size small --seed 4"), 1);
  EXPECT_EQ(Bytes(path), first);
  EXPECT_EQ(run("--out " + path + " --size small --seed 4 --force"), 0);
  EXPECT_NE(Bytes(path), first);
  EXPECT_EQ(run("--out " + path + " --size huge"), 2);
  EXPECT_EQ(run("--out " + path + " --seed -1"), 2);
  EXPECT_EQ(run("--size small"), 2);
}

// Each query counts what must never occur in the sample shop.
const char* const kNever[] = {
    // Every transaction and the whole ledger sum to zero, in whole cents, each on one date, each
    // posting in a fiscal year and on an account of the chart.
    "select count(*) from (select transid from ChartOfAccountsGLPOSTINGTABLE group by transid having "
    "sum(round(amt * 100)) <> 0 or count(distinct transdate) > 1)",
    "select sum(round(amt * 100)) from ChartOfAccountsGLPOSTINGTABLE",
    "select count(*) from ChartOfAccountsGLPOSTINGTABLE where abs(amt * 100 - round(amt * 100)) > 0.000001",
    "select count(*) from ChartOfAccountsGLPOSTINGTABLE g where not exists (select 1 from "
    "ChartOfAccountsFiscalYearRange f where g.transdate between f.fiscalyearstartdate and "
    "f.fiscalyearenddate) or chid not in (select chid from chartofaccounts)",
    // The receivable of an invoice or credit invoice is what was charged to the customer's account.
    "select count(*) from wo where invoiceid <> 0 and wodeleted = 0 and abs((select ifnull(sum(amt), 0) "
    "from ChartOfAccountsGLPOSTINGTABLE g where g.chid = 9 and g.srcmod = 'INVOICE' and g.srcid = "
    "wo.invoiceid and g.srcid2 = wo.cusid) - (select ifnull(sum(payment), 0) from wopaymentadv where id = "
    "wo.woid and type = 'A/R')) > 0.001",
    "select count(*) from wo where credid <> 0 and wodeleted = 0 and abs((select ifnull(sum(amt), 0) from "
    "ChartOfAccountsGLPOSTINGTABLE g where g.chid = 9 and g.srcmod = 'CREDINVOICE' and g.srcid = wo.credid "
    "and g.srcid2 = wo.cusid) - (select ifnull(sum(payment), 0) from wopaymentadv where id = wo.woid and "
    "type = 'A/R')) > 0.001",
    // Sales taxes go to the payables account with the tax number as the party; each tax posting of
    // an invoice is its screen tax.
    "select count(*) from ChartOfAccountsGLPOSTINGTABLE where (srcmod like 'TAX%' and srcid2 not in (1, 2)) "
    "or (srcmod in ('TAX1', 'TAX2') and chid <> 10)",
    "select count(*) from wo where invoiceid <> 0 and wodeleted = 0 and abs(screentx1 + (select "
    "ifnull(sum(amt), 0) from ChartOfAccountsGLPOSTINGTABLE g where srcmod = 'TAX1' and g.srcid = "
    "wo.invoiceid)) > 0.001",
    // Supplier postings name a supplier; no customer owes a negative amount.
    "select count(*) from ChartOfAccountsGLPOSTINGTABLE where srcmod in ('SUPTRANS', 'SUPMAKEPAYMENT') and "
    "chid = 10 and srcid2 not in (select supid from supplier)",
    "select count(*) from (select srcid2, sum(amt) as balance from ChartOfAccountsGLPOSTINGTABLE where chid "
    "= 9 group by srcid2) where balance < -0.001",
    // Work order totals agree with their counted lines, each line with its parts, and the payments
    // of a document with its total; lines carry the numbers of their work order.
    "select count(*) from (select w.*, ifnull(sum(p.totparts - p.discpart), 0) as parts, "
    "ifnull(sum(p.discpart), 0) as pdisc, ifnull(sum(p.labour - p.disclab), 0) as lab, "
    "ifnull(sum(p.disclab), 0) as ldisc, ifnull(sum(p.otherchargeamt), 0) as other, "
    "ifnull(sum(p.levyItemAmount), 0) as levy from wo w left join woparts p on p.woid = w.woid and p.skip "
    "<> 'Yes' and not (p.presetpkg = 1 and p.presetheader = 0) group by w.woid) where abs(screenparts - "
    "parts) > 0.001 or abs(screentotpartsdisc - pdisc) > 0.001 or abs(screenlabour - lab) > 0.001 or "
    "abs(screentotlabourdisc - ldisc) > 0.001 or abs(screenother - other) > 0.001 or abs(screenlevy - levy) "
    "> 0.001 or abs(screentotdiscount - pdisc - ldisc) > 0.001 or abs(screensubtotal - (parts + lab + other "
    "+ levy)) > 0.001 or abs(screentotal - (screensubtotal + screentx1 + screentx2)) > 0.001",
    "select count(*) from woparts where abs(total - (totparts - discpart + labour - disclab + "
    "otherchargeamt + levyItemAmount)) > 0.001",
    "select count(*) from wo where (invoiceid <> 0 or credid <> 0) and wodeleted = 0 and abs(screentotal - "
    "(select ifnull(sum(payment), 0) from wopaymentadv where id = wo.woid)) > 0.001",
    "select count(*) from woparts p left join wo w on w.woid = p.woid where w.woid is null or p.invoiceid "
    "<> w.invoiceid or p.credid <> w.credid or p.estid <> w.estid",
    // Invoice numbers are unique; a credit invoice has no invoice number and negative amounts.
    "select count(*) from (select invoiceid from wo where invoiceid <> 0 group by invoiceid having count(*) "
    "> 1)",
    "select count(*) from wo where credid <> 0 and (invoiceid <> 0 or screentotal >= 0)",
    "select count(*) from woparts where skip is null or skip not in ('Yes', 'No')",
    // Package headers carry the cost of their contents.
    "select count(*) from (select woid, sum(iif(presetheader = 1, invcost, -invcost)) as d from woparts "
    "where presetpkg = 1 group by woid) where abs(d) > 0.001",
    // Every class used on a line has pricing bands, in order.
    "select count(distinct SalesClass) from woparts where SalesClass <> '' and SalesClass not in (select "
    "salesclass from SalesClassInventoryIndexPricing)",
    "select count(*) from SalesClassInventoryIndexPricing where CostFrom > CostTo",
    // A child account sits one level below its parent, and between the two come only the parent's
    // descendants (a group is the run of deeper accounts after its parent).
    "select count(*) from chartofaccounts c join chartofaccounts p on p.chid = c.parentid where c.sublevel "
    "<> p.sublevel + 1 or c.accountnumber <= p.accountnumber or c.fivetypename <> p.fivetypename or c.type "
    "<> p.type or exists (select 1 from chartofaccounts x where x.accountnumber > p.accountnumber and "
    "x.accountnumber < c.accountnumber and x.sublevel <= p.sublevel)",
    "select count(*) from chartofaccounts where parentid = 0 and sublevel <> 0",
    // Values are stored in their SQLite forms; telephones are stored split.
    "select count(*) from ChartOfAccountsGLPOSTINGTABLE where typeof(amt) <> 'real' or transdate not glob "
    "'202[345]-[01][0-9]-[0-3][0-9] 00:00:00'",
    "select count(*) from wo where typeof(screentotal) <> 'real' or wodeleted not in (0, 1) or latestdate "
    "not glob '202[345]-[01][0-9]-[0-3][0-9] 00:00:00' or wodate > latestdate",
    "select count(*) from customer where htel <> '' and (length(ahtel) <> 3 or htel not glob "
    "'[0-9][0-9][0-9]-[0-9][0-9][0-9][0-9]')",
    // What is on hand is what the transactions brought in and took out; lines and stock name
    // existing parts, suppliers and users.
    "select count(*) from inventory i where abs(QOH - (select ifnull(sum(qty), 0) from invtrans t where "
    "t.invid = i.invid)) > 0.001",
    "select count(*) from woparts where invinvid <> 0 and invinvid not in (select invid from inventory)",
    "select count(*) from inventory where supid not in (select supid from supplier)",
    "select count(*) from woparts where mechuserid <> '' and mechuserid not in (select userid from "
    "usertable)",
};

// Rows of each kind the reports must meet in the sample shop, as what follows "select count(*) from".
const char* const kSome[] = {
    "(select srcid2, sum(amt) as balance from ChartOfAccountsGLPOSTINGTABLE where chid = 9 group by srcid2) "
    "where balance > 0.001",
    "wo where invoiceid <> 0 and wodeleted = 0", "wo where credid <> 0",
    "wo where wodeleted = 1 and invoiceid = 0", "wo where wodeleted = 1 and invoiceid <> 0",
    "wo where chkvoid = 1", "wo where estid <> 0 and chkestpending = 1",
    "wo where estid <> 0 and chkestpending = 0",
    "wo where invoiceid = 0 and credid = 0 and estid = 0 and chkvoid = 0 and wodeleted = 0",
    "wo where vehid = 0", "wo where archive = 1", "wo where invoiceid <> 0 and screentotal = 0",
    "wo where screentotdiscount > 0", "woparts where skip = 'Yes'",
    "woparts where presetpkg = 1 and presetheader = 1", "woparts where presetpkg = 1 and presetheader = 0",
    "woparts where SalesClass = ''", "woparts where otherchargeid > 0", "woparts where levyItemAmount > 0",
    "woparts where description like '%DRIVE_CLEAN%'", "woparts where invcorecost > 0",
    "SalesClassInventoryIndexPricing where salesclass = 'UNCLASSIFIED'",
    // Parents with and without postings of their own.
    "chartofaccounts p where exists (select 1 from chartofaccounts c where c.parentid = p.chid) and exists "
    "(select 1 from ChartOfAccountsGLPOSTINGTABLE g where g.chid = p.chid)",
    "chartofaccounts p where exists (select 1 from chartofaccounts c where c.parentid = p.chid) and not "
    "exists (select 1 from ChartOfAccountsGLPOSTINGTABLE g where g.chid = p.chid)",
    // Some customers have no telephone, some do not want mail.
    "customer where ahtel = '555' and htel like '555-01__'", "customer where htel = '' and btel = ''",
    "customer where chksolicit = 0", "inventory where QOH <= 0",
    "timeclock t join wo on wo.woid = t.woid where wo.chkvoid = 1"};

TEST(SampleShop, HoldsItsInvariants) {
  for (const char* sql : kNever) EXPECT_EQ(QueryCount(sql), 0) << sql;
  for (const char* rows : kSome)
    EXPECT_GT(QueryCount(std::string("select count(*) from ") + rows), 0) << rows;
}

}  // namespace
}  // namespace ent::sampledb
