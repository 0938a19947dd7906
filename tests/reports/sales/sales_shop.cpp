#include "reports/sales/sales_shop.h"

namespace ent::test {

void SalesShop::WorkOrder(int woid, int invoiceid, int credid, const std::string& date,
                          std::map<std::string, std::string> more) {
  documents_[woid] = {invoiceid, credid};
  more["woid"] = std::to_string(woid);
  more["invoiceid"] = std::to_string(invoiceid);
  more["credid"] = std::to_string(credid);
  more["latestdate"] = "'" + date + "'";
  Insert("wo", more);
}

void SalesShop::Line(int woid, std::map<std::string, std::string> values) {
  values["wopartsid"] = std::to_string(next_line_++);
  values["woid"] = std::to_string(woid);
  values.emplace("invoiceid", std::to_string(documents_[woid].first));
  values.emplace("credid", std::to_string(documents_[woid].second));
  values.emplace("skip", "'No'");
  Insert("woparts", values);
}

void SalesShop::SalesClass(const std::string& name) {
  Insert("SalesClassInventoryIndexPricing",
         {{"pricingid", std::to_string(next_class_++)}, {"salesclass", name}});
}

}  // namespace ent::test
