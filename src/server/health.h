// What GET /health checks: that the database-in-use token's folder can be written (requests cannot
// run otherwise) and that the log folder exists (the journal and the debug logs live there).
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ent {

struct Health {
  bool healthy = true;
  // {"token_dir": {"ok": true, "path": "..."}, "log_dir": {"ok": false, "path": "...", "problem": "..."}}
  nlohmann::json checks;
};

// `token_dir` as the server was given it ("" for the default).
Health CheckHealth(const std::string& token_dir);

}  // namespace ent
