#include "server/http_client.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "common/error.h"
#include "common/text.h"
#include "common/version.h"
#include "server/socket_io.h"
#include "server/tls_library.h"

namespace ent {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kOnlyWebAddresses = "only http:// and https:// addresses are used";
constexpr size_t kMaxHostName = 253;
// The status lines and header lines of an answer, interim answers' included.
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
// sender and the answer's reader.
struct Exchange {
  Clock::time_point deadline;
  size_t cap = 0;
  std::string body;   // the answer's body so far
  bool late = false;  // the deadline passed
  bool head_too_long = false;
  bool too_large = false;        // the answer's body is longer than the cap
  long certificate = X509_V_OK;  // why the service's certificate was not trusted
  std::string tls_failure;       // why OpenSSL cannot be used
  std::string send_failure;      // why the request's body could not be read
};

// What stopped an exchange; Cause says it in words.
enum class Fault { kNone, kConnection, kNoTls, kCertificates, kTls, kCertificate, kWrite, kRead };

struct HandleFree {
  void operator()(SSL_CTX* context) const { OpenSsl().SSL_CTX_free(context); }
  void operator()(SSL* tls) const { OpenSsl().SSL_free(tls); }
  void operator()(addrinfo* found) const { freeaddrinfo(found); }
};
using TlsContext = std::unique_ptr<SSL_CTX, HandleFree>;
using Tls = std::unique_ptr<SSL, HandleFree>;
using Addresses = std::unique_ptr<addrinfo, HandleFree>;

// The connection of one exchange, on a non-blocking socket, TLS when `ssl` is set: every read and
// write waits until the exchange's deadline at the latest, and all that is read is bounded by the cap.
class Connection {
 public:
  // The request's head and its body are written apart; corked, the connection sends them in full
  // segments, a small request in one, until the first read sends what is held back. A service whose
  // listen queue overflowed takes a connection again from its first segment, and resets one whose
  // request came in two.
  Connection(int fd, SSL* ssl, Exchange& exchange) : fd_(fd), ssl_(ssl), exchange_(exchange) {
    const int on = 1;
    corked_ = setsockopt(fd_, IPPROTO_TCP, TCP_CORK, &on, sizeof on) == 0;
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Writes all of `data`; false when the connection fails or the deadline passes.
  bool Write(const char* data, size_t size) {
    while (size > 0) {
      const ssize_t sent = Send(data, size);
      if (sent <= 0) return false;
      data += sent;
      size -= static_cast<size_t>(sent);
    }
    return true;
  }

  // Up to `size` bytes of the answer: how many, 0 at its end, -1 when the connection fails, the
  // deadline passes or more is read than any answer within the cap needs.
  ssize_t Read(char* out, size_t size) {
    if (corked_) {
      // The request is all written: out with what is held back.
      const int off = 0;
      setsockopt(fd_, IPPROTO_TCP, TCP_CORK, &off, sizeof off);
      corked_ = false;
    }
    if (received_.empty()) {
      const ssize_t got = Receive();
      if (got <= 0) return got;
      // The body's own cap is Keep's; this one also bounds what is read around it (a chunked
      // body's size lines): twice the cap and a head, whatever the answer's framing.
      if ((answer_bytes_ += static_cast<size_t>(got)) > 2 * exchange_.cap + kMaxHeadBytes) {
        exchange_.too_large = true;
        return -1;
      }
      received_.Received(static_cast<size_t>(got));
    }
    return static_cast<ssize_t>(received_.Take(out, size));
  }

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
    switch (OpenSsl().SSL_get_error(ssl_, result)) {
      case SSL_ERROR_WANT_READ:
        return Wait(POLLIN);
      case SSL_ERROR_WANT_WRITE:
        return Wait(POLLOUT);
      default:
        return false;
    }
  }

  ssize_t Send(const char* data, size_t size) {
    const int piece = static_cast<int>(std::min<size_t>(size, INT_MAX));
    for (;;) {
      if (ssl_) {
        OpenSsl().ERR_clear_error();
        const int sent = OpenSsl().SSL_write(ssl_, data, piece);
        if (sent > 0) return sent;
        if (!WaitForTls(sent)) return -1;
        continue;  // OpenSSL wants the same write again
      }
      const ssize_t sent = send(fd_, data, size, MSG_NOSIGNAL);
      if (sent >= 0) return sent;
      if (errno != EINTR && !((errno == EAGAIN || errno == EWOULDBLOCK) && Wait(POLLOUT))) return -1;
    }
  }

