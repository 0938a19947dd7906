#include "server/http_client.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <httplib.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>
#include <string_view>

#include "common/error.h"
#include "common/text.h"
#include "common/version.h"
#include "server/socket_io.h"

namespace ent {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kOnlyWebAddresses = "only http:// and https:// addresses are used";
constexpr size_t kMaxHostName = 253;
// The status line and header lines of an answer; httplib itself reads them without a limit.
constexpr size_t kMaxHeadBytes = 64 * 1024;
constexpr long kMaxSeconds = 365L * 24 * 3600;

// An address taken apart. It is the one reading of an address: the host a caller checks
// (HostOfAddress) is the host the exchange connects to.
struct WebAddress {
  bool tls = false;
  std::string host;  // lower case; an IPv6 literal without its brackets
  bool ipv6 = false;
  int port = 0;
  std::string target;  // the path and query, as the request line gives them

  std::string HostText() const { return ipv6 ? "[" + host + "]" : host; }
  std::string HostHeader() const {
    return port == (tls ? 443 : 80) ? HostText() : HostText() + ":" + std::to_string(port);
  }
};

bool IsHostNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_';
}

// Reads `url` into `address`; returns why it is refused ("" when it is not).
std::string Parse(std::string_view url, WebAddress& address) {
  const size_t scheme_end = url.find("://");
  const std::string_view scheme = url.substr(0, scheme_end == std::string_view::npos ? 0 : scheme_end);
  if (EqualsIgnoreCase(scheme, "https"))
    address.tls = true;
  else if (!EqualsIgnoreCase(scheme, "http"))
    return std::string(kOnlyWebAddresses);
  for (char c : url)
    if (static_cast<unsigned char>(c) <= ' ' || c == '\x7f') return "it holds a space or a control character";

  const std::string_view rest = url.substr(scheme_end + 3);
  const size_t authority_end = std::min(rest.find_first_of("/?#"), rest.size());
  const std::string_view authority = rest.substr(0, authority_end);
  if (authority.find('@') != std::string_view::npos)
    return "it names a user (user@host); user names and passwords are not taken from addresses";
  std::string_view port_text;
  if (authority.starts_with('[')) {
    const size_t close = authority.find(']');
    if (close == std::string_view::npos) return "its IPv6 address has no closing ]";
    address.host = AsciiLower(authority.substr(1, close - 1));
    address.ipv6 = true;
    in6_addr parsed{};
    if (inet_pton(AF_INET6, address.host.c_str(), &parsed) != 1)
      return "its host [" + address.host + "] is not an IPv6 address";
    const std::string_view after = authority.substr(close + 1);
    if (!after.empty() && !after.starts_with(':'))
      return "its host [" + address.host + "] is followed by text";
    port_text = after.substr(std::min<size_t>(1, after.size()));
  } else {
    const size_t colon = authority.find(':');
    address.host = AsciiLower(authority.substr(0, colon));
    if (colon != std::string_view::npos) port_text = authority.substr(colon + 1);
    if (address.host.empty()) return "it names no host";
    if (address.host.size() > kMaxHostName ||
        !std::all_of(address.host.begin(), address.host.end(), IsHostNameCharacter))
      return "its host " + address.host + " is not a host name or an IP address";
  }
  address.port = address.tls ? 443 : 80;
  if (!port_text.empty()) {
    const bool digits = port_text.size() <= 5 && std::all_of(port_text.begin(), port_text.end(),
                                                             [](char c) { return c >= '0' && c <= '9'; });
    const int port = digits ? std::stoi(std::string(port_text)) : 0;
    if (port < 1 || port > 65535)
      return "its port " + std::string(port_text) + " is not a number from 1 to 65535";
    address.port = port;
  }

  // The fragment is not sent; bytes beyond ASCII go percent-encoded, everything else as it is.
  const std::string_view target = rest.substr(authority_end, rest.find('#', authority_end) - authority_end);
  address.target = target.starts_with('/') ? "" : "/";
  for (char c : target) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      address.target += c;
    } else {
      static constexpr char kHex[] = "0123456789ABCDEF";
      address.target += {'%', kHex[byte >> 4], kHex[byte & 15]};
    }
  }
  return "";
}

