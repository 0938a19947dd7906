// The diagnostic log. While the thread's debug switch is on, WriteLog appends one line to
// LogDirectory() + "/" + log_name + ".txt": the local general date and time, a tab, the message,
// CR LF. The file is opened and closed for every line. Nothing is touched while the switch is off,
// and any failure (missing directory, full disk) loses the line silently.
#pragma once

#include <string>

namespace ent {

void WriteLog(const std::string& log_name, const std::string& message);

// The same, to the thread's log name.
void WriteLog(const std::string& message);

}  // namespace ent
