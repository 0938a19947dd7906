// The database-in-use token against what others may plant or change in its folder.
#include "server/token.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/error.h"
#include "support/error_text.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace ent {
namespace {

std::string Refusal(const std::string& directory) {
  return test::ErrorText([&] { DbInUseToken::Create(directory); });
}

TEST(TokenTest, PlantedLinksAndWritableByEveryoneAreRefused) {
  test::TempDir dir;
  const std::string token = dir.file("token");
  fs::create_directory(token);

  // A link in place of the token: its target is never written.
  std::ofstream(dir.file("victim")) << "precious";
  fs::create_symlink(dir.file("victim"), token + "/dbinuse");
  EXPECT_EQ(Refusal(token),
            "the token component cannot be created: " + token +
                "/dbinuse is a symbolic link; the token must be a plain file (remove the link)");
  EXPECT_EQ(test::FileText(dir.file("victim")), "precious");
  fs::remove(token + "/dbinuse");

  // Anyone could stop the server, or let it run during maintenance: refused, with the fix.
  fs::permissions(token, fs::perms::others_write, fs::perm_options::add);
  EXPECT_EQ(Refusal(token), "the token component cannot be created: the token folder " + token +
                                " is writable by everyone; remove that permission (chmod o-w " + token + ")");
  fs::permissions(token, fs::perms::others_write, fs::perm_options::remove);
  DbInUseToken::Create(token)->SetdbInUse(1);
  fs::permissions(token + "/dbinuse", fs::perms::others_write, fs::perm_options::add);
  EXPECT_EQ(Refusal(token), "the token component cannot be created: the token file " + token +
                                "/dbinuse is writable by everyone; remove that permission (chmod o-w " +
                                token + "/dbinuse)");
  fs::permissions(token + "/dbinuse", fs::perms::others_write, fs::perm_options::remove);
  EXPECT_EQ(DbInUseToken::Create(token)->GetdbInUse(), 1);
}

// What an administrator wrote by hand is replaced whole.
TEST(TokenTest, WritingTheTokenReplacesWhatItHeld) {
  test::TempDir dir;
  const std::string token = dir.file("token");
  DbInUseToken::Create(token)->SetdbInUse(1);
  std::ofstream(token + "/dbinuse") << "12 (maintenance until noon)\n";
  DbInUseToken::Create(token)->SetdbInUse(0);
  EXPECT_EQ(test::FileText(token + "/dbinuse"), "0\n");
}

// The administrator sets the token as root; the server, running as its own user, must still be able
// to write it afterwards.
TEST(TokenTest, ATokenRootCreatesStaysUsableByTheFoldersOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to create as root and act as another user";
  const uid_t service_uid = 65534;  // nobody
  const gid_t service_gid = 65534;
  test::TempDir dir;
  fs::permissions(dir.path(), fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                  fs::perms::others_read | fs::perms::others_exec);
  const std::string state = dir.file("state");  // the service's folder, as systemd creates it
  fs::create_directory(state);
  ASSERT_EQ(::chown(state.c_str(), service_uid, service_gid), 0);

  const mode_t old_mask = ::umask(022);
  DbInUseToken::Create(state + "/token")->SetdbInUse(1);
  ::umask(old_mask);
  const std::string file = state + "/token/dbinuse";
  struct stat st {};
  ASSERT_EQ(::stat(file.c_str(), &st), 0);
  EXPECT_EQ(st.st_uid, service_uid);
  EXPECT_EQ(st.st_gid, service_gid);
  EXPECT_EQ(st.st_mode & 0777, 0660u);

  // The service's user sets it back to 0 (only async-signal-safe calls after fork).
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    if (::setgid(service_gid) != 0 || ::setuid(service_uid) != 0) ::_exit(2);
    int fd = ::open(file.c_str(), O_RDWR | O_NOFOLLOW);
    if (fd < 0) ::_exit(3);
    ::_exit(::ftruncate(fd, 0) == 0 && ::write(fd, "0\n", 2) == 2 ? 0 : 4);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_EQ(DbInUseToken::Create(state + "/token")->GetdbInUse(), 0);
}

}  // namespace
}  // namespace ent
