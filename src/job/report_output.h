// What a report operation hands back: a rowset, a finished document (the invoice), or nothing.
#pragma once

#include <memory>
#include <pugixml.hpp>

#include "data/recordset.h"

namespace ent {

struct ReportOutput {
  std::unique_ptr<Recordset> rowset;
  std::unique_ptr<pugi::xml_document> document;

  bool empty() const { return !rowset && !document; }
};

}  // namespace ent
