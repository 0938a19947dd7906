// Pieces every report area shares beside the engine's own helpers (cls_rs.h): new free-standing
// tables, the rowset of a query that must have run, and trapping a report's failure into its status.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/error.h"
#include "data/recordset.h"

namespace ent {

// An open, empty free-standing rowset with one result text column per name (50 characters wide or
// wider, growing with its longest value).
std::unique_ptr<Recordset> NewTextTable(const std::vector<std::string>& columns);

// The rowset a query gave. When it gave none, raises Error 424 with the query's failure text, which
// also goes into *status when given.
Recordset& Required(const std::unique_ptr<Recordset>& rs, const std::string& failure,
                    std::string* status = nullptr);
// The same where the query's text is not reported: fails as reading the missing rowset would (91).
Recordset& Required(const std::unique_ptr<Recordset>& rs);

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
