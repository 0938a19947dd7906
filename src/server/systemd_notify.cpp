#include "server/systemd_notify.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "server/socket_io.h"

namespace ent {

bool NotifySystemd(const std::string& state) {
  const char* name = std::getenv("NOTIFY_SOCKET");
  if (!name || !*name) return false;
  const size_t length = std::strlen(name);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // An absolute path, or "@name" for a socket in the abstract namespace (a leading zero byte).
  if ((name[0] != '/' && name[0] != '@') || length >= sizeof(address.sun_path)) return false;
  std::memcpy(address.sun_path, name, length);
  if (name[0] == '@') address.sun_path[0] = '\0';
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
  const Socket socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (socket.get() < 0) return false;
  const ssize_t sent = ::sendto(socket.get(), state.data(), state.size(), MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr*>(&address), size);
  return sent == static_cast<ssize_t>(state.size());
}

}  // namespace ent
