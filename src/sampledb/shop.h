// The sample shop's generator: three years of a repair shop's business, written day by day into
// a database that already has the shop schema. Internal to sample_db.cpp.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sampledb/calendar.h"
#include "sampledb/catalog.h"
#include "sampledb/ledger.h"
#include "sampledb/prng.h"
#include "sampledb/sqlite_out.h"

namespace ent::sampledb {

using Cents = int64_t;

// num / den rounded to the nearest whole number, halves away from zero; den > 0.
Cents RoundDiv(Cents num, Cents den);

struct ShopScale {
  int customers;
  int work_orders;
  int item_variants;  // inventory items made from each stock template
};

// The dates the shop's business covers: three fiscal years.
inline constexpr int kFirstYear = 2023;
inline constexpr int kLastYear = 2025;

enum class PayMethod { kCash, kCheque, kVisa, kMasterCard, kAmex, kOtherCard, kDebitCard, kAccount };
inline constexpr int kPayMethodCount = 8;

struct Item {
  int invid = 0;
  ClassKind kind = ClassKind::kPart;
  std::string_view sales_class;
  std::string partnum, description, category, manufacturer, location;
  int supid = 0;
  Cents core = 0;
  Cents cost[3] = {};  // unit cost in each year
  Cents list[3] = {};  // list price in each year
  int qoh10 = 0;       // quantities in tenths (litres of oil come in halves)
  int reorder_point10 = 0;
  int reorder_qty10 = 0;
  bool stocked = true;
  bool on_order = false;
};

struct Customer {
  int cusid = 0;
  bool fleet = false;
  bool tx1_exempt = false;
  bool tx2_exempt = false;
  std::vector<int> vehicles;  // indices into Shop::vehicles_
};

struct Vehicle {
  int vehid = 0;
  int odometer = 0;
};

// One work-order line. Quantities and hours in tenths, money in cents.
struct Line {
  std::string description;
  std::string_view sales_class;  // empty: no class
  int qty10 = 0;
  int hrs10 = 0;
  Cents partsea = 0, totparts = 0, discpart = 0, labour = 0, disclab = 0;
  int otherchargeid = 0;
  Cents otheramt = 0, othcost = 0, levy = 0;
  Cents invcost = 0, corecost = 0;
  int item = -1;  // index into Shop::items_
  int presetjobid = 0;
  int miscid = 0;
  bool pkg = false, header = false, skipped = false;
  int tech = -1;  // index into StaffList()
  Cents hourly = 0, flat = 0, labcomm = 0, partscomm = 0;

  // Lines the invoice totals count: not skipped, and not the contents of a preset package.
  bool Counted() const { return !skipped && !(pkg && !header); }
  // Lines whose stock leaves (or, on a credit invoice, returns to) the shelf.
  bool Physical() const { return !skipped && item >= 0; }
  Cents PartsNet() const { return totparts - discpart; }
  Cents LabourNet() const { return labour - disclab; }
  Cents Total() const { return PartsNet() + LabourNet() + otheramt + levy; }
  Cents LabourPay() const { return hourly + flat + labcomm; }
};

enum class WoKind {
  kInvoice,
  kCredit,
  kEstimatePending,
  kEstimateDone,
  kVoid,
  kOpen,
  kDeletedOpen,
  kDeletedInvoice,
};

struct Payment {
  PayMethod method;
  Cents amount;
};

struct WorkOrder {
  WoKind kind = WoKind::kInvoice;
  int woid = 0, cusid = 0, vehid = 0, invoiceid = 0, credid = 0, estid = 0;
  Day opened, date;
  int tech = -1;
  int writer = -1;
  bool tx1_exempt = false, tx2_exempt = false, archive = false;
  std::string number, summary, requests, note, odometer, ponum, wotime, invoicetime;
  std::vector<Line> lines;
  std::vector<Payment> payments;
};

struct Totals {
  Cents parts_gross = 0, parts_disc = 0, labour_gross = 0, labour_disc = 0, other = 0, levy = 0;
  Cents subtotal = 0, tx1 = 0, tx2 = 0, total = 0;
  Cents parts_cost = 0, labour_cost = 0, other_cost = 0;
};
Totals SumLines(const std::vector<Line>& lines, bool tx1_exempt, bool tx2_exempt);

// The accounts a line's stock is booked to, by the kind of its sales class.
int InventoryAccount(ClassKind kind);
int CostAccount(ClassKind kind);
int PartsRevenueAccount(ClassKind kind);

// A job the shop does; each becomes a few lines of a work order.
enum class JobKind {
  kOilChange,
  kOilPackage,
  kBrakes,
  kBrakePackage,
  kTires,
  kWheels,
  kAlignment,
  kEmission,
  kBattery,
  kInspection,
  kWipers,
  kAirFilter,
  kSuspension,
  kTuneUp,
  kExhaust,
  kAirCon,
  kCoolant,
  kMiscRepair,
  kTowing,
  kCounterSale,
  kWarranty,
  kUnclassified,
};

// What a work order is to show. Most plans are drawn at random; the shop also runs through a fixed
// list of them at intervals, so that every kind of document, line and payment occurs in every size
// of shop.
struct Plan {
  WoKind kind = WoKind::kInvoice;
  std::vector<JobKind> jobs;  // empty: drawn at random
  int pay = -1;               // a PayMethod, or -1 for a random one
  bool split_payment = false;
  bool discount = false;
  bool recommend = false;  // add a recommended job the customer skipped
  bool partial_credit = false;
  Cents emission_fee = 0;  // an emission test on its own at this price
};

class Shop {
 public:
  Shop(Database& db, ShopScale scale, uint64_t seed, std::function<void(double)> progress);
  ~Shop();
  void Build();

