// One invoice (repair order) as the invoice document prints it: the shop's identity and print
// settings, the header's money totals and messages, the payment lines, the customer and vehicle,
// and the line items. A normal invoice is found by its invoice number, a credit invoice
// (InvoiceState exactly "Cr") by its credit number.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/connection.h"
#include "data/recordset.h"
#include "enterprise/cls_customer.h"
#include "enterprise/cls_vehicle.h"

namespace ent {

class clsRO {
 public:
  // What to load; set before populateMembers.
  int32_t invoiceNumber = 0;
  std::string InvoiceState;

  // Opens a connection from the thread's shop connection string, loads the shop settings, the
  // header, customer, vehicle and (normal invoices) the payments, and closes the connection again.
  // Failures (no such invoice, a query or connection failure) raise Error; an unknown customer or
  // vehicle only leaves their members empty.
  void populateMembers();

  // The line items in line-number order, queried anew on a connection of its own on every call and
  // handed back detached. Credit invoices list quantity, hours and amounts negated. Raises Error.
  std::unique_ptr<Recordset> RSParts() const;

  bool IsCredit() const { return InvoiceState == "Cr"; }

  std::unique_ptr<clsCustomer> oCust;
  std::unique_ptr<clsVehicle> oVeh;

  // The header. Texts are the columns' standard texts; messages start with ".".
  std::string invoiceDate;
  std::string InvoiceMech;
  std::string InvoicePO;
  std::string InvoiceServAdv;
  std::string InvoiceTime;
  double PartDiscount = 0;
  double LabDiscount = 0;
  double TotDiscount = 0;
  double subParts = 0;
  double subLab = 0;
  double SubTot = 0;
  double TX1 = 0;
  double TX2 = 0;
  double Deduct = 0;  // insurance deductible
  double Total = 0;
  std::string NoteToCust;
  std::string CustReqs;  // empty for a credit invoice
  std::string DefMessage;
  int32_t woID = 0;    // 0 for a credit invoice
  std::string woDate;  // empty for a credit invoice
  std::string woTime;  // empty for a credit invoice
  // "date   type   amount" lines; none for a credit invoice.
  std::optional<std::vector<std::string>> Payments;

  // The shop's identity and print settings.
  std::string companyName;
  std::string companyAddress;
  std::string companyCityProv;
  std::string companyPostal;
  std::string companyBTel;  // "Tel.#: (area) number", or empty
  std::string companyFTel;  // "Fax.#: (area) number", or empty
  std::string CompanyReg;
  std::string Tax1Name;
  std::string Tax2Name;
  std::string Disclaimer;
  double DisclaimerFontSize = 0;
  bool DisplayInvoiceTime = false;
  bool DisplayRequests = false;
  bool DisplayDefMsg = false;
  bool DisplayCustTX1No = false;
  bool DisplayCustTX2No = false;
  bool DisplayDisc = false;
  bool DisplayPartnumbers = false;

 private:
  void loadCompanyInfo();
  void loadPayments();

  std::string connection_string_;
  std::shared_ptr<Connection> connection_;
};

}  // namespace ent
