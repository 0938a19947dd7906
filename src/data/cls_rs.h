// The report engine: one object per report job, holding the shop connection on which the report
// operations run their queries, plus the free-SQL report. Report operations are defined next to
// their reports (src/reports/..., src/enterprise/...); the shared rowset helpers in data/.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "common/currency.h"
#include "common/variant.h"
#include "data/connection.h"
#include "data/recordset.h"

namespace ent {

class clsRS {
 public:
  clsRS() = default;
  // Closes the shop connection, ignoring any failure (also when it was never opened).
  ~clsRS();
  clsRS(const clsRS&) = delete;
  clsRS& operator=(const clsRS&) = delete;

  // Opens the shop connection from the thread's shop connection string. Failures go to the caller.
  void openConnections();

  // Runs a free SQL text on a connection of its own, exactly as received. Returns the rowset (which
  // keeps that connection) and "0", or nothing and the failure's description.
  std::unique_ptr<Recordset> getCustomRS(const std::string& sql, std::string& sInnerErr);

  const std::shared_ptr<Connection>& connection() const { return conn_; }

  // The helpers every report shares. A column-name list holds the names and then one spare empty
  // entry that is never read: entries 0 to size - 2 are processed.

  // Opens a static query rowset on the shop connection (editable: new rows can be added). Returns it
  // and "0", or nothing and the failure's description (logged as "getRS:").
  std::unique_ptr<Recordset> runQuery(const std::string& sql, std::string& status, bool editable);
  // A free-standing copy with one fixed 50-character text column per source column, holding the
  // source's rows from its current row to its end as text (null as the empty text). Nothing for
  // nothing, and nothing when any value does not fit. The copy is left on its last row.
  static std::unique_ptr<Recordset> copyRS(Recordset* source);
  // Adds a "[b]TOTAL" row with the sums of the listed columns' numeric cells, formatted as amounts;
  // nothing for an empty rowset. Leaves the rowset on its first row; a failure stops it silently.
  static void appendTotalRow(Recordset& rs, const std::vector<std::string>& names);
  // Rewrites the listed columns of every row with the pattern (numeric text as a number, other text
  // unchanged). Leaves the rowset on its first row; a failure stops it silently.
  static void formatColumns(Recordset& rs, const std::vector<std::string>& names, std::string_view pattern);
  // Null, empty and non-numeric values give 0; numbers and numeric text their currency value.
  static Currency toCurrency(const Variant& value);

  // Sales: invoice revenue, payments, averages (reports/sales/invoice_revenue.cpp).
  std::unique_ptr<Recordset> getInvoiceRevenueSummary(const std::string& dtStart, const std::string& dtEnd,
                                                      bool bIncCustInfo, bool bIncVehInfo, bool bIncInvSumm,
                                                      std::string& innerErr);
  std::unique_ptr<Recordset> getRepairOrderPaymentRecon(const std::string& dtStart, const std::string& dtEnd,
                                                        std::string& innerErr);
  std::unique_ptr<Recordset> getAvgInvoiceData(const std::string& dtStart, const std::string& dtEnd,
                                               bool bIncCredInvoices, std::string& innerErr);

  // The head office's searches (enterprise/searches.cpp). Text parameters are rewritten in place with
  // their defaults and patterns.
  std::unique_ptr<Recordset> getEnterpriseCustomer(std::string& sOrderBy, std::string& sCompany,
                                                   std::string& sFName, std::string& sLname, int32_t& lMaxRecords,
                                                   std::string& sHomePhone, std::string& sBusPhone,
                                                   std::string& strErr);
  std::unique_ptr<Recordset> getEnterpriseInventory(std::string& sOrderBy, std::string& sPartNum,
                                                    std::string& sDesc, std::string& sCat, int32_t& lRecCount,
                                                    std::string& sMfg, bool bQOHOnly, std::string& strErr);
  std::unique_ptr<Recordset> generateEnterpriseInvoiceList(std::string& sOrderBy, int32_t lCusID,
                                                           std::string& strErr);

  // One invoice as a finished RepairOrder document (enterprise/invoice_document.cpp); "Cr" as the
  // state asks for a credit invoice. Returns the document and "0", or nothing and the failure's
  // number, " - " and description. Loads through a connection of its own, not the shop connection.
  std::unique_ptr<pugi::xml_document> generateEnterpriseInvoice(int32_t lInvoiceId,
                                                                const std::string& sInvState,
                                                                std::string& strErr);

 private:
  std::shared_ptr<Connection> conn_;
};

}  // namespace ent
