#include "server/request_document.h"

namespace ent {

namespace {

// The number of element levels of the deepest element, counted without recursion.
int DepthOf(const pugi::xml_node& root) {
  int depth = 0, deepest = 0;
  pugi::xml_node n = root.first_child();
  while (n) {
    if (n.type() == pugi::node_element && depth + 1 > deepest) deepest = depth + 1;
    if (n.first_child()) {
      n = n.first_child();
      ++depth;
      continue;
    }
    while (n && !n.next_sibling() && n != root) {
      n = n.parent();
      --depth;
    }
    if (!n || n == root) break;
    n = n.next_sibling();
  }
  return deepest;
}

std::string TrimXmlSpace(const std::string& text) {
  const char* space = " \t\r\n";
  size_t b = text.find_first_not_of(space);
  if (b == std::string::npos) return "";
  return text.substr(b, text.find_last_not_of(space) - b + 1);
}

}  // namespace

std::string LoadRequestDocument(const std::string& text, pugi::xml_document& doc) {
  // The length is given so that a NUL inside the text is a parse error, not a silent end.
  pugi::xml_parse_result parsed =
      doc.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!parsed) {
    doc.reset();
    return "The request document is not XML: " + std::string(parsed.description()) + " at offset " +
           std::to_string(parsed.offset) + ".";
  }
  if (DepthOf(doc) > kMaxRequestDepth) {
    doc.reset();
    return "The request document is nested deeper than " + std::to_string(kMaxRequestDepth) + " elements.";
  }
  return "";
}

std::string ElementText(const pugi::xml_node& node) {
  std::string text;
  pugi::xml_node n = node.first_child();
  while (n) {
    if (n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata) text += n.value();
    if (n.type() == pugi::node_element && n.first_child()) {
      n = n.first_child();
      continue;
    }
    while (n && !n.next_sibling() && n != node) n = n.parent();
    if (!n || n == node) break;
    n = n.next_sibling();
  }
  return TrimXmlSpace(text);
}

}  // namespace ent
