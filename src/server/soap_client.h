// A SOAP 1.1 client that learns its service from the WSDL at run time: Init reads the WSDL, Call
// posts a document/literal request for an operation the WSDL names, with text arguments in the order
// of the operation's parameters, and returns the text of the result. Nothing about the service is
// built in: address, namespace, soapAction and element names all come from the WSDL. The WSDL comes
// from outside, so the address it gives is used only when it is http(s) and on the host the WSDL was
// fetched from (the head office the shop configured); any port of that host is accepted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/soap_call.h"

namespace ent {

class Wsdl;

struct SoapOptions {
  long connect_timeout_seconds = 10;  // until the service accepts the connection
  long total_timeout_seconds = 60;    // one whole exchange (the WSDL, or one call)
  size_t max_answer_bytes = 4 << 20;  // the WSDL, or the answer to one call
};

class SoapClient : public SoapCall {
 public:
  explicit SoapClient(const SoapOptions& options);
  ~SoapClient();
  SoapClient(const SoapClient&) = delete;
  SoapClient& operator=(const SoapClient&) = delete;

  // Fetches and reads the WSDL. Raises ent::Error when it cannot be fetched, is longer than the cap,
  // is not a SOAP 1.1 service description, or gives a service address that is not http(s) on the
  // WSDL's own host.
  void Init(const std::string& wsdl_url);

  // Calls the operation and returns the text of its result element. Raises ent::Error before Init,
  // for an operation the WSDL does not offer, for a number of arguments other than its parameters',
  // for an unreachable or silent service, an answer longer than the cap, an HTTP error or a SOAP Fault
  // (its faultstring is in the description).
  std::string Call(const std::string& operation, const std::vector<std::string>& arguments) override;
  // The same with `last` as the last argument, after `arguments`: its text is escaped while it is
  // sent and never held whole.
  std::string Call(const std::string& operation, const std::vector<std::string>& arguments,
                   const TextSource& last) override;

  // The HTTP status of the last answer (the WSDL's or a call's); 0 before any answer came.
  long last_status() const { return last_status_; }

 private:
  SoapOptions options_;
  long last_status_ = 0;
  std::unique_ptr<Wsdl> wsdl_;
};

}  // namespace ent
