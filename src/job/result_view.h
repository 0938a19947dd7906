// A result document read back into tables that a person can look at: a rowset gives one table with
// its columns and rows; any other document (the RepairOrder of one invoice) gives one table per
// section. The display markers of the cells are read here, once, for every renderer:
//   "[b]" at the start of a row's first cell: a bold line (headings and totals);
//   "[sp" n "]" at the start of a cell: the cell is indented by n positions;
//   a column whose name begins with "hide_": its heading is not shown.
// Markers may follow each other ("[sp3][b]Total") and are removed from the shown text.
// Documents come from elsewhere (a head office, a stored post): reading is bounded in size, depth
// and rows, and nothing in a document is ever interpreted beyond the markers.
#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

namespace ent {

struct ViewLimits {
  size_t max_bytes = size_t{256} << 20;       // a larger file is refused
  size_t max_depth = 32;                      // element nesting; deeper documents are refused
  size_t max_rows = static_cast<size_t>(-1);  // rows kept per table; the rest are only counted
};

struct ViewCell {
  std::string text;  // without its markers
  int indent = 0;    // from "[sp n]"
  bool bold = false;
};

struct ViewRow {
  std::vector<ViewCell> cells;  // one per column
  bool bold = false;            // the first cell began with "[b]"
};

struct ViewColumn {
  std::string name;  // the column's real name
  bool heading_hidden = false;
};

struct ViewTable {
  std::string caption;  // empty for a rowset; the section (and its attributes) otherwise
  std::vector<ViewColumn> columns;
  std::vector<ViewRow> rows;
  size_t total_rows = 0;  // rows in the document, including those past max_rows
};

struct ResultView {
  std::string kind;  // "rowset", or the root element's name ("RepairOrder")
  std::vector<std::pair<std::string, std::string>> attributes;  // of the root, for other documents
  std::vector<ViewTable> tables;
};

// Reads a parsed document. Raises ent::Error for a document nested deeper than the limit or one
// that is neither a rowset nor an element tree.
ResultView ReadResultView(const pugi::xml_document& doc, const ViewLimits& limits = {});

// Reads the document in `path`. Raises ent::Error (with the path) for a missing or unreadable
// file, one over the size limit, and text that is not XML.
ResultView LoadResultView(const std::string& path, const ViewLimits& limits = {});

// The markers of one cell's text.
ViewCell ReadCell(const std::string& text);

}  // namespace ent
