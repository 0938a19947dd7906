#include "reports/accounting/ledger_sql.h"

#include "common/error.h"

namespace ent::accounting {

Recordset& Rows(const std::unique_ptr<Recordset>& rs) {
  if (!rs) throw Error(91, "Object variable or With block variable not set");
  return *rs;
}

Currency SumOf(clsRS& engine, const std::string& sql, const char* column, std::string& status) {
  std::unique_ptr<Recordset> rs = engine.runQuery(sql, status, false);
  return clsRS::toCurrency(Rows(rs).Get(column));
}

std::string TrimBlanks(const std::string& s) {
  const size_t first = s.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

}  // namespace ent::accounting
