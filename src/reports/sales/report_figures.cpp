#include "reports/sales/report_figures.h"

#include <cmath>

#include "common/error.h"
#include "common/format.h"
#include "common/variant.h"
#include "data/field.h"

namespace ent::sales {

std::unique_ptr<Recordset> NewTable(std::initializer_list<const char*> columns) {
  auto rs = std::make_unique<Recordset>();
  for (const char* name : columns) rs->AppendField(ResultTextField(name));
  rs->Open();
  return rs;
}

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

std::string Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

Recordset& Required(const std::unique_ptr<Recordset>& rs, const std::string& failure) {
  if (!rs) throw Error(err::kObjectRequired, failure);
  return *rs;
}

}  // namespace ent::sales
