// Technician performance (TECHPERF01) and technician cost (TECHCOST01): one row per technician with
// the invoice lines credited to them over a range, and the time-clock hours that may replace the
// hours of those lines.
#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

constexpr std::string_view kTechPattern = "###,##0.00";

const char kTechnicianFrom[] = "FROM usertable INNER JOIN mechanic ON usertable.userid = mechanic.userid ";
const char kTechnicianTypes[] = "WHERE usertype = 'Service Advisor/Technician' or usertype = 'Technician'";

// Which lines count, by the two switches: [include estimates no longer pending][include voided].
// Every head ends where the technician's id follows.
const char* const kPerfHeads[2][2] = {
    {"select sum(levyItemAmount) as TotLevy ,sum(labour) as thetotLabour, SUM(totparts) AS Thetotparts, "
     "sum(otherchgdo) as TheTotOtherChgDo, sum(disclab) as thetotdisclab, sum(discpart) as Thetotdiscpart, "
     "sum(total) as ThetotTotal from woparts,wo where     wo.credid = woparts.credid And wo.invoiceid = "
     "woparts.invoiceid And (woparts.invoiceid <> 0 Or woparts.credid <> 0)  and (presetpkg =0 or (presetpkg "
     "= 1 and presetheader = 1))  and  mechuserid = '",
     "select sum(levyItemAmount) as TotLevy ,sum(labour) as thetotLabour, SUM(totparts) AS Thetotparts, "
     "sum(otherchgdo) as TheTotOtherChgDo, sum(disclab) as thetotdisclab, sum(discpart) as Thetotdiscpart, "
     "sum(total) as ThetotTotal from woparts,wo where  wo.invoiceid = woparts.invoiceid And wo.credid = "
     "woparts.credid And wo.WOID = woparts.WOID And (wo.chkVoid = 1 Or woparts.invoiceid <> 0 Or "
     "woparts.credid <> 0) and (presetpkg =0 or (presetpkg = 1 and presetheader = 1))  and  mechuserid = '"},
    {"select sum(levyItemAmount) as TotLevy ,sum(labour) as thetotLabour, SUM(totparts) AS Thetotparts, "
     "sum(otherchgdo) as TheTotOtherChgDo, sum(disclab) as thetotdisclab, sum(discpart) as Thetotdiscpart, "
     "sum(total) as ThetotTotal from woparts,wo where     wo.invoiceid = woparts.invoiceid and wo.credid = "
     "woparts.credid and  wo.estid = woparts.estid and ( woparts.invoiceid <> 0 or woparts.credid <> 0 or  "
     "chkestpending = 0 and  wo.estid <> 0) and (presetpkg =0 or (presetpkg = 1 and presetheader = 1))  and  "
     "mechuserid = '",
     "select sum(levyItemAmount) as TotLevy ,   sum(labour) as thetotLabour, SUM(totparts) AS Thetotparts, "
     "sum(otherchgdo) as TheTotOtherChgDo, sum(disclab) as thetotdisclab, sum(discpart) as Thetotdiscpart, "
     "sum(total) as ThetotTotal from woparts,wo where      wo.invoiceid = woparts.invoiceid and wo.credid = "
     "woparts.credid and wo.woid = woparts.woid and wo.estid = woparts.estid and (woparts.invoiceid <> 0 or  "
     "woparts.credid <> 0 or  wo.chkvoid = 1 or wo.estid <> 0 and wo.chkestpending = 0) and (presetpkg =0 or "
     "(presetpkg = 1 and presetheader = 1))  and  mechuserid = '"}};

const char kCostSums[] =
    "select sum(hrs) as thetothrs, SUM(MECHHOURLYTOT) AS TheMechHourlyTot, sum(mechflatrateTot) as "
    "TheMechFlatRateTot, sum(mechpartstot) as TheMechPartsTot, sum(mechlabtot) as "
    "TheMechLabTot,sum(mechflatrateTot) "
    "+ SUM(MECHHOURLYTOT) + sum(mechlabtot)+ sum(mechpartstot) As TheTotal from woparts,wo where ";

const char* const kCostConditions[2][2] = {
    {"    wo.credid = woparts.credid And wo.invoiceid = woparts.invoiceid And (woparts.invoiceid <> 0 Or "
     "woparts.credid <> 0) and (presetpkg =0 or (presetpkg = 1 and presetheader = 1))  and  mechuserid = '",
     "    wo.invoiceid = woparts.invoiceid And wo.credid = woparts.credid And wo.WOID = woparts.WOID And "
     "(wo.chkVoid = 1 Or woparts.invoiceid <> 0 Or woparts.credid <> 0) and (presetpkg =0 or (presetpkg = 1 "
     "and "
     "presetheader = 1))  and  mechuserid = '"},
    {"    wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid and  wo.estid = woparts.estid and "
     "( "
     "woparts.invoiceid <> 0 or woparts.credid <> 0 or  chkestpending = 0 and  wo.estid <> 0) and (presetpkg "
     "=0 "
     "or (presetpkg = 1 and presetheader = 1))  and  mechuserid = '",
     "     wo.invoiceid = woparts.invoiceid and wo.credid = woparts.credid and wo.woid = woparts.woid and "
     "wo.estid "
     "= woparts.estid and (woparts.invoiceid <> 0 or  woparts.credid <> 0 or  wo.chkvoid = 1 or wo.estid <> "
     "0 "
     "and wo.chkestpending = 0) and (presetpkg =0 or (presetpkg = 1 and presetheader = 1))  and  mechuserid "
     "= '"}};

