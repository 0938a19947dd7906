#include "common/log.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "common/date_time.h"
#include "common/thread_values.h"

namespace ent {

namespace {

constexpr size_t kMaxNameBytes = 200;  // with ".txt", well inside any file system's name limit

bool Unsafe(unsigned char c) {
  return c < 0x20 || c == 0x7f || c == '/' || c == '\\' || c == '%';
}

// The message, or its first kMaxLogMessageBytes bytes (never half a UTF-8 character) and a note.
std::string Bounded(const std::string& message) {
  if (message.size() <= kMaxLogMessageBytes) return message;
  size_t keep = kMaxLogMessageBytes;
  while (keep > 0 && (static_cast<unsigned char>(message[keep]) & 0xC0) == 0x80) --keep;
  return message.substr(0, keep) + " ... (" + std::to_string(message.size() - keep) +
         " more bytes not logged)";
}

}  // namespace

std::string LogFileName(const std::string& log_name) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string name;
  size_t i = 0;
  while (i < log_name.size()) {
    const unsigned char c = static_cast<unsigned char>(log_name[i]);
    if (Unsafe(c)) {
      if (name.size() + 3 > kMaxNameBytes) break;
      name += '%';
      name += kHex[c >> 4];
      name += kHex[c & 0xF];
      ++i;
      continue;
    }
    // A whole UTF-8 character or nothing, so that a cut name is still valid text.
    size_t length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
    length = std::min(length, log_name.size() - i);
    if (name.size() + length > kMaxNameBytes) break;
    name.append(log_name, i, length);
    i += length;
  }
  return name + ".txt";
}

void WriteLog(const std::string& log_name, const std::string& message) {
  if (!DebugSwitch()) return;
  const std::string path = LogDirectory() + "/" + LogFileName(log_name);
  const std::string line = DateTime::Now().GeneralDate() + "\t" + Bounded(message) + "\r\n";
  // One write of the whole line with O_APPEND, so lines of two threads never interleave inside a line.
  // A link planted in the log directory is not followed; logs are not for everyone to read.
  int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0640);
  if (fd < 0) return;
  size_t written = 0;
  while (written < line.size()) {
    ssize_t n = ::write(fd, line.data() + written, line.size() - written);
    if (n <= 0) break;
    written += static_cast<size_t>(n);
  }
  ::close(fd);
}

void WriteLog(const std::string& message) {
  WriteLog(LogName(), message);
}

}  // namespace ent
