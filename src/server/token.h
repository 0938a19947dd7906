// The database-in-use token shared by the server and the shop's administrator tools: 0 nobody holds
// the database, 1 an administrator holds it, 2 the server is working on it. It is kept as a small
// text file, "dbinuse", in a token directory, and read and written under an advisory lock so that
// concurrent readers and writers never see half a value.
#pragma once

#include <memory>
#include <string>

namespace ent {

class DbInUseToken {
 public:
  // Opens the token in `directory`, creating the directory and the file (state 0) on first use. An
  // empty directory means $ENTPRCREQ_TOKEN_DIR, or else "token" beside the program. Raises ent::Error
  // "the token component cannot be created: ..." when the directory or file cannot be opened.
  static std::unique_ptr<DbInUseToken> Create(const std::string& directory);

  // The directory used when none is given.
  static std::string DefaultDirectory();

  ~DbInUseToken();
  DbInUseToken(const DbInUseToken&) = delete;
  DbInUseToken& operator=(const DbInUseToken&) = delete;

  // The current state; a file that holds no number reads as 0.
  int GetdbInUse();
  void SetdbInUse(int state);

 private:
  explicit DbInUseToken(int fd) : fd_(fd) {}
  int fd_;
};

}  // namespace ent
