// Invariants of the sample shop that the reports depend on, checked by SQL on real files.
#include "sampledb/sample_db.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "common/error.h"

namespace ent::sampledb {
namespace {

namespace fs = std::filesystem;

// Every test process works in a folder of its own, removed at its end.
fs::path TempDir() {
  static const fs::path dir = [] {
    fs::path path = fs::temp_directory_path() / ("entprcreq-sampledb-" + std::to_string(::getpid()));
    fs::remove_all(path);
    fs::create_directories(path);
    return path;
  }();
  return dir;
}

class RemoveTempDir : public ::testing::Environment {
 public:
  void TearDown() override { fs::remove_all(TempDir()); }
};
[[maybe_unused]] ::testing::Environment* const kRemoveTempDir =
    ::testing::AddGlobalTestEnvironment(new RemoveTempDir);

std::string Bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

fs::path Create(const std::string& name, Size size, uint64_t seed) {
  const fs::path path = TempDir() / name;
  fs::remove(path);
  Options options;
  options.size = size;
  options.seed = seed;
  CreateSampleDb(path.string(), options);
  return path;
}

// A read-only connection with a few query helpers.
class Db {
 public:
  explicit Db(const fs::path& path) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    db_.reset(db);
  }

  // The rows of a query, each column as text ("" for NULL).
  std::vector<std::vector<std::string>> Rows(const std::string& sql) const {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db_.get(), sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
      ADD_FAILURE() << sqlite3_errmsg(db_.get()) << " in " << sql;
      return {};
    }
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> stmt(raw, sqlite3_finalize);
    std::vector<std::vector<std::string>> rows;
    while (sqlite3_step(raw) == SQLITE_ROW) {
      std::vector<std::string>& row = rows.emplace_back();
      for (int i = 0; i < sqlite3_column_count(raw); ++i) {
        const auto* text = sqlite3_column_text(raw, i);
        row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
      }
    }
    return rows;
  }

  std::string Text(const std::string& sql) const {
    const auto rows = Rows(sql);
    return rows.empty() || rows[0].empty() ? "" : rows[0][0];
  }
  int64_t Int(const std::string& sql) const { return std::stoll("0" + Text(sql)); }
  double Real(const std::string& sql) const {
    const std::string text = Text(sql);
    return text.empty() ? 0.0 : std::stod(text);
  }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db_{nullptr, sqlite3_close};
};

// The counted lines of a work order: not skipped, not the contents of a preset package.
constexpr char kCounted[] = "p.skip <> 'Yes' and not (p.presetpkg = 1 and p.presetheader = 0)";

class SampleShop : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { path_ = new fs::path(Create("small.db", Size::kSmall, 11)); }
  static void TearDownTestSuite() { delete path_; }
  SampleShop() : db_(*path_) {}

  static fs::path* path_;
  Db db_;
};
fs::path* SampleShop::path_ = nullptr;

TEST(SampleDb, SameSeedGivesTheSameFile) {
  for (Size size : {Size::kSmall, Size::kMedium}) {
    const fs::path a = Create("a.db", size, 42);
    const fs::path b = Create("b.db", size, 42);
    EXPECT_EQ(Bytes(a), Bytes(b));
    const fs::path c = Create("c.db", size, 43);
    EXPECT_NE(Bytes(a), Bytes(c));
  }
}

TEST(SampleDb, RefusesAnExistingFileUnlessToldToReplaceIt) {
  const fs::path path = TempDir() / "existing.db";
  std::ofstream(path) << "keep me";
  Options options;
  options.size = Size::kSmall;
  EXPECT_THROW(CreateSampleDb(path.string(), options), Error);
  EXPECT_EQ(Bytes(path), "keep me");
  EXPECT_FALSE(fs::exists(path.string() + ".partial"));

  options.replace = true;
  const auto counts = CreateSampleDb(path.string(), options);
  EXPECT_EQ(Db(path).Int("select count(*) from wo"), 300);
  EXPECT_FALSE(counts.empty());

  EXPECT_THROW(CreateSampleDb((TempDir() / "no-such-folder" / "x.db").string(), options), Error);
}

