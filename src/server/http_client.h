// Plain HTTP/1.1 exchanges, one a connection, with connect and total timeouts so that a
// service that never answers (or answers a byte at a time) cannot hold a request forever, and a cap on
// the size of an answer so that a service cannot exhaust memory. Only http:// and https:// addresses
// are used, and redirects are not followed: an address from outside (a WSDL's) must never reach
// gopher://, file:// and the like, nor lead the client on to another host. https verifies the
// service's certificate against the system's certificate authorities. No proxy is used.
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

// Why `url` is not an address this client contacts, or "" when it is one: http:// or https:// (the
// scheme in any case), a host (a name, an IPv4 address or an [IPv6] literal), an optional port, and
// no user name or password.
std::string WebAddressFault(const std::string& url);

// Raises ent::Error naming the address and WebAddressFault's reason unless `url` is such an address.
void CheckWebAddress(const std::string& url);

// The host of an address that CheckWebAddress takes, in lower case, an IPv6 literal in its brackets;
// "" for any other address. It is the host an exchange with `url` contacts.
std::string HostOfAddress(const std::string& url);

struct HttpResponse {
  long status = 0;  // the HTTP status code
  std::string content_type;
  std::string body;
};

// GET url. A transport failure (refused, unreachable, timed out, bad address), an address that is not
// http(s) and an answer longer than the cap raise ent::Error whose description names the address and
// the cause; any HTTP status is returned as it came, a redirect too.
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