WebAddress AddressOf(const std::string& url) {
  WebAddress address;
  const std::string fault = Parse(url, address);
  if (!fault.empty()) throw Error(err::kServiceFailure, "The address " + url + " is refused: " + fault + ".");
  return address;
}

// One exchange's limits and what became of them, shared by its connection, the request body's
// provider and the answer's receiver.
struct Exchange {
  Clock::time_point deadline;
  size_t cap = 0;
  std::string body;        // the answer's body so far
  bool head_read = false;  // the answer's status line and headers are all in
  bool late = false;       // the deadline passed
  bool head_too_long = false;
  bool too_large = false;    // the answer's body is longer than the cap
  std::string send_failure;  // why the request's body could not be read
};

// The connection of one exchange, on a non-blocking socket, TLS when `ssl` is set: every read and
// write waits until the exchange's deadline at the latest, and no more than kMaxHeadBytes are taken
// before the answer's head is complete.
class ExchangeStream : public httplib::Stream {
 public:
  // httplib writes a request's head and its body apart; corked, the connection sends them in full
  // segments, a small request in one, until the first read sends what is held back. A service whose
  // listen queue overflowed (httplib's server listens with a queue of 5) takes a connection again from
  // its first segment, and resets one whose request came in two.
  ExchangeStream(int fd, SSL* ssl, Exchange& exchange) : fd_(fd), ssl_(ssl), exchange_(exchange) {
    const int on = 1;
    corked_ = setsockopt(fd_, IPPROTO_TCP, TCP_CORK, &on, sizeof on) == 0;
  }

  bool is_readable() const override {
    return !received_.empty() || (ssl_ && SSL_pending(ssl_) > 0) || Wait(POLLIN);
  }
  bool is_writable() const override { return Wait(POLLOUT); }

  ssize_t read(char* out, size_t size) override {
    if (corked_) {
      // The request is all written: out with what is held back.
      const int off = 0;
      setsockopt(fd_, IPPROTO_TCP, TCP_CORK, &off, sizeof off);
      corked_ = false;
    }
    if (received_.empty()) {
      const ssize_t got = Receive();
      if (got <= 0) return got;
      if (!exchange_.head_read && (head_bytes_ += static_cast<size_t>(got)) > kMaxHeadBytes) {
        exchange_.head_too_long = true;
        return -1;
      }
      // The body's own cap is the receiver's; this one also bounds what httplib reads around it (a
      // chunked body's size lines): twice the cap and a head, whatever the answer's framing.
      if ((answer_bytes_ += static_cast<size_t>(got)) > 2 * exchange_.cap + kMaxHeadBytes) {
        exchange_.too_large = true;
        return -1;
      }
      received_.Received(static_cast<size_t>(got));
    }
    return static_cast<ssize_t>(received_.Take(out, size));
  }

  ssize_t write(const char* data, size_t size) override {
    const int piece = static_cast<int>(std::min<size_t>(size, INT_MAX));
    for (;;) {
      if (ssl_) {
        ERR_clear_error();
        const int sent = SSL_write(ssl_, data, piece);
        if (sent > 0) return sent;
        if (!WaitForTls(sent)) return -1;
        continue;  // OpenSSL wants the same write again
      }
      const ssize_t sent = send(fd_, data, size, MSG_NOSIGNAL);
      if (sent >= 0) return sent;
      if (errno != EINTR && !((errno == EAGAIN || errno == EWOULDBLOCK) && Wait(POLLOUT))) return -1;
    }
  }

  // httplib's client never asks where a connection goes.
  void get_remote_ip_and_port(std::string&, int&) const override {}
  void get_local_ip_and_port(std::string&, int&) const override {}
  socket_t socket() const override { return fd_; }

