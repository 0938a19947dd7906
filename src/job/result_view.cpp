#include "job/result_view.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>

#include "common/error.h"

namespace ent {

namespace {

const char kHiddenPrefix[] = "hide_";
const int kMaxIndent = 200;  // an absurd "[sp99999]" is shown as this

// Elements nested deeper than the limit, walked without recursion so that a hostile document
// cannot exhaust the stack.
bool DeeperThan(const pugi::xml_node& root, size_t limit) {
  size_t depth = 0;
  pugi::xml_node node = root;
  for (;;) {
    if (node.first_child()) {
      node = node.first_child();
      if (++depth > limit) return true;
      continue;
    }
    while (node != root && !node.next_sibling()) {
      node = node.parent();
      --depth;
    }
    if (node == root) return false;
    node = node.next_sibling();
  }
}

void AddRow(ViewTable& table, ViewRow row, const ViewLimits& limits) {
  ++table.total_rows;
  if (table.rows.size() < limits.max_rows) table.rows.push_back(std::move(row));
}

// A persisted rowset: the columns from s:Schema (their real names in rs:name where the written name
// had to be replaced), the rows from rs:data, including any still inside rs:insert.
ViewTable ReadRowset(const pugi::xml_node& root, const ViewLimits& limits) {
  ViewTable table;
  std::vector<std::string> keys;  // the attribute that holds each column in a z:row
  pugi::xml_node type = root.child("s:Schema").child("s:ElementType");
  for (pugi::xml_node column : type.children("s:AttributeType")) {
    const std::string key = column.attribute("name").value();
    pugi::xml_attribute real = column.attribute("rs:name");
    ViewColumn view{real ? real.value() : key, false};
    view.heading_hidden = view.name.rfind(kHiddenPrefix, 0) == 0;
    table.columns.push_back(std::move(view));
    keys.push_back(key);
  }
  auto read_row = [&](const pugi::xml_node& z_row) {
    ViewRow row;
    for (size_t c = 0; c < keys.size(); ++c)
      row.cells.push_back(ReadCell(z_row.attribute(keys[c].c_str()).value()));
    row.bold = !row.cells.empty() && row.cells[0].bold;
    AddRow(table, std::move(row), limits);
  };
  for (pugi::xml_node child : root.child("rs:data").children()) {
    if (std::strcmp(child.name(), "z:row") == 0) read_row(child);
    if (std::strcmp(child.name(), "rs:insert") == 0)
      for (pugi::xml_node z_row : child.children("z:row")) read_row(z_row);
  }
  return table;
}

std::string AttributesText(const pugi::xml_node& node) {
  std::string text;
  for (pugi::xml_attribute a : node.attributes())
    text += std::string(text.empty() ? "" : ", ") + a.name() + "=" + a.value();
  return text;
}

// A section whose children carry their values in attributes (the invoice's items): one row per
// child, the columns in order of first appearance.
bool IsRecordList(const pugi::xml_node& section) {
  bool any = false;
  for (pugi::xml_node child : section.children()) {
    if (child.type() != pugi::node_element) continue;
    if (!child.first_attribute() || child.first_child()) return false;
    any = true;
  }
  return any;
}

ViewTable ReadRecordList(const pugi::xml_node& section, const ViewLimits& limits) {
  ViewTable table;
  for (pugi::xml_node child : section.children()) {
    if (child.type() != pugi::node_element) continue;
    for (pugi::xml_attribute a : child.attributes()) {
      bool known = false;
      for (const ViewColumn& c : table.columns) known = known || c.name == a.name();
      if (!known) table.columns.push_back({a.name(), false});
    }
  }
  for (pugi::xml_node child : section.children()) {
    if (child.type() != pugi::node_element) continue;
    ViewRow row;
    for (const ViewColumn& c : table.columns)
      row.cells.push_back(ReadCell(child.attribute(c.name.c_str()).value()));
    row.bold = !row.cells.empty() && row.cells[0].bold;
    AddRow(table, std::move(row), limits);
  }
  return table;
}

// Any other section: one line per child element (its name, its text, its attributes); elements
// inside a child (the payment lines of a message) follow it, indented.
ViewTable ReadFields(const pugi::xml_node& section, const ViewLimits& limits) {
  ViewTable table;
  table.columns = {{"hide_Field", true}, {"hide_Value", true}, {"hide_Attributes", true}};
  auto add = [&](const pugi::xml_node& element, int indent) {
    ViewRow row;
    row.cells = {ViewCell{element.name(), indent, false}, ReadCell(element.child_value()),
                 ViewCell{AttributesText(element), 0, false}};
    AddRow(table, std::move(row), limits);
  };
  for (pugi::xml_node child : section.children()) {
    if (child.type() != pugi::node_element) continue;
    add(child, 0);
    for (pugi::xml_node inner : child.children())
      if (inner.type() == pugi::node_element) add(inner, 3);
  }
  return table;
}

}  // namespace

ViewCell ReadCell(const std::string& text) {
  ViewCell cell;
  size_t at = 0;
  for (;;) {
    if (text.compare(at, 3, "[b]") == 0) {
      cell.bold = true;
      at += 3;
      continue;
    }
    if (text.compare(at, 3, "[sp") == 0) {
      size_t end = at + 3;
      while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
      if (end > at + 3 && end < text.size() && text[end] == ']') {
        const std::string digits = text.substr(at + 3, end - at - 3);
        cell.indent = digits.size() > 3 ? kMaxIndent : std::min(kMaxIndent, std::stoi(digits));
        at = end + 1;
        continue;
      }
    }
    break;
  }
  cell.text = text.substr(at);
  return cell;
}

ResultView ReadResultView(const pugi::xml_document& doc, const ViewLimits& limits) {
  pugi::xml_node root = doc.document_element();
  if (!root) throw Error(err::kInvalidProcedureCall, "the document has no root element");
  if (DeeperThan(doc, limits.max_depth))
    throw Error(err::kInvalidProcedureCall,
                "the document is nested deeper than " + std::to_string(limits.max_depth) + " elements");
  ResultView view;
  if (std::strcmp(root.name(), "xml") == 0 && root.child("s:Schema")) {
    view.kind = "rowset";
    view.tables.push_back(ReadRowset(root, limits));
    return view;
  }
  view.kind = root.name();
  for (pugi::xml_attribute a : root.attributes()) view.attributes.emplace_back(a.name(), a.value());
  for (pugi::xml_node section : root.children()) {
    if (section.type() != pugi::node_element) continue;
    ViewTable table = IsRecordList(section) ? ReadRecordList(section, limits) : ReadFields(section, limits);
    const std::string attributes = AttributesText(section);
    table.caption = std::string(section.name()) + (attributes.empty() ? "" : " (" + attributes + ")");
    view.tables.push_back(std::move(table));
  }
  return view;
}

ResultView LoadResultView(const std::string& path, const ViewLimits& limits) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw Error(err::kInvalidProcedureCall, "cannot read " + path);
  in.seekg(0, std::ios::end);
  const auto size = static_cast<size_t>(std::max<std::streamoff>(0, in.tellg()));
  if (size > limits.max_bytes)
    throw Error(err::kInvalidProcedureCall,
                path + " is larger than " + std::to_string(limits.max_bytes) + " bytes; it is not read");
  in.seekg(0);
  std::string text(size, '\0');  // a file that grows meanwhile is read only up to its size checked here
  in.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<size_t>(in.gcount()));
  pugi::xml_document doc;
  pugi::xml_parse_result parsed =
      doc.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!parsed)
    throw Error(err::kInvalidProcedureCall, path + " is not an XML document: " + parsed.description() +
                                                " at byte " + std::to_string(parsed.offset));
  return ReadResultView(doc, limits);
}

}  // namespace ent
