// The fixed material the sample shop is made of: the chart of accounts, sales classes, stock
// templates, preset jobs, staff, suppliers and the name lists customers and vehicles are drawn from.
#pragma once

#include <span>
#include <string_view>

namespace ent::sampledb {

// Account ids (chid) the bookkeeping posts to. 9 and 10 are the control accounts.
namespace acct {
inline constexpr int kCashOnHand = 3;
inline constexpr int kChequing = 5;
inline constexpr int kSavings = 6;
inline constexpr int kUndeposited = 7;  // cheques
inline constexpr int kReceivables = 9;
inline constexpr int kPayables = 10;  // suppliers and sales taxes
inline constexpr int kVisaMasterCard = 11;
inline constexpr int kAmex = 12;
inline constexpr int kOtherCards = 13;
inline constexpr int kDebitCards = 14;
inline constexpr int kInventory = 17;
inline constexpr int kTireInventory = 18;
inline constexpr int kFluidInventory = 19;
inline constexpr int kEquipment = 21;
inline constexpr int kEquipmentDepreciation = 22;
inline constexpr int kTruck = 24;
inline constexpr int kTruckDepreciation = 25;
inline constexpr int kLoan = 30;
inline constexpr int kCapital = 32;
inline constexpr int kDrawings = 33;
inline constexpr int kPartsSales = 35;
inline constexpr int kTireSales = 36;
inline constexpr int kWheelSales = 37;
inline constexpr int kLabourSales = 38;
inline constexpr int kEmissionFees = 39;
inline constexpr int kShopFees = 41;
inline constexpr int kTireLevies = 42;
inline constexpr int kInterestIncome = 44;
inline constexpr int kPartsCost = 46;
inline constexpr int kTireCost = 47;
inline constexpr int kFluidCost = 48;
inline constexpr int kTechnicianPay = 49;
inline constexpr int kSubletCost = 50;
inline constexpr int kRent = 53;
inline constexpr int kElectricity = 55;
inline constexpr int kNaturalGas = 56;
inline constexpr int kWater = 57;
inline constexpr int kOfficeWages = 58;
inline constexpr int kDepreciation = 59;
inline constexpr int kLoanInterest = 61;
inline constexpr int kCardFees = 62;
inline constexpr int kInsurance = 63;
inline constexpr int kAdvertising = 64;
inline constexpr int kCount = 65;  // ids are below this
}  // namespace acct

struct Account {
  int chid;
  int parentid;
  int number;
  std::string_view name;
  std::string_view type;
  int sublevel;
  char five_type;  // A, L, Q, R, E
};
std::span<const Account> ChartOfAccounts();

// How a sales class is sold and booked.
enum class ClassKind { kPart, kFluid, kTire, kWheel, kLabour, kEmission, kFee, kUnclassified };

struct SalesClass {
  std::string_view name;  // "UNCLASSIFIED" stands for the lines without a class
  ClassKind kind;
};
std::span<const SalesClass> SalesClasses();

// Target margins (percent) of the pricing bands: unit cost up to 24.99, up to 99.99, above.
inline constexpr int kBandMargins[3] = {55, 42, 33};

// A kind of stock item; each becomes one or more inventory items.
struct ItemTemplate {
  std::string_view sales_class;
  std::string_view description;  // tires: completed with a size
  std::string_view partnum_prefix;
  int cost_cents;  // in 2023
  int core_cents;
  int supplier;  // preferred supplier id
};
std::span<const ItemTemplate> ItemTemplates();
std::span<const std::string_view> TireSizes();
std::span<const std::string_view> Manufacturers();

struct Supplier {
  std::string_view company;
  std::string_view contact;
};
std::span<const Supplier> Suppliers();  // id = position + 1; the last one sells nothing

struct Job {
  std::string_view jobnum;
  std::string_view description;
};
std::span<const Job> Jobs();  // jobid = position + 1; the oil-change jobs come first
inline constexpr int kOilJobCount = 15;

enum class PayScheme { kHourly, kFlatRate, kCommission };

struct Staff {
  std::string_view userid;
  std::string_view usertype;
  std::string_view fname;
  std::string_view lname;
  PayScheme scheme;
  int hourly_cents;
  int flat_cents;
  bool mechanic_row;
  int work_weight;  // share of the shop's jobs; 0 for staff who do not work on cars
};
std::span<const Staff> StaffList();

struct Model {
  std::string_view make;
  std::string_view model;
  std::string_view engine;
};
std::span<const Model> Models();

std::span<const std::string_view> FirstNames();
std::span<const std::string_view> LastNames();
std::span<const std::string_view> CompanyWords();
std::span<const std::string_view> Streets();
std::span<const std::string_view> Cities();
std::span<const std::string_view> CustomerRequests();

}  // namespace ent::sampledb
