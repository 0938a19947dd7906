#include "server/http_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

#include "common/error.h"
#include "common/text.h"

namespace ent {

namespace {

struct CurlGlobal {
  CurlGlobal() { curl_global_init(CURL_GLOBAL_DEFAULT); }
  ~CurlGlobal() { curl_global_cleanup(); }
};

struct EasyDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

struct UrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct CurlTextDeleter {
  void operator()(char* text) const { curl_free(text); }
};

// Where an answer's body goes: at most `cap` bytes; one more stops the transfer.
struct Sink {
  std::string body;
  size_t cap = 0;
  bool too_large = false;
};

size_t Collect(char* data, size_t size, size_t count, void* target) {
  Sink& sink = *static_cast<Sink*>(target);
  if (size * count > sink.cap - sink.body.size()) {
    sink.too_large = true;
    return 0;  // curl ends the transfer with a write error
  }
  sink.body.append(data, size * count);
  return size * count;
}

EasyHandle NewHandle(const std::string& url, const HttpTimeouts& timeouts, Sink& sink, char* error_buffer) {
  static CurlGlobal global;  // once per process, before the first handle
  CheckWebAddress(url);
  sink.cap = timeouts.max_answer_bytes;
  EasyHandle handle(curl_easy_init());
  if (!handle) throw Error(err::kServiceFailure, "The HTTP client cannot be created.");
  CURL* h = handle.get();
  curl_easy_setopt(h, CURLOPT_URL, url.c_str());
  curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT, timeouts.connect_seconds);
  curl_easy_setopt(h, CURLOPT_TIMEOUT, timeouts.total_seconds);
  curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);  // timeouts without signals: safe on any thread
  curl_easy_setopt(h, CURLOPT_NOPROXY, "127.0.0.1,localhost,::1");
  // libcurl speaks many protocols; this client speaks http and https only, redirects included.
#if LIBCURL_VERSION_NUM >= 0x075500
  curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(h, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
#else
  curl_easy_setopt(h, CURLOPT_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
  curl_easy_setopt(h, CURLOPT_REDIR_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
#endif
  // An answer that announces its length is refused before it is read; others are cut off by Collect.
  curl_easy_setopt(h, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(sink.cap));
  curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, Collect);
  curl_easy_setopt(h, CURLOPT_WRITEDATA, &sink);
  curl_easy_setopt(h, CURLOPT_ERRORBUFFER, error_buffer);
  return handle;
}

HeaderList HeaderLines(const std::vector<std::string>& headers) {
  HeaderList list;
  // Without an empty Expect header curl waits for "100 Continue" before sending a large body.
  std::vector<std::string> lines = headers;
  lines.push_back("Expect:");
  for (const std::string& line : lines) {
    curl_slist* grown = curl_slist_append(list.get(), line.c_str());
    if (!grown) throw Error(err::kServiceFailure, "Out of memory building the HTTP headers.");
    (void)list.release();
    list.reset(grown);
  }
  return list;
}

// The body source and what went wrong reading it, for curl's read callback.
struct BodyReader {
  BodySource* source;
  std::string failure;
};

size_t ReadBody(char* out, size_t size, size_t count, void* target) {
  auto* reader = static_cast<BodyReader*>(target);
  try {
    return reader->source->Read(out, size * count);
  } catch (const Error& e) {
    reader->failure = e.description();
  } catch (const std::exception& e) {
    reader->failure = e.what();
  }
  return CURL_READFUNC_ABORT;
}

HttpResponse Perform(CURL* h, const std::string& url, Sink& sink, const char* error_buffer,
                     const BodyReader* reader = nullptr) {
  CURLcode code = curl_easy_perform(h);
  if (sink.too_large || code == CURLE_FILESIZE_EXCEEDED)
    throw Error(err::kServiceFailure, "The answer of the service at " + url + " is longer than " +
                                          std::to_string(sink.cap) + " bytes; it is refused.");
  if (code != CURLE_OK && reader && !reader->failure.empty())
    throw Error(err::kServiceFailure, "The request to " + url + " could not be sent: " + reader->failure);
  if (code != CURLE_OK) {
    std::string cause = error_buffer[0] ? error_buffer : curl_easy_strerror(code);
    if (code == CURLE_OPERATION_TIMEDOUT) cause = "no answer in time (" + cause + ")";
    throw Error(err::kServiceFailure, "The service at " + url + " cannot be reached: " + cause);
  }
  HttpResponse response;
  curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &response.status);
  char* type = nullptr;
  curl_easy_getinfo(h, CURLINFO_CONTENT_TYPE, &type);
  if (type) response.content_type = type;
  response.body = std::move(sink.body);
  return response;
}

}  // namespace

void CheckWebAddress(const std::string& url) {
  auto starts = [&](std::string_view scheme) {
    return url.size() > scheme.size() &&
           EqualsIgnoreCase(scheme, std::string_view(url).substr(0, scheme.size()));
  };
  if (!starts("http://") && !starts("https://"))
    throw Error(err::kServiceFailure,
                "The address " + url + " is refused: only http:// and https:// addresses are used.");
}

std::string HostOfAddress(const std::string& url) {
  std::unique_ptr<CURLU, UrlDeleter> parsed(curl_url());
  char* host = nullptr;
  if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK ||
      curl_url_get(parsed.get(), CURLUPART_HOST, &host, 0) != CURLUE_OK || !host)
    return "";
  std::unique_ptr<char, CurlTextDeleter> owned(host);
  return AsciiLower(host);
}

HttpResponse HttpGet(const std::string& url, const HttpTimeouts& timeouts) {
  Sink sink;
  char error_buffer[CURL_ERROR_SIZE] = {};
  EasyHandle handle = NewHandle(url, timeouts, sink, error_buffer);
  curl_easy_setopt(handle.get(), CURLOPT_HTTPGET, 1L);
  return Perform(handle.get(), url, sink, error_buffer);
}

HttpResponse HttpPost(const std::string& url, const std::vector<std::string>& headers,
                      const std::string& body, const HttpTimeouts& timeouts) {
  Sink answer;
  char error_buffer[CURL_ERROR_SIZE] = {};
  EasyHandle handle = NewHandle(url, timeouts, answer, error_buffer);
  HeaderList list = HeaderLines(headers);
  CURL* h = handle.get();
  curl_easy_setopt(h, CURLOPT_HTTPHEADER, list.get());
  curl_easy_setopt(h, CURLOPT_POST, 1L);
  curl_easy_setopt(h, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(h, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  return Perform(h, url, answer, error_buffer);
}

HttpResponse HttpPostStream(const std::string& url, const std::vector<std::string>& headers, BodySource& body,
                            const HttpTimeouts& timeouts) {
  Sink answer;
  char error_buffer[CURL_ERROR_SIZE] = {};
  EasyHandle handle = NewHandle(url, timeouts, answer, error_buffer);
  HeaderList list = HeaderLines(headers);
  BodyReader reader{&body, {}};
  CURL* h = handle.get();
  curl_easy_setopt(h, CURLOPT_HTTPHEADER, list.get());
  curl_easy_setopt(h, CURLOPT_POST, 1L);
  curl_easy_setopt(h, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(h, CURLOPT_READFUNCTION, ReadBody);
  curl_easy_setopt(h, CURLOPT_READDATA, &reader);
  return Perform(h, url, answer, error_buffer, &reader);
}

}  // namespace ent
