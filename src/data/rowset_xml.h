// Writes a rowset in ADO's persisted-rowset XML format, byte-shaped as ADO writes it: no declaration,
// the root `xml` with the s/dt/rs/z namespaces, s:Schema with one s:AttributeType per field, rs:data
// with one z:row per row (null columns left out), pending inserts inside rs:insert, CR LF line ends,
// tab indentation, long start tags wrapped. Written as a stream.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

#include "common/variant.h"
#include "data/field.h"

namespace ent {

struct XmlRow {
  const std::vector<Variant>* values;
  bool pending_insert;
};

void WriteRowsetXml(std::ostream& out, const std::vector<Field>& fields, const std::vector<XmlRow>& rows);

// The head of the document: everything before its first row (the schema included).
void WriteRowsetHead(std::ostream& out, const std::vector<Field>& fields);

// The same document, row by row, for rows that are not all at hand: the head and the schema are
// written at construction, Finish closes the document. Consecutive pending inserts share one
// rs:insert. Output is handed to `out` in pieces of some tens of kilobytes.
class RowsetXmlWriter {
 public:
  // Without `write_head`, the document starts at its rows: its head is written on its own with
  // WriteRowsetHead, once the fields' widths are known.
  RowsetXmlWriter(std::ostream& out, const std::vector<Field>& fields, bool write_head = true);
  ~RowsetXmlWriter();
  RowsetXmlWriter(const RowsetXmlWriter&) = delete;
  RowsetXmlWriter& operator=(const RowsetXmlWriter&) = delete;

  void Row(const std::vector<Variant>& values, bool pending_insert = false);
  // Raises Error 3004 when `out` failed.
  void Finish();
  uint64_t rows() const { return rows_; }

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  uint64_t rows_ = 0;
};

}  // namespace ent
