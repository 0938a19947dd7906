// Profit and loss (PROFALOSS01): revenue and expenses of a period with group subtotals and section
// totals, and the net figure, written into entPLShtRPT and read back.
#include "common/error.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/accounting/statement_sections.h"
#include "reports/accounting/statements.h"
#include "reports/accounting/work_table_lock.h"

namespace ent {

namespace {

const char kReadBack[] =
    "select AccountName as hide_Account_Name,cTot5 as hide_cTot5,cTot4 as hide_cTot4,cTot3 as hide_cTot3, "
    "cTot2 as "
    "hide_cTot2, cTot as hide_Total from entPLShtRPT ORDER BY rowid";

accounting::StatementPeriod Period(const std::string& start, const std::string& end) {
  const std::string head =
      "select sum(amt) as [Ftot] from ChartOfAccountsGLPOSTINGTABLE inner join chartofaccounts on "
      "ChartOfAccountsGLPOSTINGTABLE.chid = chartofaccounts.chid WHERE   accountnumber > ";
  accounting::StatementPeriod period;
  period.balance_clause = " and transdate >= '" + start + "' and transdate <= '" + end + "'";
  period.group_open = head;
  period.group_closed = head;
  period.group_clause = period.balance_clause;
  return period;
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getProfitLoss(std::string& dtStart, std::string& dtEnd,
                                                std::string& innerErr) {
  accounting::WorkTableLock lock(ShopConnectionString(), conn_.get());
  if (!lock.failure().empty()) {
    innerErr = lock.failure();
    return nullptr;
  }
  try {
    bool bPL = true;
    if (!accounting::createStatementTable(*this, bPL, innerErr)) return nullptr;
    if (!accounting::computeProfitLoss(*this, dtStart, dtEnd, innerErr)) return nullptr;
    std::unique_ptr<Recordset> rs = runQuery(kReadBack, innerErr, false);
    lock.Commit();
    if (innerErr.empty()) innerErr = "0";
    return rs;
  } catch (const Error&) {
    return nullptr;
  }
}

bool accounting::computeProfitLoss(clsRS& engine, std::string& dtStart, std::string& dtEnd,
                                   std::string& innerErr) {
  std::string scratch;
  try {
    const bool bPL = true;
    const accounting::StatementPeriod period = Period(SqlQuote(dtStart), SqlQuote(dtEnd));
    Currency total_revenue, total_expenses;
    int32_t r = 2;
    engine.connection()->Execute("delete from entPLShtRPT");

    std::vector<accounting::StatementEntry> revenue =
        collectStatementEntries(engine, accounting::StatementAccountsSql('R'), period, scratch);
    writeStatementLine(engine, "[b]REVENUE", "", 0, bPL);
    writeStatementEntries(engine, revenue, -1, total_revenue, r, bPL);
    ++r;
    writeStatementLine(engine, "[b]TOTAL REVENUE", total_revenue.ToString(), r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]EXPENSES", "", r++, bPL);

    std::vector<accounting::StatementEntry> expenses =
        collectStatementEntries(engine, accounting::StatementAccountsSql('E'), period, scratch);
    writeStatementEntries(engine, expenses, 1, total_expenses, r, bPL);
    writeStatementLine(engine, "[b]TOTAL EXPENSES", total_expenses.ToString(), r++, bPL);
    writeStatementLine(engine, "", "", r++, bPL);
    writeStatementLine(engine, "[b]NET REVENUE", (total_revenue - total_expenses).ToString(), r, bPL);
    innerErr.clear();
    return true;
  } catch (const Error& e) {
    if (!scratch.empty() && scratch != "0")
      innerErr = scratch;
    else
      innerErr = std::to_string(e.number()) + " - " + e.description();
    return false;
  }
}

}  // namespace ent
