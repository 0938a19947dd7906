// What a call raises, for tests that check the error a rule fails with.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace ent::test {

// The description of the ent::Error `call` raises ("" when it returns).
std::string ErrorText(const std::function<void()>& call);
// The number of the ent::Error `call` raises (0 when it returns).
int32_t ErrorNumber(const std::function<void()>& call);

}  // namespace ent::test
