// The shop's bookkeeping besides its invoices: customers' cheques against their accounts,
// restocking from suppliers, bank deposits, payroll and bills, supplier payments, sales-tax
// remittances and depreciation.
#include <algorithm>
#include <string>

#include "sampledb/shop.h"

namespace ent::sampledb {
namespace {

// Accounts cleared into the chequing account by the weekly deposit, with the card fee in
// hundredths of a percent.
struct Clearing {
  int chid;
  Cents fee_basis_points;
};
constexpr Clearing kClearing[] = {{acct::kCashOnHand, 0},       {acct::kUndeposited, 0},
                                  {acct::kVisaMasterCard, 250}, {acct::kAmex, 300},
                                  {acct::kOtherCards, 280},     {acct::kDebitCards, 60}};
constexpr Cents kCashFloat = 30000;

int YearMonth(Day day) {
  return day.Year() * 100 + day.Month();
}

}  // namespace

int InventoryAccount(ClassKind kind) {
  if (kind == ClassKind::kTire || kind == ClassKind::kWheel) return acct::kTireInventory;
  return kind == ClassKind::kFluid ? acct::kFluidInventory : acct::kInventory;
}

int CostAccount(ClassKind kind) {
  if (kind == ClassKind::kTire || kind == ClassKind::kWheel) return acct::kTireCost;
  return kind == ClassKind::kFluid ? acct::kFluidCost : acct::kPartsCost;
}

int PartsRevenueAccount(ClassKind kind) {
  if (kind == ClassKind::kTire) return acct::kTireSales;
  return kind == ClassKind::kWheel ? acct::kWheelSales : acct::kPartsSales;
}

Cents Shop::Scaled(Cents cents) const {
  return RoundDiv(cents * scale_.work_orders, 9000);
}

void Shop::CloseDay(Day day) {
  TakeReceipts(day);
  Restock(day);
  if (day.Weekday() == 6) Deposit(day);
  if (day.DayOfMonth() == 15) PaySuppliers(day);
  if (day.DayOfMonth() == 28 && day.Month() % 3 == 1) RemitTaxes(day);
  if (day.IsLastOfMonth()) MonthEnd(day);
  if (day.Month() == 12 && day.DayOfMonth() == 31) YearEnd(day);
  while (!recent_.empty() && recent_.front().date + 45 < day) recent_.pop_front();
}

void Shop::TakeReceipts(Day day) {
  const auto due = receipts_.find(day.number);
  if (due == receipts_.end()) return;
  const std::vector<Receipt> receipts = std::move(due->second);
  receipts_.erase(due);
  for (const Receipt& r : receipts) {
    Transaction t;
    if (r.bounced_number != 0) {
      // The bank returns a cheque: the customer owes the amount again, and pays it some days later.
      t.Add(acct::kReceivables, r.amount, "NSFCHEQUE", r.bounced_number, r.cusid);
      t.Add(acct::kChequing, -r.amount, "NSFCHEQUE", r.bounced_number, r.cusid);
      receipts_[(day + static_cast<int>(rng_.Range(10, 20))).number].push_back(
          Receipt{r.cusid, r.invoiceid, r.amount, false, 0});
    } else {
      const int number = next_receipt_++;
      t.Add(acct::kChequing, r.amount, "ARPAYMENT", number, r.cusid);
      t.Add(acct::kReceivables, -r.amount, "ARPAYMENT", number, r.cusid);
      if (r.bounces)
        receipts_[(day + 5).number].push_back(Receipt{r.cusid, r.invoiceid, r.amount, false, number});
    }
    ledger_.Post(day, t);
  }
}

void Shop::CreditAccount(Day day, int cusid, int invoiceid, Cents amount) {
  // A credit against an invoice charged to the account: the customer's cheque for it will be
  // smaller, or, when the invoice is paid already, the shop refunds the amount by cheque.
  for (auto& [due, receipts] : receipts_) {
    for (auto r = receipts.begin(); r != receipts.end(); ++r) {
      if (r->invoiceid != invoiceid || r->bounced_number != 0) continue;
      r->amount -= amount;
      if (r->amount <= 0) receipts.erase(r);
      return;
    }
  }
  const int cheque = NextCheque();
  Transaction refund;
  refund.Add(acct::kReceivables, amount, "ARREFUND", cheque, cusid);
  refund.Add(acct::kChequing, -amount, "ARREFUND", cheque, cusid);
  ledger_.Post(day, refund);
}

void Shop::Restock(Day day) {
  // One supplier invoice per supplier and day for everything that ran low that day.
  const int year = YearIndex(day);
  for (const auto& [supid, ordered] : restock_) {
    const int purchid = next_purchid_++;
    Transaction t;
    Cents purchase = 0;
    for (int index : ordered) {
      Item& item = items_[static_cast<size_t>(index)];
      const int qty10 = item.reorder_qty10 + std::max(0, item.reorder_point10 - item.qoh10);
      const Cents amount = RoundDiv((item.cost[year] + item.core) * qty10, 10);
      item.qoh10 += qty10;
      item.on_order = false;
      tables_->invtrans.Row(next_invtransid_++, item.invid, day, qty10 / 10.0, Money{item.cost[year]},
                            Money{item.core});
      t.Add(InventoryAccount(item.kind), amount, "SUPTRANS", purchid, supid);
      purchase += amount;
    }
    const Cents tax = RoundDiv(purchase * 5, 100);  // the first tax, recovered from what is collected
    t.Add(acct::kPayables, -(purchase + tax), "SUPTRANS", purchid, supid);
    t.Add(acct::kPayables, tax, "TAX1", purchid, 1);
    ledger_.Post(day, t);
    tables_->purchases[static_cast<size_t>(supid) - 1]->Row(
        purchid, day, "SI-" + std::to_string(40000 + purchid), Money{purchase});
    supplier_owed_[static_cast<size_t>(supid)] += purchase + tax;
    tax_owed_[1] -= tax;
  }
  restock_.clear();
}

void Shop::Deposit(Day day) {
  const int deposit = next_deposit_++;
  Transaction t;
  for (const Clearing& c : kClearing) {
    const Cents amount = ledger_.Balance(c.chid) - (c.chid == acct::kCashOnHand ? kCashFloat : 0);
    const Cents fee = amount > 0 ? RoundDiv(amount * c.fee_basis_points, 10000) : 0;
    t.Add(c.chid, -amount, "DEPOSIT", deposit);
    t.Add(acct::kChequing, amount - fee, "DEPOSIT", deposit);
    t.Add(acct::kCardFees, fee, "DEPOSIT", deposit);
  }
  ledger_.Post(day, t);
}

void Shop::PaySuppliers(Day day) {
  // On the 15th the shop pays what it owed its suppliers at the end of the last month.
  for (size_t supid = 1; supid < supplier_due_.size(); ++supid) {
    const Cents amount = supplier_due_[supid];
    if (amount <= 0) continue;
    const int cheque = NextCheque();
    Transaction t;
    t.Add(acct::kPayables, amount, "SUPMAKEPAYMENT", cheque, static_cast<int>(supid));
    t.Add(acct::kChequing, -amount, "SUPMAKEPAYMENT", cheque, static_cast<int>(supid));
    ledger_.Post(day, t);
    supplier_owed_[supid] -= amount;
    supplier_due_[supid] = 0;
  }
}

void Shop::RemitTaxes(Day day) {
  // Sales taxes of a quarter are remitted on the 28th of the month after it.
  for (int tax = 1; tax <= 2; ++tax) {
    const Cents amount = tax_due_[tax];
    if (amount == 0) continue;
    Transaction t;
    t.Add(acct::kPayables, amount, "TAXREMIT", YearMonth(day), tax);
    t.Add(acct::kChequing, -amount, "TAXREMIT", YearMonth(day), tax);
    ledger_.Post(day, t);
    tax_owed_[tax] -= amount;
    tax_due_[tax] = 0;
  }
}

void Shop::MonthEnd(Day day) {
  const int month = YearMonth(day);
  auto pay = [&](int chid, Cents amount, std::string_view srcmod, int srcid) {
    Transaction t;
    t.Add(chid, amount, srcmod, srcid);
    t.Add(acct::kChequing, -amount, srcmod, srcid);
    ledger_.Post(day, t);
  };
  Transaction payroll;
  payroll.Add(acct::kTechnicianPay, month_tech_pay_, "PAYROLL", month);
  payroll.Add(acct::kOfficeWages, Scaled(900000), "PAYROLL", month);
  payroll.Add(acct::kChequing, -(month_tech_pay_ + Scaled(900000)), "PAYROLL", month);
  ledger_.Post(day, payroll);
  month_tech_pay_ = 0;
  if (month_sublet_cost_ != 0) pay(acct::kSubletCost, month_sublet_cost_, "CHEQUE", NextCheque());
  month_sublet_cost_ = 0;

  const bool winter = day.Month() <= 3 || day.Month() >= 11;
  pay(acct::kRent, Scaled(650000), "CHEQUE", NextCheque());
  const Cents electricity = Scaled(rng_.Range(60000, 90000));
  pay(acct::kElectricity, electricity, "CHEQUE", NextCheque());
  const Cents gas = Scaled(winter ? rng_.Range(50000, 70000) : rng_.Range(15000, 25000));
  pay(acct::kNaturalGas, gas, "CHEQUE", NextCheque());
  const Cents water = Scaled(rng_.Range(8000, 12000));
  pay(acct::kWater, water, "CHEQUE", NextCheque());
  pay(acct::kInsurance, Scaled(65000), "CHEQUE", NextCheque());
  const Cents advertising = Scaled(rng_.Range(20000, 60000));
  pay(acct::kAdvertising, advertising, "CHEQUE", NextCheque());
  pay(acct::kDrawings, Scaled(1000000), "CHEQUE", NextCheque());

  if (loan_balance_ > 0) {
    const Cents interest = RoundDiv(loan_balance_ * 6, 1200);
    const Cents principal = std::min(std::max<Cents>(Scaled(116000) - interest, 0), loan_balance_);
    const int cheque = NextCheque();
    Transaction t;
    t.Add(acct::kLoan, principal, "CHEQUE", cheque);
    t.Add(acct::kLoanInterest, interest, "CHEQUE", cheque);
    t.Add(acct::kChequing, -(principal + interest), "CHEQUE", cheque);
    ledger_.Post(day, t);
    loan_balance_ -= principal;
  }
  Transaction interest;
  const Cents earned = RoundDiv(ledger_.Balance(acct::kSavings) * 15, 10000);
  interest.Add(acct::kSavings, earned, "BANKINT", month);
  interest.Add(acct::kInterestIncome, -earned, "BANKINT", month);
  ledger_.Post(day, interest);

  supplier_due_ = supplier_owed_;
  if (day.Month() % 3 == 0) {
    tax_due_[1] = tax_owed_[1];
    tax_due_[2] = tax_owed_[2];
  }
}

void Shop::YearEnd(Day day) {
  const int journal = next_journal_++;
  const Cents equipment = RoundDiv(ledger_.Balance(acct::kEquipment) * 10, 100);
  const Cents truck = RoundDiv(ledger_.Balance(acct::kTruck) * 20, 100);
  Transaction t;
  t.Add(acct::kDepreciation, equipment + truck, "GENJOURNAL", journal);
  t.Add(acct::kEquipmentDepreciation, -equipment, "GENJOURNAL", journal);
  t.Add(acct::kTruckDepreciation, -truck, "GENJOURNAL", journal);
  ledger_.Post(day, t);
}

}  // namespace ent::sampledb
