#include "reports/sales/report_figures.h"

#include <cmath>

#include "common/format.h"
#include "common/variant.h"

namespace ent::sales {

Currency RoundWith(Currency value, std::string_view pattern) {
  return Variant(Format(Variant(value), pattern)).ToCurrency();
}

double Round2(double value) {
  return std::nearbyint(value * 100.0) / 100.0;
}

Currency MarginPercent(Currency sales, Currency cost) {
  const double s = sales.ToDouble();
  return Currency::FromDouble(Round2((s - cost.ToDouble()) / s * 100.0));
}

}  // namespace ent::sales
