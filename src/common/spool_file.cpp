#include "common/spool_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "common/error.h"

namespace ent {

namespace {

constexpr size_t kBufferSize = 1 << 20;

[[noreturn]] void Fail(const std::string& what) {
  throw Error(err::kWriteFailed, what + ": " + std::strerror(errno));
}

}  // namespace

SpoolFile::SpoolFile() {
  std::error_code ec;
  std::string dir = std::filesystem::temp_directory_path(ec).string();
  if (ec) dir = "/tmp";
  fd_ = ::open(dir.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (fd_ < 0) {
    // File systems without unnamed files: create one and remove its name at once.
    std::string name = dir + "/entprcreq-XXXXXX";
    fd_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd_ < 0) Fail("Cannot create a temporary file in " + dir);
    ::unlink(name.c_str());
  }
}

SpoolFile::~SpoolFile() {
  if (fd_ >= 0) ::close(fd_);
}

void SpoolFile::Append(const char* data, size_t size) {
  while (size > 0) {
    ssize_t n = ::pwrite(fd_, data, size, static_cast<off_t>(size_));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) Fail("Write to file failed");
    data += n;
    size -= static_cast<size_t>(n);
    size_ += static_cast<uint64_t>(n);
  }
}

size_t SpoolFile::ReadAt(uint64_t offset, char* out, size_t size) const {
  if (offset >= size_) return 0;
  if (size > size_ - offset) size = static_cast<size_t>(size_ - offset);
  size_t done = 0;
  while (done < size) {
    ssize_t n = ::pread(fd_, out + done, size - done, static_cast<off_t>(offset + done));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) Fail("Read from a temporary file failed");
    done += static_cast<size_t>(n);
  }
  return done;
}

std::string SpoolFile::ReadAll() const {
  std::string text(static_cast<size_t>(size_), '\0');
  ReadAt(0, text.data(), text.size());
  return text;
}

SpoolWriteBuffer::SpoolWriteBuffer(SpoolFile& file) : file_(file) {
  buffer_.reserve(kBufferSize);
}

SpoolWriteBuffer::~SpoolWriteBuffer() {
  try {
    sync();
  } catch (...) {
  }
}

SpoolWriteBuffer::int_type SpoolWriteBuffer::overflow(int_type c) {
  if (c != traits_type::eof()) {
    char ch = traits_type::to_char_type(c);
    xsputn(&ch, 1);
  }
  return traits_type::not_eof(c);
}

std::streamsize SpoolWriteBuffer::xsputn(const char* s, std::streamsize n) {
  const size_t size = static_cast<size_t>(n);
  if (buffer_.size() + size > kBufferSize) {
    sync();
    if (size >= kBufferSize) {
      file_.Append(s, size);
      return n;
    }
  }
  buffer_.append(s, size);
  return n;
}

int SpoolWriteBuffer::sync() {
  if (buffer_.empty()) return 0;
  try {
    file_.Append(buffer_.data(), buffer_.size());
  } catch (...) {
    buffer_.clear();
    throw;
  }
  buffer_.clear();
  return 0;
}

}  // namespace ent
