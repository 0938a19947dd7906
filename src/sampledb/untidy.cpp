#include "sampledb/untidy.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/error.h"

namespace ent::sampledb {

namespace {

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

Statement Prepare(Database& db, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db.handle(), sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
    throw Error(err::kDatabaseError, std::string(sqlite3_errmsg(db.handle())) + " in " + sql, "sample-db");
  }
  return Statement(raw, sqlite3_finalize);
}

int64_t Number(Database& db, const std::string& sql) {
  Statement statement = Prepare(db, sql);
  return sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int64(statement.get(), 0) : 0;
}

std::vector<std::string> ColumnsOf(Database& db, const std::string& table) {
  Statement statement = Prepare(db, "SELECT name FROM pragma_table_info('" + table + "') ORDER BY cid");
  std::vector<std::string> columns;
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    columns.push_back(reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)));
  }
  return columns;
}

// The text made exactly `width` characters long: cut, or filled with a readable run of words.
std::string Wide(std::string text, size_t width) {
  static const char kFill[] = " AND SONS LIMITED OF THE NORTHERN AND WESTERN COUNTIES";
  while (text.size() < width) text += kFill;
  text.resize(width);
  if (text.back() == ' ') text.back() = 'X';
  return text;
}

std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    out += c;
    if (c == '\'') out += '\'';
  }
  return out + "'";
}

// Copies the row of `table` that `where` selects into a new row, with some columns replaced by
// SQL expressions (evaluated over the copied row).
void CopyRow(Database& db, const std::string& table, const std::string& where,
             const std::vector<std::pair<std::string, std::string>>& replaced) {
  std::string names, values;
  for (const std::string& column : ColumnsOf(db, table)) {
    std::string value = "\"" + column + "\"";
    for (const auto& [name, expression] : replaced) {
      if (name == column) value = expression;
    }
    names += (names.empty() ? "\"" : ", \"") + column + "\"";
    values += (values.empty() ? "" : ", ") + value;
  }
  db.Exec("INSERT INTO " + table + " (" + names + ") SELECT " + values + " FROM " + table + " WHERE " +
          where);
}

void WideTexts(Database& db) {
  db.Exec("UPDATE customer SET company = " + Quoted(Wide("O'Reilly-Whitfield Fleet Maintenance", 60)) +
          ", fname = " + Quoted(Wide("Maximiliana Alexandrina", 30)) +
          ", lname = " + Quoted(Wide("Featherstonehaugh-Worthington", 30)) +
          ", street = " + Quoted(Wide("12345 Old Concession Road Number Seven", 60)) +
          ", city = " + Quoted(Wide("Saint-Jean-sur-Richelieu", 40)) + " WHERE cusid % 10 = 3");
  db.Exec("UPDATE vehicle SET Make = " + Quoted(Wide("Mercedes-Benz Commercial", 30)) +
          ", Model = " + Quoted(Wide("Sprinter 3500 High Roof", 30)) + " WHERE cusid % 10 = 3");
  db.Exec("UPDATE inventory SET partnum = substr(partnum || '-EXTENDED-PART-NUMBER', 1, 25), Description = " +
          Quoted(Wide("HEAVY DUTY CERAMIC BRAKE PAD SET FRONT AXLE WITH HARDWARE KIT", 100)) +
          ", Category = " + Quoted(Wide("BRAKE PARTS AND ACCESSORIES", 30)) +
          ", Manufacturer = " + Quoted(Wide("AFTERMARKET BRAKE SYSTEMS INT", 30)) +
          ", Location = " + Quoted(Wide("AISLE 12 SHELF", 20)) + " WHERE invid % 9 = 4");
  db.Exec("UPDATE woparts SET description = " +
          Quoted(Wide("REPLACED FRONT AND REAR BRAKE PADS, MACHINED ROTORS, BLED SYSTEM", 100)) +
          " WHERE wopartsid % 13 = 5");
  db.Exec("UPDATE wo SET Summary = " +
          Quoted(Wide("CUSTOMER REPORTS NOISE FROM FRONT END OVER BUMPS AND A PULL TO THE RIGHT", 255)) +
          " WHERE woid % 11 = 7");
  db.Exec("UPDATE supplier SET company = " + Quoted(Wide("Consolidated Automotive Parts Distribution", 60)) +
          " WHERE supid = 2");
  db.Exec("UPDATE jobheader SET description = " + Quoted(Wide("COMPLETE BRAKE SERVICE", 60)) +
          " WHERE jobid % 3 = 1");
  // Account names at full width make account paths longer than any one name.
  db.Exec("UPDATE chartofaccounts SET accountname = substr('Account ' || chid || ' ' || " +
          Quoted(Wide("of the shop", 60)) + ", 1, 60) WHERE sublevel >= 1 AND chid % 3 = 0");
}