  ssize_t Receive() {
    for (;;) {
      if (ssl_) {
        OpenSsl().ERR_clear_error();
        const int got = OpenSsl().SSL_read(ssl_, received_.space(), static_cast<int>(received_.capacity()));
        if (got > 0) return got;
        if (OpenSsl().SSL_get_error(ssl_, got) == SSL_ERROR_ZERO_RETURN) return 0;
        if (!WaitForTls(got)) return -1;
        continue;
      }
      const ssize_t got = ReceiveBefore(fd_, received_.space(), received_.capacity(), exchange_.deadline);
      if (got < 0 && Clock::now() >= exchange_.deadline) exchange_.late = true;
      return got;
    }
  }

  int fd_;
  SSL* ssl_;
  Exchange& exchange_;
  ReceivedBytes received_;
  size_t answer_bytes_ = 0;
  bool corked_ = false;
};

// Connects to the host's addresses in turn until one takes the connection or `end` passes.
Fault Connect(const WebAddress& address, Clock::time_point end, Socket& connected) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &found) != 0)
    return Fault::kConnection;
  const Addresses addresses(found);
  for (const addrinfo* at = found; at; at = at->ai_next) {
    Socket socket(::socket(at->ai_family, at->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, at->ai_protocol));
    if (socket.get() < 0) continue;
    const int on = 1;
    setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(socket.get(), at->ai_addr, at->ai_addrlen) != 0) {
      if (errno != EINPROGRESS && errno != EINTR) continue;
      if (!WaitForSocket(socket.get(), POLLOUT, end)) return Fault::kConnection;
      int error = 0;
      socklen_t size = sizeof error;
      if (getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0) continue;
    }
    connected = std::move(socket);
    return Fault::kNone;
  }
  return Fault::kConnection;
}

bool IsIpAddress(const WebAddress& address) {
  in_addr ipv4{};
  return address.ipv6 || inet_pton(AF_INET, address.host.c_str(), &ipv4) == 1;
}

// A client's TLS context that trusts the system's certificate authorities (OpenSSL's default paths)
// and takes only a certificate for the address's host: OpenSSL checks the name (or the IP address)
// with the chain, against the alternative names when there are any, never the common name then.
// OpenSSL is loaded here, for the first https exchange; when it cannot be, x.tls_failure says why.
Fault TlsContextFor(const WebAddress& address, TlsContext& context, Exchange& x) {
  const TlsLibrary* library = nullptr;
  try {
    library = &OpenSsl();
  } catch (const Error& e) {
    x.tls_failure = e.description();
    return Fault::kNoTls;
  }
  const TlsLibrary& tls = *library;
  context.reset(tls.SSL_CTX_new(tls.TLS_client_method()));
  if (!context ||
      tls.SSL_CTX_ctrl(context.get(), SSL_CTRL_SET_MIN_PROTO_VERSION, TLS1_2_VERSION, nullptr) != 1)
    return Fault::kNoTls;
  if (tls.SSL_CTX_set_default_verify_paths(context.get()) != 1) return Fault::kCertificates;
  tls.SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
  X509_VERIFY_PARAM* check = tls.SSL_CTX_get0_param(context.get());
  const bool named =
      check && (IsIpAddress(address)
                    ? tls.X509_VERIFY_PARAM_set1_ip_asc(check, address.host.c_str()) == 1
                    : tls.X509_VERIFY_PARAM_set1_host(check, address.host.c_str(), address.host.size()) == 1);
  return named ? Fault::kNone : Fault::kNoTls;
}

