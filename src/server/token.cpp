#include "server/token.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
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

Error Refused(const std::string& why) {
  return Error(err::kCannotCreateObject, "the token component cannot be created: " + why);
}

// Anyone who can write the token can stop the server or let it run during maintenance.
void RefuseIfWritableByOthers(const struct stat& st, const std::string& path, const char* what) {
  if (st.st_mode & S_IWOTH)
    throw Refused(std::string(what) + " " + path +
                  " is writable by everyone; remove that permission (chmod o-w " + path + ")");
}

// The administrator often runs "entprcreq token set" as root, while the server runs as its own user.
// What root creates here is therefore handed to the owner of the folder it is created in (the
// server's user, when the service set the folder up), so that the server can still write the token.
void GiveToFolderOwner(int fd, const struct stat& folder) {
  if (::geteuid() != 0) return;
  (void)::fchown(fd, folder.st_uid, folder.st_gid);  // failing leaves it root's, as before
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
  const bool created = std::filesystem::create_directories(dir, ec);
  if (ec) throw CannotCreate(dir, ec.value());
  struct stat folder {};
  if (::stat(dir.c_str(), &folder) != 0) throw CannotCreate(dir, errno);
  if (created) {
    struct stat parent {};
    const std::string above = std::filesystem::path(dir).lexically_normal().parent_path().string();
    int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0 && ::stat(above.empty() ? "." : above.c_str(), &parent) == 0) {
      GiveToFolderOwner(fd, parent);
      (void)::fstat(fd, &folder);
    }
    if (fd >= 0) ::close(fd);
  }
  RefuseIfWritableByOthers(folder, dir, "the token folder");

  // A link planted in place of the token is never followed: its target would be overwritten.
  const std::string path = dir + "/" + kFileName;
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0660);
  const bool new_file = fd >= 0;
  if (!new_file && errno == EEXIST) fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0 && errno == ELOOP)
    throw Refused(path + " is a symbolic link; the token must be a plain file (remove the link)");
  if (fd < 0) throw CannotCreate(path, errno);
  std::unique_ptr<DbInUseToken> token(new DbInUseToken(fd));
  struct stat st {};
  if (::fstat(fd, &st) != 0) throw CannotCreate(path, errno);
  if (!S_ISREG(st.st_mode)) throw Refused(path + " is not a plain file");
  if (new_file) {
    // Readable and writable by the folder's group too, whatever the umask: administrators in the
    // server's group can set the token.
    (void)::fchmod(fd, 0660);
    st.st_mode = (st.st_mode & ~07777) | 0660;
  }
  if (st.st_uid != folder.st_uid || st.st_gid != folder.st_gid) GiveToFolderOwner(fd, folder);
  RefuseIfWritableByOthers(st, path, "the token file");
  return token;
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
  // Written over and then cut to its length, never cut to nothing first: ext4 takes a file cut to
  // nothing for one being replaced and writes it to the disk when it is closed, in every run.
  if (::pwrite(fd_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
      ::ftruncate(fd_, static_cast<off_t>(text.size())) != 0)
    throw Error(err::kCannotCreateObject,
                std::string("the token cannot be written: ") + std::strerror(errno));
}

}  // namespace ent