void Nulls(Database& db) {
  const char* const statements[] = {
      "UPDATE customer SET company = NULL WHERE cusid % 4 = 1",
      "UPDATE customer SET fname = NULL WHERE cusid % 7 = 2",
      "UPDATE customer SET lname = NULL WHERE cusid % 9 = 5",
      "UPDATE customer SET street = NULL, city = NULL, province = NULL, postal = NULL WHERE cusid % 6 = 4",
      "UPDATE customer SET ahtel = NULL, htel = NULL WHERE cusid % 5 = 2",
      "UPDATE customer SET abtel = NULL, btel = NULL WHERE cusid % 3 = 0",
      "UPDATE customer SET tx1exempt = NULL, tx2exempt = NULL WHERE cusid % 8 = 6",
      "UPDATE vehicle SET Year = NULL, Make = NULL, Model = NULL, Plate = NULL, VIN = NULL, unitno = NULL, "
      "engsize = NULL WHERE vehid % 8 = 5",
      "UPDATE vehicle SET Make = NULL WHERE vehid % 8 = 6",
      "UPDATE wo SET wotime = NULL, invoicetime = NULL, defmechuserid = NULL, cmbServiceWriter = NULL, ponum "
      "= NULL, txtOdometer = NULL, Summary = NULL, txtCustomerRequests = NULL, OPTIONSmessage = NULL, "
      "OPTIONSnotetocustomer = NULL WHERE woid % 9 = 2",
      "UPDATE wo SET stateandnumber = NULL WHERE woid % 37 = 3",
      "UPDATE wo SET wodate = NULL WHERE woid % 23 = 4",
      "UPDATE wo SET latestdate = NULL WHERE invoiceid = 0 AND credid = 0 AND woid % 5 = 1",
      "UPDATE woparts SET description = NULL, tx = NULL, c = NULL, ok = NULL, needed = NULL, mechuserid = "
      "NULL WHERE wopartsid % 7 = 3",
      "UPDATE wopaymentadv SET type = NULL WHERE payid % 11 = 4",
      "UPDATE wopaymentadv SET trandate = NULL WHERE payid % 29 = 6",
      "UPDATE inventory SET Description = NULL WHERE invid % 9 = 1",
      "UPDATE inventory SET Category = NULL WHERE invid % 9 = 2",
      "UPDATE inventory SET Manufacturer = NULL WHERE invid % 9 = 3",
      "UPDATE inventory SET Location = NULL WHERE invid % 9 = 5",
      "UPDATE inventory SET partnum = NULL WHERE invid = (SELECT max(invid) FROM inventory)",
      "UPDATE invtrans SET transdate = NULL WHERE invtransid % 31 = 7",
      "UPDATE supplier SET contact = NULL WHERE supid % 2 = 1",
      "UPDATE supplier SET company = NULL WHERE supid = 3",
      "UPDATE jobheader SET jobnum = NULL WHERE jobid % 4 = 2",
      "UPDATE jobheader SET description = NULL WHERE jobid % 5 = 3",
      "UPDATE usertable SET FName = NULL WHERE UserID = (SELECT min(userid) FROM mechanic)",
      "UPDATE usertable SET LName = NULL WHERE UserID = (SELECT max(userid) FROM mechanic)",
      "UPDATE timeclock SET userid = NULL WHERE timeclockid % 17 = 5",
      "UPDATE timeclock SET thedate = NULL WHERE timeclockid % 19 = 6",
      "UPDATE chartofaccounts SET type = NULL WHERE chid % 4 = 1",
      "UPDATE GlobalVars2 SET COMPpostal = NULL, COMPaHtel = NULL",
      "UPDATE globalvars SET INVOICEdefnote = NULL, WOreg = NULL, COMPtx2name = NULL, COMPftel = NULL",
      "UPDATE machine SET companyname = NULL",
  };
  for (const char* sql : statements) db.Exec(sql);
}

