#include "server/health.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "common/error.h"
#include "common/thread_values.h"
#include "server/token.h"

namespace ent {

namespace {

void Add(Health& health, const char* name, const std::string& path, const std::string& problem) {
  nlohmann::json check = {{"ok", problem.empty()}, {"path", path}};
  if (!problem.empty()) {
    check["problem"] = problem;
    health.healthy = false;
  }
  health.checks[name] = check;
}

}  // namespace

Health CheckHealth(const std::string& token_dir) {
  Health health;
  health.checks = nlohmann::json::object();

  const std::string token_path = token_dir.empty() ? DbInUseToken::DefaultDirectory() : token_dir;
  std::string problem;
  try {
    // Opening the token is what every request does first; it creates a missing folder.
    DbInUseToken::Create(token_dir);
    if (::access(token_path.c_str(), W_OK) != 0)
      problem = "the folder cannot be written: " + std::string(std::strerror(errno));
  } catch (const Error& e) {
    problem = e.description();
  }
  Add(health, "token_dir", token_path, problem);

  const std::string log_path = LogDirectory();
  std::error_code ec;
  problem = std::filesystem::is_directory(log_path, ec) ? "" : "the folder does not exist";
  Add(health, "log_dir", log_path, problem);
  return health;
}

}  // namespace ent