// The rest of a technician's query after the head: the technician, then lines not deleted, not
// skipped and dated within the range (both ends included).
std::string TechnicianLines(const std::string& head, const Variant& user_id, const std::string& start,
                            const std::string& end) {
  return head + SqlQuote(SafeString(user_id)) + "' and wodeleted <> 1 and skip <> 'Yes' and latestdate >= '" +
         SqlQuote(start) + "' and latestdate <= '" + SqlQuote(end) + "'";
}

// A sum as a money cell; an empty sum shows as 0.00.
std::string Money(Currency value) {
  return Format(Variant(value), kTechPattern);
}
std::string Money(const Variant& sum) {
  return Money(clsRS::toCurrency(sum));
}

// The time-clock hours and pay of a user under a condition on "thedate". On a failure the outputs
// are left as they stand.
void getTechClockHours(clsRS& engine, const std::string& userID, const std::string& dateCondition,
                       Currency& hours, Currency& dollars, bool includeVoid) {
  if (TrimBlanks(dateCondition).empty()) return;  // a query without its condition would be rejected
  auto replace_all = [&](const std::string& by) {
    std::string text = dateCondition;
    for (size_t at = text.find("thedate"); at != std::string::npos; at = text.find("thedate", at + by.size()))
      text.replace(at, 7, by);
    return text;
  };
  const std::string invoice_date = replace_all("wo.LatestDate");
  const std::string clock_date = replace_all("timeclock.thedate");
  const std::string user = SqlQuote(userID);
  std::string sql = "SELECT Sum(hrs) AS tothrs, Sum(hrs*thehourlyrate) AS tothrsdollars ";
  sql += "FROM wo LEFT JOIN timeclock ON wo.woid = timeclock.woid ";
  if (includeVoid) {
    // Voided work orders count by the clock's date, invoices by the invoice date.
    sql += "WHERE (((wo.chkVoid)=1) AND ((wo.woid)<>0) AND ((wo.WOdeleted)<>1) AND ((timeclock.userid)='" +
           user + "') AND  (" + clock_date +
           "))   OR (((wo.woid)<>0) AND ((wo.WOdeleted)<>1) AND ((timeclock.userid)='" + user +
           "') AND ((wo.invoiceid)<>0) AND ((wo.credid)=0) AND (" + invoice_date + "));";
  } else {
    sql +=
        "WHERE (((wo.chkVoid)<>1) AND ((wo.invoiceid)<>0) AND ((wo.credid)=0) AND  ((wo.woid)<>0) AND "
        "((wo.WOdeleted)<>1) AND ((timeclock.userid)='" +
        user + "') AND (" + invoice_date + "));";
  }
  try {
    std::string err;
    std::unique_ptr<Recordset> rs = engine.runQuery(sql, err, false);
    if (!rs) return;
    if (rs->IsEof()) {
      hours = Currency();
      dollars = Currency();
      return;
    }
    hours = clsRS::toCurrency(rs->Get("totHRS"));
    dollars = clsRS::toCurrency(rs->Get("tothrsdollars"));
  } catch (const Error&) {
  }
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getTechPerf(const std::string& startDate, const std::string& EndDate,
                                              bool chkIncNonPend, bool chkVoidWO, std::string& strErr) {
  try {
    std::unique_ptr<Recordset> technicians = runQuery(
        std::string("SELECT usertable.* ") + kTechnicianFrom + kTechnicianTypes + " order by lname,fname;",
        strErr, false);
    if (!technicians) return nullptr;
    std::unique_ptr<Recordset> result =
        NewTextTable({"First_Name", "Last_Name", "Total_Parts", "Total_Labor", "Total_Other", "Total_Levy",
                      "Discount_Parts", "Discount_Labor", "Total"});
    const std::string head = kPerfHeads[chkIncNonPend][chkVoidWO];
    while (!technicians->IsEof()) {
      YieldToPendingWork();
      std::string line_err;
      std::unique_ptr<Recordset> sums =
          runQuery(TechnicianLines(head, technicians->Get("UserID"), startDate, EndDate), line_err, false);
      Required(sums, line_err, &line_err);
      result->AddNew();
      result->Set("First_Name", technicians->Get("FName"));
      result->Set("Last_Name", technicians->Get("LName"));
      if (sums->IsEof()) {
        for (const char* column : {"Total_Parts", "Total_Labor", "Total_Other", "Total_Levy",
                                   "Discount_Parts", "Discount_Labor", "Total"})
          result->Set(column, Variant("0.00"));
      } else {
        const Currency parts_sum = toCurrency(sums->Get("Thetotparts")),
                       labour = toCurrency(sums->Get("thetotLabour"));
        const Currency other = toCurrency(sums->Get("TheTotOtherChgDo")),
                       levy = toCurrency(sums->Get("TotLevy"));
        const Currency parts_disc = toCurrency(sums->Get("Thetotdiscpart"));
        const Currency labour_disc = toCurrency(sums->Get("thetotdisclab"));
        result->Set("Total_Parts", Variant(Money(parts_sum)));
        result->Set("Total_Labor", Variant(Money(labour)));
        result->Set("Total_Other", Variant(Money(other)));
        result->Set("Total_Levy", Variant(Money(levy)));
        result->Set("Discount_Parts", Variant(Money(parts_disc)));
        result->Set("Discount_Labor", Variant(Money(labour_disc)));
        result->Set("Total",
                    Variant(Money((levy + parts_sum + labour + other) - (labour_disc + parts_disc))));
      }
      result->Update();
      technicians->MoveNext();
    }
    appendTotalRow(*result, {"Total_Parts", "Total_Labor", "Total_Other", "Total_Levy", "Discount_Parts",
                             "Discount_Labor", "Total", ""});
    strErr = "0";
    return result;
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

std::unique_ptr<Recordset> clsRS::getTechCost(const std::string& startDate, const std::string& EndDate,
                                              bool chkIncNonPend, bool chkVoidWO, bool chkHours,
                                              std::string& strErr) {
  std::unique_ptr<Recordset> technicians =
      runQuery(std::string("SELECT usertable.* ") + kTechnicianFrom + kTechnicianTypes + ";", strErr, false);
  Required(technicians, strErr, &strErr);
  std::unique_ptr<Recordset> result = NewTextTable(
      {"First_Name", "Last_Name", "Total_Hours", "Hourly", "Flat_Rate", "Comm_Parts", "Comm_Labor", "Total"});
  const std::string head = std::string(kCostSums) + kCostConditions[chkIncNonPend][chkVoidWO];
  // The clock figures of one technician stay for the next when the clock cannot be read.
  Currency clock_hours, clock_pay;
  while (!technicians->IsEof()) {
    const Variant& user_id = technicians->Get("UserID");
    std::unique_ptr<Recordset> sums =
        runQuery(TechnicianLines(head, user_id, startDate, EndDate), strErr, false);
    Required(sums, strErr, &strErr);
    result->AddNew();
    result->Set("First_Name", technicians->Get("FName"));
    result->Set("Last_Name", technicians->Get("LName"));
    if (sums->IsEof()) {
      for (const char* column : {"Total_Hours", "Hourly", "Flat_Rate", "Comm_Parts", "Comm_Labor", "Total"})
        result->Set(column, Variant("0.00"));
    } else {
      const Variant& line_hours = sums->Get("TheTotHRS");
      const Variant& line_hourly = sums->Get("TheMechHourlyTot");
      result->Set("Flat_Rate", Variant(Money(sums->Get("themechflatratetot"))));
      result->Set("Comm_Parts", Variant(Money(sums->Get("themechpartstot"))));
      result->Set("Comm_Labor", Variant(Money(sums->Get("themechlabtot"))));
      if (!chkHours) {
        result->Set("Total_Hours", Variant(Money(line_hours)));
        result->Set("Hourly", Variant(Money(line_hourly)));
        result->Set("Total", Variant(Money(sums->Get("THETOTAL"))));
      } else {
        getTechClockHours(
            *this, SafeString(user_id),
            "thedate >= '" + SqlQuote(startDate) + "' and thedate <= '" + SqlQuote(EndDate) + "'",
            clock_hours, clock_pay, chkVoidWO);
        // With voided work orders included, a technician without lines keeps those two cells empty.
        const bool keep_empty = chkVoidWO;
        result->Set("Total_Hours", Variant(keep_empty && line_hours.IsNull() ? "" : Money(clock_hours)));
        result->Set("Hourly", Variant(keep_empty && line_hourly.IsNull() ? "" : Money(clock_pay)));
        // The clock's pay replaces the hourly pay of the lines.
        result->Set("Total",
                    Variant(Money(toCurrency(sums->Get("THETOTAL")) - toCurrency(line_hourly) + clock_pay)));
      }
    }
    result->Update();
    YieldToPendingWork();
    technicians->MoveNext();
  }
  if (strErr.empty() || strErr == "0") strErr = "0";
  appendTotalRow(*result, {"Total_Hours", "Hourly", "Flat_Rate", "Comm_Parts", "Comm_Labor", "Total", ""});
  return result;
}

}  // namespace ent
