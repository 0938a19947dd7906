#include "enterprise/cls_customer.h"

#include <exception>

#include "common/value_helpers.h"
#include "data/recordset.h"

namespace ent {

bool clsCustomer::populateMembers(int32_t lCusID) {
  CusID = lCusID;
  try {
    auto rs =
        Recordset::OpenQuery(oDataBase,
                             "SELECT tx1exempt, tx2exempt, company, fname, lname, street, city, province, "
                             "postal, abtel, btel, ahtel, htel FROM customer WHERE cusid = " +
                                 std::to_string(lCusID),
                             false);
    Company = SafeString(rs->Get("company"));
    LName = SafeString(rs->Get("lname"));
    FName = SafeString(rs->Get("fname"));
    Address = SafeString(rs->Get("city"));
    Address2 = SafeString(rs->Get("province"));
    Postal = SafeString(rs->Get("postal"));
    Street = SafeString(rs->Get("street"));
    TelNo = SafeString(rs->Get("ahtel")) + "-" + SafeString(rs->Get("htel"));
    BusNo = SafeString(rs->Get("abtel")) + "-" + SafeString(rs->Get("btel"));
    tax1No = SafeString(rs->Get("tx1exempt"));
    tax2No = SafeString(rs->Get("tx2exempt"));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace ent