 private:
  // Waits for `events` until the deadline; false once it has passed (the exchange is then late) or
  // the socket fails.
  bool Wait(short events) const {
    if (WaitForSocket(fd_, events, exchange_.deadline)) return true;
    if (Clock::now() >= exchange_.deadline) exchange_.late = true;
    return false;
  }

  // After an SSL_read or SSL_write that returned `result`: waits for what OpenSSL needs to go on.
  bool WaitForTls(int result) const {
    switch (SSL_get_error(ssl_, result)) {
      case SSL_ERROR_WANT_READ:
        return Wait(POLLIN);
      case SSL_ERROR_WANT_WRITE:
        return Wait(POLLOUT);
      default:
        return false;
    }
  }

  ssize_t Receive() {
    for (;;) {
      if (ssl_) {
        ERR_clear_error();
        const int got = SSL_read(ssl_, received_.space(), static_cast<int>(received_.capacity()));
        if (got > 0) return got;
        if (SSL_get_error(ssl_, got) == SSL_ERROR_ZERO_RETURN) return 0;
        if (!WaitForTls(got)) return -1;
        continue;
      }
      const ssize_t got = recv(fd_, received_.space(), received_.capacity(), 0);
      if (got >= 0) return got;
      if (errno != EINTR && !((errno == EAGAIN || errno == EWOULDBLOCK) && Wait(POLLIN))) return -1;
    }
  }

  int fd_;
  SSL* ssl_;
  Exchange& exchange_;
  ReceivedBytes received_;
  size_t head_bytes_ = 0;
  size_t answer_bytes_ = 0;
  bool corked_ = false;
};

// httplib's client (Base: ClientImpl for http, SSLClient for https) connecting, and shaking hands,
// as it does, and then running the exchange over an ExchangeStream instead of its own streams, which
// have a timeout for each read but none for the whole.
template <class Base>
class DeadlineClient : public Base {
 public:
  DeadlineClient(const WebAddress& address, Exchange& exchange)
      : Base(address.host, address.port), exchange_(exchange) {}

 private:
  bool process_socket(const typename Base::Socket& socket,
                      std::function<bool(httplib::Stream&)> callback) override {
    const int flags = fcntl(socket.sock, F_GETFL);
    if (flags < 0 || fcntl(socket.sock, F_SETFL, flags | O_NONBLOCK) < 0) return false;
    ExchangeStream stream(socket.sock, socket.ssl, exchange_);
    return callback(stream);
  }

  Exchange& exchange_;
};

// OpenSSL writes with write(2), which raises SIGPIPE when the service has closed its end: the signal
// is held back on this thread for the exchange, and one raised meanwhile is dropped, so that the
// write fails instead of ending the process.
class SigpipeHeld {
 public:
  SigpipeHeld() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    held_ = sigismember(&pending, SIGPIPE) == 0 && pthread_sigmask(SIG_BLOCK, &pipe_, &before_) == 0;
  }
  ~SigpipeHeld() {
    if (!held_) return;
    const timespec no_wait{};
    while (sigtimedwait(&pipe_, nullptr, &no_wait) == SIGPIPE) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  SigpipeHeld(const SigpipeHeld&) = delete;
  SigpipeHeld& operator=(const SigpipeHeld&) = delete;

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool held_ = false;
};

// httplib checks the chain against the system's certificate authorities (OpenSSL's default paths)
// and then the name with rules of its own, which take a certificate's common name even when its
// alternative names say otherwise; OpenSSL's own check of the name is added to the chain's.
bool VerifyService(httplib::SSLClient& client, const WebAddress& address) {
  client.enable_server_certificate_verification(true);
  X509_VERIFY_PARAM* check = client.ssl_context() ? SSL_CTX_get0_param(client.ssl_context()) : nullptr;
  if (!check) return false;
  in_addr ipv4{};
  const bool ip = address.ipv6 || inet_pton(AF_INET, address.host.c_str(), &ipv4) == 1;
  return ip ? X509_VERIFY_PARAM_set1_ip_asc(check, address.host.c_str()) == 1
            : X509_VERIFY_PARAM_set1_host(check, address.host.c_str(), address.host.size()) == 1;
}

