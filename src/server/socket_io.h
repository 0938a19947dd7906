// What the HTTP streams of the server and of the client share: a socket closed with its owner,
// waiting for a socket until a deadline, receiving before one, and the bytes received but not yet
// handed out (a line or a body is read a few bytes at a time; the socket in larger pieces).
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <utility>

namespace ent {

// A socket (any file descriptor), closed with its owner; -1 for none.
class Socket {
 public:
  explicit Socket(int fd = -1) : fd_(fd) {}
  Socket(Socket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Socket();
  int get() const { return fd_; }

 private:
  int fd_;
};

// Waits until the socket is ready for `events` (poll's POLLIN, POLLOUT); false once `end` has passed
// or the socket fails.
bool WaitForSocket(int fd, short events, std::chrono::steady_clock::time_point end);

// Receives up to `size` bytes into `out`, taking what has arrived without waiting and waiting for
// more until `end`: the bytes received, 0 when the peer has closed, -1 when the socket fails or `end`
// has passed (also while bytes keep arriving).
ssize_t ReceiveBefore(int fd, char* out, size_t size, std::chrono::steady_clock::time_point end);

class ReceivedBytes {
 public:
  bool empty() const { return next_ == end_; }
  // Where the next piece is received, and how much fits; Received(n) keeps the n bytes put there.
  char* space() { return data_; }
  size_t capacity() const { return sizeof data_; }
  void Received(size_t n) {
    next_ = 0;
    end_ = n;
  }
  // Hands out up to `size` bytes; the number handed out.
  size_t Take(char* out, size_t size);

 private:
  char data_[64 * 1024];
  size_t next_ = 0;
  size_t end_ = 0;
};

}  // namespace ent
