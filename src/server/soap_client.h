// A SOAP 1.1 client that learns its service from the WSDL at run time: Init reads the WSDL, Call
// posts a document/literal request for an operation the WSDL names, with text arguments in the order
// of the operation's parameters, and returns the text of the result. Nothing about the service is
// built in: address, namespace, soapAction and element names all come from the WSDL.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ent {

class Wsdl;

struct SoapOptions {
  long connect_timeout_seconds = 10;  // until the service accepts the connection
  long total_timeout_seconds = 60;    // one whole exchange (the WSDL, or one call)
};

// A text argument too large to hold in memory (a result document): read in pieces at any offset.
class TextSource {
 public:
  virtual ~TextSource() = default;
  virtual uint64_t size() const = 0;
  // Up to `size` bytes from `offset`; 0 at the end.
  virtual size_t Read(uint64_t offset, char* out, size_t size) const = 0;
};

class SoapClient {
 public:
  explicit SoapClient(const SoapOptions& options);
  ~SoapClient();
  SoapClient(const SoapClient&) = delete;
  SoapClient& operator=(const SoapClient&) = delete;

  // Fetches and reads the WSDL. Raises ent::Error when it cannot be fetched or is not a SOAP 1.1
  // service description.
  void Init(const std::string& wsdl_url);

  // Calls the operation and returns the text of its result element. Raises ent::Error before Init,
  // for an operation the WSDL does not offer, for a number of arguments other than its parameters',
  // for an unreachable or silent service, an HTTP error or a SOAP Fault (its faultstring is in the
  // description).
  std::string Call(const std::string& operation, const std::vector<std::string>& arguments);
  // The same with `last` as the last argument, after `arguments`: its text is escaped while it is
  // sent and never held whole.
  std::string Call(const std::string& operation, const std::vector<std::string>& arguments,
                   const TextSource& last);

 private:
  SoapOptions options_;
  std::unique_ptr<Wsdl> wsdl_;
};

}  // namespace ent
