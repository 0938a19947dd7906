#include <iostream>

#include "commands.h"
#include "common/error.h"
#include "options.h"
#include "server/token.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq token get [--token-dir DIR]\n"
    "       entprcreq token set 0|1|2 [--token-dir DIR]\n"
    "\n"
    "The database-in-use token, for the shop's administrator. While it is 1 the server answers every\n"
    "report request with \"Database is in use by an administrator. Please try again later.\"; set it\n"
    "to 1 before working on the database (a compact, a restore) and back to 0 afterwards. The server\n"
    "sets it to 2 while it runs a report and back to 0 when done.\n"
    "Run as root, it leaves the token owned by the token folder's owner (mode 0660), so the server's\n"
    "user can still write it. A token folder or file that everyone may write, or a link in place of\n"
    "the token file, is refused.\n"
    "\n"
    "  --token-dir DIR   where the token is kept (default: $ENTPRCREQ_TOKEN_DIR, else the token\n"
    "                    folder beside the program); use the same folder as the server\n";

}  // namespace

int RunToken(const Args& args) {
  try {
    Options options(args, {"--token-dir"}, {"--help"}, kHelp);
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    const auto& words = options.positional();
    const bool get = words.size() == 1 && words[0] == "get";
    const bool set =
        words.size() == 2 && words[0] == "set" && (words[1] == "0" || words[1] == "1" || words[1] == "2");
    if (!get && !set)
      throw std::invalid_argument(words.empty() ? "say get, or set with 0, 1 or 2"
                                                : "token wants 'get' or 'set 0|1|2', not '" + words[0] +
                                                      (words.size() > 1 ? " " + words[1] : "") + "'");
    auto token = DbInUseToken::Create(options.Get("--token-dir"));
    if (set) token->SetdbInUse(words[1][0] - '0');
    std::cout << token->GetdbInUse() << "\n";
    return 0;
  } catch (const Error& e) {
    std::cerr << "entprcreq token: " << e.description() << "\n";
    return 1;
  } catch (const std::exception& e) {
    std::cerr << "entprcreq token: " << e.what() << "\n";
    return 2;
  }
}

}  // namespace ent::cli