TEST(SampleDb, CommandLine) {
  const std::string binary = ENTPRCREQ_BINARY;
  const fs::path path = TempDir() / "cli.db";
  fs::remove(path);
  auto run = [&](const std::string& args) {
    const int status = std::system((binary + " sample-db " + args + " >/dev/null 2>&1").c_str());
    return WEXITSTATUS(status);
  };
  EXPECT_EQ(run("--out " + path.string() + " --size small --seed 3"), 0);
  const std::string first = Bytes(path);
  EXPECT_EQ(run("--out " + path.string() + " --size small --seed 4"), 1);
  EXPECT_EQ(Bytes(path), first);
  EXPECT_EQ(run("--out " + path.string() + " --size small --seed 4 --force"), 0);
  EXPECT_NE(Bytes(path), first);
  EXPECT_EQ(run("--out " + path.string() + " --size huge"), 2);
  EXPECT_EQ(run("--out " + path.string() + " --seed -1"), 2);
  EXPECT_EQ(run("--size small"), 2);
}

TEST_F(SampleShop, EveryTransactionAndTheWholeLedgerSumToZero) {
  EXPECT_EQ(
      db_.Int("select count(*) from (select transid from ChartOfAccountsGLPOSTINGTABLE group by transid "
              "having sum(round(amt * 100)) <> 0)"),
      0);
  EXPECT_EQ(db_.Int("select sum(round(amt * 100)) from ChartOfAccountsGLPOSTINGTABLE"), 0);
  // Amounts are whole cents; a transaction has one date.
  EXPECT_EQ(
      db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE where abs(amt * 100 - round(amt * 100)) "
              "> 0.000001"),
      0);
  EXPECT_EQ(
      db_.Int("select count(*) from (select transid from ChartOfAccountsGLPOSTINGTABLE group by transid "
              "having count(distinct transdate) > 1)"),
      0);
  // Every posting lies in a fiscal year.
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE g where not exists (select 1 from "
                    "ChartOfAccountsFiscalYearRange f where g.transdate between f.fiscalyearstartdate and "
                    "f.fiscalyearenddate)"),
            0);
}

TEST_F(SampleShop, PostingsNameTheirDocumentsAndParties) {
  // The receivable of an invoice or credit invoice is what was charged to the customer's account.
  for (const auto& [srcmod, key] : {std::pair{"INVOICE", "invoiceid"}, std::pair{"CREDINVOICE", "credid"}}) {
    const std::string sql = std::string("select count(*) from wo where ") + key +
                            " <> 0 and wodeleted = 0 and abs((select ifnull(sum(amt), 0) from "
                            "ChartOfAccountsGLPOSTINGTABLE g where g.chid = 9 and g.srcmod = '" +
                            srcmod + "' and g.srcid = wo." + key +
                            " and g.srcid2 = wo.cusid) - (select ifnull(sum(payment), 0) "
                            "from wopaymentadv where id = wo.woid and type = 'A/R')) > 0.001";
    EXPECT_EQ(db_.Int(sql), 0) << srcmod;
  }
  // Sales taxes go to the payables account with the tax number as the party; each tax posting
  // of an invoice is its screen tax.
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE where (srcmod like 'TAX%' and srcid2 "
                    "not in (1, 2)) or (srcmod in ('TAX1', 'TAX2') and chid <> 10)"),
            0);
  EXPECT_EQ(
      db_.Int("select count(*) from wo where invoiceid <> 0 and wodeleted = 0 and abs(screentx1 + "
              "(select ifnull(sum(amt), 0) from ChartOfAccountsGLPOSTINGTABLE g where srcmod = 'TAX1' and "
              "g.srcid = wo.invoiceid)) > 0.001"),
      0);
  // Supplier postings name a supplier; each purchase is booked with its tax.
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE where srcmod in ('SUPTRANS', "
                    "'SUPMAKEPAYMENT') and chid = 10 and srcid2 not in (select supid from supplier)"),
            0);
  for (const auto& row : db_.Rows("select supid from supplier")) {
    // The stock side of a purchase's transaction is the purchase amount.
    const std::string suph = "suph" + row[0];
    EXPECT_EQ(
        db_.Int(
            "select count(*) from " + suph +
            " s where abs(s.purchase - (select sum(amt) from "
            "ChartOfAccountsGLPOSTINGTABLE g where g.chid <> 10 and g.transdate = s.purchdate and "
            "g.transid = (select transid from ChartOfAccountsGLPOSTINGTABLE t where t.srcmod = 'SUPTRANS' "
            "and t.srcid = s.purchid and t.srcid2 = " +
            row[0] + "))) > 0.001"),
        0)
        << suph;
  }
  // No customer owes a negative amount, and some owe something at the end.
  const std::string balances =
      "(select srcid2, sum(amt) as balance from ChartOfAccountsGLPOSTINGTABLE where chid = 9 group by "
      "srcid2)";
  EXPECT_EQ(db_.Int("select count(*) from " + balances + " where balance < -0.001"), 0);
  EXPECT_GT(db_.Int("select count(*) from " + balances + " where balance > 0.001"), 0);
  for (const char* srcmod :
       {"INVOICE", "CREDINVOICE", "ARPAYMENT", "SUPTRANS", "SUPMAKEPAYMENT", "TAX1", "TAX2"}) {
    EXPECT_GT(db_.Int(std::string("select count(*) from ChartOfAccountsGLPOSTINGTABLE where srcmod = '") +
                      srcmod + "'"),
              0)
        << srcmod;
  }
}

