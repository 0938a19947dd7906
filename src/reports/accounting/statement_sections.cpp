// The collection and writing of statement sections, shared by the balance sheet and the profit and
// loss: which accounts a section shows, the sum of an account's group, and the lines per account.
#include "reports/accounting/statement_sections.h"

#include <vector>

#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/accounting/ledger_sql.h"
#include "reports/accounting/statements.h"
#include "reports/rowset_helpers.h"

namespace ent {

std::string accounting::StatementAccountsSql(char fivetypename) {
  return std::string(
             "select type,accountnumber,accountname,sublevel,chid,parentid from chartofaccounts where "
             "fivetypename = '") +
         fivetypename + "' order by accountnumber";
}

std::vector<accounting::StatementEntry> accounting::collectStatementEntries(
    clsRS& engine, const std::string& accountSql, const accounting::StatementPeriod& period,
    std::string& innerErr) {
  std::vector<accounting::StatementEntry> entries;
  std::unique_ptr<Recordset> rs = engine.runQuery(accountSql, innerErr, false);
  Recordset& accounts = Required(rs);
  while (!accounts.IsEof()) {
    YieldToPendingWork();
    accounting::StatementEntry e;
    e.chid = accounts.Get("chid").ToLong();
    e.parentid = accounts.Get("parentid").ToLong();
    e.sublevel = accounts.Get("sublevel").ToLong();
    e.accountnumber = accounts.Get("accountnumber").ToLong();
    const Variant& name = accounts.Get("accountname");
    e.accountname = name.IsNull() ? std::string() : name.ToText();
    const std::string balance_sql =
        "select sum(amt) as [TOTAMT] from ChartOfAccountsGLPOSTINGTABLE where chid = " +
        std::to_string(e.chid) + period.balance_clause;
    e.amount = accounting::SumOf(engine, balance_sql, "TotAmt", innerErr);
    if (e.amount != Currency()) {
      entries.push_back(std::move(e));
    } else if (getGroupSum(engine, accounts.Get("type"), e.accountnumber, e.sublevel, period, innerErr) !=
               Currency()) {
      entries.push_back(std::move(e));
    }
    accounts.MoveNext();
  }
  return entries;
}

Currency accounting::getGroupSum(clsRS& engine, const Variant& accountType, int32_t accountNumber,
                                 int32_t subLevel, const accounting::StatementPeriod& period,
                                 std::string& innerErr) {
  const std::string type = accountType.IsNull() ? std::string() : accountType.ToText();
  const std::string number = std::to_string(accountNumber);
  // An account without a type cannot bound its group by type: its group runs to the next account
  // at its level or above, whatever their types. Otherwise a heading with a null type and no
  // postings of its own would drop out of the statement, and its section's total with it.
  const std::string same_type = accountType.IsNull() ? std::string() : " and type = '" + SqlQuote(type) + "'";
  int32_t next = 0;
  {
    std::unique_ptr<Recordset> rs =
        engine.runQuery("select accountnumber,sublevel from chartofaccounts where accountnumber > " + number +
                            same_type + " order by accountnumber",
                        innerErr, false);
    Recordset& later = Required(rs);
    while (!later.IsEof()) {
      if (later.Get("sublevel").ToLong() <= subLevel) {
        next = later.Get("accountnumber").ToLong();
        break;
      }
      later.MoveNext();
    }
  }
  const std::string sql = next == 0 ? period.group_open + number + same_type + period.group_clause
                                    : period.group_closed + number + " and accountnumber < " +
                                          std::to_string(next) + period.group_clause;
  return accounting::SumOf(engine, sql, "ftot", innerErr);
}

void accounting::writeStatementEntries(clsRS& engine, std::vector<accounting::StatementEntry>& entries,
                                       int sign, Currency& total, int32_t& r, bool bPL) {
  const Currency s = Currency::FromInt(sign);
  for (accounting::StatementEntry& e : entries) {
    YieldToPendingWork();
    bool has_children = false;
    for (const accounting::StatementEntry& other : entries)
      has_children = has_children || other.parentid == e.chid;
    if (has_children) {
      Currency subtotal;
      for (const accounting::StatementEntry& other : entries) {
        if (other.accountnumber > e.accountnumber && other.sublevel == e.sublevel) break;
        if (other.accountnumber == e.accountnumber ||
            (other.accountnumber > e.accountnumber && other.sublevel > e.sublevel))
          subtotal += other.amount;
      }
      std::string label = e.accountname + " Total";
      std::string amount = (s * subtotal).ToString();
      addStatementLine(engine, label, e.sublevel, amount, r, bPL);
      ++r;
      if (e.sublevel == 1) total += s * subtotal;
      amount = (s * e.amount).ToString();
      addStatementLine(engine, e.accountname, e.sublevel, amount, r, bPL);
      ++r;
    } else {
      std::string amount = (s * e.amount).ToString();
      addStatementLine(engine, e.accountname, e.sublevel, amount, r, bPL);
      if (e.sublevel == 1) total += s * e.amount;
      ++r;
    }
  }
}

void accounting::writeStatementLine(clsRS& engine, const std::string& label, const std::string& amount,
                                    int32_t rowID, bool bPL) {
  std::string name = label, text = amount;
  int32_t level = 0;
  addStatementLine(engine, name, level, text, rowID, bPL);
}

}  // namespace ent
