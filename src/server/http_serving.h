// Running a cpp-httplib server on a thread of its own: the one way the program's HTTP services start.
#pragma once

#include <httplib.h>

#include <chrono>
#include <string>
#include <thread>

namespace ent {

// Binds host:port (0 picks a free port), starts serving on `thread` and returns once the server
// runs, so that a Stop right afterwards takes effect. Returns the port. Raises ent::Error when the
// address cannot be bound, and when another server already listens on the port (the port is never
// shared with it).
int StartServing(httplib::Server& server, const std::string& host, int port, std::thread& thread);

// A server that takes one request per connection and reads it whole within a deadline: a client that
// trickles its bytes (or sends nothing) holds a connection thread for no longer than that, and its
// connection is closed. Handlers run as in httplib::Server; their time does not count.
class DeadlineServer : public httplib::Server {
 public:
  void set_request_deadline(std::chrono::milliseconds deadline) { deadline_ = deadline; }

 private:
  bool process_and_close_socket(socket_t sock) override;

  std::chrono::milliseconds deadline_{std::chrono::seconds(20)};
};

}  // namespace ent
