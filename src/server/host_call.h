// One call of the host over HTTP: the properties it sets on clsProcessRequest and the request
// document, read from a JSON object such as
//   {"ApplicationPath": "Provider=SQLite;Data Source=shop.db", "HostAddress": "10.0.0.5",
//    "HostPort": "80", "GUID": "...", "Passcode": "...", "ClientID": "7", "SessionID": "S1",
//    "bDebug": true, "DBSize": true, "Request": "<report>...</report>"}
// Every field is optional; texts must be JSON strings and the switches JSON booleans.
#pragma once

#include <string>

namespace ent {

class clsProcessRequest;

struct HostCall {
  std::string ApplicationPath, HostAddress, HostPort, GUID, Passcode, ClientID, SessionID, SizeErr, XMLPath;
  bool bDebug = false;
  bool DBSize = false;
  bool has_DBSize = false;  // DBSize is write-only: set only when the host sent it
  std::string Request;
};

// Raises std::invalid_argument with a message naming the fault for text that is not a JSON object,
// an unknown field or a field of the wrong type.
HostCall ParseHostCall(const std::string& json);

// Sets the call's properties on a new request object and hands it the request document. Runs on the
// thread that will call prepareDBReport, since some properties are per-thread values.
void ApplyHostCall(const HostCall& call, clsProcessRequest& request);

}  // namespace ent
