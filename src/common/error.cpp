#include "common/error.h"

#include <utility>

namespace ent {

Error::Error(int32_t number, std::string description, std::string source)
    : std::runtime_error(description),
      number_(number),
      description_(std::move(description)),
      source_(std::move(source)) {}

}  // namespace ent
