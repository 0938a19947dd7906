// Placeholder until the drivers land.
#include "data/connection.h"

#include "common/error.h"

namespace ent {

std::shared_ptr<Connection> OpenConnection(const std::string&) { throw Error(err::kDatabaseError, "no driver"); }

}  // namespace ent
