#include "support/program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace ent::test {

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

pid_t Spawn(const std::vector<std::string>& args, const std::vector<std::string>& environment,
            const std::string& out_path, const std::string& err_path) {
  // Everything the child needs is built before fork: other threads of the test may hold locks.
  std::vector<std::string> words = {ENTPRCREQ_BINARY};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  std::vector<std::string> settings = environment;
  for (char** variable = environ; *variable; ++variable) settings.push_back(*variable);
  std::vector<char*> envp;
  for (std::string& setting : settings) envp.push_back(setting.data());
  envp.push_back(nullptr);
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    const int out = ::open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = ::open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int in = ::open("/dev/null", O_RDONLY);
    dup2(out, 1);
    dup2(err, 2);
    dup2(in, 0);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  return pid;
}

int WaitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string UniquePath(const std::string& dir, const char* suffix) {
  static std::atomic<int> counter{0};
  return dir + "/program-" + std::to_string(++counter) + suffix;
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& args, const std::string& output_dir,
                      const std::vector<std::string>& environment) {
  const std::string out = UniquePath(output_dir, ".out"), err = UniquePath(output_dir, ".err");
  ProgramRun run;
  run.exit_code = WaitFor(Spawn(args, environment, out, err));
  run.out = ReadFile(out);
  run.err = ReadFile(err);
  return run;
}

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& args, const std::string& output_dir,
                                     const std::vector<std::string>& environment)
    : out_path_(UniquePath(output_dir, ".out")), err_path_(UniquePath(output_dir, ".err")) {
  pid_ = Spawn(args, environment, out_path_, err_path_);
}

BackgroundProgram::~BackgroundProgram() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    WaitFor(pid_);
  }
}

std::string BackgroundProgram::Out() const {
  return ReadFile(out_path_);
}
std::string BackgroundProgram::Err() const {
  return ReadFile(err_path_);
}

int BackgroundProgram::Stop() {
  kill(pid_, SIGTERM);
  const int code = WaitFor(pid_);
  pid_ = -1;
  return code;
}

int BackgroundProgram::StopWithin(int seconds) {
  kill(pid_, SIGTERM);
  int status = 0;
  pid_t ended = 0;
  for (int i = 0; i <= seconds * 10 && (ended = waitpid(pid_, &status, WNOHANG)) == 0; ++i) usleep(100000);
  if (ended != pid_) return -1;  // the destructor kills it
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ShellOutput(const std::string& command) {
  std::string out;
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) return out;
  char piece[4096];
  while (size_t n = fread(piece, 1, sizeof piece, pipe.get())) out.append(piece, n);
  return out;
}

}  // namespace ent::test
