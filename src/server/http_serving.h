// Running a cpp-httplib server on a thread of its own: the one way the program's HTTP services start.
#pragma once

#include <httplib.h>

#include <string>
#include <thread>

namespace ent {

// Binds host:port (0 picks a free port), starts serving on `thread` and returns once the server
// runs, so that a Stop right afterwards takes effect. Returns the port. Raises ent::Error when the
// address cannot be bound.
int StartServing(httplib::Server& server, const std::string& host, int port, std::thread& thread);

}  // namespace ent
