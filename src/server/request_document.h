// Loading and reading the request document a head office sends. Its text is untrusted: loading
// refuses text that is not XML (naming the parser's reason and where it stopped) and documents nested
// deeper than any request needs, and element texts are read without recursion.
#pragma once

#include <pugixml.hpp>
#include <string>

namespace ent {

// No request needs more; a document nested deeper is refused before anything walks it.
inline constexpr int kMaxRequestDepth = 256;

// Loads `text` into `doc`. Returns the empty text, or the reason the document cannot be read, in which
// case `doc` is left empty.
std::string LoadRequestDocument(const std::string& text, pugi::xml_document& doc);

// The text content of an element and its descendants, in document order, with the white space around
// it removed (a value on a line of its own reads as the value).
std::string ElementText(const pugi::xml_node& node);

}  // namespace ent
