// A small hand-made shop for the sales report tests: work orders, their lines and sales classes on
// an empty shop database.
#pragma once

#include <map>
#include <string>

#include "support/empty_shop.h"
#include "support/rowset_text.h"

namespace ent::test {

class SalesShop : public EmptyShop {
 public:
  // A work order dated `date` (as the reports write dates); an invoice when invoiceid is not 0, a
  // credit invoice when credid is not 0.
  void WorkOrder(int woid, int invoiceid, int credid, const std::string& date,
                 std::map<std::string, std::string> more = {});
  // A line of work order `woid`, carrying its invoice and credit numbers.
  void Line(int woid, std::map<std::string, std::string> values);
  void SalesClass(const std::string& name);

 private:
  std::map<int, std::pair<int, int>> documents_;  // woid -> invoiceid, credid
  int next_line_ = 1;
  int next_class_ = 1;
};

}  // namespace ent::test