// A band of the pricing table without a sales class, beside the UNCLASSIFIED bands.
void NullPricingClass(Database& db) {
  const int64_t id = Number(db, "SELECT max(pricingid) + 1 FROM SalesClassInventoryIndexPricing");
  db.Exec(
      "INSERT INTO SalesClassInventoryIndexPricing (pricingid, salesclass, CostFrom, CostTo, profitMargin) "
      "VALUES (" +
      std::to_string(id) + ", NULL, 0, 100000, 40)");
}

// A part of its own, sold on one invoice in March 2024 and credited in full the next day.
void PartCreditedInFull(Database& db) {
  const int64_t line = Number(db,
                              "SELECT min(wopartsid) FROM woparts WHERE invoiceid <> 0 AND invinvid <> 0 AND "
                              "invcost > 0 AND qty > 0 AND skip = 'No' AND presetpkg = 0");
  const int64_t source_wo = Number(db, "SELECT woid FROM woparts WHERE wopartsid = " + std::to_string(line));
  const int64_t item = Number(db, "SELECT max(invid) + 1 FROM inventory");
  const int64_t invoice_wo = Number(db, "SELECT max(woid) + 1 FROM wo"), credit_wo = invoice_wo + 1;
  const int64_t invoice = Number(db, "SELECT max(invoiceid) + 1 FROM wo");
  const int64_t credit = Number(db, "SELECT max(credid) + 1 FROM wo");
  const int64_t next_line = Number(db, "SELECT max(wopartsid) + 1 FROM woparts");
  const std::string item_id = std::to_string(item);
  CopyRow(db, "inventory",
          "invid = (SELECT invinvid FROM woparts WHERE wopartsid = " + std::to_string(line) + ")",
          {{"invid", item_id},
           {"partnum", "'RETURNED-IN-FULL'"},
           {"Description", "'RETURNED IN FULL'"},
           {"QOH", "0"}});

  // The document's totals are its one line's.
  // The credit takes the part back whole but refunds 90% of its price (a restocking fee).
  auto totals = [](const char* factor) {
    const std::string s = std::string("round(") + factor + " * ";
    return std::vector<std::pair<std::string, std::string>>{
        {"screenparts", s + "(SELECT totparts FROM woparts WHERE wopartsid = LINE), 2)"},
        {"screentotpartsdisc", s + "(SELECT discpart FROM woparts WHERE wopartsid = LINE), 2)"},
        {"screenlabour", "0"},
        {"screentotlabourdisc", "0"},
        {"screenother", "0"},
        {"screenlevy", "0"},
        {"screentotdiscount", s + "(SELECT discpart FROM woparts WHERE wopartsid = LINE), 2)"},
        {"screensubtotal", s + "(SELECT totparts FROM woparts WHERE wopartsid = LINE), 2) - " + s +
                               "(SELECT discpart FROM woparts WHERE wopartsid = LINE), 2)"},
        {"screentx1", "0"},
        {"screentx2", "0"},
        {"screentotal", s + "(SELECT totparts FROM woparts WHERE wopartsid = LINE), 2) - " + s +
                            "(SELECT discpart FROM woparts WHERE wopartsid = LINE), 2)"},
        {"wodeleted", "0"},
        {"chkvoid", "0"},
        {"chkestpending", "0"},
        {"estid", "0"},
    };
  };
  auto with_line = [&](std::vector<std::pair<std::string, std::string>> columns) {
    for (auto& [name, expression] : columns) {
      for (size_t at = expression.find("LINE"); at != std::string::npos; at = expression.find("LINE"))
        expression.replace(at, 4, std::to_string(line));
    }
    return columns;
  };
  auto invoice_columns = with_line(totals("1"));
  invoice_columns.insert(invoice_columns.end(), {{"woid", std::to_string(invoice_wo)},
                                                 {"invoiceid", std::to_string(invoice)},
                                                 {"credid", "0"},
                                                 {"stateandnumber", "'INV-" + std::to_string(invoice) + "'"},
                                                 {"wodate", "'2024-03-14 00:00:00'"},
                                                 {"latestdate", "'2024-03-14 00:00:00'"}});
  CopyRow(db, "wo", "woid = " + std::to_string(source_wo), invoice_columns);
  auto credit_columns = with_line(totals("-0.9"));
  credit_columns.insert(credit_columns.end(),
                        {{"woid", std::to_string(credit_wo)},
                         {"invoiceid", "0"},
                         {"credid", std::to_string(credit)},
                         {"stateandnumber", "'CR-" + std::to_string(credit) + "'"},
                         {"Summary", "'CREDIT FOR INV-" + std::to_string(invoice) + "'"},
                         {"wodate", "'2024-03-15 00:00:00'"},
                         {"latestdate", "'2024-03-15 00:00:00'"}});
  CopyRow(db, "wo", "woid = " + std::to_string(source_wo), credit_columns);

  const std::string where = "wopartsid = " + std::to_string(line);
  CopyRow(db, "woparts", where,
          {{"wopartsid", std::to_string(next_line)},
           {"woid", std::to_string(invoice_wo)},
           {"invoiceid", std::to_string(invoice)},
           {"credid", "0"},
           {"estid", "0"},
           {"linenum", "1"},
           {"invinvid", item_id}});
  std::vector<std::pair<std::string, std::string>> negated = {{"wopartsid", std::to_string(next_line + 1)},
                                                              {"woid", std::to_string(credit_wo)},
                                                              {"invoiceid", "0"},
                                                              {"credid", std::to_string(credit)},
                                                              {"estid", "0"},
                                                              {"linenum", "1"},
                                                              {"invinvid", item_id}};
  for (const char* column : {"totparts", "discpart", "total"}) {
    negated.push_back({column, std::string("round(-0.9 * \"") + column + "\", 2)"});
  }
  for (const char* column :
       {"qty", "hrs", "labour", "disclab", "otherchargeamt", "othCHRGcost", "levyItemAmount", "invcost",
        "invcorecost", "MECHHOURLYTOT", "mechflatrateTot", "mechlabtot", "mechpartstot"}) {
    negated.push_back({column, std::string("-\"") + column + "\""});
  }
  CopyRow(db, "woparts", where, negated);
}

// Invoices on the first and last day of their month, and some at the last second of the day.
void PeriodEdges(Database& db) {
  const char* const documents = "(invoiceid <> 0 OR credid <> 0) AND latestdate IS NOT NULL";
  db.Exec(std::string("UPDATE wo SET latestdate = strftime('%Y-%m-01 00:00:00', latestdate) WHERE ") +
          documents + " AND woid % 40 = 0");
  db.Exec(
      std::string("UPDATE wo SET latestdate = date(latestdate, 'start of month', '+1 month', '-1 day') || "
                  "' 00:00:00' WHERE ") +
      documents + " AND woid % 40 = 20");
  db.Exec(
      std::string("UPDATE wo SET latestdate = date(latestdate, 'start of month', '+1 month', '-1 day') || "
                  "' 23:59:59' WHERE ") +
      documents + " AND woid % 40 = 30");
}

}  // namespace

void MakeUntidy(Database& db) {
  PeriodEdges(db);
  WideTexts(db);
  Nulls(db);
  NullPricingClass(db);
  PartCreditedInFull(db);  // last: its part and documents keep their names and dates
}

}  // namespace ent::sampledb