 private:
  // The inserts of the tables written while the days run.
  struct Tables {
    Tables(Database& db, int suppliers);
    Insert wo, woparts, payments, invtrans, timeclock;
    std::vector<std::unique_ptr<Insert>> purchases;  // suph tables, by supplier id - 1
  };
  struct RecentInvoice {
    Day date;
    WorkOrder wo;
    bool credited = false;
  };
  // A customer's cheque against the account, or the bank returning it.
  struct Receipt {
    int cusid;
    int invoiceid;
    Cents amount;
    bool bounces;
    int bounced_number;  // 0 for a cheque; the number of the returned cheque for the bank's notice
  };

  // shop_setup.cpp: the shop's master data and its opening position.
  void WriteSettings();
  void WriteChartAndYears();
  void WriteStaffSuppliersJobs();
  void CreateItems();
  void CreateCustomers();
  void OpenBooks(Day day);
  void WriteItems();

  // shop_orders.cpp: work orders, their lines, payments and consequences.
  Plan NextPlan(Day day, bool closing_days);
  void MakeWorkOrder(Day day, const Plan& plan);
  void MakeCredit(Day day, const Plan& plan);
  void AddJob(WorkOrder& wo, JobKind job, int tech, bool skipped);
  JobKind RandomJob();
  Line PartLine(int item, int qty10, int year, int tech);
  Line LabourLine(std::string description, std::string_view sales_class, int hrs10, int year, int tech);
  Line FeeLine(int id, std::string description, std::string_view sales_class, Cents amount, Cents cost);
  void PackLines(WorkOrder& wo, size_t first, std::string description, int jobid);
  void ApplyPay(Line& line) const;
  void TakePayments(WorkOrder& wo, const Plan& plan, Cents total);
  void Write(const WorkOrder& wo, const Totals& totals);
  void Book(const WorkOrder& wo, const Totals& totals);
  void MoveStock(const WorkOrder& wo);
  void ClockHours(const WorkOrder& wo);
  int PickItem(std::string_view partnum_prefix);
  int PickTech();
  int PickWriter();
  int YearIndex(Day day) const { return day.Year() - kFirstYear; }
  // The shop's labour rate per hour, in cents, in a year (0 for the first).
  static Cents LabourRate(int year) { return 11000 + 500 * year; }

  // shop_books.cpp: the bookkeeping that is not a work order.
  void CloseDay(Day day);
  void Restock(Day day);
  void TakeReceipts(Day day);
  void CreditAccount(Day day, int cusid, int invoiceid, Cents amount);
  void Deposit(Day day);
  void MonthEnd(Day day);
  void PaySuppliers(Day day);
  void RemitTaxes(Day day);
  void YearEnd(Day day);
  Cents Scaled(Cents cents) const;
  int NextCheque() { return next_cheque_++; }

  Database& db_;
  ShopScale scale_;
  Prng rng_;
  std::function<void(double)> progress_;
  std::unique_ptr<Tables> tables_;
  Ledger ledger_;

  std::vector<Item> items_;
  std::map<std::string_view, std::vector<int>> items_by_prefix_;  // stocked items per template
  std::vector<Customer> customers_;  // customers_[0] is the counter-sale customer
  std::vector<Vehicle> vehicles_;
  std::vector<int> tech_weights_;  // by StaffList() index
  std::vector<int> writers_;       // StaffList() indices of the service advisors

  int next_woid_ = 1, next_invoiceid_ = 100001, next_credid_ = 900001, next_estid_ = 1;
  int next_lineid_ = 1, next_payid_ = 1, next_invtransid_ = 1, next_timeclockid_ = 1;
  int next_purchid_ = 1, next_receipt_ = 1, next_cheque_ = 2001, next_deposit_ = 1, next_journal_ = 1;
  int forced_index_ = 0;
  int64_t work_order_count_ = 0;

  std::deque<RecentInvoice> recent_;
  std::map<int, std::vector<Receipt>> receipts_;  // by day number
  std::map<int, std::vector<int>> restock_;       // items to order today, by supplier id
  std::vector<Cents> supplier_owed_;              // by supplier id
  std::vector<Cents> supplier_due_;               // owed at the last month end
  Cents tax_owed_[3] = {};                        // by tax number (1, 2)
  Cents tax_due_[3] = {};                         // owed at the last quarter end
  Cents month_tech_pay_ = 0;
  Cents month_sublet_cost_ = 0;
  Cents loan_balance_ = 0;
};

}  // namespace ent::sampledb
