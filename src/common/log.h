// The diagnostic log. While the thread's debug switch is on, WriteLog appends one line to
// LogDirectory() + "/" + LogFileName(log_name): the local general date and time, a tab, the message,
// CR LF. The file is opened and closed for every line. Nothing is touched while the switch is off,
// and any failure (missing directory, full disk) loses the line silently.
#pragma once

#include <cstddef>
#include <string>

namespace ent {

// Log names come from session identifiers, which the head office chooses. A file name made from one
// stays inside the log directory whatever it holds: '/', '\', '%', control characters and NUL are
// written as %XX (so different names give different files), the name is cut to 200 bytes, and
// ".txt" is added. Other characters, UTF-8 included, are kept as they are.
std::string LogFileName(const std::string& log_name);

// A longer message is cut to this many bytes and says how much was left out.
inline constexpr size_t kMaxLogMessageBytes = 16384;

void WriteLog(const std::string& log_name, const std::string& message);

// The same, to the thread's log name.
void WriteLog(const std::string& message);

}  // namespace ent
