// Payables (AP01) and receivables (AR01) summaries at an end date: one line per supplier or customer
// with a balance on its control account (10 payables, 9 receivables), and a total line.
#include "common/error.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/accounting/ledger_sql.h"
#include "reports/accounting/statements.h"
#include "reports/accounting/work_table_lock.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

const char kPayablesReadBack[] =
    "Select Company, Contact, format(camt, '###,###,##0.00') as Balance from entAPAR order by company, "
    "contact";

const char kSuppliers[] =
    "select company, '' as fname, '' as lname, '' as ahtel, '' as htel, '' as abtel, '' as btel, supid as "
    "GenID "
    "from supplier order by company";

// The payables postings up to a date of one kind (the srcmod condition) for one party or tax number.
std::string PayablesSum(const std::string& date, const char* sources, int32_t party) {
  return std::string("Select sum(amt) as sumpur from chartofaccountsglpostingtable where chid = 10 ") +
         " and (transdate <= '" + date + "')and (" + sources + ") and srcid2 = " + std::to_string(party);
}

// What the party is owed: the negated sum, a credit showing positive.
Currency Owed(const Recordset& sum) {
  return -ToNumeric(sum.Get("sumpur")).ToCurrency();
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getAPARSummary(int32_t& eTyp, std::string& innerErr, std::string& dtEnd) {
  std::unique_ptr<Recordset> rs;
  if (eTyp == 0) {
    rs = runQuery(accounting::getReceivablesSQL(dtEnd), innerErr, false);
  } else {
    accounting::WorkTableLock lock(ShopConnectionString(), conn_.get());
    if (!lock.failure().empty()) {
      innerErr = lock.failure();
      return nullptr;
    }
    if (accounting::fillAPARTable(*this, eTyp, innerErr, dtEnd))
      rs = runQuery(kPayablesReadBack, innerErr, false);
    try {
      if (rs) lock.Commit();
    } catch (const Error& e) {
      innerErr = e.description();
      return nullptr;
    }
  }
  if (!rs) return nullptr;
  std::unique_ptr<Recordset> copy = copyRS(rs.get());
  if (copy) appendTotalRow(*copy, {"Balance", ""});
  return copy;
}

bool accounting::fillAPARTable(clsRS& engine, int32_t& eTyp, std::string& innerErr, std::string& dtEnd) {
  const std::string d = Variant(dtEnd).ToDate().ShortDate();
  try {
    if (!createAPARTable(engine)) {
      innerErr = "Unable to create ARAP table.";
      return false;
    }
    std::unique_ptr<Recordset> suppliers;
    if (eTyp == 1) suppliers = engine.runQuery(kSuppliers, innerErr, false);
    Recordset& parties = Required(suppliers);
    while (!parties.IsEof()) {
      YieldToPendingWork();
      const int32_t id = parties.Get("GenID").ToLong();
      std::unique_ptr<Recordset> sum = engine.runQuery(
          PayablesSum(d, "srcmod = 'SUPTRANS' or srcmod = 'SUPMAKEPAYMENT' or srcmod = 'LEVYSUP'", id),
          innerErr, false);
      Currency balance = Owed(Required(sum));
      if (balance != Currency()) {
        std::string company = SafeString(parties.Get("Company"));
        std::string contact = SafeString(parties.Get("LName")) + ", " + SafeString(parties.Get("FName"));
        addAPARLine(engine, company, contact, balance);
      }
      parties.MoveNext();
    }
    for (int32_t t = 1; t <= 2; ++t) {
      std::unique_ptr<Recordset> sum =
          engine.runQuery(PayablesSum(d, "srcmod like 'TAX%' or srcmod = 'LEVYTAX'", t), innerErr, false);
      Currency balance = Owed(Required(sum));
      std::string company = t == 1 ? "Tax 1" : "Tax 2";
      std::string contact;
      addAPARLine(engine, company, contact, balance);
    }
    innerErr = "0";
    return true;
  } catch (const Error& e) {
    if (innerErr.empty()) innerErr = e.description();
    return false;
  }
}

std::string accounting::getReceivablesSQL(const std::string& dtEnd) {
  const std::string d = SqlQuote(dtEnd);
  const std::string party = " select company, fname, lname, ahtel, htel, abtel, btel, customer.cusid, ";
  const std::string work_orders = " INNER JOIN  wo ON wo.cusid = customer.cusid";
  const std::string group = " GROUP BY company, fname, lname, ahtel, htel, abtel, btel, customer.cusid";
  std::string sql =
      " select Company, fname As FirstName, lname as LastName, round(sum(sumpur), 2) as Balance from ( ";
  // Postings made directly against the customer.
  sql += party + "sum(amt) as sumpur from customer ";
  sql +=
      " INNER JOIN  chartofaccountsglpostingtable ON customer.cusid =  chartofaccountsglpostingtable.srcid2 ";
  sql += " WHERE chid = 9 AND (transdate <= '" + d + "') and (srcmod like 'AR%' or srcmod like 'NSF%') ";
  sql += group + " HAVING sum(amt) <> 0";
  sql += " UNION ALL ";
  // Invoices.
  sql += party + "sum(amt) as sumpur FROM customer ";
  sql += work_orders + " INNER JOIN chartofaccountsglpostingtable c ON c.srcid = wo.invoiceid ";
  sql += " WHERE chid = 9 AND  archive <> 1 and invoiceid <> 0 AND ";
  sql += "  (transdate <= '" + d +
         "') and (srcmod = 'INVOICE' or srcmod = 'CREDINVOLD' or srcmod = 'INVOICE-DT') and ";
  sql += " latestdate <= '" + d + "'";
  sql += group + " HAVING sum(amt) <> 0";
  sql += " UNION ALL ";
  // The insurance deductible part of invoices, where the customer is its own insurer.
  sql += party + "isnull( sum(amt), totalinsurenceinvamt ) as sumpur FROM customer ";
  sql += work_orders +
         " AND wo.insurencecusid = customer.cusid INNER JOIN chartofaccountsglpostingtable c ON c.srcid = "
         "wo.invoiceid ";
  sql += " WHERE archive <>1 and invoiceid <> 0 AND latestdate <= '" + d + "'";
  sql += " AND chid = 9 AND (transdate <= '" + d + "') and (srcmod = 'INVOICE_DED')";
  sql += group + ", totalinsurenceinvamt";
  sql += " HAVING isnull( sum(amt), totalinsurenceinvamt ) <> 0 ";
  sql += " UNION ALL ";
  // Credit invoices.
  sql += party + " sum(amt) as sumpur FROM customer ";
  sql += work_orders + " INNER JOIN chartofaccountsglpostingtable c ON c.srcid = wo.credid ";
  sql += " WHERE archive <>1  and credid <> 0 AND latestdate <= '" + d + "'";
  sql += " AND chid = 9 and (transdate <= '" + d + "') and (srcmod = 'CREDINVOICE')";
  sql += group + " HAVING sum(amt) <> 0";
  sql +=
      ") As T GROUP BY  company, fname, lname, ahtel, htel, abtel, btel, cusid HAVING round(sum(sumpur), 2) "
      "<> 0";
  sql += "  AND abs(round(sum(sumpur), 2)) > 0.01  order by company, lname, fname, cusid ";
  return sql;
}

}  // namespace ent
