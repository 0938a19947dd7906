#include "enterprise/cls_ro.h"

#include "common/format.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"

namespace ent {

namespace {

const char kHeaderColumns[] =
    "Select cusid, vehid, woid, wotime, wodate, latestdate, defmechuserid, ponum, txtOdometer, "
    "screenTotPartsDisc, screenTotLabourDisc, screentotdiscount, screenparts, screenlabour, screensubtotal, "
    "screentx1, screentx2, insurencedeductible, screentotal, txtCustomerRequests, OPTIONSmessage, "
    "OPTIONSnotetocustomer, invoicetime, cmbServiceWriter, customershiptoid from WO where ";

const char kNormalParts[] =
    "select woparts.qty, woparts.hrs, woparts.description, woparts.partsea, woparts.totparts, "
    "woparts.labour, "
    "woparts.tx, woparts.total, woparts.c, woparts.ok, woparts.needed, woparts.skip, woparts.presetpkg as "
    "pkgpresetjobitem, partnum, presetheader as pkgpresetjobheader, miscid from woparts left join inventory "
    "on "
    "inventory.invid = woparts.invinvid WHERE invoiceid =";

const char kCreditParts[] =
    "select (woparts.qty * -1) as qty, (woparts.hrs * -1) as hrs, woparts.description, woparts.partsea, "
    "(woparts.totparts * -1) as totparts, (woparts.labour * -1) as labour, woparts.tx, (woparts.total * -1) "
    "as "
    "total, woparts.c, woparts.ok, woparts.needed, woparts.skip, woparts.presetpkg as pkgpresetjobitem, "
    "partnum, "
    "presetheader as pkgpresetjobheader, miscid from woparts left join inventory on inventory.invid = "
    "woparts.invinvid WHERE credid =";

const char kPaymentPattern[] = "###,##0.00";

bool HasRow(const Recordset& rs) {
  return !rs.IsBof() && !rs.IsEof();
}

std::string Text(const Recordset& rs, const char* column) {
  return SafeString(rs.Get(column));
}

double Number(const Recordset& rs, const char* column) {
  return ToNumeric(rs.Get(column)).ToDouble();
}

bool EqualsOne(const Recordset& rs, const char* column) {
  return Number(rs, column) == 1;
}

// "Tel.#: (555) 555-0100"; empty when there is neither an area code nor a number.
std::string PhoneLine(const std::string& label, const Variant& area, const Variant& number) {
  const std::string a = SafeString(area), n = SafeString(number);
  const std::string both = a + n;
  if (both.find_first_not_of(' ') == std::string::npos) return "";
  return label + a + ") " + n;
}

}  // namespace

void clsRO::populateMembers() {
  connection_string_ = ShopConnectionString();
  connection_ = OpenConnection(connection_string_);
  loadCompanyInfo();

  const std::string sql = std::string(kHeaderColumns) + (IsCredit() ? "credid = " : "invoiceid = ") +
                          std::to_string(invoiceNumber);
  auto header = Recordset::OpenQuery(connection_, sql, false);

  oCust = std::make_unique<clsCustomer>();
  oCust->oDataBase = connection_;
  oCust->populateMembers(header->Get("cusid").ToLong());
  oVeh = std::make_unique<clsVehicle>();
  oVeh->oDataBase = connection_;
  oVeh->populateMembers(header->Get("vehid").ToLong());

  if (HasRow(*header)) {
    invoiceDate = Text(*header, "latestdate");
    InvoiceMech = Text(*header, "defmechuserid");
    InvoicePO = Text(*header, "ponum");
    InvoiceServAdv = Text(*header, "cmbServiceWriter");
    InvoiceTime = header->Get("invoicetime").IsNull() ? "" : Text(*header, "invoicetime");
    PartDiscount = Number(*header, "screenTotPartsDisc");
    LabDiscount = Number(*header, "screenTotLabourDisc");
    TotDiscount = Number(*header, "screentotdiscount");
    subParts = Number(*header, "screenparts");
    subLab = Number(*header, "screenlabour");
    SubTot = Number(*header, "screensubtotal");
    TX1 = Number(*header, "screentx1");
    TX2 = Number(*header, "screentx2");
    Deduct = Number(*header, "insurencedeductible");
    Total = Number(*header, "screentotal");
    NoteToCust = "." + Text(*header, "OPTIONSnotetocustomer");
    if (!IsCredit()) {
      CustReqs = "." + Text(*header, "txtCustomerRequests");
      woDate = Text(*header, "wodate");
      woTime = Text(*header, "wotime");
      woID = ToNumeric(header->Get("woid")).ToLong();
    }
    oVeh->odo = Text(*header, "txtOdometer");
  }
  header.reset();

  if (!IsCredit()) loadPayments();
  connection_->Close();
}

void clsRO::loadCompanyInfo() {
  auto shop = Recordset::OpenQuery(
      connection_, "SELECT COMPpostal, COMPstreet, COMPcity, COMPaHtel, COMPhTel from GlobalVars2", false);
  if (HasRow(*shop)) {
    companyAddress = Text(*shop, "compstreet");
    companyCityProv = Text(*shop, "compcity");
    companyPostal = Text(*shop, "comppostal");
    companyBTel = PhoneLine("Tel.#: (", shop->Get("compahtel"), shop->Get("comphtel"));
  }

  auto settings = Recordset::OpenQuery(
      connection_,
      "select ChkPrintInvoiceTIme, INVOICEdefnote, InvDisclaimerFontSize, INVOICEchkdispdisclaimer, "
      "INVOICEdefDisclaim, chkInvPrintCustTX1num, chkInvPrintCustTX2num, WOreg, COMPftel, COMPaftel, "
      "COMPtx1name, "
      "COMPtx2name, wochkprintcustomerrequests, INVOICEchkdispcomments,  chkINVPrintPartNumbers FROM "
      "globalvars",
      false);
  if (HasRow(*settings)) {
    companyFTel = PhoneLine("Fax.#: (", settings->Get("compaftel"), settings->Get("compftel"));
    CompanyReg = Text(*settings, "WOReg");
    Tax1Name = Text(*settings, "COMPtx1name");
    Tax2Name = Text(*settings, "COMPtx2name");
    DisplayRequests = EqualsOne(*settings, "wochkprintcustomerrequests");
    DisplayDefMsg = EqualsOne(*settings, "INVOICEchkdispcomments");
    DisplayPartnumbers = EqualsOne(*settings, "chkINVPrintPartNumbers");
    DisplayCustTX1No = EqualsOne(*settings, "chkInvPrintCustTX1num");
    DisplayCustTX2No = EqualsOne(*settings, "chkInvPrintCustTX2num");
    DisplayDisc = EqualsOne(*settings, "INVOICEchkdispdisclaimer");
    DefMessage = "." + Text(*settings, "INVOICEdefnote");
    Disclaimer = Text(*settings, "INVOICEdefDisclaim");
    DisclaimerFontSize = Number(*settings, "InvDisclaimerFontSize");
    DisplayInvoiceTime = Number(*settings, "ChkPrintInvoiceTIme") != 0;
  }

  auto machine = Recordset::OpenQuery(connection_, "select companyname from machine", false);
  if (HasRow(*machine)) companyName = Text(*machine, "companyName");
}

void clsRO::loadPayments() {
  Payments.emplace();
  auto rs = Recordset::OpenQuery(
      connection_, "SELECT trandate, payment, type FROM wopaymentadv where id = " + std::to_string(woID),
      false);
  for (; HasRow(*rs); rs->MoveNext()) {
    const std::string date = Text(*rs, "trandate");
    const std::string amount = Format(ToNumeric(rs->Get("Payment")), kPaymentPattern);
    const std::string type = Text(*rs, "Type");
    if (type == "A/R") {
      Payments->push_back(date + "   On Account   " + amount + "   ** UNPAID BALANCE ** ");
    } else {
      // Payment types carry a two-letter prefix ("cdCASH").
      const std::string shown = type.size() > 2 ? type.substr(2, 15) : "";
      Payments->push_back(date + "   " + shown + "   " + amount);
    }
  }
}

std::unique_ptr<Recordset> clsRO::RSParts() const {
  const std::string sql = std::string(IsCredit() ? kCreditParts : kNormalParts) +
                          std::to_string(invoiceNumber) + " order by linenum";
  std::shared_ptr<Connection> connection = OpenConnection(connection_string_);
  auto rs = Recordset::OpenQuery(connection, sql, false);
  rs->Detach();
  connection->Close();
  return rs;
}

}  // namespace ent
