// The arguments of one post to the stand-in head office, collected as a SoapCallReader decodes them.
// Each argument's text is kept in memory up to a limit; past it, when a folder is given, the text
// goes on into a file there, so that a document of any size passes through a fixed amount of
// memory. Only the last argument is the document: an earlier one that went to a file is read back
// when the next one starts. The file is removed unless the document is moved to its place.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/soap_call_reader.h"

namespace ent {

// Counts z:row start tags in a text given in pieces, as the head office counts a document's rows:
// "<z:row" followed by a blank, '/' or '>'.
class RowTagCounter {
 public:
  void Feed(std::string_view piece);
  int rows() const { return rows_; }

 private:
  int rows_ = 0;
  size_t matched_ = 0;  // characters of "<z:row" seen last
};

class PostArguments : public SoapCallSink {
 public:
  // `spill_dir` empty: everything stays in memory.
  PostArguments(std::string spill_dir, size_t in_memory);
  ~PostArguments() override;
  PostArguments(const PostArguments&) = delete;
  PostArguments& operator=(const PostArguments&) = delete;

  void Call(std::string_view ns, std::string_view local) override;
  void ArgumentStart(std::string_view local) override;
  void ArgumentText(std::string_view piece) override;
  void ArgumentEnd() override {}

  const std::string& call_ns() const { return call_ns_; }
  const std::string& call_local() const { return call_local_; }
  bool has_call() const { return has_call_; }

  // Every argument's name and text, except that the last one's text is empty when it went to a file.
  std::vector<std::pair<std::string, std::string>>& arguments() { return arguments_; }
  // The last argument's whole length, its first bytes (all of it when it stayed in memory) and its rows.
  uint64_t last_size() const { return last_size_; }
  const std::string& last_head() const { return spilled() ? head_ : arguments_.back().second; }
  int last_rows() const { return counter_.rows(); }
  bool spilled() const { return file_ != nullptr; }
  // Puts the last argument's text at `path`: renames its file, or writes it from memory. Raises
  // ent::Error when that fails.
  void StoreLast(const std::string& path);

 private:
  struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  void Settle();  // the current argument is not the last: its text back in memory
  void Discard();

  std::string spill_dir_;
  size_t in_memory_;
  bool has_call_ = false;
  std::string call_ns_, call_local_;
  std::vector<std::pair<std::string, std::string>> arguments_;
  uint64_t last_size_ = 0;
  RowTagCounter counter_;
  std::string head_;  // the first bytes of a text that went to a file
  std::string file_path_;
  // The file's buffer: the text arrives in pieces of a few kilobytes and is written a megabyte at a
  // time (the C library's own buffer would be one disk block). Outlives file_.
  std::vector<char> file_buffer_;
  std::unique_ptr<std::FILE, FileCloser> file_;
};

}  // namespace ent
