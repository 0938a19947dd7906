#include "support/error_text.h"

#include "common/error.h"

namespace ent::test {

std::string ErrorText(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& e) {
    return e.description();
  }
  return "";
}

int32_t ErrorNumber(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

}  // namespace ent::test
