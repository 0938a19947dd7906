#include "server/host_call.h"

#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "server/cls_process_request.h"

namespace ent {

HostCall ParseHostCall(const std::string& json) {
  nlohmann::json object;
  try {
    object = nlohmann::json::parse(json);
  } catch (const nlohmann::json::parse_error& e) {
    throw std::invalid_argument(std::string("the body is not valid JSON: ") + e.what());
  }
  if (!object.is_object()) throw std::invalid_argument("the body must be a JSON object");
  HostCall call;
  const std::map<std::string, std::string*> texts = {{"ApplicationPath", &call.ApplicationPath},
                                                     {"HostAddress", &call.HostAddress},
                                                     {"HostPort", &call.HostPort},
                                                     {"GUID", &call.GUID},
                                                     {"Passcode", &call.Passcode},
                                                     {"ClientID", &call.ClientID},
                                                     {"SessionID", &call.SessionID},
                                                     {"SizeErr", &call.SizeErr},
                                                     {"XMLPath", &call.XMLPath},
                                                     {"Request", &call.Request}};
  for (const auto& [name, value] : object.items()) {
    if (auto text = texts.find(name); text != texts.end()) {
      if (!value.is_string()) throw std::invalid_argument("the field " + name + " must be a string");
      *text->second = value.get<std::string>();
    } else if (name == "bDebug" || name == "DBSize") {
      if (!value.is_boolean()) throw std::invalid_argument("the field " + name + " must be true or false");
      (name == "bDebug" ? call.bDebug : call.DBSize) = value.get<bool>();
      if (name == "DBSize") call.has_DBSize = true;
    } else {
      throw std::invalid_argument("unknown field " + name);
    }
  }
  return call;
}

void ApplyHostCall(const HostCall& call, clsProcessRequest& request) {
  request.set_ApplicationPath(call.ApplicationPath);
  request.HostAddress = call.HostAddress;
  request.HostPort = call.HostPort;
  request.GUID = call.GUID;
  request.Passcode = call.Passcode;
  request.ClientID = call.ClientID;
  request.SessionID = call.SessionID;
  request.set_bDebug(call.bDebug);
  if (call.has_DBSize) request.set_DBSize(call.DBSize);
  request.set_SizeErr(call.SizeErr);
  request.set_XMLPath(call.XMLPath);
  request.setDomDocument(call.Request);
}

}  // namespace ent
