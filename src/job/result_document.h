// The result document of a report as the head office receives it: its XML text, written once (the
// rows into a spool file, as results can be far larger than memory, the head before them in memory),
// with its length and number of rows. A rowset is written by the persisted-rowset writer with rows
// added in memory directly under rs:data; its head follows its rows, since a rowset read as it goes
// knows its text columns' widths only at its end. A finished document (the invoice) is saved as it is.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "common/spool_file.h"
#include "data/recordset.h"

namespace ent {

class ResultDocument {
 public:
  // Writes the rowset's visible rows (a forward-only rowset: from its current row to its end).
  static std::shared_ptr<ResultDocument> FromRowset(Recordset& rs);
  // Saves a finished document: no declaration, the layout it holds.
  static std::shared_ptr<ResultDocument> FromXml(const pugi::xml_document& doc);

  uint64_t bytes() const { return head_.size() + file_.size(); }
  // z:row elements written; 0 for a finished document.
  uint64_t rows() const { return rows_; }
  // Up to `size` bytes from `offset`; 0 at the end.
  size_t Read(uint64_t offset, char* out, size_t size) const;
  // The whole text; for documents known to be small.
  std::string Text() const { return head_ + file_.ReadAll(); }
  // Copies the text to `out` in pieces. Raises Error when `out` fails.
  void CopyTo(std::ostream& out) const;

 private:
  std::string head_;  // the text before file_'s
  SpoolFile file_;
  uint64_t rows_ = 0;
};

}  // namespace ent
