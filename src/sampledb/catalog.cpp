#include "sampledb/catalog.h"

namespace ent::sampledb {

std::span<const Account> ChartOfAccounts() {
  // In account-number order. Every account shares the type of its top-level account, so that a
  // group without a closing account of its own level is bounded by its type.
  static constexpr Account kChart[] = {
      {1, 0, 1000, "Current Assets", "CA", 0, 'A'},
      {2, 1, 1100, "Cash and Bank", "CA", 1, 'A'},
      {3, 2, 1110, "Cash on Hand", "CA", 2, 'A'},
      {4, 2, 1120, "Bank Accounts", "CA", 2, 'A'},
      {5, 4, 1121, "Operating Chequing", "CA", 3, 'A'},
      {6, 4, 1122, "Savings", "CA", 3, 'A'},
      {7, 2, 1130, "Undeposited Funds", "CA", 2, 'A'},
      {8, 7, 1131, "Card Clearing", "CA", 3, 'A'},
      {11, 8, 1132, "Visa and MasterCard", "CA", 4, 'A'},
      {12, 8, 1133, "American Express", "CA", 4, 'A'},
      {13, 8, 1134, "Other Cards", "CA", 4, 'A'},
      {14, 7, 1135, "Debit Card Clearing", "CA", 3, 'A'},
      {15, 1, 1200, "Receivables", "CA", 1, 'A'},
      {9, 15, 1210, "Accounts Receivable", "CA", 2, 'A'},
      {16, 15, 1220, "Employee Advances", "CA", 2, 'A'},
      {17, 1, 1300, "Inventory", "CA", 1, 'A'},
      {18, 17, 1310, "Tire and Wheel Inventory", "CA", 2, 'A'},
      {19, 17, 1320, "Oil and Fluid Inventory", "CA", 2, 'A'},
      {20, 0, 1500, "Fixed Assets", "FA", 0, 'A'},
      {21, 20, 1510, "Shop Equipment", "FA", 1, 'A'},
      {22, 21, 1511, "Accumulated Depreciation - Equipment", "FA", 2, 'A'},
      {23, 20, 1520, "Vehicles", "FA", 1, 'A'},
      {24, 23, 1521, "Service Truck", "FA", 2, 'A'},
      {25, 23, 1522, "Accumulated Depreciation - Vehicles", "FA", 2, 'A'},
      {26, 0, 2000, "Current Liabilities", "CL", 0, 'L'},
      {27, 26, 2100, "Trade Payables", "CL", 1, 'L'},
      {10, 27, 2110, "Accounts Payable", "CL", 2, 'L'},
      {28, 26, 2200, "Payroll Liabilities", "CL", 1, 'L'},
      {29, 0, 2500, "Long-term Liabilities", "LTL", 0, 'L'},
      {30, 29, 2510, "Equipment Loan", "LTL", 1, 'L'},
      {31, 0, 3000, "Owner's Equity", "EQ", 0, 'Q'},
      {32, 31, 3100, "Owner's Capital", "EQ", 1, 'Q'},
      {33, 31, 3200, "Owner's Drawings", "EQ", 1, 'Q'},
      {34, 0, 4000, "Sales Revenue", "INC", 0, 'R'},
      {35, 34, 4100, "Parts Sales", "INC", 1, 'R'},
      {36, 35, 4110, "Tire Sales", "INC", 2, 'R'},
      {37, 35, 4120, "Wheel Sales", "INC", 2, 'R'},
      {38, 34, 4200, "Labour Sales", "INC", 1, 'R'},
      {39, 38, 4210, "Emission Test Fees", "INC", 2, 'R'},
      {40, 34, 4300, "Fees and Levies", "INC", 1, 'R'},
      {41, 40, 4310, "Shop Fees and Charges", "INC", 2, 'R'},
      {42, 40, 4320, "Tire Levies", "INC", 2, 'R'},
      {43, 0, 4800, "Other Income", "OI", 0, 'R'},
      {44, 43, 4810, "Interest Income", "OI", 1, 'R'},
      {45, 0, 5000, "Cost of Sales", "COGS", 0, 'E'},
      {46, 45, 5100, "Parts Cost", "COGS", 1, 'E'},
      {47, 46, 5110, "Tire and Wheel Cost", "COGS", 2, 'E'},
      {48, 46, 5120, "Oil and Fluid Cost", "COGS", 2, 'E'},
      {49, 45, 5200, "Technician Pay", "COGS", 1, 'E'},
      {50, 45, 5300, "Sublet and Fee Costs", "COGS", 1, 'E'},
      {51, 0, 6000, "Operating Expenses", "EXP", 0, 'E'},
      {52, 51, 6100, "Occupancy", "EXP", 1, 'E'},
      {53, 52, 6110, "Rent", "EXP", 2, 'E'},
      {54, 52, 6120, "Utilities", "EXP", 2, 'E'},
      {55, 54, 6121, "Electricity", "EXP", 3, 'E'},
      {56, 54, 6122, "Natural Gas", "EXP", 3, 'E'},
      {57, 54, 6123, "Water", "EXP", 3, 'E'},
      {58, 51, 6200, "Office Wages", "EXP", 1, 'E'},
      {59, 51, 6300, "Depreciation", "EXP", 1, 'E'},
      {60, 51, 6400, "Bank and Finance Charges", "EXP", 1, 'E'},
      {61, 60, 6410, "Loan Interest", "EXP", 2, 'E'},
      {62, 60, 6420, "Card Processing Fees", "EXP", 2, 'E'},
      {63, 51, 6500, "Insurance", "EXP", 1, 'E'},
      {64, 51, 6600, "Advertising", "EXP", 1, 'E'},
  };
  return kChart;
}

std::span<const SalesClass> SalesClasses() {
  using enum ClassKind;
  static constexpr SalesClass kClasses[] = {
      {"AIR CON PARTS", kPart},
      {"AIR FILTERS", kPart},
      {"ANTI-FREEZE", kFluid},
      {"BATTERIES", kPart},
      {"BRAKE PARTS", kPart},
      {"EXHAUST", kPart},
      {"MISC FLUIDS", kFluid},
      {"MISC MECH PARTS", kPart},
      {"NUTS ACESSORIES", kPart},
      {"OIL", kFluid},
      {"OIL FILTERS", kPart},
      {"SHOP SUPPLIES", kPart},
      {"SUSPENSION PART", kPart},
      {"TUNE UP PARTS", kPart},
      {"VALVES", kPart},
      {"WIPER BLADES", kPart},
      {"ALIGNMENT LABOR", kLabour},
      {"BRAKE LABOR", kLabour},
      {"MAINT PACKAGE", kLabour},
      {"MISC MECH LABOR", kLabour},
      {"OIL CHANGE LABOR", kLabour},
      {"SAFETY INSPECTION", kLabour},
      {"SUSPENSION LABOR", kLabour},
      {"TIRE LABOR", kLabour},
      {"TUNE UP LABOR", kLabour},
      {"WHEEL BAL LABOR", kLabour},
      {"BF GOODRICH", kTire},
      {"GDYR PASS", kTire},
      {"GDYR TRUCK", kTire},
      {"KUMHO PASS", kTire},
      {"MICHELIN PASS", kTire},
      {"TOYO TRUCK", kTire},
      {"USED TIRES", kTire},
      {"WHEEL MAG", kWheel},
      {"WHEEL STEEL", kWheel},
      {"EMISSION TESTS", kEmission},
      {"OTHER CHARGES", kFee},
      {"TOWING", kFee},
      {"UNCLASSIFIED", kUnclassified},
  };
  return kClasses;
}

std::span<const ItemTemplate> ItemTemplates() {
  static constexpr ItemTemplate kTemplates[] = {
      {"OIL", "5W-20 CONVENTIONAL MOTOR OIL (L)", "OL5W20-", 290, 0, 3},
      {"OIL", "5W-30 SYNTHETIC BLEND MOTOR OIL (L)", "OL5W30-", 410, 0, 3},
      {"OIL", "10W-30 HIGH MILEAGE MOTOR OIL (L)", "OL10W30-", 440, 0, 3},
      {"OIL", "0W-20 FULL SYNTHETIC MOTOR OIL (L)", "OL0W20-", 580, 0, 3},
      {"OIL FILTERS", "OIL FILTER", "OF-", 425, 0, 7},
      {"AIR FILTERS", "ENGINE AIR FILTER", "AF-", 980, 0, 7},
      {"AIR FILTERS", "CABIN AIR FILTER", "CF-", 1120, 0, 7},
      {"BRAKE PARTS", "FRONT CERAMIC BRAKE PADS", "BPF-", 3800, 0, 4},
      {"BRAKE PARTS", "REAR BRAKE PADS", "BPR-", 3200, 0, 4},
      {"BRAKE PARTS", "BRAKE ROTOR", "BR-", 5200, 0, 4},
      {"BRAKE PARTS", "BRAKE CALIPER - REMAN", "BC-", 6800, 2000, 4},
      {"MISC FLUIDS", "DOT 3 BRAKE FLUID (L)", "FL-BRK", 650, 0, 3},
      {"MISC FLUIDS", "WASHER FLUID (4L)", "FL-WSH", 220, 0, 3},
      {"ANTI-FREEZE", "ANTI-FREEZE 50/50 PREMIX (L)", "AFZ-", 310, 0, 3},
      {"BATTERIES", "BATTERY GROUP 24F 650CCA", "BAT24F-", 11200, 1500, 5},
      {"BATTERIES", "BATTERY GROUP 35 640CCA", "BAT35-", 10800, 1500, 5},
      {"BATTERIES", "BATTERY GROUP H6 AGM", "BATH6-", 16500, 1500, 5},
      {"WIPER BLADES", "WIPER BLADE 18 IN", "WB18-", 740, 0, 7},
      {"WIPER BLADES", "WIPER BLADE 22 IN", "WB22-", 790, 0, 7},
      {"WIPER BLADES", "WIPER BLADE 26 IN", "WB26-", 860, 0, 7},
      {"TUNE UP PARTS", "IRIDIUM SPARK PLUG", "SP-", 890, 0, 1},
      {"TUNE UP PARTS", "IGNITION COIL", "IC-", 4800, 0, 1},
      {"SUSPENSION PART", "FRONT STRUT ASSEMBLY", "STR-", 11800, 0, 6},
      {"SUSPENSION PART", "SWAY BAR LINK", "SBL-", 2200, 0, 6},
      {"EXHAUST", "DIRECT-FIT MUFFLER", "MUF-", 8400, 0, 6},
      {"EXHAUST", "EXHAUST GASKET KIT", "EGK-", 900, 0, 6},
      {"AIR CON PARTS", "R-134A REFRIGERANT (CAN)", "AC134-", 1400, 0, 1},
      {"AIR CON PARTS", "A/C O-RING KIT", "ACOR-", 600, 0, 1},
      {"SHOP SUPPLIES", "BRAKE CLEANER (CAN)", "SS-BC", 320, 0, 1},
      {"MISC MECH PARTS", "SERPENTINE BELT", "SB-", 2800, 0, 1},
      {"MISC MECH PARTS", "THERMOSTAT", "TS-", 1800, 0, 1},
      {"VALVES", "TPMS SERVICE KIT", "TPK-", 450, 0, 2},
      {"VALVES", "RUBBER VALVE STEM", "VS-", 110, 0, 2},
      {"MICHELIN PASS", "TOURING ALL-SEASON", "MP-", 14200, 0, 2},
      {"GDYR PASS", "PREMIUM ALL-SEASON", "GP-", 12600, 0, 2},
      {"GDYR TRUCK", "ALL-TERRAIN LT", "GT-", 19800, 0, 2},
      {"KUMHO PASS", "VALUE ALL-SEASON", "KP-", 9600, 0, 2},
      {"BF GOODRICH", "GRAND TOURING", "BFG-", 13400, 0, 2},
      {"TOYO TRUCK", "RUGGED TERRAIN LT", "TT-", 20800, 0, 2},
      {"USED TIRES", "USED TIRE", "UT-", 2500, 0, 2},
      {"WHEEL STEEL", "STEEL WHEEL", "WS-", 5800, 0, 2},
      {"WHEEL MAG", "ALLOY WHEEL", "WM-", 14500, 0, 2},
  };
  return kTemplates;
}

std::span<const std::string_view> TireSizes() {
  static constexpr std::string_view kSizes[] = {"205/55R16", "225/65R17", "195/65R15", "235/60R18",
                                                "215/60R16", "265/70R17", "245/75R16", "275/55R20"};
  return kSizes;
}

std::span<const std::string_view> Manufacturers() {
  static constexpr std::string_view kMakers[] = {"DURALINE", "KESTREL",   "NORDFLEX",
                                                 "TRAXION",  "PROSERIES", "BLUEWATER"};
  return kMakers;
}

std::span<const Supplier> Suppliers() {
  static constexpr Supplier kSuppliers[] = {
      {"Lakeshore Auto Parts", "Gord Halloran"},     {"Metro Tire Distributors", "Priya Raman"},
      {"Northern Lubricants Inc.", "Ed Villeneuve"}, {"Precision Brake Supply", "Marta Zelenko"},
      {"Valley Battery Co.", "Hank Osei"},           {"Crossroads Exhaust & Suspension", "Lou Brannigan"},
      {"Summit Filters Ltd.", "Carla Mendes"},       {"Eastside Glass & Trim", "Noel Fraser"},
  };
  return kSuppliers;
}

std::span<const Job> Jobs() {
  static constexpr Job kJobs[] = {
      {"LOFGTX-HO", "LUBE OIL FILTER - CONVENTIONAL"},
      {"LOFSEMI-HO", "LUBE OIL FILTER - SYNTHETIC BLEND"},
      {"LOFHM-HO", "LUBE OIL FILTER - HIGH MILEAGE"},
      {"LOFSYNT-HO", "LUBE OIL FILTER - FULL SYNTHETIC"},
      {"LOF2411-HO", "LUBE OIL FILTER - LIGHT TRUCK"},
      {"LOF2412-HO", "LUBE OIL FILTER - DIESEL"},
      {"LUBSUM-HO", "SUMMER LUBE SPECIAL"},
      {"LUBFAL-HO", "FALL LUBE SPECIAL"},
      {"LUBWIN-HO", "WINTER LUBE SPECIAL"},
      {"LUBSPR-HO", "SPRING LUBE SPECIAL"},
      {"LUBE-HO", "CHASSIS LUBE AND OIL"},
      {"VIP1-HO", "VIP OIL SERVICE 1"},
      {"VIP2-HO", "VIP OIL SERVICE 2"},
      {"VIP3-HO", "VIP OIL SERVICE 3"},
      {"VIP4-HO", "VIP OIL SERVICE 4"},
      {"BRAKE-FRT", "FRONT BRAKE SERVICE"},
      {"TIRE-INST", "TIRE INSTALLATION"},
      {"ALIGN-4W", "FOUR-WHEEL ALIGNMENT"},
      {"EMISS-TEST", "EMISSION TEST"},
      {"BATT-INST", "BATTERY INSTALLATION"},
      {"SAFETY", "SAFETY INSPECTION"},
  };
  return kJobs;
}

std::span<const Staff> StaffList() {
  using enum PayScheme;
  static constexpr Staff kStaff[] = {
      {"TOMR", "Technician", "Tom", "Reyes", kFlatRate, 3000, 3400, true, 30},
      {"ANNAK", "Technician", "Anna", "Kowalski", kHourly, 3150, 0, true, 25},
      {"RAJP", "Technician", "Raj", "Patel", kCommission, 2900, 0, true, 20},
      {"LEOB", "Technician", "Leo", "Brandt", kHourly, 2100, 0, false, 10},
      {"SAMW", "Service Advisor/Technician", "Sam", "Whitfield", kCommission, 2800, 0, true, 10},
      {"DANAF", "Service Advisor/Technician", "Dana", "Fournier", kFlatRate, 2700, 3000, false, 5},
      {"PATM", "Service Advisor", "Pat", "Morrow", kHourly, 2600, 0, false, 0},
      {"ADMIN", "Administrator", "Helen", "Dufresne", kHourly, 0, 0, false, 0},
  };
  return kStaff;
}

std::span<const Model> Models() {
  static constexpr Model kModels[] = {
      {"TOYOTA", "COROLLA", "1.8L"},
      {"TOYOTA", "CAMRY", "2.5L"},
      {"TOYOTA", "RAV4", "2.5L"},
      {"HONDA", "CIVIC", "2.0L"},
      {"HONDA", "ACCORD", "1.5L"},
      {"HONDA", "CR-V", "1.5L"},
      {"FORD", "F-150", "5.0L V8"},
      {"FORD", "ESCAPE", "1.5L"},
      {"FORD", "FOCUS", "2.0L"},
      {"CHEVROLET", "SILVERADO", "5.3L V8"},
      {"CHEVROLET", "EQUINOX", "1.5L"},
      {"CHEVROLET", "MALIBU", "1.5L"},
      {"NISSAN", "ALTIMA", "2.5L"},
      {"NISSAN", "ROGUE", "2.5L"},
      {"HYUNDAI", "ELANTRA", "2.0L"},
      {"HYUNDAI", "TUCSON", "2.4L"},
      {"DODGE", "GRAND CARAVAN", "3.6L V6"},
      {"RAM", "1500", "5.7L V8"},
      {"VOLKSWAGEN", "JETTA", "1.4L"},
      {"SUBARU", "OUTBACK", "2.5L"},
      {"KIA", "SORENTO", "2.4L"},
      {"MAZDA", "CX-5", "2.5L"},
      {"GMC", "SIERRA", "5.3L V8"},
      {"FORD", "TRANSIT", "3.5L V6"},
  };
  return kModels;
}

std::span<const std::string_view> FirstNames() {
  static constexpr std::string_view kNames[] = {
      "James",   "Mary",     "Robert",  "Linda",  "Michael", "Susan",  "David",   "Karen",  "Daniel",
      "Nancy",   "Paul",     "Lisa",    "Mark",   "Sandra",  "Kevin",  "Donna",   "Brian",  "Carol",
      "Steven",  "Michelle", "Andrew",  "Laura",  "Ryan",    "Emily",  "Jason",   "Amanda", "Eric",
      "Melissa", "Scott",    "Rebecca", "Gary",   "Sharon",  "Tyler",  "Heather", "Aaron",  "Nicole",
      "Jordan",  "Megan",    "Kyle",    "Rachel", "Omar",    "Aisha",  "Wei",     "Mei",    "Arjun",
      "Divya",   "Luc",      "Chantal", "Mateo",  "Sofia",   "Connor", "Fiona",   "Dmitri", "Olga",
      "Kwame",   "Ama",      "Hiroshi", "Yuki",   "Liam",    "Chloe"};
  return kNames;
}

std::span<const std::string_view> LastNames() {
  static constexpr std::string_view kNames[] = {
      "Smith",  "MacDonald", "Tremblay", "Wilson", "Campbell", "Anderson", "Taylor",  "Brown",  "Martin",
      "Roy",    "Gagnon",    "Thompson", "Young",  "Clarke",   "Walker",   "Wright",  "Scott",  "Stewart",
      "Murphy", "Kelly",     "Johnston", "Fraser", "Ross",     "Morrison", "Bell",    "Reid",   "Hughes",
      "Graham", "Lee",       "Wong",     "Chen",   "Singh",    "Patel",    "Nguyen",  "Kim",    "Park",
      "Gill",   "Sandhu",    "Dubois",   "Lavoie", "Bouchard", "Morin",    "Cote",    "Fortin", "Kowalczyk",
      "Novak",  "Schmidt",   "Muller",   "Rossi",  "Ferreira", "Santos",   "Silva",   "Haddad", "Khan",
      "Ali",    "Hassan",    "O'Brien",  "O'Neil", "Sullivan", "Doyle",    "Friesen", "Penner", "Dyck",
      "Baker",  "Cooper",    "Harris",   "Lewis",  "Mitchell", "Parker",   "Turner",  "Watson", "Wood",
      "Hill",   "Green",     "Adams",    "Nelson", "Carter",   "Hall",     "Allen",   "King"};
  return kNames;
}

std::span<const std::string_view> CompanyWords() {
  static constexpr std::string_view kWords[] = {
      "Plumbing Ltd.",       "Courier Inc.",  "Landscaping",       "Electric Ltd.",
      "Catering Co.",        "Roofing Inc.",  "Florist",           "Home Care Services",
      "Pest Control",        "Builders Ltd.", "Heating & Cooling", "Delivery Services",
      "Property Management", "Painting Co.",  "Cleaning Services", "Hardware Ltd."};
  return kWords;
}

std::span<const std::string_view> Streets() {
  static constexpr std::string_view kStreets[] = {
      "Maple Ave",   "King St",     "Queen St", "Elm St",        "Lakeshore Rd",
      "Church St",   "Victoria St", "Main St",  "Wellington Rd", "Park Dr",
      "Cedar Cres",  "Birch Lane",  "Ridge Rd", "Mill St",       "Concession 6",
      "Sideroad 15", "Harbour Dr",  "Oak Blvd", "Pine Ct",       "Highland Ave"};
  return kStreets;
}

std::span<const std::string_view> Cities() {
  static constexpr std::string_view kCities[] = {"Barrie",  "Orillia",      "Innisfil", "Collingwood",
                                                 "Midland", "Wasaga Beach", "Bradford", "Alliston",
                                                 "Angus",   "Stayner",      "Elmvale",  "Penetanguishene"};
  return kCities;
}

std::span<const std::string_view> CustomerRequests() {
  static constexpr std::string_view kRequests[] = {
      "",
      "",
      "Check noise from front end when braking",
      "Check engine light is on",
      "Rotate tires and check pressures",
      "Vibration at highway speed",
      "Pulls to the right",
      "Slow starting on cold mornings",
      "Customer waiting - please call when done",
      "A/C not blowing cold",
      "Check for oil leak under engine",
  };
  return kRequests;
}

}  // namespace ent::sampledb
