// Look-ups into the chart of accounts, the fiscal years and the ledger that the statements share.
#include <set>
#include <string>

#include "common/error.h"
#include "common/text.h"
#include "data/sql_text.h"
#include "reports/accounting/ledger_sql.h"
#include "reports/accounting/statements.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

// The profit (revenue and expenses, each sign reversed) of the postings a date clause selects.
const char kClassSumHead[] =
    "select sum(amt) as [TOTAMT] from ChartOfAccountsGLPOSTINGTABLE INNER JOIN chartofaccounts ON "
    "ChartOfAccountsGLPOSTINGTABLE.chid = chartofaccounts.chid WHERE ";

// How a date goes between the quotes of a look-up: a date as its short date, a date text as received.
std::string DateForSql(const Variant& dtFor) {
  if (dtFor.IsNull() || dtFor.IsEmpty()) return DateTime::Today().ShortDate();
  if (dtFor.IsString()) return SqlQuote(dtFor.text());
  return dtFor.ToDate().ShortDate();
}

std::string FiscalYearWhere(const std::string& d) {
  return " from ChartOfAccountsFiscalYearRange where fiscalyearstartdate <= '" + d +
         "' and fiscalyearenddate >= '" + d + "'";
}

}  // namespace

void accounting::getFiscalYear(clsRS& engine, DateTime& dtStart, DateTime& dtEnd, const Variant& dtFor) {
  std::string status;
  std::unique_ptr<Recordset> rs = engine.runQuery(
      "select fiscalyearstartdate,fiscalyearenddate" + FiscalYearWhere(DateForSql(dtFor)), status, false);
  Recordset& years = Required(rs);
  if (!years.IsEof()) {
    dtStart = years.Get("FiscalYearStartDate").ToDate();
    dtEnd = years.Get("FiscalYearEndDate").ToDate();
  }
}

bool accounting::isInFiscalYear(clsRS& engine, DateTime& dtFor) {
  std::string status;
  std::unique_ptr<Recordset> rs =
      engine.runQuery("select *" + FiscalYearWhere(dtFor.ShortDate()), status, false);
  return !Required(rs).IsEof();
}

int32_t accounting::getChidByAccountNumber(clsRS& engine, int32_t& lAccountNumber) {
  std::string status;
  std::unique_ptr<Recordset> rs = engine.runQuery(
      "select chid from chartofaccounts where AccountNumber = " + std::to_string(lAccountNumber), status,
      false);
  return Required(rs).Get("CHID").ToLong();
}

std::string accounting::getAccountName(clsRS& engine, int32_t lChid) {
  try {
    std::string status;
    std::unique_ptr<Recordset> rs = engine.runQuery(
        "SELECT accountName FROM chartofaccounts WHERE chid = " + std::to_string(lChid), status, false);
    Recordset& names = Required(rs);
    if (names.IsEof()) return {};
    const Variant& name = names.Get("ACCOUNTNAME");
    if (name.IsNull()) return {};
    return name.ToText();
  } catch (const Error&) {
    return {};
  }
}

std::string accounting::getAccountPath(clsRS& engine, int32_t& lAccountNumber) {
  int32_t c = getChidByAccountNumber(engine, lAccountNumber);
  std::string path;
  // A chart edited by hand can loop or point at an account that is gone; either would make the
  // walk endless or the statement short without a word.
  std::set<int32_t> seen;
  const std::string failed = "Account path of account " + std::to_string(lAccountNumber) + " failed: ";
  do {
    if (!seen.insert(c).second) {
      throw Error(err::kInvalidProcedureCall,
                  failed + "its parents loop back to account id " + std::to_string(c) +
                      "; expected parents that lead up to a top account (parent 0).");
    }
    std::string status;
    std::unique_ptr<Recordset> rs = engine.runQuery(
        "select parentid from chartofaccounts where chid = " + std::to_string(c), status, false);
    Recordset& account = Required(rs);
    if (account.IsEof()) {
      throw Error(
          err::kInvalidProcedureCall,
          failed + "its parent account id " + std::to_string(c) +
              " is not in the chart of accounts; expected every parent to be an account of the chart.");
    }
    path = TrimBlanks(getAccountName(engine, c)) + ": " + path;
    c = account.Get("parentid").ToLong();
  } while (c != 0);
  if (!path.empty() && path.front() == ':') {
    path = TrimBlanks(path.substr(1));
    if (!path.empty()) path.pop_back();
  } else {
    path = TrimBlanks(path.substr(0, path.size() - 2));
  }
  return path;
}

Currency accounting::getRetainedEarnings(clsRS& engine, DateTime& dtFor) {
  DateTime start, end;
  getFiscalYear(engine, start, end, Variant(dtFor));
  const std::string head =
      std::string(kClassSumHead) + "transdate < '" + start.ShortDate() + "' and fivetypename = '";
  std::string scratch;
  const Currency revenue = accounting::SumOf(engine, head + "R'", "TotAmt", scratch);
  const Currency expenses = accounting::SumOf(engine, head + "E'", "TotAmt", scratch);
  return -revenue - expenses;
}

Currency accounting::getNetIncome(clsRS& engine, DateTime& dtFor) {
  DateTime start, end;
  getFiscalYear(engine, start, end, Variant(dtFor));
  const std::string head = std::string(kClassSumHead) + "transdate >= '" + start.ShortDate() +
                           "' and transdate <= '" + dtFor.ShortDate() + "' and fivetypename = '";
  std::string scratch;
  const Currency revenue = accounting::SumOf(engine, head + "R'", "TotAmt", scratch);
  const Currency expenses = accounting::SumOf(engine, head + "E'", "TotAmt", scratch);
  return -revenue - expenses;
}

}  // namespace ent
