// Mailing lists for the shop's marketing: oil-change reminder postcards (POSTCARDLOF01), postcards
// to customers who came without an oil change (POSTCARDNONLOF01) and loyal customers (LOYAL01).
#include <string>

#include "common/error.h"
#include "common/text.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"
#include "reports/sales/report_figures.h"

namespace ent {

namespace {

// The oil-change job codes, as the customer query tests them.
const char kOilChangeJobs[] =
    " ((jobheader.jobnum)=('LOFGTX-HO') Or (jobheader.jobnum)=('LOFSEMI-HO') Or "
    "(jobheader.jobnum)=('LOFHM-HO') Or "
    "(jobheader.jobnum)=('LOFSYNT-HO') Or (jobheader.jobnum)=('LOF2411-HO') Or "
    "(jobheader.jobnum)=('LOF2412-HO') Or "
    "(jobheader.jobnum)=('LUBSUM-HO') Or (jobheader.jobnum)=('LUBFAL-HO') Or "
    "(jobheader.jobnum)=('LUBWIN-HO') Or "
    "(jobheader.jobnum)=('LUBSPR-HO') Or (jobheader.jobnum)=('LUBE-HO') Or (jobheader.jobnum)=('VIP1-HO') Or "
    "(jobheader.jobnum)=('VIP2-HO') Or (jobheader.jobnum)=('VIP3-HO') Or (jobheader.jobnum)=('VIP4-HO')));";

// The same codes as the exclusion queries test them.
const char kOilChangeJobsBracketed[] =
    "(([jobheader].[jobnum]='LOFGTX-HO') Or ([jobheader].[jobnum])=('LOFSEMI-HO') Or ([jobheader].[jobnum])=("
    "'LOFHM-HO') Or ([jobheader].[jobnum])=('LOFSYNT-HO') Or ([jobheader].[jobnum])=('LOF2411-HO') Or "
    "([jobheader].[jobnum])=('LOF2412-HO') Or ([jobheader].[jobnum])=('LUBSUM-HO') Or "
    "([jobheader].[jobnum])=("
    "'LUBFAL-HO') Or ([jobheader].[jobnum])=('LUBWIN-HO') Or ([jobheader].[jobnum])=('LUBSPR-HO') Or "
    "([jobheader].[jobnum])=('LUBE-HO') Or ([jobheader].[jobnum])=('VIP1-HO') Or ([jobheader].[jobnum])=("
    "'VIP2-HO') Or ([jobheader].[jobnum])=('VIP3-HO') Or ([jobheader].[jobnum])=('VIP4-HO')))";

// Drops the trailing " and " of an exclusion filter and sets it.
void SetExclusions(Recordset& rs, std::string filter) {
  if (filter.size() <= 5) return;
  filter.resize(filter.size() - 5);
  rs.SetFilter(filter);
}

// Copies the customers' visible rows into the postcard table, the first `columns` columns by
// position, each trimmed.
void CopyCustomers(Recordset& from, Recordset& to, size_t columns, bool yield) {
  if (from.IsEof()) return;
  for (from.MoveFirst(); !from.IsEof(); from.MoveNext()) {
    to.AddNew();
    for (size_t c = 0; c < columns; ++c) to.Set(c, Variant(TrimBlanks(SafeString(from.Get(c)))));
    to.Update();
    if (yield) YieldToPendingWork();
  }
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getPostCardLOF(const std::string& startDate, const std::string& EndDate,
                                                 const std::string& startDate2, const std::string& EndDate2,
                                                 std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    std::string sql =
        "SELECT DISTINCT customer.company, customer.fname, customer.lname, customer.street, customer.city, "
        "customer.postal, vehicle.Year , vehicle.Make, vehicle.Model, wo.latestdate, jobheader.jobnum, "
        "vehicle.vehid  "
        "FROM (customer INNER JOIN ((woparts INNER JOIN wo ON woparts.woid = wo.woid) INNER JOIN vehicle ON "
        "wo.vehid "
        "= vehicle.vehid) ON customer.cusid = wo.cusid) INNER JOIN jobheader ON woparts.presetjobid = "
        "jobheader.jobid Where (((wo.latestdate)>='";
    sql += SqlQuote(startDate) + "' And (wo.latestdate)<='" + SqlQuote(EndDate) +
           "') AND ((wo.invoiceid)<>0) AND ((wo.wodeleted)<>1) AND ((customer.chksolicit)=1) AND " +
           kOilChangeJobs;
    std::unique_ptr<Recordset> customers = runQuery(sql, strErr, false);
    YieldToPendingWork();

    std::string returned =
        "SELECT DISTINCT wo.vehid FROM ((wo INNER JOIN vehicle ON wo.vehid = vehicle.vehid) INNER JOIN "
        "WOparts ON "
        "wo.invoiceid = WOparts.invoiceid) INNER JOIN jobheader ON WOparts.presetjobid = jobheader.jobid "
        "WHERE "
        "(((wo.invoiceid)<>0) AND ((wo.wodeleted)<>1) AND ((wo.latestdate)>='";
    returned += SqlQuote(startDate2) + "' And (wo.latestdate)<='" + SqlQuote(EndDate2) + "') AND " +
                kOilChangeJobsBracketed + ";";
    std::string returnedErr;
    std::unique_ptr<Recordset> back = runQuery(returned, returnedErr, false);

    if (!customers) return nullptr;
    if (customers->IsEof()) {
      strErr = "0";
      return nullptr;
    }
    std::string filter;
    for (Recordset& b = Required(back, returnedErr); !b.IsEof(); b.MoveNext())
      filter += "vehid <> " + SafeString(b.Get("VehID")) + " and ";
    SetExclusions(*customers, filter);

    auto result = NewTextTable({"Company", "First_Name", "Last_Name", "Street", "City", "Postal_Code", "Year",
                                "Make", "Model", "Invoice_Date", "Job_Number"});
    CopyCustomers(*customers, *result, customers->fields().size() - 1, true);
    strErr = "0";
    return result;
  });
}

std::unique_ptr<Recordset> clsRS::getPostcardNONLOF(const std::string& startDate, const std::string& EndDate,
                                                    const std::string& startDate2,
                                                    const std::string& EndDate2, std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    const std::string from = SqlQuote(startDate), to = SqlQuote(EndDate);
    std::string sql =
        "SELECT DISTINCT customer.company, customer.fname, customer.lname, customer.street, customer.city, "
        "customer.postal, vehicle.year, vehicle.make, vehicle.model, wo.latestdate , wo.VehID, "
        "(wo.InvoiceID) as "
        "InvoiceID From customer Inner Join (wo INNER JOIN vehicle ON wo.vehid = vehicle.vehid) ON "
        "customer.cusid = "
        "wo.cusid Where ((wo.latestdate)>='";
    sql +=
        from + "' And (wo.latestdate)<='" + to +
        "') AND (((wo.wodeleted)<>1) AND ((customer.chksolicit)=1)) and wo.invoiceid <> 0 group by "
        "customer.company, customer.fname, customer.lname, customer.street, customer.city, customer.postal, "
        "vehicle.year, vehicle.make, vehicle.model, wo.latestdate,wo.VehID, wo.invoiceid";
    std::unique_ptr<Recordset> customers = runQuery(sql, strErr, false);
    if (!customers) return nullptr;
    if (customers->IsEof()) {
      strErr = "0";
      return nullptr;
    }

    std::string oilChanges =
        "SELECT wo.invoiceid FROM (WOparts INNER JOIN wo ON WOparts.invoiceid = wo.invoiceid) INNER JOIN "
        "jobheader "
        "ON WOparts.presetjobid = jobheader.jobid Where (((wo.LatestDate)>='";
    oilChanges += from + "' And (wo.LatestDate)<='" + to +
                  "') AND ((wo.invoiceid)<>0) AND ((wo.WOdeleted)<>1) AND " + kOilChangeJobsBracketed +
                  "GROUP BY wo.invoiceid;";
    std::unique_ptr<Recordset> withOilChange = runQuery(oilChanges, strErr, false);
    YieldToPendingWork();

    const std::string returned =
        "SELECT DISTINCT wo.vehid FROM wo INNER JOIN vehicle ON wo.vehid = vehicle.vehid WHERE "
        "(((wo.invoiceid)<>0) "
        "AND ((wo.wodeleted)<>1) AND ((wo.latestdate)>='" +
        SqlQuote(startDate2) + "' And (wo.latestdate)<='" + SqlQuote(EndDate2) + "'));";
    std::string returnedErr;
    std::unique_ptr<Recordset> back = runQuery(returned, returnedErr, false);

    std::string filter;
    for (Recordset& b = Required(withOilChange, strErr); !b.IsEof(); b.MoveNext())
      filter += "invoiceid <> '" + SafeString(b.Get("InvoiceID")) + "' and ";
    for (Recordset& b = Required(back, returnedErr); !b.IsEof(); b.MoveNext())
      filter += "vehid <> " + SafeString(b.Get("VehID")) + " and ";
    SetExclusions(*customers, filter);

    auto result = NewTextTable({"Company", "First_Name", "Last_Name", "Street", "City", "Postal_Code", "Year",
                                "Make", "Model", "Invoice_Date"});
    CopyCustomers(*customers, *result, customers->fields().size() - 2, false);
    strErr = "0";
    return result;
  });
}