TEST_F(SampleShop, WorkOrderTotalsAgreeWithTheirLines) {
  const std::string sums =
      "select w.woid, w.screenparts, w.screentotpartsdisc, w.screenlabour, w.screentotlabourdisc, "
      "w.screenother, "
      "w.screenlevy, w.screentotdiscount, w.screensubtotal, w.screentx1, w.screentx2, w.screentotal, "
      "ifnull(sum(p.totparts - p.discpart), 0) as parts, ifnull(sum(p.discpart), 0) as pdisc, "
      "ifnull(sum(p.labour - p.disclab), 0) as labour, ifnull(sum(p.disclab), 0) as ldisc, "
      "ifnull(sum(p.otherchargeamt), 0) as other, ifnull(sum(p.levyItemAmount), 0) as levy "
      "from wo w left join woparts p on p.woid = w.woid and " +
      std::string(kCounted) + " group by w.woid";
  const std::string mismatch =
      "select count(*) from (" + sums +
      ") where abs(screenparts - parts) > 0.001 or abs(screentotpartsdisc - pdisc) > 0.001 or "
      "abs(screenlabour - labour) > 0.001 or abs(screentotlabourdisc - ldisc) > 0.001 or "
      "abs(screenother - other) > 0.001 or abs(screenlevy - levy) > 0.001 or "
      "abs(screentotdiscount - pdisc - ldisc) > 0.001 or "
      "abs(screensubtotal - (parts + labour + other + levy)) > 0.001 or "
      "abs(screentotal - (screensubtotal + screentx1 + screentx2)) > 0.001";
  EXPECT_EQ(db_.Int(mismatch), 0);
  // Each line's total, and the payments of an invoice add up to its total.
  EXPECT_EQ(
      db_.Int("select count(*) from woparts where abs(total - (totparts - discpart + labour - disclab + "
              "otherchargeamt + levyItemAmount)) > 0.001"),
      0);
  EXPECT_EQ(
      db_.Int(
          "select count(*) from wo where (invoiceid <> 0 or credid <> 0) and wodeleted = 0 and "
          "abs(screentotal - (select ifnull(sum(payment), 0) from wopaymentadv where id = wo.woid)) > 0.001"),
      0);
  // Lines carry the numbers of their work order.
  EXPECT_EQ(
      db_.Int("select count(*) from woparts p join wo w on w.woid = p.woid where p.invoiceid <> w.invoiceid "
              "or p.credid <> w.credid or p.estid <> w.estid"),
      0);
  EXPECT_EQ(db_.Int("select count(*) from woparts where woid not in (select woid from wo)"), 0);
}

