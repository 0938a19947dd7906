// The statements' work tables: dropped and re-created per run, filled one line at a time.
#include <limits>
#include <string>

#include "common/error.h"
#include "common/format.h"
#include "common/numeric_text.h"
#include "common/text.h"
#include "reports/accounting/ledger_sql.h"
#include "reports/accounting/statements.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

const char kStatementColumns[] =
    " (AccountName varchar(100), cTot5 varchar(100), cTot4 varchar(100), cTot3 varchar(100), cTot2 "
    "varchar(100), "
    "cTot varchar(100), rowID integer)";

// Drops the table (a missing one is no failure) and creates it anew. Other failures raise.
void Recreate(Connection& connection, const std::string& drop, const std::string& create) {
  try {
    connection.Execute(drop);
  } catch (const Error& e) {
    if (e.number() != err::kTableNotFound) throw;
  }
  connection.Execute(create);
}

// The first n characters (UTF-8 sequences are kept whole).
std::string Left(const std::string& s, size_t n) {
  size_t chars = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    if ((static_cast<unsigned char>(s[i]) & 0xC0) != 0x80 && chars++ == n) return s.substr(0, i);
  }
  return s;
}

}  // namespace

bool accounting::createStatementTable(clsRS& engine, bool& bPL, std::string& innerErr) {
  const std::string name = bPL ? "entPLShtRPT" : "entBalanceShtRPT";
  try {
    Recreate(*engine.connection(), "DROP TABLE " + name, "create table " + name + kStatementColumns);
    return true;
  } catch (const Error& e) {
    innerErr = std::to_string(e.number()) + " " + e.description();
    return false;
  }
}

void accounting::addStatementLine(clsRS& engine, std::string& sName, int32_t& lLevel, std::string& sAmount,
                                  int32_t& lRowID, bool& bPL) {
  if (lLevel > 0) sName = "[sp" + std::to_string(3 * static_cast<int64_t>(lLevel)) + "]" + sName;
  if (!sAmount.empty()) sAmount = Format(Variant(sAmount), kAmountPattern);
  std::string status;
  std::unique_ptr<Recordset> rs =
      engine.runQuery(bPL ? "select * FROM entPLShtRPT" : "select * FROM entBalanceShtRPT", status, true);
  Recordset& table = Required(rs);
  if (lLevel == std::numeric_limits<int32_t>::max()) throw Error(err::kOverflow, "Overflow");
  ++lLevel;
  table.AddNew();
  static const char* const kColumns[] = {"cTot", "cTot2", "cTot3", "cTot4", "cTot5"};
  for (const char* column : kColumns) table.Set(column, Variant(" "));
  // A heading (no amount) keeps the blank in every amount column.
  if (lLevel >= 1 && lLevel <= 5 && !sAmount.empty()) table.Set(kColumns[lLevel - 1], Variant(sAmount));
  table.Set("AccountName", Variant(sName));
  table.Set("rowid", Variant(lRowID));
  table.Update();
}

bool accounting::createTrialBalanceTable(clsRS& engine) {
  try {
    Recreate(*engine.connection(), "DROP TABLE entTrialBalanceRPT",
             "create table entTrialBalanceRPT (AccountName varchar(8000), cDebit varchar(100), cCredit "
             "varchar(100), rowID integer)");
    return true;
  } catch (const Error&) {
    return false;
  }
}

void accounting::addTrialBalanceLine(clsRS& engine, std::string& sName, std::string& sDebit,
                                     std::string& sCredit, int32_t& lRowID) {
  std::string status;
  std::unique_ptr<Recordset> rs = engine.runQuery("select * FROM entTrialBalanceRPT", status, true);
  Recordset& table = Required(rs);
  table.AddNew();
  table.Set("ACCOUNTNAME", Variant(sName));
  table.Set("cDebit",
            Variant(IsNumericText(sDebit) ? Format(Variant(sDebit), kAmountPattern) : std::string()));
  table.Set("cCredit",
            Variant(IsNumericText(sCredit) ? Format(Variant(sCredit), kAmountPattern) : std::string()));
  table.Set("rowid", Variant(lRowID));
  table.Update();
}

bool accounting::createAPARTable(clsRS& engine) {
  try {
    Recreate(*engine.connection(), "DROP TABLE entAPAR",
             "create table entAPAR (Company varchar(100), Contact varchar(100), cAmt float)");
    return true;
  } catch (const Error&) {
    return false;
  }
}

void accounting::addAPARLine(clsRS& engine, std::string& sCompany, std::string& sContact, Currency& cAmt) {
  std::string status;
  std::unique_ptr<Recordset> rs = engine.runQuery("select * FROM entAPAR", status, true);
  Recordset& table = Required(rs);
  table.AddNew();
  table.Set("Company", Variant(Left(sCompany, 100)));
  if (TrimBlanks(sContact) == ",") sContact.clear();
  table.Set("contact", Variant(Left(sContact, 100)));
  table.Set("cAmt", Variant(cAmt));
  table.Update();
}

}  // namespace ent