// Shakes hands on the connected socket until `end`; the service's name goes with the first message
// (SNI) unless the host is an IP address.
Fault ShakeHands(const WebAddress& address, int fd, SSL_CTX* context, Clock::time_point end, Exchange& x,
                 Tls& tls) {
  tls.reset(OpenSsl().SSL_new(context));
  if (!tls || OpenSsl().SSL_set_fd(tls.get(), fd) != 1) return Fault::kNoTls;
  if (!IsIpAddress(address) &&
      OpenSsl().SSL_ctrl(tls.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                         const_cast<char*>(address.host.c_str())) != 1)
    return Fault::kNoTls;
  for (;;) {
    OpenSsl().ERR_clear_error();
    const int result = OpenSsl().SSL_connect(tls.get());
    if (result == 1) break;
    const int error = OpenSsl().SSL_get_error(tls.get(), result);
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE) {
      if (!WaitForSocket(fd, error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT, end)) return Fault::kTls;
      continue;
    }
    // With SSL_VERIFY_PEER a certificate that is not trusted ends the handshake, and says why.
    x.certificate = OpenSsl().SSL_get_verify_result(tls.get());
    return x.certificate == X509_V_OK ? Fault::kTls : Fault::kCertificate;
  }
  return Fault::kNone;
}

// Writes the request's body as `body` hands it out, in pieces of 64 KB at most; false when the body
// fails (x.send_failure says how) or the connection does.
bool SendBody(Connection& connection, BodySource& body, Exchange& x) {
  const uint64_t size = body.size();
  std::vector<char> piece(static_cast<size_t>(std::min<uint64_t>(size, 64 * 1024)));
  for (uint64_t sent = 0; sent < size;) {
    size_t n = 0;
    try {
      n = body.Read(piece.data(), static_cast<size_t>(std::min<uint64_t>(size - sent, piece.size())));
    } catch (const Error& e) {
      x.send_failure = e.description();
      return false;
    } catch (const std::exception& e) {
      x.send_failure = e.what();
      return false;
    }
    if (n == 0) {
      x.send_failure =
          "the body ended after " + std::to_string(sent) + " of its " + std::to_string(size) + " bytes";
      return false;
    }
    if (!connection.Write(piece.data(), n)) return false;
    sent += n;
  }
  return true;
}

