// An empty shop database with the shop schema for the parts, inventory and technician reports, the
// report engine connected to it, and a compact way to insert rows and read results.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "data/cls_rs.h"
#include "support/test_db.h"

namespace ent::test {

class PartsShop {
 public:
  PartsShop();
  // Inserts rows given as SQL tuples for the named columns ("1, 'A-1', 12.5" for "id, part, cost");
  // columns not named that cannot be null get 0 ("No" for woparts.skip).
  void Insert(const std::string& table, const std::string& columns, const std::vector<std::string>& rows);
  void Exec(const std::string& sql) { db_.Exec(sql); }
  clsRS& engine() { return engine_; }

 private:
  TestDb db_;
  clsRS engine_;
};

// The rows of a result as texts (null as ""), first row first, column by column.
std::vector<std::vector<std::string>> Cells(Recordset& rs);
// One column of a result, first row first.
std::vector<std::string> ColumnOf(Recordset& rs, const std::string& name);

}  // namespace ent::test
