#include "server/socket_io.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace ent {

Socket::~Socket() {
  if (fd_ >= 0) close(fd_);
}

bool WaitForSocket(int fd, short events, std::chrono::steady_clock::time_point end) {
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
    if (left <= 0) return false;
    pollfd p{fd, events, 0};
    const int ready = poll(&p, 1, static_cast<int>(std::min<long long>(left, INT_MAX)));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

ssize_t ReceiveBefore(int fd, char* out, size_t size, std::chrono::steady_clock::time_point end) {
  for (;;) {
    if (std::chrono::steady_clock::now() >= end) return -1;
    const ssize_t got = recv(fd, out, size, MSG_DONTWAIT);
    if (got >= 0) return got;
    if (errno != EINTR && ((errno != EAGAIN && errno != EWOULDBLOCK) || !WaitForSocket(fd, POLLIN, end)))
      return -1;
  }
}

size_t ReceivedBytes::Take(char* out, size_t size) {
  const size_t n = std::min(size, end_ - next_);
  std::memcpy(out, data_ + next_, n);
  next_ += n;
  return n;
}

}  // namespace ent
