// Receiving before a deadline: what has arrived is taken at once, a wait ends at the deadline, and
// nothing more is taken once it has passed, even while bytes are waiting.
#include "server/socket_io.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <string>

namespace ent {
namespace {

using Clock = std::chrono::steady_clock;

TEST(SocketIo, ReceivingEndsAtItsDeadlineEvenWhileBytesWait) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const Socket reader(ends[0]);
  Socket writer(ends[1]);
  char got[16];

  ASSERT_EQ(send(writer.get(), "abc", 3, 0), 3);
  ASSERT_EQ(ReceiveBefore(reader.get(), got, sizeof got, Clock::now() + std::chrono::seconds(5)), 3);
  EXPECT_EQ(std::string(got, 3), "abc");

  const Clock::time_point start = Clock::now();
  EXPECT_EQ(ReceiveBefore(reader.get(), got, sizeof got, start + std::chrono::milliseconds(100)), -1);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(100));

  ASSERT_EQ(send(writer.get(), "def", 3, 0), 3);
  EXPECT_EQ(ReceiveBefore(reader.get(), got, sizeof got, Clock::now() - std::chrono::milliseconds(1)), -1);
  ASSERT_EQ(ReceiveBefore(reader.get(), got, sizeof got, Clock::now() + std::chrono::seconds(5)), 3);
  EXPECT_EQ(std::string(got, 3), "def");

  writer = Socket();
  EXPECT_EQ(ReceiveBefore(reader.get(), got, sizeof got, Clock::now() + std::chrono::seconds(5)), 0);
}

}  // namespace
}  // namespace ent
