#include "common/log.h"

#include <fcntl.h>
#include <unistd.h>

#include "common/date_time.h"
#include "common/thread_values.h"

namespace ent {

void WriteLog(const std::string& log_name, const std::string& message) {
  if (!DebugSwitch()) return;
  const std::string path = LogDirectory() + "/" + log_name + ".txt";
  const std::string line = DateTime::Now().GeneralDate() + "\t" + message + "\r\n";
  // One write of the whole line with O_APPEND, so lines of two threads never interleave inside a line.
  int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  size_t written = 0;
  while (written < line.size()) {
    ssize_t n = ::write(fd, line.data() + written, line.size() - written);
    if (n <= 0) break;
    written += static_cast<size_t>(n);
  }
  ::close(fd);
}

void WriteLog(const std::string& message) { WriteLog(LogName(), message); }

}  // namespace ent
