#include "server/post_arguments.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "common/error.h"

namespace ent {

namespace {

constexpr std::string_view kRowTag = "<z:row";

bool EndsRowTag(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>';
}

[[noreturn]] void StoreFailed(const std::string& what) {
  throw Error(err::kServiceFailure, what + ": " + std::strerror(errno));
}

}  // namespace

void RowTagCounter::Feed(std::string_view piece) {
  size_t i = 0;
  while (i < piece.size()) {
    if (matched_ == 0) {
      // Nothing started: jump to the next '<'.
      const size_t lt = piece.find('<', i);
      if (lt == std::string_view::npos) return;
      matched_ = 1;
      i = lt + 1;
      continue;
    }
    const char c = piece[i];
    if (matched_ == kRowTag.size()) {
      if (EndsRowTag(c)) ++rows_;
      matched_ = 0;
      continue;  // the same character may start the next tag
    }
    if (c == kRowTag[matched_]) {
      ++matched_;
      ++i;
    } else {
      matched_ = 0;  // c is read again: it may be a '<'
    }
  }
}

PostArguments::PostArguments(std::string spill_dir, size_t in_memory)
    : spill_dir_(std::move(spill_dir)), in_memory_(in_memory) {}

PostArguments::~PostArguments() {
  Discard();
}

void PostArguments::Discard() {
  if (!file_) return;
  file_.reset();
  ::unlink(file_path_.c_str());
  file_path_.clear();
}

void PostArguments::Call(std::string_view ns, std::string_view local) {
  has_call_ = true;
  call_ns_ = std::string(ns);
  call_local_ = std::string(local);
}

void PostArguments::ArgumentStart(std::string_view local) {
  if (!arguments_.empty()) Settle();
  arguments_.emplace_back(std::string(local), std::string());
  last_size_ = 0;
  counter_ = RowTagCounter();
}

void PostArguments::ArgumentText(std::string_view piece) {
  if (arguments_.empty()) return;
  std::string& text = arguments_.back().second;
  last_size_ += piece.size();
  counter_.Feed(piece);
  if (!file_) {
    if (spill_dir_.empty() || text.size() + piece.size() <= in_memory_) {
      text.append(piece);
      return;
    }
    std::string path = spill_dir_ + "/.incoming-XXXXXX";
    const int fd = ::mkstemp(path.data());
    if (fd < 0) StoreFailed("cannot create a file in " + spill_dir_);
    file_.reset(::fdopen(fd, "wb"));
    if (!file_) {
      ::close(fd);
      ::unlink(path.c_str());
      StoreFailed("cannot write " + path);
    }
    file_buffer_.resize(1 << 20);
    std::setvbuf(file_.get(), file_buffer_.data(), _IOFBF, file_buffer_.size());
    file_path_ = path;
    head_ = std::move(text);
    text.clear();
    if (std::fwrite(head_.data(), 1, head_.size(), file_.get()) != head_.size())
      StoreFailed("cannot write " + path);
  }
  if (std::fwrite(piece.data(), 1, piece.size(), file_.get()) != piece.size())
    StoreFailed("cannot write " + file_path_);
}

void PostArguments::Settle() {
  if (!file_) return;
  file_.reset();
  std::ifstream in(file_path_, std::ios::binary);
  std::string& text = arguments_.back().second;
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  ::unlink(file_path_.c_str());
  file_path_.clear();
  head_.clear();
}

void PostArguments::StoreLast(const std::string& path) {
  if (file_) {
    if (std::fflush(file_.get()) != 0) StoreFailed("cannot write " + file_path_);
    file_.reset();
    if (std::rename(file_path_.c_str(), path.c_str()) != 0) {
      const int saved = errno;
      ::unlink(file_path_.c_str());
      file_path_.clear();
      errno = saved;
      StoreFailed("cannot store " + path);
    }
    file_path_.clear();
    return;
  }
  const std::string& text = arguments_.back().second;
  std::ofstream(path, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace ent