// Reads a line up to its LF into `line`, without its CR LF, taking at most `budget` bytes from it;
// false when the connection ends or fails first, or the budget runs out.
bool ReadLine(Connection& connection, std::string& line, size_t& budget) {
  line.clear();
  for (char c;;) {
    if (budget == 0 || connection.Read(&c, 1) != 1) return false;
    --budget;
    if (c == '\n') break;
    line += c;
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

// The status of a status line "HTTP/1.x NNN reason"; 0 when the line is not one.
long StatusOf(std::string_view line) {
  auto digit = [](char c) { return c >= '0' && c <= '9'; };
  if (line.size() < 12 || !line.starts_with("HTTP/1.") || !digit(line[7]) || line[8] != ' ' ||
      !std::all_of(line.begin() + 9, line.begin() + 12, digit) || line[9] == '0' ||
      (line.size() > 12 && line[12] != ' '))
    return 0;
  return (line[9] - '0') * 100 + (line[10] - '0') * 10 + (line[11] - '0');
}

// A number given in full by `text` in `base`.
bool NumberOf(std::string_view text, int base, uint64_t& number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return !text.empty() && error == std::errc() && stop == end;
}

struct AnswerHead {
  long status = 0;
  std::string content_type;
  bool chunked = false;  // the last transfer coding is chunked
  bool coded = false;    // some transfer coding is given
  bool sized = false;    // a Content-Length is given
  uint64_t length = 0;
};

// Reads a status line and its header lines, taking at most `budget` bytes.
Fault ReadHead(Connection& connection, Exchange& x, size_t& budget, AnswerHead& head) {
  std::string line;
  if (!ReadLine(connection, line, budget)) {
    x.head_too_long = budget == 0;
    return Fault::kRead;
  }
  head = AnswerHead{};
  head.status = StatusOf(line);
  if (head.status == 0) return Fault::kRead;
  for (;;) {
    if (!ReadLine(connection, line, budget)) {
      x.head_too_long = budget == 0;
      return Fault::kRead;
    }
    if (line.empty()) return Fault::kNone;
    const size_t colon = line.find(':');
    if (colon == std::string::npos) continue;  // not a field: nothing to take from it
    const std::string_view name = std::string_view(line).substr(0, colon);
    const std::string_view value = TrimSpace(std::string_view(line).substr(colon + 1));
    if (EqualsIgnoreCase(name, "Content-Type")) {
      if (head.content_type.empty()) head.content_type = value;
    } else if (EqualsIgnoreCase(name, "Transfer-Encoding")) {
      const std::string_view last = TrimSpace(value.substr(value.rfind(',') + 1));
      head.coded = true;
      head.chunked = EqualsIgnoreCase(last, "chunked");
    } else if (EqualsIgnoreCase(name, "Content-Length")) {
      // Two lengths that differ leave the answer's end in doubt.
      uint64_t length = 0;
      if (!NumberOf(value, 10, length) || (head.sized && length != head.length)) return Fault::kRead;
      head.sized = true;
      head.length = length;
    }
  }
}

// Keeps `size` more bytes of the answer's body; false (the answer too large) past the cap.
bool Keep(Exchange& x, const char* data, size_t size) {
  if (size > x.cap - x.body.size()) {
    x.too_large = true;
    return false;
  }
  x.body.append(data, size);
  return true;
}

// Reads `size` bytes of the body, or all until the connection ends when `size` is UINT64_MAX.
bool ReadBody(Connection& connection, Exchange& x, uint64_t size) {
  const bool to_end = size == UINT64_MAX;
  char piece[16 * 1024];
  while (size > 0) {
    const ssize_t got = connection.Read(piece, static_cast<size_t>(std::min<uint64_t>(size, sizeof piece)));
    if (got == 0 && to_end) return true;
    if (got <= 0 || !Keep(x, piece, static_cast<size_t>(got))) return false;
    if (!to_end) size -= static_cast<uint64_t>(got);
  }
  return true;
}

// A chunked body: each chunk after its size line (hexadecimal, perhaps with ";extensions"), then a
// last one of size 0 and trailer lines, which are not kept.
bool ReadChunks(Connection& connection, Exchange& x) {
  std::string line;
  size_t unbounded = SIZE_MAX;  // Connection::Read bounds what a line takes
  for (;;) {
    uint64_t size = 0;
    if (!ReadLine(connection, line, unbounded) ||
        !NumberOf(TrimSpace(std::string_view(line).substr(0, line.find(';'))), 16, size))
      return false;
    if (size == 0) break;
    if (size == UINT64_MAX || !ReadBody(connection, x, size) || !ReadLine(connection, line, unbounded) ||
        !line.empty())
      return false;
  }
  do {
    if (!ReadLine(connection, line, unbounded)) return false;
  } while (!line.empty());
  return true;
}

// Reads the final answer, after any interim (1xx) ones, into `x` and `head`.
Fault ReadAnswer(Connection& connection, Exchange& x, AnswerHead& head) {
  size_t budget = kMaxHeadBytes;  // for the status lines and headers of all the answers
  do {
    if (const Fault fault = ReadHead(connection, x, budget, head); fault != Fault::kNone) return fault;
  } while (head.status < 200);
  if (head.status == 204 || head.status == 304) return Fault::kNone;
  if (head.coded)
    return (head.chunked ? ReadChunks(connection, x) : ReadBody(connection, x, UINT64_MAX)) ? Fault::kNone
                                                                                            : Fault::kRead;
  // An answer that announces a longer body is refused before any of it is read.
  if (head.sized && head.length > x.cap) {
    x.too_large = true;
    return Fault::kRead;
  }
  return ReadBody(connection, x, head.sized ? head.length : UINT64_MAX) ? Fault::kNone : Fault::kRead;
}

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

// The request's head: its line, Host, User-Agent, the caller's header lines, the body's length and
// Connection: close (one request a connection).
std::string RequestHead(const std::string& method, const std::string& url, const WebAddress& address,
                        const std::vector<std::string>& lines, const BodySource* body) {
  std::string head = method + " " + address.target + " HTTP/1.1\r\nHost: " + address.HostHeader() +
                     "\r\nUser-Agent: entprcreq/" + ProgramVersion() + "\r\n";
  for (const std::string& line : lines) {
    const size_t colon = line.find(':');
    if (colon == 0 || colon == std::string::npos ||
        line.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
      throw Error(err::kServiceFailure, "The request to " + url + " could not be sent: its header line \"" +
                                            line + "\" is not a line \"Name: value\".");
    head += line.substr(0, colon) + ": " + TrimBlanks(std::string_view(line).substr(colon + 1)) + "\r\n";
  }
  if (body) head += "Content-Length: " + std::to_string(body->size()) + "\r\n";
  return head + "Connection: close\r\n\r\n";
}

// Runs the exchange: connects until `connect_end`, shakes hands for https until then too, sends the
// request and reads the answer until the exchange's deadline.
Fault Run(const WebAddress& address, const std::string& request, BodySource* body,
          Clock::time_point connect_end, Exchange& x, AnswerHead& head) {
  Socket socket;  // declared first: closed after TLS is done with it
  TlsContext context;
  Tls tls;
  if (address.tls)
    if (const Fault fault = TlsContextFor(address, context, x); fault != Fault::kNone) return fault;
  if (const Fault fault = Connect(address, connect_end, socket); fault != Fault::kNone) return fault;
  if (context)
    if (const Fault fault = ShakeHands(address, socket.get(), context.get(), connect_end, x, tls);
        fault != Fault::kNone)
      return fault;
  Connection connection(socket.get(), tls.get(), x);
  if (!connection.Write(request.data(), request.size()) || (body && !SendBody(connection, *body, x)))
    return Fault::kWrite;
  const Fault fault = ReadAnswer(connection, x, head);
  if (tls && fault == Fault::kNone)
    OpenSsl().SSL_shutdown(tls.get());  // a close_notify, if it goes out at once
  return fault;
}

// A timeout: none below zero, and a year at most (beyond that the clock's arithmetic would overflow).
Clock::duration SecondsOf(long seconds) {
  return std::chrono::seconds(std::clamp(seconds, 0L, kMaxSeconds));
}

std::string Seconds(Clock::duration d) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(d).count()) + " s";
}

// Why an exchange that stopped with `fault` did not come through.
std::string Cause(const Exchange& x, Fault fault, const WebAddress& address, Clock::time_point connect_end,
                  Clock::duration connect_limit, Clock::duration total) {
  if (x.late) return "no answer in time (the exchange took longer than the " + Seconds(total) + " allowed)";
  if (x.head_too_long)
    return "the status line and headers of its answer are longer than " + std::to_string(kMaxHeadBytes) +
           " bytes";
  const std::string at = address.HostText() + ":" + std::to_string(address.port);
  switch (fault) {
    case Fault::kConnection:
      if (Clock::now() >= connect_end)
        return "no answer in time (no connection to " + at + " within " + Seconds(connect_limit) + ")";
      return "no connection to " + at + " (refused, or the host is unknown or unreachable)";
    case Fault::kTls:
      if (Clock::now() >= connect_end)
        return "no answer in time (no TLS handshake with " + at + " within " + Seconds(connect_limit) + ")";
      return "the TLS handshake with " + at + " failed";
    case Fault::kNoTls:
      return x.tls_failure.empty() ? "TLS cannot be set up." : x.tls_failure;
    case Fault::kCertificates:
      return "the system's certificate authorities cannot be loaded";
    case Fault::kCertificate:
      return "its certificate is not trusted for " + address.HostText() + " (" +
             OpenSsl().X509_verify_cert_error_string(x.certificate) + ")";
    case Fault::kRead:
      return "the connection broke while the answer was read";
    case Fault::kWrite:
    case Fault::kNone:
      break;
  }
  return "the connection broke while the request was sent";
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
  const std::string request = RequestHead(method, url, address, headers, body);
  const Clock::time_point start = Clock::now();
  const Clock::duration total = SecondsOf(timeouts.total_seconds);
  const Clock::duration connect_limit = std::min(SecondsOf(timeouts.connect_seconds), total);
  Exchange x;
  x.deadline = start + total;
  x.cap = timeouts.max_answer_bytes;

  AnswerHead head;
  std::string cause;
  Fault fault = Fault::kNone;
  {
    SigpipeHeld held;
    fault = Run(address, request, body, start + connect_limit, x, head);
    if (fault != Fault::kNone) cause = Cause(x, fault, address, start + connect_limit, connect_limit, total);
  }

  if (x.too_large)
    throw Error(err::kServiceFailure, "The answer of the service at " + url + " is longer than " +
                                          std::to_string(x.cap) + " bytes; it is refused.");
  if (!x.send_failure.empty())
    throw Error(err::kServiceFailure, "The request to " + url + " could not be sent: " + x.send_failure);
  if (fault != Fault::kNone)
    throw Error(err::kServiceFailure, "The service at " + url + " cannot be reached: " + cause);
  HttpResponse answer;
  answer.status = head.status;
  answer.content_type = std::move(head.content_type);
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
