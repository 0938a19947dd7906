#include "server/wsdl.h"

#include <string_view>

#include "common/error.h"
#include "server/xml_names.h"

namespace ent {

namespace {

constexpr std::string_view kWsdlNs = "http://schemas.xmlsoap.org/wsdl/";
constexpr std::string_view kSoap11Ns = "http://schemas.xmlsoap.org/wsdl/soap/";
constexpr std::string_view kSchemaNs = "http://www.w3.org/2001/XMLSchema";

bool Is(pugi::xml_node node, std::string_view ns, std::string_view local) {
  if (node.type() != pugi::node_element) return false;
  xml::QName name = xml::NameOf(node);
  return name.ns == ns && name.local == local;
}

// The first child element with that namespace and local name (and, when given, that name attribute).
pugi::xml_node Child(pugi::xml_node parent, std::string_view ns, std::string_view local,
                     std::string_view name_attribute = {}) {
  for (pugi::xml_node c = parent.first_child(); c; c = c.next_sibling()) {
    if (Is(c, ns, local) && (name_attribute.empty() || name_attribute == c.attribute("name").value()))
      return c;
  }
  return {};
}

}  // namespace

Wsdl Wsdl::Parse(const std::string& text, const std::string& source) {
  Wsdl wsdl;
  wsdl.source_ = source;
  wsdl.doc_ = std::make_shared<pugi::xml_document>();
  pugi::xml_parse_result parsed = wsdl.doc_->load_string(text.c_str());
  if (!parsed)
    throw Error(err::kServiceFailure, "The WSDL at " + source +
                                          " is not an XML document: " + parsed.description() + " at offset " +
                                          std::to_string(parsed.offset) + ".");
  pugi::xml_node definitions = wsdl.doc_->document_element();
  if (!Is(definitions, kWsdlNs, "definitions"))
    throw Error(err::kServiceFailure, "The document at " + source + " is not a WSDL service description.");
  wsdl.target_namespace_ = definitions.attribute("targetNamespace").value();

  // The first service's first port with a SOAP 1.1 address.
  pugi::xml_node service = Child(definitions, kWsdlNs, "service");
  for (pugi::xml_node port = service.first_child(); port && !wsdl.binding_; port = port.next_sibling()) {
    pugi::xml_node address = Child(port, kSoap11Ns, "address");
    if (!Is(port, kWsdlNs, "port") || !address) continue;
    wsdl.endpoint_ = address.attribute("location").value();
    wsdl.binding_ = Child(definitions, kWsdlNs, "binding", xml::LocalName(port.attribute("binding").value()));
  }
  if (!wsdl.binding_ || wsdl.endpoint_.empty())
    throw Error(err::kServiceFailure, "The WSDL at " + source + " describes no SOAP 1.1 service port.");
  wsdl.port_type_ =
      Child(definitions, kWsdlNs, "portType", xml::LocalName(wsdl.binding_.attribute("type").value()));
  return wsdl;
}

SoapOperation Wsdl::Operation(const std::string& name) const {
  auto fail = [&](const std::string& why) {
    return Error(err::kServiceFailure, "The operation " + name + " of the WSDL at " + source_ + " " + why);
  };
  pugi::xml_node bound = Child(binding_, kWsdlNs, "operation", name);
  pugi::xml_node abstract = Child(port_type_, kWsdlNs, "operation", name);
  if (!bound || !abstract) throw fail("is not offered by the service.");
  SoapOperation op;
  op.name = name;
  op.soap_action = Child(bound, kSoap11Ns, "operation").attribute("soapAction").value();

  pugi::xml_node definitions = doc_->document_element();
  // The schema element that carries a message (document/literal: one part naming an element).
  auto message_element = [&](const char* direction) -> std::pair<xml::QName, pugi::xml_node> {
    pugi::xml_node io = Child(abstract, kWsdlNs, direction);
    pugi::xml_node message =
        Child(definitions, kWsdlNs, "message", xml::LocalName(io.attribute("message").value()));
    pugi::xml_node part = Child(message, kWsdlNs, "part");
    pugi::xml_attribute element = part.attribute("element");
    if (!element) throw fail(std::string("has no document/literal ") + direction + " message.");
    xml::QName qname = xml::Resolve(part, element.value());
    for (pugi::xml_node types = Child(definitions, kWsdlNs, "types"), schema = types.first_child(); schema;
         schema = schema.next_sibling()) {
      if (!Is(schema, kSchemaNs, "schema") || qname.ns != schema.attribute("targetNamespace").value())
        continue;
      if (pugi::xml_node e = Child(schema, kSchemaNs, "element", qname.local)) return {qname, e};
    }
    throw fail("refers to the element " + qname.local + ", which its schema does not declare.");
  };
  // The element names of an element's sequence, inline or through a named complex type.
  auto sequence_of = [&](pugi::xml_node element) {
    pugi::xml_node type = Child(element, kSchemaNs, "complexType");
    if (!type && element.attribute("type")) {
      xml::QName type_name = xml::Resolve(element, element.attribute("type").value());
      type = Child(element.parent(), kSchemaNs, "complexType", type_name.local);
    }
    std::vector<std::string> names;
    for (pugi::xml_node e = Child(type, kSchemaNs, "sequence").first_child(); e; e = e.next_sibling()) {
      if (!Is(e, kSchemaNs, "element")) continue;
      names.push_back(e.attribute("name") ? e.attribute("name").value()
                                          : xml::LocalName(e.attribute("ref").value()));
    }
    return names;
  };

  auto [request, request_node] = message_element("input");
  op.request_namespace = request.ns;
  op.request_element = request.local;
  op.qualified_parameters =
      std::string_view(request_node.parent().attribute("elementFormDefault").value()) == "qualified";
  op.parameters = sequence_of(request_node);
  if (Child(abstract, kWsdlNs, "output")) {
    std::vector<std::string> results = sequence_of(message_element("output").second);
    if (!results.empty()) op.result_element = results.front();
  }
  return op;
}

}  // namespace ent