httplib::Headers HeaderFields(const std::string& url, const std::vector<std::string>& lines) {
  httplib::Headers fields;
  for (const std::string& line : lines) {
    const size_t colon = line.find(':');
    if (colon == 0 || colon == std::string::npos ||
        line.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
      throw Error(err::kServiceFailure, "The request to " + url + " could not be sent: its header line \"" +
                                            line + "\" is not a line \"Name: value\".");
    fields.emplace(line.substr(0, colon), TrimBlanks(std::string_view(line).substr(colon + 1)));
  }
  return fields;
}

// A timeout: none below zero, and a year at most (beyond that the clock's arithmetic would overflow).
Clock::duration SecondsOf(long seconds) {
  return std::chrono::seconds(std::clamp(seconds, 0L, kMaxSeconds));
}

std::string Seconds(Clock::duration d) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(d).count()) + " s";
}

// Why an exchange that httplib gave up did not come through.
std::string Cause(const Exchange& x, httplib::Error error, const WebAddress& address,
                  Clock::time_point connect_end, Clock::duration connect_limit, Clock::duration total,
                  const httplib::SSLClient* tls) {
  if (x.late) return "no answer in time (the exchange took longer than the " + Seconds(total) + " allowed)";
  if (x.head_too_long)
    return "the status line and headers of its answer are longer than " + std::to_string(kMaxHeadBytes) +
           " bytes";
  const std::string at = address.HostText() + ":" + std::to_string(address.port);
  switch (error) {
    case httplib::Error::Connection:
    case httplib::Error::ConnectionTimeout:
      if (Clock::now() >= connect_end)
        return "no answer in time (no connection to " + at + " within " + Seconds(connect_limit) + ")";
      return "no connection to " + at + " (refused, or the host is unknown or unreachable)";
    case httplib::Error::SSLConnection:
      if (Clock::now() >= connect_end)
        return "no answer in time (no TLS handshake with " + at + " within " + Seconds(connect_limit) + ")";
      return "the TLS handshake with " + at + " failed";
    case httplib::Error::SSLLoadingCerts:
      return "the system's certificate authorities cannot be loaded";
    case httplib::Error::SSLServerVerification:
      return "its certificate is not trusted for " + address.HostText() + " (" +
             (tls && tls->get_openssl_verify_result() != X509_V_OK
                  ? X509_verify_cert_error_string(tls->get_openssl_verify_result())
                  : "the name does not match") +
             ")";
    case httplib::Error::Read:
      return "the connection broke while the answer was read";
    case httplib::Error::Write:
    case httplib::Error::Canceled:
      return "the connection broke while the request was sent";
    default:
      return "the exchange failed (" + httplib::to_string(error) + ")";
  }
}

class StringBody : public BodySource {
 public:
  explicit StringBody(const std::string& text) : text_(text) {}
  uint64_t size() const override { return text_.size(); }
  size_t Read(char* out, size_t size) override {
    const size_t n = text_.copy(out, size, taken_);
    taken_ += n;
    return n;
  }

 private:
  const std::string& text_;
  size_t taken_ = 0;
};

