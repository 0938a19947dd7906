// Builds the RepairOrder document of one invoice: CompanyInfo, Customer, Vehicle, InvoiceAdmin,
// Items, Totals and Messages, in that order, from a clsRO record.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "enterprise/cls_ro.h"

namespace ent {

class clsInvoiceDOM {
 public:
  int32_t InvoiceID = 0;
  std::string InvoiceState;  // "Cr" for a credit invoice

  // Loads the invoice and builds its document. On any failure returns nothing and leaves the
  // failure's number, " - " and description in errString.
  std::unique_ptr<pugi::xml_document> createDom();

  // Empty after a createDom that succeeded.
  const std::string& errString() const { return err_string_; }

 private:
  std::unique_ptr<pugi::xml_document> buildDocument();
  void addCompanyInfo(pugi::xml_document& doc);
  void addCustomerVehicleAdmin(pugi::xml_document& doc);
  void addItems(pugi::xml_document& doc);
  void addTotals(pugi::xml_document& doc);
  void addMessages(pugi::xml_document& doc);

  std::unique_ptr<clsRO> record_;
  std::string err_string_;
};

// The failure's number, " - " and its description (a failure that is no Error counts as an invalid
// procedure call).
std::string NumberedFailureText(const std::exception& failure);

}  // namespace ent