std::unique_ptr<Recordset> clsRS::getLoyaltyReport(const std::string& startDate, const std::string& EndDate,
                                                   int32_t lInvCount, Currency cSubTot, int32_t lVehYear,
                                                   std::string& strErr) {
  return Trapped(strErr, [&]() -> std::unique_ptr<Recordset> {
    std::string sql =
        "SELECT customer.Company, customer.FName as First_Name, customer.LName as Last_Name,customer.Postal, "
        "Count(wo.invoiceid) AS Invoice_Count, (format(sum(wo.screensubtotal), '###,###,##0.00')) AS "
        "Sub_Total, "
        "format(Sum(wo.screentotal), '###,###,##0.00') AS Total, vehicle.Plate , vehicle.Year, vehicle.Make, "
        "vehicle.Model, vehicle.VIN From (customer INNER JOIN wo ON customer.cusid = wo.cusid) INNER JOIN "
        "vehicle ON "
        "(wo.vehid = vehicle.vehid) AND (wo.cusid = vehicle.cusid) Where (((wo.latestdate) Between '";
    sql +=
        SqlQuote(startDate) + "' And '" + SqlQuote(EndDate) +
        "') AND ((wo.WOdeleted)<>1) AND ((wo.invoiceid)>0)) OR (((wo.credid)<>0)) GROUP BY customer.company, "
        "customer.fname, customer.lname,customer.postal,vehicle.plate,vehicle.year, vehicle.make, "
        "vehicle.model, "
        "vehicle.vin,wo.vehid HAVING Sum(wo.screensubtotal)>=" +
        cSubTot.ToString();
    std::unique_ptr<Recordset> groups = runQuery(sql, strErr, false);
    Recordset& rs = Required(groups, strErr);
    rs.SetFilter("(Invoice_Count >= " + std::to_string(lInvCount) + ") AND (Year > " +
                 std::to_string(lVehYear) + ")");
    strErr = "0";
    std::unique_ptr<Recordset> copy = copyRS(&rs);
    if (copy) appendTotalRow(*copy, {"Sub_Total", "Total", ""});
    return copy;
  });
}

}  // namespace ent
