// An anonymous temporary file for text too large to hold in memory: written once from the front,
// then read back at any offset as often as needed. It has no name in the file system and goes away
// with the object (or the process).
#pragma once

#include <cstddef>
#include <cstdint>
#include <streambuf>
#include <string>

namespace ent {

class SpoolFile {
 public:
  // Creates the file in the system's temporary folder. Raises ent::Error when it cannot.
  SpoolFile();
  ~SpoolFile();
  SpoolFile(const SpoolFile&) = delete;
  SpoolFile& operator=(const SpoolFile&) = delete;

  // Appends bytes at the end. Raises ent::Error when the disk refuses them.
  void Append(const char* data, size_t size);
  uint64_t size() const { return size_; }
  // Copies up to `size` bytes from `offset` into `out`; returns how many (0 at the end).
  size_t ReadAt(uint64_t offset, char* out, size_t size) const;
  // The whole content; only for texts known to be small.
  std::string ReadAll() const;

 private:
  int fd_ = -1;
  uint64_t size_ = 0;
};

// A stream buffer that appends to a spool file in large pieces; flushed by pubsync or destruction.
class SpoolWriteBuffer : public std::streambuf {
 public:
  explicit SpoolWriteBuffer(SpoolFile& file);
  ~SpoolWriteBuffer() override;

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;
  int sync() override;

 private:
  SpoolFile& file_;
  std::string buffer_;
};

}  // namespace ent
