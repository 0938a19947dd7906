// What a report operation hands back: a rowset, a finished document (the invoice), a postable
// object, or nothing.
#pragma once

#include <memory>

#include <pugixml.hpp>

#include "data/recordset.h"

namespace ent {

class ISendable;

struct ReportOutput {
  std::unique_ptr<Recordset> rowset;
  std::unique_ptr<pugi::xml_document> document;
  std::shared_ptr<ISendable> sendable;
  // A value that is none of the above (a report that returned something that is no object).
  bool unknown_kind = false;

  bool empty() const { return !rowset && !document && !sendable && !unknown_kind; }
};

}  // namespace ent
