// The program's Format(value, pattern) with any pattern, for a text value and the number it reads as.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "common/error.h"
#include "common/format.h"
#include "common/variant.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The input is "value NUL pattern"; without a NUL it is the pattern for a fixed set of values.
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t split = input.find('\0');
  const std::string pattern = split == std::string::npos ? input : input.substr(split + 1);
  try {
    if (split != std::string::npos) ent::Format(ent::Variant(input.substr(0, split)), pattern);
    for (double value : {0.0, -0.5, 1234567.891, 1e300, -1e-300}) ent::Format(ent::Variant(value), pattern);
    if (size >= sizeof(double)) {
      double raw;
      std::memcpy(&raw, data, sizeof raw);
      ent::Format(ent::Variant(raw), pattern);
    }
  } catch (const ent::Error&) {
    // A failure with a text is a fine answer.
  }
  return 0;
}
