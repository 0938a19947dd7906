#include "enterprise/cls_vehicle.h"

#include <exception>

#include "common/value_helpers.h"
#include "data/recordset.h"

namespace ent {

bool clsVehicle::populateMembers(int32_t lVehID) {
  VehID = std::to_string(lVehID);
  if (lVehID == 0) return false;
  try {
    auto rs = Recordset::OpenQuery(
        oDataBase,
        "SELECT year, make, model, plate, vin, unitno, engsize FROM vehicle WHERE vehid = " +
            std::to_string(lVehID),
        false);
    Year = SafeString(rs->Get("year"));
    Make = SafeString(rs->Get("make"));
    Model = SafeString(rs->Get("model"));
    Plate = SafeString(rs->Get("plate"));
    VIN = SafeString(rs->Get("vin"));
    Unit = SafeString(rs->Get("unitno"));
    Eng = SafeString(rs->Get("engsize"));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace ent
