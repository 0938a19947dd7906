// Plain HTTP/1.1 exchanges over libcurl, with connect and total timeouts so that a service that
// never answers cannot hold a request forever.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ent {

struct HttpTimeouts {
  long connect_seconds = 10;  // until the service accepts the connection
  long total_seconds = 60;    // the whole exchange
};

struct HttpResponse {
  long status = 0;  // the HTTP status code
  std::string content_type;
  std::string body;
};

// GET url. A transport failure (refused, unreachable, timed out, bad address) raises ent::Error whose
// description names the address and the cause; any HTTP status is returned as it came.
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
