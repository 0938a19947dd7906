// Reading a service description (WSDL 1.1) the way a late-bound SOAP client does: the address of the
// first service's SOAP 1.1 port, and for an operation of its binding the soapAction, the request
// element with its namespace and parameter names in order, and the name of the result element.
// Only document/literal operations are understood (what ASP.NET and most stacks publish).
#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

namespace ent {

struct SoapOperation {
  std::string name;
  std::string soap_action;
  std::string request_namespace;  // namespace of the request element ("" for none)
  std::string request_element;
  bool qualified_parameters = false;  // parameter elements in request_namespace, or in none
  std::vector<std::string> parameters;
  std::string result_element;  // first element of the response, "" if the WSDL names none
};

class Wsdl {
 public:
  // Parses a WSDL text; `source` names it in error descriptions. Raises ent::Error for text that is
  // not XML or that describes no SOAP 1.1 port.
  static Wsdl Parse(const std::string& text, const std::string& source);

  const std::string& endpoint() const { return endpoint_; }
  const std::string& target_namespace() const { return target_namespace_; }

  // Raises ent::Error when the binding has no such operation or its messages cannot be resolved.
  SoapOperation Operation(const std::string& name) const;

 private:
  std::shared_ptr<pugi::xml_document> doc_;
  std::string source_;
  std::string endpoint_;
  std::string target_namespace_;
  pugi::xml_node binding_;
  pugi::xml_node port_type_;
};

}  // namespace ent
