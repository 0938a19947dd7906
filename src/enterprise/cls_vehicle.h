// The vehicle of an invoice, read through the invoice record's connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "data/connection.h"

namespace ent {

class clsVehicle {
 public:
  // The open connection to read through; set before populateMembers.
  std::shared_ptr<Connection> oDataBase;

  std::string VehID;  // the vehicle number asked for, in decimal digits
  std::string Year;
  std::string Make;
  std::string Model;
  std::string Plate;
  std::string odo;  // the odometer reading, set from the invoice
  std::string VIN;
  std::string Unit;
  std::string Eng;  // engine size

  // Reads the vehicle. True when its row was read; false for vehicle 0 (no query) and on any
  // failure, with the members read so far kept.
  bool populateMembers(int32_t lVehID);
};

}  // namespace ent
