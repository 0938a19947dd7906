// The head office's look-ups: customer search (ENTCUSTSRCH), inventory search (ENTINVSRCH) and a
// customer's invoices (ENTCUSTINVOICES). Search values are LIKE patterns; an empty one matches all,
// nulls included.
#include "common/error.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"

namespace ent {

namespace {

// A telephone typed as digits, area code first, split into the area pattern and the number pattern
// the way the numbers are stored ("555" and "555-0100").
void splitPhonePattern(std::string& phone, std::string& area) {
  if (phone == "%") {
    area = "%";
    return;
  }
  area = phone.substr(0, 3);
  phone = phone.size() > 3 ? phone.substr(3, 10) : "";
  if (phone.empty()) {
    phone = "%";
    return;
  }
  if (phone.size() > 3) phone = phone.substr(0, 3) + "-" + phone.substr(3, 10);
}

void DefaultToAll(std::string& pattern) {
  if (pattern.empty()) pattern = "%";
}

// Runs a search and hands back its text copy; a rejected sort order runs nothing.
std::unique_ptr<Recordset> RunSearch(clsRS& engine, const std::string& sql, std::string& strErr) {
  try {
    std::unique_ptr<Recordset> query = engine.runQuery(sql, strErr, false);
    if (strErr != "0") return nullptr;
    return clsRS::copyRS(query.get());
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

bool SortOrderAccepted(const std::string& sOrderBy, std::string& strErr) {
  if (auto failure = CheckSortOrder(sOrderBy)) {
    strErr = *failure;
    return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<Recordset> clsRS::getEnterpriseCustomer(std::string& sOrderBy, std::string& sCompany,
                                                        std::string& sFName, std::string& sLname,
                                                        int32_t& lMaxRecords, std::string& sHomePhone,
                                                        std::string& sBusPhone, std::string& strErr) {
  if (!sOrderBy.empty()) {
    if (!SortOrderAccepted(sOrderBy, strErr)) return nullptr;
    sOrderBy += ", cusid";
  } else {
    sOrderBy = "Company, lname, fname, cusid";
  }
  if (lMaxRecords == 0) lMaxRecords = 100;
  DefaultToAll(sCompany);
  DefaultToAll(sFName);
  DefaultToAll(sLname);
  DefaultToAll(sHomePhone);
  DefaultToAll(sBusPhone);
  std::string business_area, home_area;
  splitPhonePattern(sBusPhone, business_area);
  splitPhonePattern(sHomePhone, home_area);

  std::string sql =
      "select top " + std::to_string(lMaxRecords) +
      " company, fname as FirstName, lname as LastName, (ahtel + '-' + htel) as HomePhone, (abtel + "
      "'-' + btel) as BusPhone, Cusid from CUSTOMER where 1 = 1" +
      LikeFilter("COMPANY", sCompany) + LikeFilter("FNAME", sFName) + LikeFilter("LNAME", sLname) +
      LikeFilter("ahtel", home_area) + LikeFilter("htel", sHomePhone) + LikeFilter("abtel", business_area) +
      LikeFilter("btel", sBusPhone) + " order by " + sOrderBy;
  return RunSearch(*this, sql, strErr);
}

std::unique_ptr<Recordset> clsRS::getEnterpriseInventory(std::string& sOrderBy, std::string& sPartNum,
                                                         std::string& sDesc, std::string& sCat,
                                                         int32_t& lRecCount, std::string& sMfg, bool bQOHOnly,
                                                         std::string& strErr) {
  DefaultToAll(sPartNum);
  DefaultToAll(sDesc);
  DefaultToAll(sCat);
  DefaultToAll(sMfg);
  if (!sOrderBy.empty()) {
    if (!SortOrderAccepted(sOrderBy, strErr)) return nullptr;
    sOrderBy += ", invid";
  } else {
    sOrderBy = "partnum, invid";
  }
  if (lRecCount == 0) lRecCount = 100;
  std::string sql = "select top " + std::to_string(lRecCount) +
                    " inventory.partnum as Part_Number, inventory.Description, inventory.Manufacturer, "
                    "inventory.Category, format(inventory.QOH, '###,###,##0.00') as QOH, ";
  sql += "format(inventory.LastList, '###,###,##0.00') as LastList FROM  inventory WHERE ";
  if (bQOHOnly) sql += " qoh > 0 and ";
  sql += " 1 = 1" + LikeFilter("inventory.partnum", sPartNum) + LikeFilter("inventory.description", sDesc) +
         LikeFilter("inventory.category", sCat) + LikeFilter("inventory.manufacturer", sMfg);
  sql += " order by " + sOrderBy;
  return RunSearch(*this, sql, strErr);
}

std::unique_ptr<Recordset> clsRS::generateEnterpriseInvoiceList(std::string& sOrderBy, int32_t lCusID,
                                                                std::string& strErr) {
  if (sOrderBy.empty()) {
    sOrderBy = "latestdate, invoiceid";
  } else if (!SortOrderAccepted(sOrderBy, strErr)) {
    return nullptr;
  }
  const std::string sql =
      "select latestdate as InvDate, stateandnumber as InvoiceNum, summary as JobDesc, screentotal as Total "
      "FROM WO "
      "WHERE (INVOICEID <> 0 OR CREDID <> 0) AND CUSID = " +
      std::to_string(lCusID) + " ORDER BY " + sOrderBy;
  return RunSearch(*this, sql, strErr);
}

}  // namespace ent
