// The sample shop's master data (settings, chart of accounts, staff, suppliers, jobs, pricing,
// stock, customers and vehicles), its opening position and the run over the days.
#include <string>

#include "sampledb/shop.h"
#include "sampledb/shop_schema.h"

namespace ent::sampledb {
namespace {

constexpr std::string_view kVinCharacters = "ABCDEFGHJKLMNPRSTUVWXYZ0123456789";
constexpr std::string_view kPostalLetters = "ABCEGHJKLMNPRSTVWXYZ";

std::string Digits(Prng& rng, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += static_cast<char>('0' + rng.Below(10));
  return text;
}

char Letter(Prng& rng, std::string_view letters) {
  return letters[static_cast<size_t>(rng.Below(static_cast<int64_t>(letters.size())))];
}

// The list price that gives the pricing band's margin on a unit cost, ending in .99.
Cents ListPrice(Cents cost) {
  const int margin = cost < 2500 ? kBandMargins[0] : cost < 10000 ? kBandMargins[1] : kBandMargins[2];
  const Cents price = RoundDiv(cost * 100, 100 - margin);
  return (price + 99) / 100 * 100 - 1;
}

std::string Category(const Item& item) {
  switch (item.kind) {
    case ClassKind::kTire:
      return "TIRES";
    case ClassKind::kWheel:
      return "WHEELS";
    case ClassKind::kFluid:
      return "FLUIDS";
    default:
      break;
  }
  if (item.sales_class == "BRAKE PARTS") return "BRAKES";
  if (item.sales_class == "BATTERIES") return "ELECTRICAL";
  if (item.sales_class.find("FILTERS") != std::string_view::npos) return "FILTERS";
  if (item.sales_class == "WIPER BLADES") return "ACCESSORIES";
  return "PARTS";
}

bool IsHoliday(Day day) {
  const int m = day.Month(), d = day.DayOfMonth();
  return (m == 1 && d == 1) || (m == 12 && (d == 25 || d == 26));
}

}  // namespace

Shop::Tables::Tables(Database& db, int suppliers)
    : wo(db, "wo",
         {"woid",
          "cusid",
          "vehid",
          "invoiceid",
          "credid",
          "estid",
          "stateandnumber",
          "wodeleted",
          "chkvoid",
          "chkestpending",
          "archive",
          "wodate",
          "wotime",
          "latestdate",
          "invoicetime",
          "defmechuserid",
          "cmbServiceWriter",
          "ponum",
          "txtOdometer",
          "Summary",
          "txtCustomerRequests",
          "OPTIONSmessage",
          "OPTIONSnotetocustomer",
          "screenparts",
          "screentotpartsdisc",
          "screenlabour",
          "screentotlabourdisc",
          "screenother",
          "screenlevy",
          "screentotdiscount",
          "screensubtotal",
          "screentx1",
          "screentx2",
          "screentotal",
          "txtPartPERmargin",
          "txtLabourPERmargin",
          "txtOtherPERmargin",
          "txtTotalPERmargin",
          "txtTotalDolMargin",
          "insurencecusid",
          "totalinsurenceinvamt",
          "insurencedeductible",
          "customershiptoid"}),
      woparts(db, "woparts",
              {"wopartsid",
               "woid",
               "invoiceid",
               "credid",
               "estid",
               "linenum",
               "description",
               "SalesClass",
               "qty",
               "hrs",
               "partsea",
               "totparts",
               "discpart",
               "labour",
               "disclab",
               "otherchargeid",
               "otherchargeamt",
               "othCHRGcost",
               "otherchgdo",
               "levyItemAmount",
               "total",
               "tx",
               "c",
               "ok",
               "needed",
               "skip",
               "presetpkg",
               "presetheader",
               "presetjobid",
               "miscid",
               "invinvid",
               "invsupid",
               "invcost",
               "invcorecost",
               "margpartsper",
               "marglabdol",
               "mechuserid",
               "MECHHOURLYTOT",
               "mechflatrateTot",
               "mechlabtot",
               "mechpartstot"}),
      payments(db, "wopaymentadv", {"payid", "id", "trandate", "type", "payment"}),
      invtrans(db, "invtrans", {"invtransid", "invid", "transdate", "qty", "costea", "coresea"}),
      timeclock(db, "timeclock", {"timeclockid", "woid", "userid", "thedate", "hrs", "thehourlyrate"}) {
  for (int supid = 1; supid <= suppliers; ++supid) {
    purchases.push_back(std::make_unique<Insert>(
        db, "suph" + std::to_string(supid),
        std::initializer_list<std::string_view>{"purchid", "purchdate", "refnum", "purchase"}));
  }
}

Shop::Shop(Database& db, ShopScale scale, uint64_t seed, std::function<void(double)> progress)
    : db_(db), scale_(scale), rng_(seed), progress_(std::move(progress)), ledger_(db) {
  const auto staff = StaffList();
  for (size_t i = 0; i < staff.size(); ++i) {
    tech_weights_.push_back(staff[i].work_weight);
    if (staff[i].usertype.starts_with("Service Advisor")) writers_.push_back(static_cast<int>(i));
  }
  supplier_owed_.assign(Suppliers().size() + 1, 0);
  supplier_due_.assign(Suppliers().size() + 1, 0);
}

Shop::~Shop() = default;

void Shop::Build() {
  WriteSettings();
  WriteChartAndYears();
  WriteStaffSuppliersJobs();
  tables_ = std::make_unique<Tables>(db_, static_cast<int>(Suppliers().size()));
  CreateItems();
  CreateCustomers();

  const Day first = Day::FromYmd(kFirstYear, 1, 1);
  const Day last = Day::FromYmd(kLastYear, 12, 31);
  std::vector<Day> open_days;
  for (Day day = first; day <= last; day = day + 1) {
    if (day.Weekday() != 0 && !IsHoliday(day)) open_days.push_back(day);
  }
  OpenBooks(first);
  // Work orders are spread evenly over the open days; those of the last three days may still be
  // open at the end.
  size_t open_index = 0;
  const auto total_days = static_cast<double>(last.number - first.number + 1);
  for (Day day = first; day <= last; day = day + 1) {
    if (open_index < open_days.size() && open_days[open_index] == day) {
      const int64_t target = static_cast<int64_t>(scale_.work_orders) * static_cast<int64_t>(open_index + 1) /
                             static_cast<int64_t>(open_days.size());
      const bool closing_days = open_index + 3 >= open_days.size();
      while (work_order_count_ < target) MakeWorkOrder(day, NextPlan(day, closing_days));
      ++open_index;
    }
    CloseDay(day);
    if (progress_) progress_(static_cast<double>(day.number - first.number + 1) / total_days);
  }
  WriteItems();
}

void Shop::WriteSettings() {
  Insert(db_, "GlobalVars2", {"COMPpostal", "COMPstreet", "COMPcity", "COMPaHtel", "COMPhTel"})
      .Row("L4N 3K2", "480 Bayfield St", "Barrie, ON", "555", "555-0142");
  Insert(db_, "globalvars",
         {"ChkPrintInvoiceTIme", "INVOICEdefnote", "InvDisclaimerFontSize", "INVOICEchkdispdisclaimer",
          "INVOICEdefDisclaim", "chkInvPrintCustTX1num", "chkInvPrintCustTX2num", "WOreg", "COMPftel",
          "COMPaftel", "COMPtx1name", "COMPtx2name", "wochkprintcustomerrequests", "INVOICEchkdispcomments",
          "chkINVPrintPartNumbers"})
      .Row(1, "Thank you for your business!", 8.5, 1,
           "All parts and labour are guaranteed for 12 months or 20,000 km, whichever comes first. "
           "Customer-supplied parts carry no guarantee.",
           1, 0, "Reg. 81734 5521 RT0001", "555-0143", "555", "GST", "PST", 1, 1, 0);
  Insert(db_, "machine", {"companyname"}).Row("Bayfield Auto Service");
}

void Shop::WriteChartAndYears() {
  Insert chart(db_, "chartofaccounts",
               {"chid", "parentid", "accountnumber", "accountname", "type", "sublevel", "fivetypename"});
  for (const Account& a : ChartOfAccounts()) {
    chart.Row(a.chid, a.parentid, a.number, a.name, a.type, a.sublevel, std::string(1, a.five_type));
  }
  Insert years(db_, "ChartOfAccountsFiscalYearRange",
               {"fiscalyearid", "fiscalyearstartdate", "fiscalyearenddate"});
  for (int year = kFirstYear; year <= kLastYear; ++year) {
    years.Row(year - kFirstYear + 1, Day::FromYmd(year, 1, 1), Day::FromYmd(year, 12, 31));
  }
}

void Shop::WriteStaffSuppliersJobs() {
  Insert users(db_, "usertable", {"UserID", "usertype", "FName", "LName"});
  Insert mechanics(db_, "mechanic", {"userid", "hourlyrate", "flatrate"});
  for (const Staff& s : StaffList()) {
    users.Row(s.userid, s.usertype, s.fname, s.lname);
    if (s.mechanic_row) mechanics.Row(s.userid, Money{s.hourly_cents}, Money{s.flat_cents});
  }
  Insert suppliers(db_, "supplier", {"supid", "company", "contact"});
  int supid = 0;
  for (const Supplier& s : Suppliers()) {
    suppliers.Row(++supid, s.company, s.contact);
    CreateSupplierTable(db_, supid);
  }
  Insert jobs(db_, "jobheader", {"jobid", "jobnum", "description"});
  int jobid = 0;
  for (const Job& j : Jobs()) jobs.Row(++jobid, j.jobnum, j.description);

  Insert pricing(db_, "SalesClassInventoryIndexPricing",
                 {"pricingid", "salesclass", "CostFrom", "CostTo", "profitMargin"});
  const Cents band_from[3] = {0, 2500, 10000};
  const Cents band_to[3] = {2499, 9999, 9999999};
  int pricingid = 0;
  for (const SalesClass& c : SalesClasses()) {
    for (int band = 0; band < 3; ++band) {
      pricing.Row(++pricingid, c.name, Money{band_from[band]}, Money{band_to[band]},
                  static_cast<double>(kBandMargins[band]));
    }
  }
}

void Shop::CreateItems() {
  const auto templates = ItemTemplates();
  const auto makers = Manufacturers();
  for (size_t t = 0; t < templates.size(); ++t) {
    const ItemTemplate& tmpl = templates[t];
    ClassKind kind = ClassKind::kPart;
    for (const SalesClass& c : SalesClasses()) {
      if (c.name == tmpl.sales_class) kind = c.kind;
    }
    const bool tire = kind == ClassKind::kTire;
    const int variants = tire ? std::min<int>(scale_.item_variants, static_cast<int>(TireSizes().size()))
                              : scale_.item_variants;
    for (int v = 0; v < variants; ++v) {
      Item item;
      item.invid = static_cast<int>(items_.size()) + 1;
      item.kind = kind;
      item.sales_class = tmpl.sales_class;
      item.supid = tmpl.supplier;
      item.core = tmpl.core_cents;
      item.manufacturer = makers[(t + static_cast<size_t>(v)) % makers.size()];
      if (tire) {
        const std::string_view size = TireSizes()[static_cast<size_t>(v)];
        item.description = std::string(tmpl.description) + " " + std::string(size);
        std::string code;
        for (char c : size) {
          if (c != '/' && c != 'R') code += c;
        }
        item.partnum = std::string(tmpl.partnum_prefix) + code;
        item.cost[0] = tmpl.cost_cents + RoundDiv(tmpl.cost_cents * 8 * v, 100);
      } else {
        item.description = std::string(tmpl.description);
        item.partnum = std::string(tmpl.partnum_prefix) + std::to_string(101 + v);
        item.cost[0] = v == 0 ? tmpl.cost_cents : RoundDiv(tmpl.cost_cents * rng_.Range(90, 115), 100);
      }
      for (int year = 1; year < 3; ++year) item.cost[year] = RoundDiv(item.cost[year - 1] * 103, 100);
      for (int year = 0; year < 3; ++year) item.list[year] = ListPrice(item.cost[year]);
      if (tire || kind == ClassKind::kWheel) {
        item.location = "TIRE RACK " + std::to_string(1 + v % 6);
        item.reorder_point10 = 40;
        item.reorder_qty10 = 80;
      } else if (tmpl.sales_class == "OIL") {
        item.location = "BULK OIL";
        item.reorder_point10 = 400;
        item.reorder_qty10 = 2000;
      } else {
        item.location = std::string(1, static_cast<char>('A' + t % 6)) + "-" + std::to_string(10 + t % 40);
        item.reorder_point10 = 20;
        item.reorder_qty10 = 60;
      }
      item.category = Category(item);
      item.qoh10 = item.reorder_qty10;
      items_by_prefix_[tmpl.partnum_prefix].push_back(static_cast<int>(items_.size()));
      items_.push_back(std::move(item));
    }
  }
  // Two items the shop no longer stocks: nothing on hand, no transactions.
  for (const auto& [description, prefix, sample] :
       {std::tuple{"WIPER BLADE 13 IN - DISCONTINUED", "WB13-", "WB18-"},
        std::tuple{"BATTERY GROUP 22NF - DISCONTINUED", "BAT22NF-", "BAT35-"}}) {
    Item item = items_[static_cast<size_t>(items_by_prefix_.at(sample).front())];
    item.invid = static_cast<int>(items_.size()) + 1;
    item.description = description;
    item.partnum = std::string(prefix) + "100";
    item.qoh10 = 0;
    item.stocked = false;
    items_.push_back(std::move(item));
  }
}

void Shop::CreateCustomers() {
  Insert customers(db_, "customer",
                   {"cusid", "company", "fname", "lname", "street", "city", "province", "postal", "ahtel",
                    "htel", "abtel", "btel", "chksolicit", "tx1exempt", "tx2exempt"});
  Insert vehicles(db_, "vehicle",
                  {"vehid", "cusid", "Year", "Make", "Model", "Plate", "VIN", "unitno", "engsize"});
  // Customer 1 takes the counter sales of walk-in buyers.
  customers.Row(1, "CASH SALE", "", "", "", "", "", "", "", "", "", "", 0, "", "");
  customers_.push_back(Customer{1, false, false, false, {}});

  // Telephone numbers as stored: "555-0142". The first customers get the 555-01xx numbers.
  auto random_phone = [&] {
    std::string number = std::to_string(rng_.Range(200, 999));
    return number + "-" + Digits(rng_, 4);
  };
  for (int cusid = 2; cusid <= scale_.customers; ++cusid) {
    Customer customer;
    customer.cusid = cusid;
    customer.fleet = rng_.Percent(10);
    customer.tx1_exempt = rng_.PerMille(10);
    customer.tx2_exempt = rng_.PerMille(30);
    std::string fname(rng_.Pick(FirstNames()));
    std::string lname(rng_.Pick(LastNames()));
    std::string company;
    if (customer.fleet) {
      company = rng_.Percent(50) ? lname : std::string(rng_.Pick(Cities()));
      company += " " + std::string(rng_.Pick(CompanyWords()));
      if (rng_.Percent(40)) fname = lname = "";
    }
    std::string street = std::to_string(rng_.Range(1, 9999));
    street += " " + std::string(rng_.Pick(Streets()));
    const std::string postal = std::string{rng_.Percent(70) ? 'L' : 'P',
                                           static_cast<char>('0' + rng_.Below(10)),
                                           Letter(rng_, kPostalLetters),
                                           ' ',
                                           static_cast<char>('0' + rng_.Below(10)),
                                           Letter(rng_, kPostalLetters),
                                           static_cast<char>('0' + rng_.Below(10))};
    const bool home = !customer.fleet && rng_.Percent(88);
    const bool business = customer.fleet || rng_.Percent(20);
    std::string htel;
    if (home)
      htel = cusid < 100 ? "555-01" + std::string(cusid < 10 ? "0" : "") + std::to_string(cusid)
                         : random_phone();
    const std::string btel = business ? random_phone() : "";
    const std::string tx1 = customer.tx1_exempt ? "TX1-" + Digits(rng_, 6) : "";
    const std::string tx2 = customer.tx2_exempt ? "EX" + Digits(rng_, 7) : "";
    const bool solicit = rng_.Percent(80);
    const std::string_view city = rng_.Pick(Cities());
    if (rng_.PerMille(20)) {
      // Imported from an older system: no business telephone at all, not even empty text.
      customers.Row(cusid, company, fname, lname, street, city, "ON", postal, home ? "555" : "", htel,
                    nullptr, nullptr, solicit, tx1, tx2);
    } else {
      customers.Row(cusid, company, fname, lname, street, city, "ON", postal, home ? "555" : "", htel,
                    business ? "555" : "", btel, solicit, tx1, tx2);
    }

    static constexpr int kVehicleCounts[] = {75, 20, 5};  // one, two, three vehicles
    const int count = customer.fleet ? static_cast<int>(rng_.Range(2, 6))
                                     : 1 + static_cast<int>(rng_.Weighted(kVehicleCounts));
    for (int i = 0; i < count; ++i) {
      const Model& model = rng_.Pick(Models());
      const int year = kLastYear - static_cast<int>(rng_.Below(rng_.Below(22) + 1));
      std::string plate;
      for (int c = 0; c < 4; ++c) plate += Letter(rng_, "ABCDEFGHJKLMNPRSTVWXYZ");
      plate += " " + Digits(rng_, 3);
      std::string vin;
      for (int c = 0; c < 17; ++c) vin += Letter(rng_, kVinCharacters);
      const int vehid = static_cast<int>(vehicles_.size()) + 1;
      const std::string unit = customer.fleet ? "U-" + std::to_string(10 + i) : "";
      vehicles.Row(vehid, cusid, year, model.make, model.model, plate, vin, unit, model.engine);
      customer.vehicles.push_back(static_cast<int>(vehicles_.size()));
      const int age = std::max(0, kFirstYear - year) + 1;
      vehicles_.push_back(Vehicle{vehid, age * static_cast<int>(rng_.Range(12000, 24000))});
    }
    customers_.push_back(std::move(customer));
  }
}

void Shop::OpenBooks(Day day) {
  Transaction opening;
  const int journal = next_journal_++;
  for (const Item& item : items_) {
    if (item.qoh10 == 0) continue;
    tables_->invtrans.Row(next_invtransid_++, item.invid, day, item.qoh10 / 10.0, Money{item.cost[0]},
                          Money{item.core});
    opening.Add(InventoryAccount(item.kind), RoundDiv((item.cost[0] + item.core) * item.qoh10, 10),
                "GENJOURNAL", journal);
  }
  loan_balance_ = Scaled(6000000);
  opening.Add(acct::kChequing, Scaled(4000000), "GENJOURNAL", journal);
  opening.Add(acct::kSavings, Scaled(1500000), "GENJOURNAL", journal);
  opening.Add(acct::kCashOnHand, 30000, "GENJOURNAL", journal);
  opening.Add(acct::kEquipment, Scaled(8500000), "GENJOURNAL", journal);
  opening.Add(acct::kTruck, Scaled(3200000), "GENJOURNAL", journal);
  opening.Add(acct::kLoan, -loan_balance_, "GENJOURNAL", journal);
  Cents capital = 0;
  for (const Posting& p : opening.postings()) capital -= p.cents;
  opening.Add(acct::kCapital, capital, "GENJOURNAL", journal);
  ledger_.Post(day, opening);
}

void Shop::WriteItems() {
  Insert inventory(db_, "inventory",
                   {"invid", "partnum", "Description", "Category", "Manufacturer", "Location", "supid", "QOH",
                    "LastList", "LastCost"});
  for (const Item& item : items_) {
    inventory.Row(item.invid, item.partnum, item.description, item.category, item.manufacturer, item.location,
                  item.supid, item.qoh10 / 10.0, Money{item.list[2]}, Money{item.cost[2]});
  }
}

}  // namespace ent::sampledb
