#include "enterprise/cls_invoice_dom.h"

#include <exception>

#include "common/error.h"
#include "common/number_format.h"
#include "common/value_helpers.h"

namespace ent {

namespace {

const std::string kRoot = "/RepairOrder";

// Appends an element with the text under the node the path selects and returns it.
pugi::xml_node addElement(pugi::xml_document& doc, const std::string& parentPath, const char* name,
                          const std::string& text) {
  pugi::xml_node parent = doc.select_node(parentPath.c_str()).node();
  if (!parent) throw Error(err::kObjectRequired, "Object required", "clsInvoiceDOM");
  pugi::xml_node element = parent.append_child(name);
  if (!text.empty()) element.text().set(text.c_str());
  return element;
}

// Sets an attribute, replacing one of the same name.
void addAttribute(pugi::xml_node element, const char* name, const std::string& value) {
  pugi::xml_attribute attribute = element.attribute(name);
  if (!attribute) attribute = element.append_attribute(name);
  attribute.set_value(value.c_str());
}

std::string Flag(bool value) {
  return value ? "True" : "False";
}

std::string Number(double value) {
  return DecimalText15(value);
}

std::string NumberOf(const Variant& value) {
  return DecimalText15(ToNumeric(value).ToDouble());
}

}  // namespace

std::string NumberedFailureText(const std::exception& failure) {
  if (const auto* e = dynamic_cast<const Error*>(&failure))
    return std::to_string(e->number()) + " - " + e->description();
  return std::to_string(err::kInvalidProcedureCall) + " - " + failure.what();
}

std::unique_ptr<pugi::xml_document> clsInvoiceDOM::createDom() {
  err_string_.clear();
  try {
    record_ = std::make_unique<clsRO>();
    record_->invoiceNumber = InvoiceID;
    record_->InvoiceState = InvoiceState;
    record_->populateMembers();
    return buildDocument();
  } catch (const std::exception& e) {
    err_string_ = NumberedFailureText(e);
  }
  return nullptr;
}

std::unique_ptr<pugi::xml_document> clsInvoiceDOM::buildDocument() {
  auto doc = std::make_unique<pugi::xml_document>();
  pugi::xml_node root = doc->append_child("RepairOrder");
  addAttribute(root, "InvoiceType", record_->InvoiceState);
  addCompanyInfo(*doc);
  addCustomerVehicleAdmin(*doc);
  addItems(*doc);
  addTotals(*doc);
  addMessages(*doc);
  return doc;
}

void clsInvoiceDOM::addCompanyInfo(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  addElement(doc, kRoot, "CompanyInfo", "");
  const std::string section = kRoot + "/CompanyInfo";
  addElement(doc, section, "Name", ro.companyName);
  addElement(doc, section, "Address", ro.companyAddress);
  addElement(doc, section, "CityProv", ro.companyCityProv);
  addElement(doc, section, "PostalCode", ro.companyPostal);
  addElement(doc, section, "TelNo", ro.companyBTel);
  addElement(doc, section, "FaxNo", ro.companyFTel);
}

void clsInvoiceDOM::addCustomerVehicleAdmin(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  const clsCustomer& cust = *ro.oCust;
  addElement(doc, kRoot, "Customer", "");
  std::string section = kRoot + "/Customer";
  addElement(doc, section, "Company", cust.Company);
  addElement(doc, section, "FName", cust.FName);
  addElement(doc, section, "LName", cust.LName);
  addElement(doc, section, "Street", cust.Street);
  addElement(doc, section, "City", cust.Address);
  addElement(doc, section, "Prov", cust.Address2);
  addElement(doc, section, "Postal", cust.Postal);
  addElement(doc, section, "hTel", cust.TelNo);
  addElement(doc, section, "bTel", cust.BusNo);

  const clsVehicle& veh = *ro.oVeh;
  pugi::xml_node vehicle = addElement(doc, kRoot, "Vehicle", "");
  addAttribute(vehicle, "PartsWo", "False");
  section = kRoot + "/Vehicle";
  addElement(doc, section, "Year", veh.Year);
  addElement(doc, section, "Make", veh.Make);
  addElement(doc, section, "Model", veh.Model);
  addElement(doc, section, "Plate", veh.Plate);
  addElement(doc, section, "Odo", veh.odo);
  addElement(doc, section, "VIN", veh.VIN);
  addElement(doc, section, "Unit", veh.Unit);
  addElement(doc, section, "Engine", veh.Eng);

  addElement(doc, kRoot, "InvoiceAdmin", "");
  section = kRoot + "/InvoiceAdmin";
  addElement(doc, section, "RONum", std::to_string(ro.invoiceNumber));
  addElement(doc, section, "Date", ro.invoiceDate);
  addAttribute(addElement(doc, section, "InvTime", ro.InvoiceTime), "Display", Flag(ro.DisplayInvoiceTime));
  addElement(doc, section, "PO", ro.InvoicePO);
  addElement(doc, section, "Reg", ro.CompanyReg);
  addElement(doc, section, "Mech", ro.InvoiceMech);
  addElement(doc, section, "ServAdv", ro.InvoiceServAdv);
  addElement(doc, section, "WOID", std::to_string(ro.woID));
  addElement(doc, section, "WODate", ro.woDate);
  addElement(doc, section, "WOTime", ro.woTime);
}

void clsInvoiceDOM::addItems(pugi::xml_document& doc) {
  pugi::xml_node items = addElement(doc, kRoot, "Items", "");
  addAttribute(items, "dispOKNEEDSKIP", "False");
  addAttribute(items, "dispPartNum", Flag(record_->DisplayPartnumbers));

  std::unique_ptr<Recordset> parts = record_->RSParts();
  if (parts->IsBof() || parts->IsEof()) return;
  const std::string section = kRoot + "/Items";
  for (; !parts->IsEof(); parts->MoveNext()) {
    pugi::xml_node item = addElement(doc, section, "item", "");
    const Recordset& row = *parts;
    addAttribute(item, "Qty", NumberOf(row.Get("qty")));
    addAttribute(item, "Hrs", NumberOf(row.Get("hrs")));
    addAttribute(item, "Desc", SafeString(row.Get("description")));
    addAttribute(item, "PartNum", SafeString(row.Get("partnum")));
    addAttribute(item, "PartsEa", NumberOf(row.Get("partsea")));
    addAttribute(item, "PartsTot", NumberOf(row.Get("totparts")));
    addAttribute(item, "Lab", NumberOf(row.Get("labour")));
    addAttribute(item, "TX", SafeString(row.Get("tx")));
    addAttribute(item, "Total", NumberOf(row.Get("total")));
    addAttribute(item, "C", SafeString(row.Get("c")));
    addAttribute(item, "OK", SafeString(row.Get("ok")));
    addAttribute(item, "Need", SafeString(row.Get("needed")));
    addAttribute(item, "Skip", SafeString(row.Get("skip")));
    addAttribute(item, "PresetPkgItem", SafeString(row.Get("pkgpresetjobitem")));
    addAttribute(item, "PresetHeader", SafeString(row.Get("pkgpresetjobheader")));
    addAttribute(item, "MiscID", SafeString(row.Get("miscid")));
  }
}

void clsInvoiceDOM::addTotals(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  addElement(doc, kRoot, "Totals", "");
  const std::string section = kRoot + "/Totals";
  addElement(doc, section, "PartDiscount", Number(ro.PartDiscount));
  addElement(doc, section, "LabDiscount", Number(ro.LabDiscount));
  addElement(doc, section, "TotDiscount", Number(ro.TotDiscount));
  addElement(doc, section, "SubParts", Number(ro.subParts));
  addElement(doc, section, "SubLab", Number(ro.subLab));
  addElement(doc, section, "SubTot", Number(ro.SubTot));
  addAttribute(addElement(doc, section, "TX1", Number(ro.TX1)), "name", ro.Tax1Name);
  addAttribute(addElement(doc, section, "TX2", Number(ro.TX2)), "name", ro.Tax2Name);
  addElement(doc, section, "Deductible", Number(ro.Deduct));
  addElement(doc, section, "Total", Number(ro.Total));
}

void clsInvoiceDOM::addMessages(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  addElement(doc, kRoot, "Messages", "");
  const std::string section = kRoot + "/Messages";
  addAttribute(addElement(doc, section, "CustTX1Num", ro.oCust->tax1No), "Display",
               Flag(ro.DisplayCustTX1No));
  addAttribute(addElement(doc, section, "CustTX2Num", ro.oCust->tax2No), "Display",
               Flag(ro.DisplayCustTX2No));
  addAttribute(addElement(doc, section, "CustReq", ro.CustReqs), "Display", Flag(ro.DisplayRequests));
  addAttribute(addElement(doc, section, "NoteToCust", ro.NoteToCust), "Display", "true");
  addAttribute(addElement(doc, section, "DefMsg", ro.DefMessage), "Display", Flag(ro.DisplayDefMsg));
  addAttribute(addElement(doc, section, "PaidByMsg", "Paid By:..."), "Display", "true");
  if (ro.Payments) {
    for (const std::string& line : *ro.Payments) addElement(doc, section + "/PaidByMsg", "PayDetails", line);
  }
  pugi::xml_node disclaimer = addElement(doc, section, "Disclaimer", ro.Disclaimer);
  addAttribute(disclaimer, "Display", Flag(ro.DisplayDisc));
  addAttribute(disclaimer, "FontSize", Number(ro.DisclaimerFontSize));
}

}  // namespace ent
