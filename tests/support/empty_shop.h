// An empty shop database for one test: the shop schema in a fresh SQLite file, this thread's shop
// connection pointed at it and the report engine connected, with inserts that name only the
// columns a test cares about.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "reports/cls_rs.h"
#include "support/test_db.h"

namespace ent::test {

class EmptyShop {
 public:
  EmptyShop();

  // Inserts rows given as SQL tuples for the named columns ("1, 'A-1', 12.5" for "id, part, cost").
  // Required columns left out get the empty text when they hold text, "No" for skip, 0 otherwise.
  void Insert(const std::string& table, const std::string& columns, const std::vector<std::string>& rows);
  // One row as column -> SQL literal ("12.5", "'OIL'", "'3/5/2024'").
  void Insert(const std::string& table, const std::map<std::string, std::string>& values);

  void Exec(const std::string& sql) const { db_.Exec(sql); }
  clsRS& engine() { return engine_; }
  const TestDb& db() const { return db_; }

 private:
  TestDb db_;
  clsRS engine_;
};

}  // namespace ent::test
