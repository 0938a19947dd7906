#include "sampledb/ledger.h"

#include <stdexcept>
#include <string>

namespace ent::sampledb {

void Transaction::Add(int chid, int64_t cents, std::string_view srcmod, int srcid, int srcid2) {
  for (Posting& p : postings_) {
    if (p.chid == chid && p.srcmod == srcmod && p.srcid == srcid && p.srcid2 == srcid2) {
      p.cents += cents;
      return;
    }
  }
  postings_.push_back({chid, cents, srcmod, srcid, srcid2});
}

Ledger::Ledger(Database& db)
    : insert_(db, "ChartOfAccountsGLPOSTINGTABLE",
              {"glid", "transid", "chid", "transdate", "amt", "srcmod", "srcid", "srcid2"}) {}

void Ledger::Post(Day day, const Transaction& transaction) {
  int64_t sum = 0;
  for (const Posting& p : transaction.postings()) sum += p.cents;
  if (sum != 0) {
    throw std::logic_error("unbalanced transaction (" + std::to_string(sum) + " cents) from " +
                           std::string(transaction.postings().front().srcmod));
  }
  bool written = false;
  for (const Posting& p : transaction.postings()) {
    if (p.cents == 0) continue;
    insert_.Row(next_glid_++, next_transid_, p.chid, day, Money{p.cents}, p.srcmod, p.srcid, p.srcid2);
    balance_[static_cast<size_t>(p.chid)] += p.cents;
    written = true;
  }
  if (written) ++next_transid_;
}

}  // namespace ent::sampledb
