#include "reports/accounting/ledger_sql.h"

#include "reports/rowset_helpers.h"

namespace ent::accounting {

Currency SumOf(clsRS& engine, const std::string& sql, const char* column, std::string& status) {
  std::unique_ptr<Recordset> rs = engine.runQuery(sql, status, false);
  return clsRS::toCurrency(Required(rs).Get(column));
}

}  // namespace ent::accounting
