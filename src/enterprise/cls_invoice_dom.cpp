#include "enterprise/cls_invoice_dom.h"

#include <exception>
#include <initializer_list>

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

struct Attribute {
  const char* name = nullptr;  // none when null
  std::string value;
};

// A child element of a section, with at most one attribute.
struct Child {
  const char* name;
  std::string text;
  Attribute attribute{};
};

// Appends a section to the root, then its children in the order given, each attribute right after
// its element.
void addSection(pugi::xml_document& doc, const char* name, std::initializer_list<Child> children,
                const Attribute& attribute = {}) {
  pugi::xml_node section = addElement(doc, kRoot, name, "");
  if (attribute.name) addAttribute(section, attribute.name, attribute.value);
  const std::string path = kRoot + "/" + name;
  for (const Child& child : children) {
    pugi::xml_node element = addElement(doc, path, child.name, child.text);
    if (child.attribute.name) addAttribute(element, child.attribute.name, child.attribute.value);
  }
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
  addSection(doc, "CompanyInfo",
             {{"Name", ro.companyName},
              {"Address", ro.companyAddress},
              {"CityProv", ro.companyCityProv},
              {"PostalCode", ro.companyPostal},
              {"TelNo", ro.companyBTel},
              {"FaxNo", ro.companyFTel}});
}

void clsInvoiceDOM::addCustomerVehicleAdmin(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  const clsCustomer& cust = *ro.oCust;
  addSection(doc, "Customer",
             {{"Company", cust.Company},
              {"FName", cust.FName},
              {"LName", cust.LName},
              {"Street", cust.Street},
              {"City", cust.Address},
              {"Prov", cust.Address2},
              {"Postal", cust.Postal},
              {"hTel", cust.TelNo},
              {"bTel", cust.BusNo}});

  const clsVehicle& veh = *ro.oVeh;
  addSection(doc, "Vehicle",
             {{"Year", veh.Year},
              {"Make", veh.Make},
              {"Model", veh.Model},
              {"Plate", veh.Plate},
              {"Odo", veh.odo},
              {"VIN", veh.VIN},
              {"Unit", veh.Unit},
              {"Engine", veh.Eng}},
             {"PartsWo", "False"});

  addSection(doc, "InvoiceAdmin",
             {{"RONum", std::to_string(ro.invoiceNumber)},
              {"Date", ro.invoiceDate},
              {"InvTime", ro.InvoiceTime, {"Display", Flag(ro.DisplayInvoiceTime)}},
              {"PO", ro.InvoicePO},
              {"Reg", ro.CompanyReg},
              {"Mech", ro.InvoiceMech},
              {"ServAdv", ro.InvoiceServAdv},
              {"WOID", std::to_string(ro.woID)},
              {"WODate", ro.woDate},
              {"WOTime", ro.woTime}});
}

void clsInvoiceDOM::addItems(pugi::xml_document& doc) {
  pugi::xml_node items = addElement(doc, kRoot, "Items", "");
  addAttribute(items, "dispOKNEEDSKIP", "False");
  addAttribute(items, "dispPartNum", Flag(record_->DisplayPartnumbers));

  // Attribute, column, and whether the value is written as a number.
  static const struct {
    const char* attribute;
    const char* column;
    bool number;
  } kItemAttributes[] = {
      {"Qty", "qty", true},
      {"Hrs", "hrs", true},
      {"Desc", "description", false},
      {"PartNum", "partnum", false},
      {"PartsEa", "partsea", true},
      {"PartsTot", "totparts", true},
      {"Lab", "labour", true},
      {"TX", "tx", false},
      {"Total", "total", true},
      {"C", "c", false},
      {"OK", "ok", false},
      {"Need", "needed", false},
      {"Skip", "skip", false},
      {"PresetPkgItem", "pkgpresetjobitem", false},
      {"PresetHeader", "pkgpresetjobheader", false},
      {"MiscID", "miscid", false},
  };

  std::unique_ptr<Recordset> parts = record_->RSParts();
  if (parts->IsBof() || parts->IsEof()) return;
  const std::string section = kRoot + "/Items";
  for (; !parts->IsEof(); parts->MoveNext()) {
    pugi::xml_node item = addElement(doc, section, "item", "");
    for (const auto& a : kItemAttributes) {
      const Variant& value = parts->Get(a.column);
      addAttribute(item, a.attribute, a.number ? NumberOf(value) : SafeString(value));
    }
  }
}

void clsInvoiceDOM::addTotals(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  addSection(doc, "Totals",
             {{"PartDiscount", Number(ro.PartDiscount)},
              {"LabDiscount", Number(ro.LabDiscount)},
              {"TotDiscount", Number(ro.TotDiscount)},
              {"SubParts", Number(ro.subParts)},
              {"SubLab", Number(ro.subLab)},
              {"SubTot", Number(ro.SubTot)},
              {"TX1", Number(ro.TX1), {"name", ro.Tax1Name}},
              {"TX2", Number(ro.TX2), {"name", ro.Tax2Name}},
              {"Deductible", Number(ro.Deduct)},
              {"Total", Number(ro.Total)}});
}

void clsInvoiceDOM::addMessages(pugi::xml_document& doc) {
  const clsRO& ro = *record_;
  addSection(doc, "Messages",
             {{"CustTX1Num", ro.oCust->tax1No, {"Display", Flag(ro.DisplayCustTX1No)}},
              {"CustTX2Num", ro.oCust->tax2No, {"Display", Flag(ro.DisplayCustTX2No)}},
              {"CustReq", ro.CustReqs, {"Display", Flag(ro.DisplayRequests)}},
              {"NoteToCust", ro.NoteToCust, {"Display", "true"}},
              {"DefMsg", ro.DefMessage, {"Display", Flag(ro.DisplayDefMsg)}},
              {"PaidByMsg", "Paid By:...", {"Display", "true"}}});
  const std::string section = kRoot + "/Messages";
  if (ro.Payments) {
    for (const std::string& line : *ro.Payments) addElement(doc, section + "/PaidByMsg", "PayDetails", line);
  }
  pugi::xml_node disclaimer = addElement(doc, section, "Disclaimer", ro.Disclaimer);
  addAttribute(disclaimer, "Display", Flag(ro.DisplayDisc));
  addAttribute(disclaimer, "FontSize", Number(ro.DisclaimerFontSize));
}

}  // namespace ent
