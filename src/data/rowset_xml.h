// Writes a rowset in ADO's persisted-rowset XML format, byte-shaped as ADO writes it: no declaration,
// the root `xml` with the s/dt/rs/z namespaces, s:Schema with one s:AttributeType per field, rs:data
// with one z:row per row (null columns left out), pending inserts inside rs:insert, CR LF line ends,
// tab indentation, long start tags wrapped. Written as a stream.
#pragma once

#include <iosfwd>
#include <vector>

#include "common/variant.h"
#include "data/field.h"

namespace ent {

struct XmlRow {
  const std::vector<Variant>* values;
  bool pending_insert;
};

void WriteRowsetXml(std::ostream& out, const std::vector<Field>& fields, const std::vector<XmlRow>& rows);

}  // namespace ent