TEST_F(SampleShop, DocumentsOfEveryKindOccur) {
  // Invoices are numbered from 100001, credit invoices from 900001; a credit invoice has no invoice
  // number and negative amounts.
  EXPECT_EQ(db_.Int("select min(invoiceid) from wo where invoiceid <> 0"), 100001);
  EXPECT_EQ(db_.Int("select min(credid) from wo where credid <> 0"), 900001);
  EXPECT_EQ(db_.Int("select count(*) from wo where credid <> 0 and (invoiceid <> 0 or screentotal >= 0)"), 0);
  EXPECT_EQ(db_.Int("select count(*) from (select invoiceid from wo where invoiceid <> 0 group by invoiceid "
                    "having count(*) > 1)"),
            0);
  for (const char* kind :
       {"invoiceid <> 0 and wodeleted = 0", "credid <> 0", "wodeleted = 1 and invoiceid = 0",
        "wodeleted = 1 and invoiceid <> 0", "chkvoid = 1", "estid <> 0 and chkestpending = 1",
        "estid <> 0 and chkestpending = 0",
        "invoiceid = 0 and credid = 0 and estid = 0 and chkvoid = 0 and wodeleted = 0", "vehid = 0",
        "archive = 1", "invoiceid <> 0 and screentotal = 0", "screentotdiscount > 0"}) {
    EXPECT_GT(db_.Int(std::string("select count(*) from wo where ") + kind), 0) << kind;
  }
  for (const char* kind : {"skip = 'Yes'", "presetpkg = 1 and presetheader = 1",
                           "presetpkg = 1 and presetheader = 0", "SalesClass = ''", "otherchargeid > 0",
                           "levyItemAmount > 0", "description like '%DRIVE_CLEAN%'", "invcorecost > 0"}) {
    EXPECT_GT(db_.Int(std::string("select count(*) from woparts where ") + kind), 0) << kind;
  }
  EXPECT_EQ(db_.Int("select count(*) from woparts where skip is null or skip not in ('Yes', 'No')"), 0);
  // Package headers carry the cost of their contents.
  EXPECT_EQ(
      db_.Int("select count(*) from (select woid, sum(iif(presetheader = 1, invcost, -invcost)) as d from "
              "woparts where presetpkg = 1 group by woid) where abs(d) > 0.001"),
      0);
}

TEST_F(SampleShop, SalesClassesOfEveryRecapCategoryAndEveryPaymentMethodOccur) {
  const std::vector<std::pair<std::string, std::string>> categories = {
      {"TIRES",
       "'BF GOODRICH','GDYR PASS','GDYR TRUCK','KUMHO PASS','MICHELIN PASS','TOYO TRUCK','USED TIRES'"},
      {"PARTS", "'AIR FILTERS','BATTERIES','BRAKE PARTS','OIL','OIL FILTERS','WIPER BLADES','VALVES'"},
      {"LABOUR", "'ALIGNMENT LABOR','BRAKE LABOR','OIL CHANGE LABOR','TIRE LABOR','MAINT PACKAGE'"},
      {"WHEELS", "'WHEEL MAG','WHEEL STEEL'"},
      {"OTHER", "'EMISSION TESTS','OTHER CHARGES','TOWING'"}};
  for (const auto& [category, classes] : categories) {
    EXPECT_GT(
        db_.Int("select count(*) from woparts p join wo on wo.woid = p.woid where wo.invoiceid <> 0 and "
                "p.SalesClass in (" +
                classes + ")"),
        0)
        << category;
  }
  // Every class used on a line has pricing bands; lines without a class are priced as UNCLASSIFIED.
  EXPECT_EQ(
      db_.Int("select count(distinct SalesClass) from woparts where SalesClass <> '' and SalesClass not in "
              "(select salesclass from SalesClassInventoryIndexPricing)"),
      0);
  EXPECT_GT(db_.Int("select count(*) from SalesClassInventoryIndexPricing where salesclass = 'UNCLASSIFIED'"),
            0);
  EXPECT_EQ(db_.Int("select count(*) from SalesClassInventoryIndexPricing where CostFrom > CostTo"), 0);

  for (const char* code :
       {"cdCASH", "cdCheque", "cdVISA", "cdMasterCard", "cdAmex", "cdOtherCard", "cdDebitCard", "A/R"}) {
    EXPECT_GT(db_.Int(std::string("select count(*) from wopaymentadv p inner join wo on p.id = wo.woid where "
                                  "p.type = '") +
                      code + "'"),
              0)
        << code;
  }
}

