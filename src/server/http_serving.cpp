#include "server/http_serving.h"

#include <atomic>
#include <chrono>
#include <memory>

#include "common/error.h"

namespace ent {

int StartServing(httplib::Server& server, const std::string& host, int port, std::thread& thread) {
  // Idle keep-alive connections hold a stop back for at most this long.
  server.set_keep_alive_timeout(2);
  const int bound = port == 0 ? server.bind_to_any_port(host) : (server.bind_to_port(host, port) ? port : -1);
  if (bound <= 0)
    throw Error(err::kServiceFailure, "cannot listen on " + host + ":" + std::to_string(port) + ".");
  auto ended = std::make_shared<std::atomic<bool>>(false);
  thread = std::thread([&server, ended] {
    server.listen_after_bind();
    *ended = true;
  });
  while (!server.is_running() && !*ended) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return bound;
}

}  // namespace ent
