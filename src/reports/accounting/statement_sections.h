// The accounts a balance sheet or profit and loss section shows, and the texts that bound their sums
// to the statement's date or period.
#pragma once

#include <cstdint>
#include <string>

#include "common/currency.h"
#include "reports/cls_rs.h"

namespace ent::accounting {

struct StatementEntry {
  int32_t chid = 0;
  int32_t parentid = 0;
  int32_t sublevel = 0;     // one or two higher once the entry's lines are written
  std::string accountname;  // receives its indentation prefix when its own line is written
  Currency amount;          // the account's own balance; 0 when shown for its group only
  int32_t accountnumber = 0;
};

struct StatementPeriod {
  // Follows "... where chid = N" in an account's own balance.
  std::string balance_clause;
  // A group sum up to " accountnumber > "; without a closing account it continues with the type.
  std::string group_open;
  std::string group_closed;
  // Ends both group sums.
  std::string group_clause;
};

// The accounts of one class ('A', 'L', 'Q', 'R', 'E') in ascending number, as the sections read them.
std::string StatementAccountsSql(char fivetypename);

}  // namespace ent::accounting
