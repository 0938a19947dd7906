#include "server/token.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "common/error.h"
#include "common/thread_values.h"

namespace ent {

namespace {

const char kFileName[] = "dbinuse";

Error CannotCreate(const std::string& what, int error_number) {
  return Error(err::kCannotCreateObject,
               "the token component cannot be created: " + what + ": " + std::strerror(error_number));
}

// Holds an advisory lock on the file for the length of one read or write.
class FileLock {
 public:
  FileLock(int fd, int operation) : fd_(fd) {
    while (flock(fd_, operation) != 0 && errno == EINTR) {
    }
  }
  ~FileLock() { flock(fd_, LOCK_UN); }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int fd_;
};

}  // namespace

std::string DbInUseToken::DefaultDirectory() {
  const char* configured = std::getenv("ENTPRCREQ_TOKEN_DIR");
  if (configured && *configured) return configured;
  return ExecutableDirectory() + "/token";
}

std::unique_ptr<DbInUseToken> DbInUseToken::Create(const std::string& directory) {
  const std::string dir = directory.empty() ? DefaultDirectory() : directory;
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  if (ec) throw CannotCreate(dir, ec.value());
  const std::string path = dir + "/" + kFileName;
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0664);
  if (fd < 0) throw CannotCreate(path, errno);
  return std::unique_ptr<DbInUseToken>(new DbInUseToken(fd));
}

DbInUseToken::~DbInUseToken() {
  ::close(fd_);
}

int DbInUseToken::GetdbInUse() {
  FileLock lock(fd_, LOCK_SH);
  char text[16] = {};
  ssize_t n = ::pread(fd_, text, sizeof text - 1, 0);
  if (n < 0)
    throw Error(err::kCannotCreateObject, std::string("the token cannot be read: ") + std::strerror(errno));
  return std::atoi(text);
}

void DbInUseToken::SetdbInUse(int state) {
  FileLock lock(fd_, LOCK_EX);
  const std::string text = std::to_string(state) + "\n";
  if (::ftruncate(fd_, 0) != 0 ||
      ::pwrite(fd_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
    throw Error(err::kCannotCreateObject,
                std::string("the token cannot be written: ") + std::strerror(errno));
}

}  // namespace ent
