#include "server/http_serving.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>

#include "common/error.h"
#include "server/socket_io.h"

namespace ent {

namespace {

using Clock = std::chrono::steady_clock;

void Address(int fd, bool peer, std::string& ip, int& port) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  const int rc = peer ? getpeername(fd, reinterpret_cast<sockaddr*>(&address), &length)
                      : getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  if (rc != 0) return;
  char text[INET6_ADDRSTRLEN] = {};
  if (address.ss_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
    inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
    port = ntohs(v4->sin_port);
  } else if (address.ss_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
    inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
    port = ntohs(v6->sin6_port);
  }
  ip = text;
}

// A connection whose reads all end at one deadline (the whole request must have arrived by then);
// writes wait at most a few seconds each for a client that does not read.
class DeadlineStream : public httplib::Stream {
 public:
  DeadlineStream(int fd, Clock::time_point read_end) : fd_(fd), read_end_(read_end) {}

  bool is_readable() const override { return WaitForSocket(fd_, POLLIN, read_end_); }
  bool is_writable() const override { return WaitForSocket(fd_, POLLOUT, Clock::now() + kWriteWait); }

  ssize_t read(char* ptr, size_t size) override {
    if (received_.empty()) {
      const ssize_t got = ReceiveBefore(fd_, received_.space(), received_.capacity(), read_end_);
      if (got <= 0) return got;
      received_.Received(static_cast<size_t>(got));
    }
    return static_cast<ssize_t>(received_.Take(ptr, size));
  }

  ssize_t write(const char* ptr, size_t size) override {
    if (!is_writable()) return -1;
    return send(fd_, ptr, size, MSG_NOSIGNAL);
  }

  void get_remote_ip_and_port(std::string& ip, int& port) const override { Address(fd_, true, ip, port); }
  void get_local_ip_and_port(std::string& ip, int& port) const override { Address(fd_, false, ip, port); }
  socket_t socket() const override { return fd_; }

 private:
  static constexpr std::chrono::seconds kWriteWait{5};
  int fd_;
  Clock::time_point read_end_;
  ReceivedBytes received_;
};

// Listening sockets reuse a port left in TIME_WAIT, but never share one that a server listens on
// (httplib's default also sets SO_REUSEPORT, which lets a second server take half the connections).
void ListeningSocketOptions(socket_t sock) {
  int yes = 1;
  setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

}  // namespace

bool DeadlineServer::process_and_close_socket(socket_t sock) {
  bool ok = false;
  {
    DeadlineStream stream(sock, Clock::now() + deadline_);
    bool closed = false;
    ok = process_request(stream, true, closed, [&stream](httplib::Request& request) {
      stream.get_remote_ip_and_port(request.remote_addr, request.remote_port);
    });
  }
  shutdown(sock, SHUT_RDWR);
  close(sock);
  return ok;
}

int StartServing(httplib::Server& server, const std::string& host, int port, std::thread& thread) {
  // Idle keep-alive connections hold a stop back for at most this long.
  server.set_keep_alive_timeout(2);
  server.set_socket_options(ListeningSocketOptions);
  errno = 0;
  const int bound = port == 0 ? server.bind_to_any_port(host) : (server.bind_to_port(host, port) ? port : -1);
  if (bound <= 0) {
    const int why = errno;
    std::string text = "cannot listen on " + host + ":" + std::to_string(port);
    if (why == EADDRINUSE)
      text += ": the port is in use (is another server already running there?)";
    else if (why != 0)
      text += ": " + std::string(std::strerror(why));
    throw Error(err::kServiceFailure, text + ".");
  }
  auto ended = std::make_shared<std::atomic<bool>>(false);
  thread = std::thread([&server, ended] {
    server.listen_after_bind();
    *ended = true;
  });
  while (!server.is_running() && !*ended) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return bound;
}

}  // namespace ent
