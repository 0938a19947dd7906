// Pieces every report area shares beside the engine's own helpers (cls_rs.h): new free-standing
// tables, the rowset of a query that must have run, and trapping a report's failure into its status.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/log.h"
#include "data/recordset.h"

namespace ent {

// An open, empty free-standing rowset with one result text column per name (50 characters wide or
// wider, growing with its longest value).
std::unique_ptr<Recordset> NewTextTable(const std::vector<std::string>& columns);

// A static query rowset on `connection`, as clsRS::runQuery opens one on the shop connection.
std::unique_ptr<Recordset> RunQuery(const std::shared_ptr<Connection>& connection, const std::string& sql,
                                    std::string& status, bool editable);

// The same as a forward-only rowset, its rows read as it moves on.
std::unique_ptr<Recordset> RunForwardOnly(const std::shared_ptr<Connection>& connection,
                                          const std::string& sql, std::string& status);

// The rowset a query gave. When it gave none, raises Error 424 with the query's failure text, which
// also goes into *status when given.
Recordset& Required(const std::unique_ptr<Recordset>& rs, const std::string& failure,
                    std::string* status = nullptr);
// The same where the query's text is not reported: fails as reading the missing rowset would (91).
Recordset& Required(const std::unique_ptr<Recordset>& rs);

// The rowset `open` gives and "0" as the status, or nothing and the failure's description (logged
// as "getRS:"): how every query of a report is opened.
template <class Open>
std::unique_ptr<Recordset> Opened(std::string& status, Open open) {
  try {
    auto rs = open();
    status = "0";
    return rs;
  } catch (const Error& e) {
    WriteLog("getRS:" + e.description());
    status = e.description();
    return nullptr;
  }
}

// Runs a report that traps its failures: a failure gives nothing and its description as the status.
template <class Report>
std::unique_ptr<Recordset> Trapped(std::string& strErr, Report report) {
  try {
    return report();
  } catch (const Error& e) {
    strErr = e.description();
    return nullptr;
  }
}

}  // namespace ent
