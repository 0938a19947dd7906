// A SOAP service's operations as a caller sees them, so that what is posted (the report job's
// result) does not depend on how it gets there. SoapClient (server/soap_client.h) implements it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ent {

// A text argument too large to hold in memory (a result document): read in pieces at any offset.
class TextSource {
 public:
  virtual ~TextSource() = default;
  virtual uint64_t size() const = 0;
  // Up to `size` bytes from `offset`; 0 at the end.
  virtual size_t Read(uint64_t offset, char* out, size_t size) const = 0;
};

class SoapCall {
 public:
  virtual ~SoapCall() = default;
  // Calls the operation with text arguments in the order of its parameters and returns the text of
  // its result. Failures raise ent::Error.
  virtual std::string Call(const std::string& operation, const std::vector<std::string>& arguments) = 0;
  // The same with `last` as the last argument, after `arguments`, streamed rather than held whole.
  virtual std::string Call(const std::string& operation, const std::vector<std::string>& arguments,
                           const TextSource& last) = 0;
};

}  // namespace ent
