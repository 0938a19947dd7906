// Small pieces the sales reports share: their free-standing tables, rounding the way the reports
// round, and reading the rowset of a query that must have run.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "common/currency.h"
#include "common/error.h"
#include "data/recordset.h"

namespace ent::sales {

// An open free-standing rowset with one result text column per name (50 characters wide or wider).
std::unique_ptr<Recordset> NewTable(std::initializer_list<const char*> columns);

// The value formatted with the pattern and read back: "##,###.00" keeps two decimals.
Currency RoundWith(Currency value, std::string_view pattern);

// Rounded to two decimals, halves to even.
double Round2(double value);

// A percentage of sales with two decimals, as the margins show it.
Currency MarginPercent(Currency sales, Currency cost);

// Without blanks at either end.
std::string Trim(std::string_view text);

// The query's rowset; a query that did not run fails with its own failure text.
Recordset& Required(const std::unique_ptr<Recordset>& rs, const std::string& failure);

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

}  // namespace ent::sales
