// Rounding the way the sales reports round.
#pragma once

#include <string_view>

#include "common/currency.h"

namespace ent::sales {

// The value formatted with the pattern and read back: "##,###.00" keeps two decimals.
Currency RoundWith(Currency value, std::string_view pattern);

// Rounded to two decimals, halves to even.
double Round2(double value);

// A percentage of sales with two decimals, as the margins show it.
Currency MarginPercent(Currency sales, Currency cost);

}  // namespace ent::sales
