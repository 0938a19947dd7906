// The report engine: one object per report job, holding the shop connection on which the report
// operations run their queries, plus the free-SQL report. Each operation is defined next to its
// report's SQL (reports/<area>/..., enterprise/...); what an area needs privately stays in the area.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "common/currency.h"
#include "common/date_time.h"
#include "common/variant.h"
#include "data/connection.h"
#include "data/recordset.h"

namespace ent {

class clsRS {
 public:
  clsRS() = default;
  // Closes the shop connection, ignoring any failure (also when it was never opened); a forward-only
  // rowset still reading from it keeps it open until it goes.
  ~clsRS();
  clsRS(const clsRS&) = delete;
  clsRS& operator=(const clsRS&) = delete;

  // Opens the shop connection from the thread's shop connection string. Failures go to the caller.
  void openConnections();

  // Runs a free SQL text on a connection of its own, exactly as received. Returns the forward-only
  // rowset (which keeps that connection and reads its rows as it moves on) and "0", or nothing and
  // the failure's description.
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

  // Sales classes (reports/sales/sales_class.cpp). Failures go to the caller.
  std::unique_ptr<Recordset> getSalesClassReport2(const std::string& dtStart, const std::string& dtEnd,
                                                  bool chkIncludeTechCosts, std::string& innerErr);

  // Sales comparison of two ranges and car count (reports/sales/sales_comparison.cpp).
  std::unique_ptr<Recordset> getSalesComp(const std::string& startDate, const std::string& EndDate,
                                          const std::string& startDate2, const std::string& EndDate2,
                                          std::string& strErr);
  std::unique_ptr<Recordset> getCarCount(const std::string& startDate, const std::string& EndDate,
                                         std::string& strErr);

  // Margins per invoice and per vehicle make (reports/sales/margins.cpp).
  std::unique_ptr<Recordset> getGenMargReport(const std::string& startDate, const std::string& EndDate,
                                              std::string& strErr);
  // Failures go to the caller.
  std::unique_ptr<Recordset> getMarginByMake(const std::string& dtStart, const std::string& dtEnd,
                                             std::string& innerErr);

  // Daily sales recap (reports/sales/daily_recap.cpp). An unreadable day goes to the caller.
  std::unique_ptr<Recordset> getDailySalesRecap(const std::string& dDateAsOf, bool bDisFinSumm,
                                                std::string& strErr);

  // Marketing lists (reports/sales/marketing_lists.cpp).
  std::unique_ptr<Recordset> getPostCardLOF(const std::string& startDate, const std::string& EndDate,
                                            const std::string& startDate2, const std::string& EndDate2,
                                            std::string& strErr);
  std::unique_ptr<Recordset> getPostcardNONLOF(const std::string& startDate, const std::string& EndDate,
                                               const std::string& startDate2, const std::string& EndDate2,
                                               std::string& strErr);
  std::unique_ptr<Recordset> getLoyaltyReport(const std::string& startDate, const std::string& EndDate,
                                              int32_t lInvCount, Currency cSubTot, int32_t lVehYear,
                                              std::string& strErr);

  // Inventory and suppliers (reports/parts/inventory.cpp). Empty filters are rewritten in place to
  // "%"; filters may use the LIKE wildcards. Results end with a "[b]TOTAL" line.
  std::unique_ptr<Recordset> getInvValue(std::string& sPartNum, std::string& sDesc, std::string& sCategory,
                                         std::string& strErr);
  std::unique_ptr<Recordset> getInvList(std::string& sPartNum, std::string& sDesc, std::string& sCategory,
                                        std::string& sSupp, std::string& sLoc, std::string& strErr);
  std::unique_ptr<Recordset> getPartsSalesPerformance(const std::string& sDateStart,
                                                      const std::string& sDateEnd, std::string& sPartNum,
                                                      std::string& sDesc, std::string& sCategory,
                                                      bool bIncVoidWOs, std::string& strErr);
  // One row per supplier with its purchases in the range. A supplier whose purchase table cannot be
  // read raises Error (with the database's text also in sErr).
  std::unique_ptr<Recordset> GetSupplierExpenseSummary(const std::string& sDTFrom, const std::string& sDTTo,
                                                       std::string& sErr);

  // Parts gross profit (reports/parts/parts_gross_profit.cpp): every part line of the invoices and
  // credit invoices in the range, with the margin its sales-class pricing band prescribes.
  std::unique_ptr<Recordset> getPartsGPReport(const std::string& startDate, const std::string& EndDate,
                                              std::string& strErr);

  // Technicians (reports/parts/technicians.cpp): one row per technician with the lines credited to
  // them in the range. chkIncNonPend adds estimates no longer pending, chkVoidWO voided work orders,
  // chkHours takes hours and hourly pay from the time clock. getTechCost raises Error on a failed query.
  std::unique_ptr<Recordset> getTechPerf(const std::string& startDate, const std::string& EndDate,
                                         bool chkIncNonPend, bool chkVoidWO, std::string& strErr);
  std::unique_ptr<Recordset> getTechCost(const std::string& startDate, const std::string& EndDate,
                                         bool chkIncNonPend, bool chkVoidWO, bool chkHours,
                                         std::string& strErr);

  // The head office's searches (enterprise/searches.cpp). Text parameters are rewritten in place with
  // their defaults and patterns.
  std::unique_ptr<Recordset> getEnterpriseCustomer(std::string& sOrderBy, std::string& sCompany,
                                                   std::string& sFName, std::string& sLname,
                                                   int32_t& lMaxRecords, std::string& sHomePhone,
                                                   std::string& sBusPhone, std::string& strErr);
  std::unique_ptr<Recordset> getEnterpriseInventory(std::string& sOrderBy, std::string& sPartNum,
                                                    std::string& sDesc, std::string& sCat, int32_t& lRecCount,
                                                    std::string& sMfg, bool bQOHOnly, std::string& strErr);
  std::unique_ptr<Recordset> generateEnterpriseInvoiceList(std::string& sOrderBy, int32_t lCusID,
                                                           std::string& strErr);

  // Accounting statements (reports/accounting/...). Each fills its work table in the shop database and
  // reads it back; runs that fill a work table are serialized per shop database within the process.
  // Date parameters are date texts as received. A status of "0" means success.
  //
  // Balance sheet as of dtAsOf (empty: today, and dtAsOf then holds today's date text).
  std::unique_ptr<Recordset> getBalanceSheet(std::string& dtAsOf, std::string& innerErr);
  // Profit and loss from dtStart to dtEnd, both days included.
  std::unique_ptr<Recordset> getProfitLoss(std::string& dtStart, std::string& dtEnd, std::string& innerErr);
  // Trial balance at dtEnd, in the order its lines were written.
  std::unique_ptr<Recordset> getTrialBalance(std::string& dtEnd, std::string& innerErr);
  // Receivables (eTyp 0) or payables (eTyp 1) per party at dtEnd, with a total line. An end date that
  // is not a date raises on the payables side.
  std::unique_ptr<Recordset> getAPARSummary(int32_t& eTyp, std::string& innerErr, std::string& dtEnd);

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
