// Short answers from queries run through the server's own connections, for the data tests.
#pragma once

#include <string>

#include "data/connection.h"
#include "support/test_db.h"

namespace ent::test {

// The first value a query returns on `connection`, as text.
std::string FirstValue(Connection& connection, const std::string& sql);
// The ids of the rows of `table` that `where` lets through, in order and run together ("124"),
// read as a request's text on a new connection to `db`.
std::string IdsWhere(const TestDb& db, const std::string& table, const std::string& where);

}  // namespace ent::test
