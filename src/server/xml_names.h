// Element names in SOAP and WSDL documents, read with their namespaces. pugixml keeps a prefixed
// name as written; these resolve a prefix through the xmlns attributes in scope, so that any choice
// of prefixes reads the same.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace ent::xml {

struct QName {
  std::string ns;
  std::string local;
};

// The part of a name after its prefix.
std::string LocalName(std::string_view written);

// A prefixed name as written in `node`'s scope (an element's own name, or a QName attribute value).
QName Resolve(pugi::xml_node node, std::string_view written);

// The element's namespace and local name.
inline QName NameOf(pugi::xml_node element) {
  return Resolve(element, element.name());
}

// The first child element with that local name (any name when empty), whatever its prefix.
pugi::xml_node FirstElement(pugi::xml_node parent, std::string_view local = {});

}  // namespace ent::xml
