// Plain HTTP/1.1 exchanges over libcurl, with connect and total timeouts so that a service that
// never answers cannot hold a request forever, and a cap on the size of an answer so that a service
// cannot exhaust memory. Only http:// and https:// addresses are used, for redirects too: an address
// from outside (a WSDL's) must never reach gopher://, dict://, file:// and the like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ent {

struct HttpTimeouts {
  long connect_seconds = 10;          // until the service accepts the connection
  long total_seconds = 60;            // the whole exchange
  size_t max_answer_bytes = 4 << 20;  // the body of an answer; a longer one fails the exchange
};

// Raises ent::Error unless `url` is an http:// or https:// address (the scheme in any case).
void CheckWebAddress(const std::string& url);

// The host part of an http(s) address, in lower case ("" when there is none).
std::string HostOfAddress(const std::string& url);

struct HttpResponse {
  long status = 0;  // the HTTP status code
  std::string content_type;
  std::string body;
};

// GET url. A transport failure (refused, unreachable, timed out, bad address), an address that is not
// http(s) and an answer longer than the cap raise ent::Error whose description names the address and
// the cause; any HTTP status is returned as it came.
HttpResponse HttpGet(const std::string& url, const HttpTimeouts& timeouts);

// POST body to url with the given extra header lines ("Name: value"). Failures as for HttpGet.
HttpResponse HttpPost(const std::string& url, const std::vector<std::string>& headers,
                      const std::string& body, const HttpTimeouts& timeouts);

// A request body made in pieces as it is sent: size() bytes in all, handed out in order by Read
// (which returns 0 only at the end and raises ent::Error when the body cannot be read).
class BodySource {
 public:
  virtual ~BodySource() = default;
  virtual uint64_t size() const = 0;
  virtual size_t Read(char* out, size_t size) = 0;
};

// POST a body read from `body` as it is sent, with its length declared. Failures as for HttpPost; a
// failure of `body` is reported as such.
HttpResponse HttpPostStream(const std::string& url, const std::vector<std::string>& headers, BodySource& body,
                            const HttpTimeouts& timeouts);

}  // namespace ent
