// A rowset's cells as texts, for comparing results in tests.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "data/recordset.h"

namespace ent::test {

// Every row from the first, each cell as text (null as the empty text); nothing for a missing or
// empty rowset.
std::vector<std::vector<std::string>> Cells(Recordset* rs);

// A static copy of a rowset's rows from its current one, to be read as often as a test needs (a
// forward-only rowset can be read once).
std::unique_ptr<Recordset> Held(std::unique_ptr<Recordset> rs);

// One column, first row first (null as "<null>").
std::vector<std::string> Column(Recordset& rs, const std::string& name);

// The first row whose first cell is `label`, as column name -> text (null as "<null>"); empty when
// there is none.
std::map<std::string, std::string> RowOf(Recordset& rs, const std::string& label);

}  // namespace ent::test
