// Work orders: what the shop does for a customer, the lines, the totals, the payments, and what
// an invoice or credit invoice does to the books, the stock and the time clock.
#include <algorithm>
#include <cmath>
#include <string>

#include "sampledb/shop.h"

namespace ent::sampledb {
namespace {

constexpr std::string_view kPayCodes[kPayMethodCount] = {
    "cdCASH", "cdCheque", "cdVISA", "cdMasterCard", "cdAmex", "cdOtherCard", "cdDebitCard", "A/R"};
constexpr int kPayAccounts[kPayMethodCount] = {
    acct::kCashOnHand, acct::kUndeposited, acct::kVisaMasterCard, acct::kVisaMasterCard,
    acct::kAmex,       acct::kOtherCards,  acct::kDebitCards,     acct::kReceivables};
constexpr int kFleetPayWeights[kPayMethodCount] = {4, 10, 14, 10, 5, 2, 8, 47};
constexpr int kRetailPayWeights[kPayMethodCount] = {18, 6, 28, 20, 5, 3, 18, 2};

// Preset oil-change jobs (jobid = index + 1), how often they are sold, and their oil.
constexpr int kOilJobWeights[kOilJobCount] = {25, 20, 10, 20, 4, 3, 3, 3, 3, 3, 6, 2, 2, 2, 2};
constexpr std::string_view kOilForJob[kOilJobCount] = {
    "OL5W20-", "OL5W30-", "OL10W30-", "OL0W20-", "OL5W30-", "OL10W30-", "OL5W30-", "OL5W30-",
    "OL5W30-", "OL5W30-", "OL5W20-",  "OL0W20-", "OL0W20-", "OL0W20-",  "OL0W20-"};
constexpr int kBrakeJob = 16, kTireJob = 17, kAlignJob = 18, kEmissionJob = 19, kBatteryJob = 20,
              kSafetyJob = 21;
constexpr int kShopSuppliesFee = 1, kEnvironmentalFee = 2, kTowingCharge = 3;
constexpr Cents kTireLevy = 400;

struct JobChoice {
  JobKind kind;
  int weight;
  std::string_view name;  // for the work order's summary
};
constexpr JobChoice kJobChoices[] = {
    {JobKind::kOilChange, 18, "OIL CHANGE"},
    {JobKind::kOilPackage, 12, "OIL CHANGE"},
    {JobKind::kBrakes, 7, "BRAKES"},
    {JobKind::kBrakePackage, 3, "BRAKES"},
    {JobKind::kTires, 10, "TIRES"},
    {JobKind::kWheels, 2, "WHEELS"},
    {JobKind::kAlignment, 5, "ALIGNMENT"},
    {JobKind::kEmission, 4, "EMISSION TEST"},
    {JobKind::kBattery, 4, "BATTERY"},
    {JobKind::kInspection, 4, "SAFETY INSPECTION"},
    {JobKind::kWipers, 5, "WIPER BLADES"},
    {JobKind::kAirFilter, 5, "AIR FILTER"},
    {JobKind::kSuspension, 3, "SUSPENSION"},
    {JobKind::kTuneUp, 3, "TUNE-UP"},
    {JobKind::kExhaust, 2, "EXHAUST"},
    {JobKind::kAirCon, 3, "A/C SERVICE"},
    {JobKind::kCoolant, 3, "COOLING SYSTEM"},
    {JobKind::kMiscRepair, 6, "REPAIR"},
    {JobKind::kTowing, 1, "TOWING"},
    {JobKind::kCounterSale, 0, "COUNTER SALE"},
    {JobKind::kWarranty, 0, "WARRANTY RECHECK"},
    {JobKind::kUnclassified, 0, ""},
};

std::string_view JobName(JobKind kind) {
  for (const JobChoice& choice : kJobChoices) {
    if (choice.kind == kind) return choice.name;
  }
  return "";
}

// A percentage with two decimals, 0 when there is nothing to divide by.
double Percentage(Cents part, Cents whole) {
  if (whole == 0) return 0.0;
  return std::round(static_cast<double>(part) * 10000.0 / static_cast<double>(whole)) / 100.0;
}

// The work orders every shop shows at intervals, whatever its size, so that each kind of
// document, line, sales-class category and payment method occurs.
const std::vector<Plan>& ForcedPlans() {
  using enum JobKind;
  auto invoice = [](std::vector<JobKind> jobs, PayMethod pay) {
    Plan plan;
    plan.jobs = std::move(jobs);
    plan.pay = static_cast<int>(pay);
    return plan;
  };
  auto other = [](WoKind kind, std::vector<JobKind> jobs) {
    Plan plan;
    plan.kind = kind;
    plan.jobs = std::move(jobs);
    return plan;
  };
  static const std::vector<Plan> kPlans = [&] {
    std::vector<Plan> plans;
    plans.push_back(invoice({kOilPackage}, PayMethod::kCash));
    plans.push_back(invoice({kOilChange}, PayMethod::kCheque));
    plans.back().recommend = true;
    plans.push_back(invoice({kTires, kAlignment}, PayMethod::kVisa));
    plans.push_back(invoice({kWheels, kTires}, PayMethod::kMasterCard));
    plans.push_back(invoice({kBrakePackage}, PayMethod::kAmex));
    plans.push_back(invoice({}, PayMethod::kOtherCard));
    plans.back().emission_fee = 3500;
    plans.push_back(invoice({}, PayMethod::kDebitCard));
    plans.back().emission_fee = 1750;
    plans.push_back(invoice({kMiscRepair, kUnclassified}, PayMethod::kAccount));
    plans.push_back(invoice({kCounterSale}, PayMethod::kCash));
    plans.push_back(invoice({kWarranty}, PayMethod::kCash));
    plans.push_back(other(WoKind::kEstimatePending, {kBrakes}));
    plans.push_back(other(WoKind::kEstimateDone, {kSuspension}));
    plans.push_back(other(WoKind::kVoid, {kTuneUp}));
    plans.push_back(other(WoKind::kDeletedOpen, {kAirCon}));
    plans.push_back(other(WoKind::kDeletedInvoice, {kBattery}));
    plans.push_back(other(WoKind::kCredit, {}));
    plans.push_back(other(WoKind::kCredit, {}));
    plans.back().partial_credit = true;
    plans.push_back(invoice({kTowing, kCoolant}, PayMethod::kVisa));
    plans.back().split_payment = true;
    plans.push_back(invoice({kOilChange, kEmission}, PayMethod::kCash));
    plans.back().discount = true;
    plans.push_back(invoice({kInspection, kWipers, kAirFilter, kExhaust}, PayMethod::kAccount));
    return plans;
  }();
  return kPlans;
}

std::string Clock(int minutes) {
  std::string text =
      std::to_string(minutes / 60) + ":" + std::to_string(minutes % 60 / 10) + std::to_string(minutes % 10);
  return minutes < 600 ? "0" + text : text;
}

}  // namespace

Cents RoundDiv(Cents num, Cents den) {
  return num >= 0 ? (num + den / 2) / den : -((-num + den / 2) / den);
}

Totals SumLines(const std::vector<Line>& lines, bool tx1_exempt, bool tx2_exempt) {
  Totals t;
  for (const Line& line : lines) {
    if (!line.Counted()) continue;
    t.parts_gross += line.totparts;
    t.parts_disc += line.discpart;
    t.labour_gross += line.labour;
    t.labour_disc += line.disclab;
    t.other += line.otheramt;
    t.levy += line.levy;
    t.parts_cost += line.invcost + line.corecost + line.partscomm;
    t.labour_cost += line.LabourPay();
    t.other_cost += line.othcost;
  }
  t.subtotal = t.parts_gross - t.parts_disc + t.labour_gross - t.labour_disc + t.other + t.levy;
  // The first tax applies to the whole subtotal, the second to everything but levies.
  t.tx1 = tx1_exempt ? 0 : RoundDiv(t.subtotal * 5, 100);
  t.tx2 = tx2_exempt ? 0 : RoundDiv((t.subtotal - t.levy) * 8, 100);
  t.total = t.subtotal + t.tx1 + t.tx2;
  return t;
}

Plan Shop::NextPlan(Day, bool closing_days) {
  const std::vector<Plan>& forced = ForcedPlans();
  const int64_t rounds = 3;
  const int64_t interval =
      std::max<int64_t>(3, scale_.work_orders / (static_cast<int64_t>(forced.size()) * rounds));
  if (work_order_count_ % interval == interval / 2 &&
      forced_index_ < static_cast<int>(forced.size()) * rounds) {
    return forced[static_cast<size_t>(forced_index_++) % forced.size()];
  }
  Plan plan;
  const bool last = work_order_count_ + 1 == scale_.work_orders;
  if (closing_days && (rng_.Percent(35) || last)) {
    plan.kind = WoKind::kOpen;
    return plan;
  }
  const int64_t draw = rng_.Below(1000);
  if (draw < 15)
    plan.kind = WoKind::kEstimatePending;
  else if (draw < 30)
    plan.kind = WoKind::kEstimateDone;
  else if (draw < 45)
    plan.kind = WoKind::kVoid;
  else if (draw < 60)
    plan.kind = WoKind::kDeletedOpen;
  else if (draw < 65)
    plan.kind = WoKind::kDeletedInvoice;
  else if (draw < 85)
    plan.kind = WoKind::kCredit;
  else if (draw < 135)
    plan.emission_fee = rng_.Percent(80) ? 3500 : 1750;
  else if (draw < 145)
    plan.jobs = {JobKind::kWarranty};
  else if (draw < 175)
    plan.jobs = {JobKind::kCounterSale};
  plan.discount = plan.emission_fee == 0 && rng_.Percent(6);
  plan.recommend = rng_.Percent(12);
  plan.split_payment = rng_.Percent(8);
  plan.partial_credit = rng_.Percent(60);
  return plan;
}

void Shop::MakeWorkOrder(Day day, const Plan& plan) {
  ++work_order_count_;
  if (plan.kind == WoKind::kCredit) {
    MakeCredit(day, plan);
    return;
  }
  const bool counter = plan.jobs.size() == 1 && plan.jobs[0] == JobKind::kCounterSale;
  WorkOrder wo;
  wo.kind = plan.kind;
  wo.woid = next_woid_++;
  wo.date = day;
  wo.opened = day;
  if (rng_.Percent(25))
    wo.opened = std::max(Day::FromYmd(kFirstYear, 1, 1), day + -static_cast<int>(rng_.Range(1, 3)));

  // Customers are drawn with a lean towards the first ones, who become the regulars.
  int64_t pick = rng_.Below(static_cast<int64_t>(customers_.size()) - 1);
  if (rng_.Percent(40)) pick = rng_.Below(pick + 1);
  const Customer* customer = &customers_[static_cast<size_t>(pick) + 1];
  if (counter && rng_.Percent(50)) customer = &customers_[0];
  wo.cusid = customer->cusid;
  wo.tx1_exempt = customer->tx1_exempt;
  wo.tx2_exempt = customer->tx2_exempt;
  Vehicle* vehicle = nullptr;
  if (!counter) {
    const auto index = rng_.Below(static_cast<int64_t>(customer->vehicles.size()));
    vehicle = &vehicles_[static_cast<size_t>(customer->vehicles[static_cast<size_t>(index)])];
    wo.vehid = vehicle->vehid;
    vehicle->odometer += static_cast<int>(rng_.Range(2000, 9000));
    wo.odometer = std::to_string(vehicle->odometer);
    wo.tech = PickTech();
    wo.requests = rng_.Pick(CustomerRequests());
  }
  wo.writer = PickWriter();
  if (customer->fleet && rng_.Percent(60)) wo.ponum = "PO-" + std::to_string(rng_.Range(10000, 99999));

  // The jobs, each by the work order's technician or now and then by another one.
  std::vector<JobKind> jobs = plan.jobs;
  if (jobs.empty() && plan.emission_fee == 0) {
    static constexpr int kJobCounts[] = {55, 30, 15};
    const size_t count = 1 + rng_.Weighted(kJobCounts);
    for (size_t i = 0; i < count; ++i) jobs.push_back(RandomJob());
    if (rng_.Percent(8)) jobs.push_back(JobKind::kUnclassified);
  }
  if (plan.emission_fee != 0) {
    Line test = LabourLine(rng_.Percent(70) ? "DRIVE CLEAN EMISSION TEST" : "EMISSION TEST - OBD",
                           "EMISSION TESTS", 5, YearIndex(day), wo.tech);
    test.labour = plan.emission_fee;
    test.presetjobid = kEmissionJob;
    wo.lines.push_back(std::move(test));
    wo.summary = "EMISSION TEST";
  }
  bool oil_change = false;
  for (JobKind job : jobs) {
    const int tech = wo.tech >= 0 && rng_.Percent(20) ? PickTech() : wo.tech;
    AddJob(wo, job, tech, false);
    const std::string_view name = JobName(job);
    if (!name.empty() && wo.summary.find(name) == std::string::npos) {
      wo.summary += (wo.summary.empty() ? "" : ", ") + std::string(name);
    }
    oil_change = oil_change || job == JobKind::kOilChange || job == JobKind::kOilPackage;
  }
  const bool routine =
      plan.emission_fee == 0 && !counter && !(plan.jobs.size() == 1 && plan.jobs[0] == JobKind::kWarranty);
  if (routine && plan.recommend) {
    static constexpr JobKind kRecommended[] = {JobKind::kWipers, JobKind::kAirFilter, JobKind::kBrakes,
                                               JobKind::kAlignment, JobKind::kCoolant};
    AddJob(wo, rng_.Pick(std::span<const JobKind>(kRecommended)), wo.tech, true);
  }
  if (plan.discount) {
    for (Line& line : wo.lines) {
      if (!line.Counted()) continue;
      line.discpart = RoundDiv(line.totparts * 10, 100);
      line.disclab = RoundDiv(line.labour * 10, 100);
    }
  }
  Cents labour = 0;
  for (const Line& line : wo.lines) labour += line.Counted() ? line.LabourNet() : 0;
  if (routine && labour > 0 && rng_.Percent(45)) {
    wo.lines.push_back(FeeLine(kShopSuppliesFee, "SHOP SUPPLIES FEE", "OTHER CHARGES",
                               std::min<Cents>(2500, RoundDiv(labour * 5, 100)), 0));
  }
  for (Line& line : wo.lines) ApplyPay(line);
  if (oil_change && vehicle)
    wo.note = "Next oil change due at " + std::to_string(vehicle->odometer + 5000) + " km";

  switch (wo.kind) {
    case WoKind::kInvoice:
    case WoKind::kDeletedInvoice:
      wo.invoiceid = next_invoiceid_++;
      wo.number = "INV-" + std::to_string(wo.invoiceid);
      break;
    case WoKind::kEstimatePending:
    case WoKind::kEstimateDone:
      wo.estid = next_estid_++;
      wo.number = "EST-" + std::to_string(wo.estid);
      break;
    default:
      wo.number = "WO-" + std::to_string(wo.woid);
      break;
  }
  const int opened_at = 7 * 60 + 30 + static_cast<int>(rng_.Below(18)) * 30;
  wo.wotime = Clock(opened_at);
  if (wo.kind == WoKind::kInvoice)
    wo.invoicetime = Clock(opened_at + 30 + static_cast<int>(rng_.Below(10)) * 15);

  const Totals totals = SumLines(wo.lines, wo.tx1_exempt, wo.tx2_exempt);
  if (wo.kind == WoKind::kInvoice) {
    TakePayments(wo, plan, totals.total);
    const bool on_account = std::any_of(wo.payments.begin(), wo.payments.end(),
                                        [](const Payment& p) { return p.method == PayMethod::kAccount; });
    wo.archive = day.Year() == kFirstYear && !on_account && rng_.Percent(40);
  }
  Write(wo, totals);
  if (wo.kind == WoKind::kInvoice) {
    Book(wo, totals);
    MoveStock(wo);
    if (totals.total > 0) recent_.push_back(RecentInvoice{day, wo, false});
  }
  if (wo.kind == WoKind::kInvoice || wo.kind == WoKind::kVoid || wo.kind == WoKind::kOpen) ClockHours(wo);
}

void Shop::MakeCredit(Day day, const Plan& plan) {
  // Credit one of the last weeks' invoices; before there is one, the shop makes an invoice.
  RecentInvoice* original = nullptr;
  for (int attempt = 0; attempt < 12 && !recent_.empty() && !original; ++attempt) {
    RecentInvoice& candidate = recent_[static_cast<size_t>(rng_.Below(static_cast<int64_t>(recent_.size())))];
    if (!candidate.credited) original = &candidate;
  }
  if (!original) {
    Plan invoice = plan;
    invoice.kind = WoKind::kInvoice;
    --work_order_count_;
    MakeWorkOrder(day, invoice);
    return;
  }
  original->credited = true;
  const WorkOrder& from = original->wo;
  WorkOrder wo;
  wo.kind = WoKind::kCredit;
  wo.woid = next_woid_++;
  wo.credid = next_credid_++;
  wo.cusid = from.cusid;
  wo.vehid = from.vehid;
  wo.tx1_exempt = from.tx1_exempt;
  wo.tx2_exempt = from.tx2_exempt;
  wo.opened = wo.date = day;
  wo.tech = from.tech;
  wo.writer = from.writer;
  wo.odometer = from.odometer;
  wo.number = "CR-" + std::to_string(wo.credid);
  wo.summary = "CREDIT FOR " + from.number;
  wo.wotime = Clock(8 * 60 + static_cast<int>(rng_.Below(16)) * 30);
  wo.invoicetime = wo.wotime;

  // A partial credit returns one part; a full credit takes back everything the customer paid for.
  std::vector<const Line*> returned;
  for (const Line& line : from.lines) {
    if (plan.partial_credit && line.Physical() && !line.pkg) {
      returned.assign(1, &line);
      break;
    }
  }
  if (returned.empty()) {
    for (const Line& line : from.lines) {
      if (!line.skipped) returned.push_back(&line);
    }
  }
  for (const Line* line : returned) {
    Line credit = *line;
    for (int* q : {&credit.qty10, &credit.hrs10}) *q = -*q;
    for (Cents* c : {&credit.totparts, &credit.discpart, &credit.labour, &credit.disclab, &credit.otheramt,
                     &credit.othcost, &credit.levy, &credit.invcost, &credit.corecost, &credit.hourly,
                     &credit.flat, &credit.labcomm, &credit.partscomm}) {
      *c = -*c;
    }
    wo.lines.push_back(std::move(credit));
  }
  const Totals totals = SumLines(wo.lines, wo.tx1_exempt, wo.tx2_exempt);
  const PayMethod method = from.payments.empty() ? PayMethod::kCash : from.payments.front().method;
  if (totals.total != 0) wo.payments.push_back(Payment{method, totals.total});
  Write(wo, totals);
  Book(wo, totals);
  MoveStock(wo);
  if (method == PayMethod::kAccount) CreditAccount(day, from.cusid, from.invoiceid, -totals.total);
}

JobKind Shop::RandomJob() {
  static const std::vector<int> kWeights = [] {
    std::vector<int> weights;
    for (const JobChoice& choice : kJobChoices) weights.push_back(choice.weight);
    return weights;
  }();
  return kJobChoices[rng_.Weighted(kWeights)].kind;
}

int Shop::PickItem(std::string_view partnum_prefix) {
  const std::vector<int>& items = items_by_prefix_.at(partnum_prefix);
  return items[static_cast<size_t>(rng_.Below(static_cast<int64_t>(items.size())))];
}

int Shop::PickTech() {
  return static_cast<int>(rng_.Weighted(tech_weights_));
}

int Shop::PickWriter() {
  // The pure service advisor writes most work orders; the advisors who also repair, the rest.
  if (rng_.Percent(70)) return writers_.back();
  return writers_[static_cast<size_t>(rng_.Below(static_cast<int64_t>(writers_.size()) - 1))];
}

Line Shop::PartLine(int item, int qty10, int year, int tech) {
  const Item& stock = items_[static_cast<size_t>(item)];
  Line line;
  line.description = stock.description;
  line.sales_class = stock.sales_class;
  line.item = item;
  line.qty10 = qty10;
  line.partsea = stock.list[year];
  line.totparts = RoundDiv(stock.list[year] * qty10, 10);
  line.invcost = RoundDiv(stock.cost[year] * qty10, 10);
  line.corecost = RoundDiv(stock.core * qty10, 10);
  line.tech = tech;
  return line;
}

Line Shop::LabourLine(std::string description, std::string_view sales_class, int hrs10, int year, int tech) {
  Line line;
  line.description = std::move(description);
  line.sales_class = sales_class;
  line.hrs10 = hrs10;
  line.labour = RoundDiv(LabourRate(year) * hrs10, 10);
  line.tech = tech;
  return line;
}

Line Shop::FeeLine(int id, std::string description, std::string_view sales_class, Cents amount, Cents cost) {
  Line line;
  line.description = std::move(description);
  line.sales_class = sales_class;
  line.qty10 = 10;
  line.otherchargeid = id;
  line.miscid = id;
  line.otheramt = amount;
  line.othcost = cost;
  return line;
}

void Shop::PackLines(WorkOrder& wo, size_t first, std::string description, int jobid) {
  // The package's header carries its price (parts at a tenth off, ending in .95) and the cost and
  // hours of its contents; the content lines keep their own figures for reference.
  Line header;
  header.description = std::move(description);
  header.sales_class = "MAINT PACKAGE";
  header.qty10 = 10;
  header.pkg = header.header = true;
  header.presetjobid = jobid;
  header.tech = wo.lines[first].tech;
  Cents parts = 0;
  for (size_t i = first; i < wo.lines.size(); ++i) {
    Line& content = wo.lines[i];
    content.pkg = true;
    parts += content.totparts;
    header.labour += content.labour;
    header.hrs10 += content.hrs10;
    header.invcost += content.invcost;
    header.corecost += content.corecost;
  }
  header.totparts = std::max<Cents>(95, RoundDiv(parts * 9, 10) / 100 * 100 - 5);
  header.partsea = header.totparts;
  wo.lines.insert(wo.lines.begin() + static_cast<std::ptrdiff_t>(first), std::move(header));
}

void Shop::AddJob(WorkOrder& wo, JobKind job, int tech, bool skipped) {
  const size_t first = wo.lines.size();
  const int year = YearIndex(wo.date);
  auto part = [&](std::string_view prefix, int qty10) {
    wo.lines.push_back(PartLine(PickItem(prefix), qty10, year, tech));
    return &wo.lines.back();
  };
  auto labour = [&](std::string description, std::string_view sales_class, int hrs10) {
    wo.lines.push_back(LabourLine(std::move(description), sales_class, hrs10, year, tech));
    return &wo.lines.back();
  };
  int jobid = 0;
  switch (job) {
    case JobKind::kOilChange:
    case JobKind::kOilPackage: {
      const size_t oil_job = rng_.Weighted(kOilJobWeights);
      jobid = static_cast<int>(oil_job) + 1;
      const bool truck = oil_job == 4 || oil_job == 5;
      part(kOilForJob[oil_job], static_cast<int>(truck ? rng_.Range(14, 16) : rng_.Range(8, 12)) * 5);
      part("OF-", 10);
      labour("LUBE OIL FILTER SERVICE", "OIL CHANGE LABOR", 5);
      if (oil_job >= 11) labour("TIRE ROTATION", "TIRE LABOR", 4);
      if (oil_job == 10) labour("CHASSIS LUBRICATION", "OIL CHANGE LABOR", 3);
      if (job == JobKind::kOilPackage) {
        PackLines(wo, first, "OIL CHANGE PKG - " + std::string(Jobs()[oil_job].description), jobid);
      }
      wo.lines.push_back(
          FeeLine(kEnvironmentalFee, "ENVIRONMENTAL FEE - OIL DISPOSAL", "OTHER CHARGES", 250, 100));
      break;
    }
    case JobKind::kBrakes:
    case JobKind::kBrakePackage: {
      const bool front = job == JobKind::kBrakePackage || rng_.Percent(65);
      jobid = front ? kBrakeJob : 0;
      part(front ? "BPF-" : "BPR-", 10);
      const bool rotors = job == JobKind::kBrakePackage || rng_.Percent(50);
      if (rotors) part("BR-", 20);
      if (job == JobKind::kBrakes && rng_.Percent(10)) part("BC-", 10);
      if (job == JobKind::kBrakes && rng_.Percent(20)) part("FL-BRK", 10);
      part("SS-BC", 10);
      labour(front ? "REPLACE FRONT PADS" : "REPLACE REAR PADS", "BRAKE LABOR",
             static_cast<int>(rng_.Range(12, 20)) + (rotors ? 5 : 0));
      if (job == JobKind::kBrakePackage) PackLines(wo, first, "FRONT BRAKE SPECIAL", jobid);
      break;
    }
    case JobKind::kTires: {
      static constexpr std::string_view kTires[] = {"MP-", "GP-", "GT-", "KP-", "BFG-", "TT-", "UT-"};
      static constexpr int kTireWeights[] = {15, 20, 10, 20, 10, 10, 15};
      const std::string_view prefix = kTires[rng_.Weighted(kTireWeights)];
      const int qty = prefix == "UT-" ? static_cast<int>(rng_.Range(1, 2)) : (rng_.Percent(70) ? 4 : 2);
      jobid = kTireJob;
      part(prefix, qty * 10)->levy = kTireLevy * qty;
      labour("MOUNT AND BALANCE", "TIRE LABOR", qty * 2);
      part("VS-", qty * 10);
      if (rng_.Percent(30)) part("TPK-", qty * 10);
      break;
    }
    case JobKind::kWheels:
      part(rng_.Percent(70) ? "WS-" : "WM-", 40);
      labour("WHEEL BALANCE", "WHEEL BAL LABOR", 8);
      break;
    case JobKind::kAlignment:
      jobid = kAlignJob;
      labour("FOUR-WHEEL ALIGNMENT", "ALIGNMENT LABOR", 10);
      break;
    case JobKind::kEmission:
      jobid = kEmissionJob;
      labour("DRIVE CLEAN EMISSION TEST", "EMISSION TESTS", 5)->labour = 3500;
      break;
    case JobKind::kBattery: {
      static constexpr std::string_view kBatteries[] = {"BAT24F-", "BAT35-", "BATH6-"};
      jobid = kBatteryJob;
      part(rng_.Pick(std::span<const std::string_view>(kBatteries)), 10);
      labour("BATTERY INSTALL AND TEST", "MISC MECH LABOR", 4);
      break;
    }
    case JobKind::kInspection:
      jobid = kSafetyJob;
      labour("SAFETY INSPECTION CERTIFICATE", "SAFETY INSPECTION", 10);
      break;
    case JobKind::kWipers: {
      static constexpr std::string_view kBlades[] = {"WB18-", "WB22-", "WB26-"};
      const size_t blade = static_cast<size_t>(rng_.Below(3));
      part(kBlades[blade], 10);
      part(kBlades[(blade + 1) % 3], 10);
      break;
    }
    case JobKind::kAirFilter:
      part(rng_.Percent(60) ? "AF-" : "CF-", 10);
      labour("REPLACE AIR FILTER", "MISC MECH LABOR", 2);
      break;
    case JobKind::kSuspension:
      part("STR-", 20);
      if (rng_.Percent(50)) part("SBL-", 20);
      labour("REPLACE FRONT STRUTS", "SUSPENSION LABOR", static_cast<int>(rng_.Range(20, 30)));
      break;
    case JobKind::kTuneUp:
      part("SP-", rng_.Percent(60) ? 40 : 60);
      if (rng_.Percent(20)) part("IC-", 10);
      labour("TUNE-UP", "TUNE UP LABOR", static_cast<int>(rng_.Range(10, 15)));
      break;
    case JobKind::kExhaust:
      part("MUF-", 10);
      part("EGK-", 10);
      labour("REPLACE MUFFLER", "MISC MECH LABOR", 10);
      break;
    case JobKind::kAirCon:
      part("AC134-", 20);
      part("ACOR-", 10);
      labour("A/C EVACUATE AND RECHARGE", "MISC MECH LABOR", 10);
      break;
    case JobKind::kCoolant:
      part("AFZ-", static_cast<int>(rng_.Range(12, 16)) * 5);
      if (rng_.Percent(20)) part("TS-", 10);
      labour("COOLING SYSTEM FLUSH", "MISC MECH LABOR", 8);
      break;
    case JobKind::kMiscRepair:
      part(rng_.Percent(50) ? "SB-" : "TS-", 10);
      if (rng_.Percent(30)) part("FL-WSH", 10);
      labour("DIAGNOSE AND REPAIR", "MISC MECH LABOR", static_cast<int>(rng_.Range(5, 30)));
      break;
    case JobKind::kTowing:
      wo.lines.push_back(FeeLine(kTowingCharge, "TOWING - LOCAL", "TOWING", 8500, 6000));
      break;
    case JobKind::kCounterSale: {
      static constexpr std::string_view kCounterItems[] = {"WB18-",  "WB22-", "OL5W30-", "FL-WSH",
                                                           "BAT35-", "AF-",   "OF-",     "AFZ-"};
      const int count = static_cast<int>(rng_.Range(1, 3));
      for (int i = 0; i < count; ++i) {
        const std::string_view prefix = rng_.Pick(std::span<const std::string_view>(kCounterItems));
        part(prefix, prefix.starts_with("OL") ? 40 : 10);
      }
      break;
    }
    case JobKind::kWarranty: {
      Line* recheck =
          labour("WARRANTY RECHECK - NO CHARGE", "MISC MECH LABOR", static_cast<int>(rng_.Range(3, 8)));
      recheck->disclab = recheck->labour;
      break;
    }
    case JobKind::kUnclassified:
      // A note without amounts, or a sale nobody gave a class to.
      wo.lines.emplace_back();
      wo.lines.back().tech = tech;
      if (rng_.Percent(50)) {
        wo.lines.back().description = "CUSTOMER SUPPLIED PARTS - NO WARRANTY";
      } else {
        wo.lines.back().description = "MISC SALE";
        wo.lines.back().qty10 = 10;
        wo.lines.back().partsea = wo.lines.back().totparts = rng_.Range(5, 25) * 100;
      }
      break;
  }
  for (size_t i = first; i < wo.lines.size(); ++i) {
    Line& line = wo.lines[i];
    if (jobid != 0) line.presetjobid = jobid;
    if (skipped) line.skipped = true;
  }
}

void Shop::ApplyPay(Line& line) const {
  line.hourly = line.flat = line.labcomm = line.partscomm = 0;
  if (!line.Counted() || line.tech < 0) return;
  const Staff& staff = StaffList()[static_cast<size_t>(line.tech)];
  switch (staff.scheme) {
    case PayScheme::kHourly:
      line.hourly = RoundDiv(line.hrs10 * staff.hourly_cents, 10);
      break;
    case PayScheme::kFlatRate:
      line.flat = RoundDiv(line.hrs10 * staff.flat_cents, 10);
      break;
    case PayScheme::kCommission:
      line.labcomm = RoundDiv(line.LabourNet() * 35, 100);
      line.partscomm = RoundDiv(line.PartsNet() * 5, 100);
      break;
  }
}

void Shop::TakePayments(WorkOrder& wo, const Plan& plan, Cents total) {
  if (total <= 0) return;
  const bool fleet = customers_[static_cast<size_t>(wo.cusid) - 1].fleet;
  auto method = [&] {
    return static_cast<PayMethod>(fleet ? rng_.Weighted(kFleetPayWeights) : rng_.Weighted(kRetailPayWeights));
  };
  PayMethod first = plan.pay >= 0 ? static_cast<PayMethod>(plan.pay) : method();
  if (first == PayMethod::kAccount && wo.cusid == 1) first = PayMethod::kCash;  // walk-ins pay at once
  if (plan.split_payment && total > 2000 && first != PayMethod::kAccount) {
    PayMethod second = method();
    if (second == first || second == PayMethod::kAccount) second = PayMethod::kCash;
    if (second == first) second = PayMethod::kDebitCard;
    const Cents part = RoundDiv(total * rng_.Range(30, 70), 100);
    wo.payments.push_back(Payment{first, part});
    wo.payments.push_back(Payment{second, total - part});
  } else {
    wo.payments.push_back(Payment{first, total});
  }
}

void Shop::Write(const WorkOrder& wo, const Totals& t) {
  const auto staff = StaffList();
  const std::string mech = wo.tech >= 0 ? std::string(staff[static_cast<size_t>(wo.tech)].userid) : "";
  const Staff& writer = staff[static_cast<size_t>(wo.writer)];
  const Cents base = t.subtotal - t.levy;
  const Cents margin = base - t.parts_cost - t.labour_cost - t.other_cost;
  tables_->wo.Row(
      wo.woid, wo.cusid, wo.vehid, wo.invoiceid, wo.credid, wo.estid, wo.number,
      wo.kind == WoKind::kDeletedOpen || wo.kind == WoKind::kDeletedInvoice, wo.kind == WoKind::kVoid,
      wo.kind == WoKind::kEstimatePending, wo.archive, wo.opened, wo.wotime, wo.date, OrNull{wo.invoicetime},
      mech, std::string(writer.fname) + " " + std::string(writer.lname), wo.ponum, wo.odometer, wo.summary,
      wo.requests, "", wo.note, Money{t.parts_gross - t.parts_disc}, Money{t.parts_disc},
      Money{t.labour_gross - t.labour_disc}, Money{t.labour_disc}, Money{t.other}, Money{t.levy},
      Money{t.parts_disc + t.labour_disc}, Money{t.subtotal}, Money{t.tx1}, Money{t.tx2}, Money{t.total},
      Percentage(t.parts_gross - t.parts_cost, t.parts_gross),
      Percentage(t.labour_gross - t.labour_cost, t.labour_gross), Percentage(t.other - t.other_cost, t.other),
      Percentage(margin, base), Money{margin}, 0, Money{0}, Money{0}, 0);
  int linenum = 0;
  for (const Line& line : wo.lines) {
    const Item* item = line.item >= 0 ? &items_[static_cast<size_t>(line.item)] : nullptr;
    const std::string line_mech =
        line.tech >= 0 ? std::string(staff[static_cast<size_t>(line.tech)].userid) : "";
    tables_->woparts.Row(next_lineid_++, wo.woid, wo.invoiceid, wo.credid, wo.estid, ++linenum,
                         line.description, line.sales_class, line.qty10 / 10.0, line.hrs10 / 10.0,
                         Money{line.partsea}, Money{line.totparts}, Money{line.discpart}, Money{line.labour},
                         Money{line.disclab}, line.otherchargeid, Money{line.otheramt}, Money{line.othcost},
                         Money{line.otheramt}, Money{line.levy}, Money{line.Total()}, "B", "",
                         line.Counted() ? "Yes" : "", line.skipped ? "Yes" : "", line.skipped ? "Yes" : "No",
                         line.pkg, line.header, line.presetjobid, line.miscid, item ? item->invid : 0,
                         item ? item->supid : 0, Money{line.invcost}, Money{line.corecost},
                         Percentage(line.PartsNet() - line.invcost - line.corecost, line.PartsNet()),
                         Money{line.LabourNet() - line.LabourPay()}, line_mech, Money{line.hourly},
                         Money{line.flat}, Money{line.labcomm}, Money{line.partscomm});
  }
  for (const Payment& p : wo.payments) {
    tables_->payments.Row(next_payid_++, wo.woid, wo.date, kPayCodes[static_cast<int>(p.method)],
                          Money{p.amount});
  }
}

void Shop::Book(const WorkOrder& wo, const Totals& totals) {
  const bool credit = wo.kind == WoKind::kCredit;
  const std::string_view srcmod = credit ? "CREDINVOICE" : "INVOICE";
  const int document = credit ? wo.credid : wo.invoiceid;
  Transaction sale;
  sale.Add(acct::kReceivables, totals.total, srcmod, document, wo.cusid);
  for (const Line& line : wo.lines) {
    if (line.Counted()) {
      const ClassKind kind = line.item >= 0 ? items_[static_cast<size_t>(line.item)].kind : ClassKind::kPart;
      sale.Add(PartsRevenueAccount(kind), -line.PartsNet(), srcmod, document, wo.cusid);
      sale.Add(line.sales_class == "EMISSION TESTS" ? acct::kEmissionFees : acct::kLabourSales,
               -line.LabourNet(), srcmod, document, wo.cusid);
      sale.Add(acct::kShopFees, -line.otheramt, srcmod, document, wo.cusid);
      sale.Add(acct::kTireLevies, -line.levy, srcmod, document, wo.cusid);
      month_tech_pay_ += line.LabourPay() + line.partscomm;
      month_sublet_cost_ += line.othcost;
    }
    if (line.Physical()) {
      const ClassKind kind = items_[static_cast<size_t>(line.item)].kind;
      const Cents cost = line.invcost + line.corecost;
      sale.Add(CostAccount(kind), cost, srcmod, document, wo.cusid);
      sale.Add(InventoryAccount(kind), -cost, srcmod, document, wo.cusid);
    }
  }
  sale.Add(acct::kPayables, -totals.tx1, "TAX1", document, 1);
  sale.Add(acct::kPayables, -totals.tx2, "TAX2", document, 2);
  tax_owed_[1] += totals.tx1;
  tax_owed_[2] += totals.tx2;
  ledger_.Post(wo.date, sale);

  // What was paid at the counter clears the receivable at once; a charge to the account waits
  // for the customer's cheque.
  Transaction paid;
  for (const Payment& p : wo.payments) {
    if (p.method == PayMethod::kAccount) {
      if (!credit && p.amount > 0) {
        const bool bounces = rng_.PerMille(30);
        receipts_[(wo.date + static_cast<int>(rng_.Range(14, 75))).number].push_back(
            Receipt{wo.cusid, wo.invoiceid, p.amount, bounces, 0});
      }
      continue;
    }
    paid.Add(kPayAccounts[static_cast<int>(p.method)], p.amount, srcmod, document, wo.cusid);
    paid.Add(acct::kReceivables, -p.amount, srcmod, document, wo.cusid);
  }
  ledger_.Post(wo.date, paid);
}

void Shop::MoveStock(const WorkOrder& wo) {
  const int year = YearIndex(wo.date);
  for (const Line& line : wo.lines) {
    if (!line.Physical()) continue;
    Item& item = items_[static_cast<size_t>(line.item)];
    item.qoh10 -= line.qty10;
    tables_->invtrans.Row(next_invtransid_++, item.invid, wo.date, -line.qty10 / 10.0, Money{item.cost[year]},
                          Money{item.core});
    if (item.stocked && !item.on_order && item.qoh10 < item.reorder_point10) {
      item.on_order = true;
      restock_[item.supid].push_back(line.item);
    }
  }
}

void Shop::ClockHours(const WorkOrder& wo) {
  std::map<int, int> hours;  // tenths by technician
  for (const Line& line : wo.lines) {
    if (line.Counted() && line.tech >= 0) hours[line.tech] += line.hrs10;
  }
  for (const auto& [tech, hrs10] : hours) {
    if (hrs10 <= 0) continue;
    const Staff& staff = StaffList()[static_cast<size_t>(tech)];
    const Cents clocked = std::max<Cents>(1, RoundDiv(hrs10 * rng_.Range(80, 120), 100));
    tables_->timeclock.Row(next_timeclockid_++, wo.woid, staff.userid, wo.date,
                           static_cast<double>(clocked) / 10.0, Money{staff.hourly_cents});
  }
}

}  // namespace ent::sampledb
