// The server's interface for the host over HTTP: each POST /requests carries one host call (see
// host_call.h) and runs it on a worker thread exactly as the host's own call would run, answering
// {"KillFlag": true} once the result has been posted. GET /health tells whether it can work (503 when
// not), its version and how busy it is; GET /metrics gives the counters in the Prometheus text format.
// Calls beyond the workers wait in a bounded queue; past it they are refused with 503 and
// Retry-After. Stopping lets calls in flight finish and post. Connections have threads of their own,
// so that clients that send slowly cannot keep /health or calls from being answered; the secret is
// checked as soon as the headers are in.
#pragma once

#include <memory>
#include <string>

#include "server/soap_client.h"

namespace ent {

struct HostServerOptions {
  int workers = 4;            // calls that run at once
  int queue = 16;             // calls that may wait for a worker
  std::string token_dir;      // the database-in-use token ("" for the default)
  SoapOptions soap;           // timeouts towards the head office
  std::string secret;         // when set, every call must send "Authorization: Bearer <secret>"
  bool allow_remote = false;  // listening beyond loopback needs this and a secret
  bool log_calls = false;     // one line per call, and per answer other than success, on stderr
  int connections = 128;      // connections read at once, besides those of running and waiting calls
  int request_seconds = 20;   // a call must arrive whole within this time, or its connection is closed
};

class HostServer {
 public:
  explicit HostServer(HostServerOptions options);
  ~HostServer();  // stops as Stop does
  HostServer(const HostServer&) = delete;
  HostServer& operator=(const HostServer&) = delete;

  // Listens on host:port (0 picks a free port) and serves on threads of its own. Returns the port.
  // Raises ent::Error for a non-loopback address without allow_remote and a secret, or a bind failure.
  int Start(const std::string& host, int port);
  // Stops taking calls; calls in flight finish and post. Returns once they have.
  void Stop();
  // Blocks until the server has stopped.
  void Wait();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ent