HttpResponse Perform(const std::string& method, const std::string& url,
                     const std::vector<std::string>& headers, BodySource* body,
                     const HttpTimeouts& timeouts) {
  const WebAddress address = AddressOf(url);
  const Clock::time_point start = Clock::now();
  const Clock::duration total = SecondsOf(timeouts.total_seconds);
  const Clock::duration connect_limit = std::min(SecondsOf(timeouts.connect_seconds), total);
  Exchange x;
  x.deadline = start + total;
  x.cap = timeouts.max_answer_bytes;

  httplib::Request request;
  request.method = method;
  request.path = address.target;
  request.headers = HeaderFields(url, headers);
  request.headers.emplace("Host", address.HostHeader());
  request.headers.emplace("User-Agent", "entprcreq/" + ProgramVersion());
  request.response_handler = [&x](const httplib::Response& head) {
    x.head_read = true;
    // An answer that announces a longer body is refused before any of it is read.
    if (head.has_header("Content-Length") && head.get_header_value<uint64_t>("Content-Length") > x.cap) {
      x.too_large = true;
      return false;
    }
    return true;
  };
  request.content_receiver = [&x](const char* data, size_t size, uint64_t, uint64_t) {
    if (size > x.cap - x.body.size()) {
      x.too_large = true;
      return false;
    }
    x.body.append(data, size);
    return true;
  };
  std::vector<char> piece;
  if (body) {
    // Sent with its length declared, read in pieces as httplib writes them.
    request.content_length_ = body->size();
    piece.resize(static_cast<size_t>(std::min<uint64_t>(body->size(), 64 * 1024)));
    request.content_provider_ = [&x, &piece, body](size_t offset, size_t length, httplib::DataSink& sink) {
      size_t n = 0;
      try {
        n = body->Read(piece.data(), std::min(length, piece.size()));
      } catch (const Error& e) {
        x.send_failure = e.description();
        return false;
      } catch (const std::exception& e) {
        x.send_failure = e.what();
        return false;
      }
      if (n == 0) {
        x.send_failure = "the body ended after " + std::to_string(offset) + " of its " +
                         std::to_string(offset + length) + " bytes";
        return false;
      }
      return sink.write(piece.data(), n);
    };
  }

  httplib::Response response;
  httplib::Error error = httplib::Error::Success;
  bool answered = false;
  std::string cause;
  {
    SigpipeHeld held;
    std::unique_ptr<httplib::ClientImpl> client;
    httplib::SSLClient* tls = nullptr;
    if (address.tls) {
      auto secure = std::make_unique<DeadlineClient<httplib::SSLClient>>(address, x);
      if (!VerifyService(*secure, address))
        throw Error(err::kServiceFailure,
                    "The service at " + url + " cannot be reached: TLS cannot be set up.");
      tls = secure.get();
      client = std::move(secure);
    } else {
      client = std::make_unique<DeadlineClient<httplib::ClientImpl>>(address, x);
    }
    client->set_connection_timeout(connect_limit);
    client->set_follow_location(false);
    client->set_url_encode(false);  // the target goes as the address gives it
    client->set_decompress(false);  // and the answer's body as it came
    client->set_keep_alive(false);
    client->set_tcp_nodelay(true);
    answered = client->send(request, response, error);
    if (!answered) cause = Cause(x, error, address, start + connect_limit, connect_limit, total, tls);
  }

  if (x.too_large)
    throw Error(err::kServiceFailure, "The answer of the service at " + url + " is longer than " +
                                          std::to_string(x.cap) + " bytes; it is refused.");
  if (!x.send_failure.empty())
    throw Error(err::kServiceFailure, "The request to " + url + " could not be sent: " + x.send_failure);
  if (!answered) throw Error(err::kServiceFailure, "The service at " + url + " cannot be reached: " + cause);
  HttpResponse answer;
  answer.status = response.status;
  answer.content_type = response.get_header_value("Content-Type");
  answer.body = std::move(x.body);
  return answer;
}

}  // namespace

std::string WebAddressFault(const std::string& url) {
  WebAddress address;
  return Parse(url, address);
}

void CheckWebAddress(const std::string& url) {
  AddressOf(url);
}

std::string HostOfAddress(const std::string& url) {
  WebAddress address;
  return Parse(url, address).empty() ? address.HostText() : "";
}

HttpResponse HttpGet(const std::string& url, const HttpTimeouts& timeouts) {
  return Perform("GET", url, {}, nullptr, timeouts);
}

HttpResponse HttpPost(const std::string& url, const std::vector<std::string>& headers,
                      const std::string& body, const HttpTimeouts& timeouts) {
  StringBody source(body);
  return Perform("POST", url, headers, &source, timeouts);
}

HttpResponse HttpPostStream(const std::string& url, const std::vector<std::string>& headers, BodySource& body,
                            const HttpTimeouts& timeouts) {
  return Perform("POST", url, headers, &body, timeouts);
}

}  // namespace ent
