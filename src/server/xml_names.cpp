#include "server/xml_names.h"

namespace ent::xml {

std::string LocalName(std::string_view written) {
  size_t colon = written.find(':');
  return std::string(colon == std::string_view::npos ? written : written.substr(colon + 1));
}

QName Resolve(pugi::xml_node node, std::string_view written) {
  size_t colon = written.find(':');
  const std::string attribute = colon == std::string_view::npos
                                    ? std::string("xmlns")
                                    : "xmlns:" + std::string(written.substr(0, colon));
  QName name{"", LocalName(written)};
  for (pugi::xml_node n = node; n; n = n.parent()) {
    if (pugi::xml_attribute a = n.attribute(attribute.c_str())) {
      name.ns = a.value();
      break;
    }
  }
  return name;
}

pugi::xml_node FirstElement(pugi::xml_node parent, std::string_view local) {
  for (pugi::xml_node c = parent.first_child(); c; c = c.next_sibling()) {
    if (c.type() == pugi::node_element && (local.empty() || LocalName(c.name()) == local)) return c;
  }
  return {};
}

}  // namespace ent::xml
