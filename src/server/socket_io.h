// What the HTTP streams of the server and of the client share: waiting for a socket until a
// deadline, and the bytes received but not yet handed out (httplib reads a line or a body a few bytes
// at a time; the socket is read in larger pieces).
#pragma once

#include <chrono>
#include <cstddef>

namespace ent {

// Waits until the socket is ready for `events` (poll's POLLIN, POLLOUT); false once `end` has passed
// or the socket fails.
bool WaitForSocket(int fd, short events, std::chrono::steady_clock::time_point end);

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
