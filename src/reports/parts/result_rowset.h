// Small pieces the parts, inventory and technician reports share.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "data/recordset.h"

namespace ent::parts {

// A free-standing rowset with one result text column per name (50 characters wide or wider), opened and empty.
std::unique_ptr<Recordset> NewResultRowset(const std::vector<std::string>& columns);

// The rowset a query gave. When it gave none, the query's failure text goes into `status` and Error
// carrying it is raised.
std::unique_ptr<Recordset> Required(std::unique_ptr<Recordset> rowset, const std::string& failure,
                                    std::string& status, const char* source);

// The text without leading and trailing blanks.
std::string TrimBlanks(std::string_view text);

}  // namespace ent::parts
