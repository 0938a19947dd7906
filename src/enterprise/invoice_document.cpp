// The invoice look-up (ENTINVOICE): one invoice as a finished RepairOrder document.
#include <exception>
#include <string>

#include "enterprise/cls_invoice_dom.h"
#include "reports/cls_rs.h"

namespace ent {

std::unique_ptr<pugi::xml_document> clsRS::generateEnterpriseInvoice(int32_t lInvoiceId,
                                                                     const std::string& sInvState,
                                                                     std::string& strErr) {
  // Open work orders carry invoice number 0: without a number the look-up would assemble one.
  if (lInvoiceId <= 0) {
    strErr = "Invoice look-up failed: parameter p0 (lInvoiceId) is " + std::to_string(lInvoiceId) +
             "; expected the number of an invoice or credit invoice, above 0.";
    return nullptr;
  }
  try {
    clsInvoiceDOM builder;
    builder.InvoiceID = lInvoiceId;
    builder.InvoiceState = sInvState;
    std::unique_ptr<pugi::xml_document> document = builder.createDom();
    if (!builder.errString().empty()) {
      strErr = builder.errString();
      return nullptr;
    }
    strErr = "0";
    return document;
  } catch (const std::exception& e) {
    strErr = NumberedFailureText(e);
  }
  return nullptr;
}

}  // namespace ent
