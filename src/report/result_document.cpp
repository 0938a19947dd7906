#include "report/result_document.h"

#include <sstream>
#include <vector>

#include "common/error.h"

namespace ent {

namespace {

constexpr unsigned kParseOptions = (pugi::parse_default | pugi::parse_ws_pcdata) & ~pugi::parse_eol;
constexpr unsigned kSaveOptions =
    pugi::format_raw | pugi::format_no_declaration | pugi::format_attribute_single_quote;

bool IsBlankText(const pugi::xml_node& n) {
  if (n.type() != pugi::node_pcdata) return false;
  for (const char* p = n.value(); *p; ++p)
    if (*p != ' ' && *p != '\t' && *p != '\r' && *p != '\n') return false;
  return true;
}

}  // namespace

std::unique_ptr<pugi::xml_document> SaveRowsetToDocument(const Recordset& rs) {
  const std::string text = rs.SaveToString();
  auto doc = std::make_unique<pugi::xml_document>();
  pugi::xml_parse_result parsed = doc->load_buffer(text.data(), text.size(), kParseOptions, pugi::encoding_utf8);
  if (!parsed)
    throw Error(err::kDatabaseError, std::string("The saved rowset is not well-formed XML: ") + parsed.description(),
                "rowset");
  return doc;
}

bool FlattenRowsetDocument(pugi::xml_document& doc, std::string& failure) {
  try {
    pugi::xml_node data = doc.select_node("//rs:data").node();
    if (!data) throw Error(err::kObjectRequired, "Object required: the document has no rs:data element.");
    // Blank text between elements is layout, not content: the first child that counts is an element.
    pugi::xml_node first = data.first_child();
    while (first && IsBlankText(first)) first = first.next_sibling();
    if (!first || std::string_view(first.name()) != "rs:insert") return true;

    pugi::xml_node root = doc.first_child();
    pugi::xml_node target = root.first_child();
    while (target && target.type() != pugi::node_element) target = target.next_sibling();
    if (target) target = target.next_sibling();
    while (target && target.type() != pugi::node_element) target = target.next_sibling();
    if (!target) throw Error(err::kObjectRequired, "Object required: the document's root has no second element.");

    // The text before </rs:data> stays last; moved rows get the indentation of plain rows.
    pugi::xml_node closing = target.last_child();
    if (closing && !IsBlankText(closing)) closing = pugi::xml_node();
    std::vector<pugi::xml_node> rows;
    for (const pugi::xpath_node& x : doc.select_nodes("//rs:data/rs:insert/z:row")) rows.push_back(x.node());
    for (pugi::xml_node row : rows) {
      pugi::xml_node moved = closing ? target.insert_move_before(row, closing) : target.append_move(row);
      target.insert_child_before(pugi::node_pcdata, moved).set_value("\r\n\t");
    }
    pugi::xml_node insert = doc.select_node("//rs:data/rs:insert").node();
    if (insert) {
      pugi::xml_node before = insert.previous_sibling();
      target.remove_child(insert);
      if (before && IsBlankText(before)) target.remove_child(before);
    }
    return true;
  } catch (const Error& e) {
    failure = e.description();
    return false;
  } catch (const std::exception& e) {
    failure = e.what();
    return false;
  }
}

std::string DocumentXmlText(const pugi::xml_document& doc) {
  std::ostringstream out;
  doc.save(out, "", kSaveOptions, pugi::encoding_utf8);
  return out.str();
}

}  // namespace ent
