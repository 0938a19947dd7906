// A shop database for the accounting statements' tests: the chart of accounts, the ledger and the
// fiscal years (plus the parties of the payables and receivables), filled by each test.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/test_db.h"

namespace ent::test {

class Books {
 public:
  // Creates the tables and points this thread's shop connection at the database.
  Books();

  // An account; its type code is its class letter unless given.
  void Account(int chid, int parentid, int number, const std::string& name, char fivetypename, int sublevel,
               const std::string& type = "");
  // A posting of `amount` (decimal text) on `date` (M/d/yyyy).
  void Post(int chid, const std::string& amount, const std::string& date, const std::string& srcmod = "GJ",
            int srcid = 0, int srcid2 = 0);
  // The calendar year as a fiscal year.
  void FiscalYear(int year);
  void Exec(const std::string& sql) const { db_.Exec(sql); }
  const TestDb& db() const { return db_; }

 private:
  TestDb db_;
  int next_glid_ = 1;
};

}  // namespace ent::test
