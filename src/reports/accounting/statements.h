// The steps the accounting statements are built from, shared by the statements' files and private to
// them. Each works on the engine's shop connection; date parameters are date texts as received.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/currency.h"
#include "common/date_time.h"
#include "common/variant.h"
#include "reports/accounting/statement_sections.h"
#include "reports/cls_rs.h"

namespace ent::accounting {

// Chart of accounts and fiscal years (chart_of_accounts.cpp). dtFor is a date (written as a short
// date), a date text (written as received) or null (today).
void getFiscalYear(clsRS& engine, DateTime& dtStart, DateTime& dtEnd, const Variant& dtFor);
bool isInFiscalYear(clsRS& engine, DateTime& dtFor);
int32_t getChidByAccountNumber(clsRS& engine, int32_t& lAccountNumber);
// The account's name; the empty text when it cannot be read.
std::string getAccountName(clsRS& engine, int32_t lChid);
// "Top: ...: Account". A parent loop or a missing parent raises Error naming the account.
std::string getAccountPath(clsRS& engine, int32_t& lAccountNumber);
// Revenue and expenses before the fiscal year of dtFor / from its start to dtFor, signs reversed.
Currency getRetainedEarnings(clsRS& engine, DateTime& dtFor);
Currency getNetIncome(clsRS& engine, DateTime& dtFor);

// Work tables (work_tables.cpp), dropped and re-created per run. addStatementLine prefixes sName with
// its indentation, formats sAmount and returns lLevel one higher; addAPARLine empties a bare ","
// contact.
bool createStatementTable(clsRS& engine, bool& bPL, std::string& innerErr);
void addStatementLine(clsRS& engine, std::string& sName, int32_t& lLevel, std::string& sAmount,
                      int32_t& lRowID, bool& bPL);
bool createTrialBalanceTable(clsRS& engine);
void addTrialBalanceLine(clsRS& engine, std::string& sName, std::string& sDebit, std::string& sCredit,
                         int32_t& lRowID);
bool createAPARTable(clsRS& engine);
void addAPARLine(clsRS& engine, std::string& sCompany, std::string& sContact, Currency& cAmt);

// Statement sections shared by the balance sheet and the profit and loss (statement_sections.cpp).
std::vector<StatementEntry> collectStatementEntries(clsRS& engine, const std::string& accountSql,
                                                    const StatementPeriod& period, std::string& innerErr);
Currency getGroupSum(clsRS& engine, const Variant& accountType, int32_t accountNumber, int32_t subLevel,
                     const StatementPeriod& period, std::string& innerErr);
void writeStatementEntries(clsRS& engine, std::vector<StatementEntry>& entries, int sign, Currency& total,
                           int32_t& r, bool bPL);
// Writes one heading, total or empty line at level 0.
void writeStatementLine(clsRS& engine, const std::string& label, const std::string& amount, int32_t rowID,
                        bool bPL);

// Each statement's lines into its work table (balance_sheet.cpp, profit_loss.cpp, trial_balance.cpp,
// payables_receivables.cpp).
void computeBalanceSheet(clsRS& engine, std::string& dtAsOf, std::string& innerErr);
bool computeProfitLoss(clsRS& engine, std::string& dtStart, std::string& dtEnd, std::string& innerErr);
void computeTrialBalance(clsRS& engine, std::string& dtEnd, std::string& innerErr);
bool fillAPARTable(clsRS& engine, int32_t& eTyp, std::string& innerErr, std::string& dtEnd);
std::string getReceivablesSQL(const std::string& dtEnd);

}  // namespace ent::accounting
