// The customer of an invoice, read through the invoice record's connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "data/connection.h"

namespace ent {

class clsCustomer {
 public:
  // The open connection to read through; set before populateMembers.
  std::shared_ptr<Connection> oDataBase;

  int32_t CusID = 0;
  std::string Company;
  std::string FName;
  std::string LName;
  std::string Street;
  std::string Address;   // the city
  std::string Address2;  // the province
  std::string Postal;
  std::string TelNo;  // home area code, "-", home number
  std::string BusNo;  // business area code, "-", business number
  std::string tax1No;
  std::string tax2No;

  // Reads the customer. True when its row was read; false on any failure (an unknown customer
  // included), with the members read so far kept.
  bool populateMembers(int32_t lCusID);
};

}  // namespace ent
