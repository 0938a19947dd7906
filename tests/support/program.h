// Running the entprcreq program as a real process: once to its end, or in the background (a
// service) until told to stop. Output goes to files in the given folder and is read back.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace ent::test {

struct ProgramRun {
  int exit_code = -1;
  std::string out, err;
};

// Runs `entprcreq args...` with `environment` ("NAME=value") added, and waits for it.
ProgramRun RunProgram(const std::vector<std::string>& args, const std::string& output_dir,
                      const std::vector<std::string>& environment = {});

// What a shell command prints on its standard output (empty when it cannot be started).
std::string ShellOutput(const std::string& command);

class BackgroundProgram {
 public:
  BackgroundProgram(const std::vector<std::string>& args, const std::string& output_dir,
                    const std::vector<std::string>& environment = {});
  ~BackgroundProgram();  // SIGKILL if still running
  BackgroundProgram(const BackgroundProgram&) = delete;
  BackgroundProgram& operator=(const BackgroundProgram&) = delete;

  std::string Out() const;
  std::string Err() const;
  // Sends SIGTERM and waits; returns the exit code.
  int Stop();
  // The same, waiting at most `seconds`: a program still running then is killed, and -1 returned.
  int StopWithin(int seconds);

 private:
  pid_t pid_ = -1;
  std::string out_path_, err_path_;
};

}  // namespace ent::test
