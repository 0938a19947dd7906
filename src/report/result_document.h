// The result document of a report: a rowset saved as persisted-rowset XML into an XML document
// (pugixml stands in for the reference's DOM), reshaped so that rows added in memory stand directly
// under rs:data, and turned back into the text that is posted.
#pragma once

#include <memory>
#include <string>

#include <pugixml.hpp>

#include "data/recordset.h"

namespace ent {

// Saves every visible row of the rowset into a new document. The layout of the saved text (line ends,
// indentation) is kept in the document, so an unchanged document gives back the same layout.
std::unique_ptr<pugi::xml_document> SaveRowsetToDocument(const Recordset& rs);

// Moves the z:row elements of "//rs:data/rs:insert" to the end of rs:data and removes rs:insert. A
// document whose rs:data does not start with rs:insert is left unchanged. On failure returns false
// with the failure's description in `failure`.
bool FlattenRowsetDocument(pugi::xml_document& doc, std::string& failure);

// The document's XML text: no declaration, single-quoted attributes, the layout it holds.
std::string DocumentXmlText(const pugi::xml_document& doc);

}  // namespace ent
