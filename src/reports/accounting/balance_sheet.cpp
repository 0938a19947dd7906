// Balance sheet (BL01): assets, liabilities and equity as of a date, with group subtotals, section
// totals, retained earnings and the year's net income, written into entBalanceShtRPT and read back.
#include "common/error.h"
#include "common/log.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/accounting/statement_sections.h"
#include "reports/accounting/statements.h"
#include "reports/accounting/work_table_lock.h"

namespace ent {

namespace {

const char kReadBack[] =
    "select AccountName as hide_Account_Name, ctot5 as  hide_cTot5, ctot4 as  hide_cTot4,ctot3 as  "
    "hide_cTot3, "
    "ctot2 as hide_cTot2, cTot as hide_Total from entBalanceShtRPT ORDER BY rowid";

// The sums of a section up to the as-of date; `balance_blanks` precede "and" in the own balances.
accounting::StatementPeriod AsOf(const std::string& date, const char* balance_blanks) {
  const std::string head =
      "select sum(amt) as [Ftot] from ChartOfAccountsGLPOSTINGTABLE INNER JOIN chartofaccounts ON "
      "ChartOfAccountsGLPOSTINGTABLE.chid = chartofaccounts.chid WHERE ";
  accounting::StatementPeriod period;
  period.balance_clause = std::string(balance_blanks) + "and transdate <= '" + date + "'";
  period.group_open = head + "  accountnumber > ";
  period.group_closed = head + " accountnumber > ";
  period.group_clause = "  and transdate <= '" + date + "'";
  return period;
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getBalanceSheet(std::string& dtAsOf, std::string& innerErr) {
  accounting::WorkTableLock lock(ShopConnectionString(), conn_.get());
  if (!lock.failure().empty()) {
    innerErr = lock.failure();
    return nullptr;
  }
  try {
    bool bPL = false;
    if (!accounting::createStatementTable(*this, bPL, innerErr)) return nullptr;
    if (dtAsOf.empty()) dtAsOf = DateTime::Today().ShortDate();
    accounting::computeBalanceSheet(*this, dtAsOf, innerErr);
    if (innerErr != "0") return nullptr;
    std::unique_ptr<Recordset> rs = runQuery(kReadBack, innerErr, false);
    lock.Commit();
    if (innerErr.empty()) innerErr = "0";
    return rs;
  } catch (const Error& e) {
    innerErr = std::to_string(e.number()) + " - " + e.description();
    return nullptr;
  }
}

void accounting::computeBalanceSheet(clsRS& engine, std::string& dtAsOf, std::string& innerErr) {
  try {
    const bool bPL = false;
    const std::string date = SqlQuote(dtAsOf);
    Currency total_assets, total_liabilities, total_equity;
    int32_t r = 1;
    engine.connection()->Execute("delete from entBalanceShtRPT");

    std::vector<accounting::StatementEntry> assets =
        collectStatementEntries(engine, accounting::StatementAccountsSql('A'), AsOf(date, "  "), innerErr);
    writeStatementLine(engine, "[b]ASSETS", "", 0, bPL);
    writeStatementEntries(engine, assets, 1, total_assets, r, bPL);
    ++r;
    writeStatementLine(engine, "[b]TOTAL ASSETS", total_assets.ToString(), r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]LIABILITIES & EQUITY", "", r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]Liabilities", "", r++, bPL);

    std::vector<accounting::StatementEntry> liabilities =
        collectStatementEntries(engine, accounting::StatementAccountsSql('L'), AsOf(date, " "), innerErr);
    writeStatementEntries(engine, liabilities, -1, total_liabilities, r, bPL);
    writeStatementLine(engine, "[b]Total Liabilities", total_liabilities.ToString(), r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]Equity", "", r++, bPL);

    std::vector<accounting::StatementEntry> equity =
        collectStatementEntries(engine, accounting::StatementAccountsSql('Q'), AsOf(date, "  "), innerErr);
    writeStatementEntries(engine, equity, -1, total_equity, r, bPL);
    ++r;

    DateTime as_of = Variant(dtAsOf).ToDate();
    const Currency retained = getRetainedEarnings(engine, as_of);
    total_equity += retained;
    writeStatementLine(engine, "Retained Earnings", retained.ToString(), r++, bPL);
    const Currency net_income = getNetIncome(engine, as_of);
    total_equity += net_income;
    writeStatementLine(engine, "Net Income", net_income.ToString(), r++, bPL);
    writeStatementLine(engine, "[b]Total Equity", total_equity.ToString(), r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]TOTAL LIABILITIES & EQUITY", (total_liabilities + total_equity).ToString(),
                       r, bPL);
  } catch (const Error& e) {
    innerErr = std::to_string(e.number()) + " - " + e.description();
  }
}

}  // namespace ent
