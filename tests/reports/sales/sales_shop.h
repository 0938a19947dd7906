// A small hand-made shop for the sales report tests: the shop schema in a fresh SQLite file, rows
// added with only the columns a test cares about (other required columns get 0 or the empty text),
// and a report engine connected to it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "data/cls_rs.h"
#include "support/test_db.h"

namespace ent::test {

class SalesShop {
 public:
  SalesShop();
  // Values are SQL literals: "12.5", "'OIL'", "'3/5/2024'" (dates as the reports write them).
  void Insert(const std::string& table, const std::map<std::string, std::string>& values);
  // A work order dated `date`; an invoice when invoiceid is not 0, a credit invoice when credid is not 0.
  void WorkOrder(int woid, int invoiceid, int credid, const std::string& date,
                 std::map<std::string, std::string> more = {});
  // A line of work order `woid`, carrying its invoice and credit numbers.
  void Line(int woid, std::map<std::string, std::string> values);
  void SalesClass(const std::string& name);

  clsRS& engine() { return engine_; }
  const TestDb& db() const { return db_; }

 private:
  TestDb db_;
  std::map<int, std::pair<int, int>> documents_;  // woid -> invoiceid, credid
  int next_line_ = 1;
  int next_class_ = 1;
  clsRS engine_;
};

// The values of one column, from the first row to the last (null as "<null>").
std::vector<std::string> Column(Recordset& rs, const std::string& name);
// The row whose first column is `label`, as column name -> text; empty when there is none.
std::map<std::string, std::string> RowOf(Recordset& rs, const std::string& label);

}  // namespace ent::test
