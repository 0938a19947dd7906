// Trial balance (TB01): every account with a non-zero balance at the end date in a Debit or Credit
// column (balance-sheet accounts cumulative, revenue and expenses for the fiscal year), the earlier
// years' profit as retained earnings, and the column totals; written into entTrialBalanceRPT.
#include "common/error.h"
#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/accounting/ledger_sql.h"
#include "reports/accounting/statements.h"
#include "reports/accounting/work_table_lock.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

// The lines come back in the order they were written: by their row number.
const char kReadBack[] =
    "SELECT AccountName as Account_Name, cDebit as Debit, ccredit as Credit FROM entTrialBalanceRPT ORDER BY "
    "rowID";

const char kNotInFiscalYear[] = "The Date you have selected does not fall in to any Fiscal Year period. ";

// Debit and credit totals, and the line writer that places a balance in its column.
class TrialBalanceWriter {
 public:
  explicit TrialBalanceWriter(clsRS& engine) : engine_(engine) {}

  void Line(std::string label, std::string debit, std::string credit) {
    accounting::addTrialBalanceLine(engine_, label, debit, credit, r_);
    ++r_;
  }
  void Empty() { Line("", "", ""); }
  // A positive balance is a debit, a negative one a credit.
  void Count(Currency b) {
    if (b > Currency())
      debit_ += b;
    else
      credit_ -= b;
  }
  void Balance(const std::string& label, Currency b) {
    if (b > Currency())
      Line(label, b.ToString(), "");
    else
      Line(label, "", (-b).ToString());
  }
  void Total() { Line("[b]TOTAL", debit_.ToString(), credit_.ToString()); }
  Currency& debit() { return debit_; }
  Currency& credit() { return credit_; }

 private:
  clsRS& engine_;
  int32_t r_ = 0;
  Currency debit_, credit_;
};

std::string AccountsSql(const std::string& where) {
  return "select * from chartofaccounts where " + where + " order by accountnumber";
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getTrialBalance(std::string& dtEnd, std::string& innerErr) {
  accounting::WorkTableLock lock(ShopConnectionString(), conn_.get());
  if (!lock.failure().empty()) {
    innerErr = lock.failure();
    return nullptr;
  }
  try {
    accounting::computeTrialBalance(*this, dtEnd, innerErr);
    if (innerErr != "0") return nullptr;
    std::string scratch;
    std::unique_ptr<Recordset> rs = runQuery(kReadBack, scratch, false);
    lock.Commit();
    innerErr = "0";
    return rs;
  } catch (const Error& e) {
    innerErr = e.description();
    return nullptr;
  }
}

void accounting::computeTrialBalance(clsRS& engine, std::string& dtEnd, std::string& innerErr) {
  DateTime end = Variant(dtEnd).ToDate();
  if (!isInFiscalYear(engine, end)) {
    innerErr = kNotInFiscalYear;
    return;
  }
  DateTime start, year_end;
  getFiscalYear(engine, start, year_end, Variant(dtEnd));
  const std::string date = SqlQuote(dtEnd);
  try {
    if (!createTrialBalanceTable(engine)) return;
    TrialBalanceWriter out(engine);
    std::string scratch;

    for (char cls : {'A', 'L', 'Q'}) {
      std::unique_ptr<Recordset> rs =
          engine.runQuery(AccountsSql(std::string("fivetypename = '") + cls + "'"), innerErr, false);
      Recordset& accounts = Required(rs);
      while (!accounts.IsEof()) {
        YieldToPendingWork();
        const Currency b =
            accounting::SumOf(engine,
                              "select sum(amt) as [TOTAMT] from ChartOfAccountsGLPOSTINGTABLE where chid = " +
                                  accounts.Get("CHID").ToText() + "  and  transdate <= '" + date + "'",
                              "TotAmt", scratch);
        if (b != Currency()) {
          int32_t number = accounts.Get("AccountNumber").ToLong();
          out.Balance(getAccountPath(engine, number), b);
          out.Count(b);
        }
        accounts.MoveNext();
      }
      if (cls != 'Q') out.Empty();
    }

    const Currency retained = getRetainedEarnings(engine, end);
    if (retained != Currency()) {
      if (retained > Currency()) {
        out.Line("Retained Earnings", "", retained.ToString());
        out.credit() += retained;
      } else {
        out.Line("Retained Earnings", (-retained).ToString(), "");
        out.debit() -= retained;
      }
    }

    std::unique_ptr<Recordset> rs =
        engine.runQuery(AccountsSql("fivetypename = 'R' or fivetypename = 'E'"), innerErr, false);
    Recordset& accounts = Required(rs);
    std::string current = accounts.IsEof() ? std::string() : accounts.Get("FiveTypeName").ToText();
    while (!accounts.IsEof()) {
      YieldToPendingWork();
      const std::string cls = accounts.Get("FiveTypeName").ToText();
      if (cls != current) {
        current = cls;
        out.Empty();
      }
      const Currency b =
          accounting::SumOf(engine,
                            "select sum(amt) as [TOTAMT] from ChartOfAccountsGLPOSTINGTABLE where chid = " +
                                accounts.Get("CHID").ToText() + "  and transdate >= '" + start.ShortDate() +
                                "' and transdate <= '" + date + "'",
                            "TotAmt", scratch);
      if (b != Currency()) {
        if (cls == "E" || cls == "R") {
          int32_t number = accounts.Get("AccountNumber").ToLong();
          out.Balance(getAccountPath(engine, number), b);
        }
        out.Count(b);
      }
      accounts.MoveNext();
    }

    out.Total();
    innerErr = "0";
  } catch (const Error& e) {
    // A statement cut short is no answer: the failure is the status.
    innerErr = e.description();
  }
}

}  // namespace ent
