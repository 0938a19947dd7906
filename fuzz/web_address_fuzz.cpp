// Any text a WSDL could give as its service address: read as an address, refused with a reason or
// taken with its host, never both and never a crash.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/error.h"
#include "server/http_client.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string url(reinterpret_cast<const char*>(data), size);
  const std::string fault = ent::WebAddressFault(url);
  if (fault.empty() == ent::HostOfAddress(url).empty()) std::abort();
  try {
    ent::CheckWebAddress(url);
    if (!fault.empty()) std::abort();
  } catch (const ent::Error&) {
    if (fault.empty()) std::abort();
  }
  return 0;
}
