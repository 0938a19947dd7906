#include "support/temp_dir.h"

#include <cstdlib>
#include <stdexcept>

namespace ent::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "entprcreq-test-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

}  // namespace ent::test
