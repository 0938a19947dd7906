// Double-entry bookkeeping for the sample shop: transactions whose postings sum to zero, written
// into ChartOfAccountsGLPOSTINGTABLE under one transid each.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "sampledb/calendar.h"
#include "sampledb/catalog.h"
#include "sampledb/sqlite_out.h"

namespace ent::sampledb {

struct Posting {
  int chid;
  int64_t cents;            // positive: debit
  std::string_view srcmod;  // a literal: "INVOICE", "SUPTRANS", ...
  int srcid;
  int srcid2;
};

class Transaction {
 public:
  // Adds an amount to an account; amounts for the same account and source are merged.
  void Add(int chid, int64_t cents, std::string_view srcmod, int srcid, int srcid2 = 0);
  const std::vector<Posting>& postings() const { return postings_; }
  bool empty() const { return postings_.empty(); }

 private:
  std::vector<Posting> postings_;
};

class Ledger {
 public:
  explicit Ledger(Database& db);

  // Writes the non-zero postings of the transaction, dated day, under the next transid. A
  // transaction that does not balance is a bug in the generator: std::logic_error.
  void Post(Day day, const Transaction& transaction);

  int64_t Balance(int chid) const { return balance_[static_cast<size_t>(chid)]; }

 private:
  Insert insert_;
  int next_glid_ = 1;
  int next_transid_ = 1;
  std::array<int64_t, acct::kCount> balance_{};
};

}  // namespace ent::sampledb