TEST_F(SampleShop, ChartOfAccountsIsADeepTreeInNumberOrder) {
  EXPECT_EQ(db_.Text("select fivetypename from chartofaccounts where chid = 9"), "A");
  EXPECT_EQ(db_.Text("select fivetypename from chartofaccounts where chid = 10"), "L");
  EXPECT_GE(db_.Int("select max(sublevel) from chartofaccounts"), 3);
  EXPECT_LE(db_.Int("select max(sublevel) from chartofaccounts"), 4);
  EXPECT_EQ(db_.Int("select count(distinct fivetypename) from chartofaccounts"), 5);
  // A child sits one level below its parent, and between the two come only the parent's
  // descendants (a group is the run of deeper accounts after its parent).
  EXPECT_EQ(
      db_.Int("select count(*) from chartofaccounts c join chartofaccounts p on p.chid = c.parentid where "
              "c.sublevel <> p.sublevel + 1 or c.accountnumber <= p.accountnumber or c.fivetypename <> "
              "p.fivetypename or c.type <> p.type or exists (select 1 from chartofaccounts x where "
              "x.accountnumber > p.accountnumber and x.accountnumber < c.accountnumber and x.sublevel <= "
              "p.sublevel)"),
      0);
  EXPECT_EQ(db_.Int("select count(*) from chartofaccounts where parentid = 0 and sublevel <> 0"), 0);
  // Parents with and without postings of their own.
  const std::string parents =
      "select count(*) from chartofaccounts p where exists (select 1 from chartofaccounts c "
      "where c.parentid = p.chid) and ";
  EXPECT_GT(db_.Int(parents + "exists (select 1 from ChartOfAccountsGLPOSTINGTABLE g where g.chid = p.chid)"),
            0);
  EXPECT_GT(
      db_.Int(parents + "not exists (select 1 from ChartOfAccountsGLPOSTINGTABLE g where g.chid = p.chid)"),
      0);
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE where chid not in (select chid from "
                    "chartofaccounts)"),
            0);
}

TEST_F(SampleShop, ValuesAreStoredInTheirSqliteForms) {
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsGLPOSTINGTABLE where typeof(amt) <> 'real' or "
                    "transdate not glob '202[345]-[01][0-9]-[0-3][0-9] 00:00:00'"),
            0);
  EXPECT_EQ(
      db_.Int("select count(*) from wo where typeof(screentotal) <> 'real' or wodeleted not in (0, 1) or "
              "latestdate not glob '202[345]-[01][0-9]-[0-3][0-9] 00:00:00' or wodate > latestdate"),
      0);
  EXPECT_EQ(db_.Text("select min(latestdate) from wo").substr(0, 4), "2023");
  EXPECT_EQ(db_.Text("select max(latestdate) from wo"), "2025-12-31 00:00:00");
  EXPECT_EQ(db_.Int("select count(*) from ChartOfAccountsFiscalYearRange"), 3);
  // Telephones are stored split; some customers have none, some do not want mail.
  EXPECT_EQ(db_.Int("select count(*) from customer where htel <> '' and (length(ahtel) <> 3 or htel not glob "
                    "'[0-9][0-9][0-9]-[0-9][0-9][0-9][0-9]')"),
            0);
  EXPECT_GT(db_.Int("select count(*) from customer where ahtel = '555' and htel like '555-01__'"), 0);
  EXPECT_GT(db_.Int("select count(*) from customer where htel = '' and btel = ''"), 0);
  EXPECT_GT(db_.Int("select count(*) from customer where chksolicit = 0"), 0);
}

TEST_F(SampleShop, StockAndStaffAreConsistent) {
  // What is on hand is what the transactions brought in and took out.
  EXPECT_EQ(
      db_.Int("select count(*) from inventory i where abs(QOH - (select ifnull(sum(qty), 0) from invtrans t "
              "where t.invid = i.invid)) > 0.001"),
      0);
  EXPECT_GT(db_.Int("select count(*) from inventory where QOH <= 0"), 0);
  EXPECT_EQ(db_.Int("select count(*) from woparts where invinvid <> 0 and invinvid not in (select invid from "
                    "inventory)"),
            0);
  EXPECT_EQ(db_.Int("select count(*) from inventory where supid not in (select supid from supplier)"), 0);
  // Technicians of both user types, with and without a mechanic row; lines name them as text.
  const std::string tech_list =
      "select count(*) from usertable u left join mechanic m on u.userid = m.userid where "
      "u.usertype = '";
  for (const char* type : {"Technician", "Service Advisor/Technician"}) {
    EXPECT_GT(db_.Int(tech_list + type + "' and m.userid is not null"), 0) << type;
    EXPECT_GT(db_.Int(tech_list + type + "' and m.userid is null"), 0) << type;
  }
  EXPECT_EQ(
      db_.Int("select count(*) from woparts where mechuserid <> '' and mechuserid not in (select userid from "
              "usertable)"),
      0);
  EXPECT_GT(db_.Int("select count(*) from timeclock t join wo on wo.woid = t.woid where wo.chkvoid = 1"), 0);
}

}  // namespace
}  // namespace ent::sampledb
