// Any text a head office could publish as its WSDL: read, and the post operation looked up.
#include <cstddef>
#include <cstdint>
#include <string>

#include "common/error.h"
#include "server/wsdl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    ent::Wsdl wsdl = ent::Wsdl::Parse(text, "fuzz");
    wsdl.Operation("sendReport");
  } catch (const ent::Error&) {
  }
  return 0;
}
