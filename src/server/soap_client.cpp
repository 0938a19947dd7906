#include "server/soap_client.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <pugixml.hpp>
#include <string_view>

#include "common/error.h"
#include "server/http_client.h"
#include "server/wsdl.h"
#include "server/xml_names.h"

namespace ent {

namespace {

constexpr std::string_view kEnvelopeNs = "http://schemas.xmlsoap.org/soap/envelope/";

HttpTimeouts TimeoutsOf(const SoapOptions& options) {
  return {options.connect_timeout_seconds, options.total_timeout_seconds, options.max_answer_bytes};
}

// Text content is escaped for an element: markup characters as references, and CR as a reference so
// that the receiver reads CR LF line ends back as they were (a parser turns a raw CR LF into LF).
// Documents run to hundreds of megabytes, so the text is scanned eight bytes at a time.

const char* EntityOf(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#xD;";
    default:
      return nullptr;
  }
}

uint64_t Load8(const char* p) {
  uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The high bit of each byte of `word` that equals `c`, and no other bit.
uint64_t BytesEqual(uint64_t word, char c) {
  constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FULL;
  const uint64_t x = word ^ (0x0101010101010101ULL * static_cast<unsigned char>(c));
  return ~(((x & kLow7) + kLow7) | x | kLow7);
}

// How many bytes BytesEqual marked (a multiply adds the eight high bits into the top byte; the
// instruction that counts bits is not in the baseline x86-64 set).
uint64_t Marked(uint64_t marks) {
  return ((marks >> 7) * 0x0101010101010101ULL) >> 56;
}

uint64_t Escaped(uint64_t word) {
  return BytesEqual(word, '&') | BytesEqual(word, '<') | BytesEqual(word, '>') | BytesEqual(word, '\r');
}

// Where the first character of text[from, size) that needs escaping is, or size.
size_t NextEscaped(const char* text, size_t from, size_t size) {
  static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");
  size_t i = from;
  for (; i + 8 <= size; i += 8) {
    if (const uint64_t marks = Escaped(Load8(text + i))) return i + std::countr_zero(marks) / 8;
  }
  while (i < size && !EntityOf(text[i])) ++i;
  return i;
}

void AppendEscapedText(std::string& out, const char* text, size_t size) {
  for (size_t i = 0; i < size;) {
    const size_t special = NextEscaped(text, i, size);
    out.append(text + i, special - i);
    if (special == size) break;
    out += EntityOf(text[special]);
    i = special + 1;
  }
}

// Bytes AppendEscapedText adds to a text: four for & and CR, three for < and >.
uint64_t EscapeGrowth(const char* text, size_t size) {
  uint64_t growth = 0;
  size_t i = 0;
  for (; i + 8 <= size; i += 8) {
    const uint64_t word = Load8(text + i);
    growth += 4 * Marked(BytesEqual(word, '&') | BytesEqual(word, '\r')) +
              3 * Marked(BytesEqual(word, '<') | BytesEqual(word, '>'));
  }
  for (; i < size; ++i)
    if (const char* entity = EntityOf(text[i])) growth += std::strlen(entity) - 1;
  return growth;
}

std::string EscapedAttribute(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '"')
      out += "&quot;";
    else
      AppendEscapedText(out, &c, 1);
  }
  return out;
}

// The request envelope around its arguments, in two parts: everything before the last argument's
// text, and everything after it.
struct RequestFrame {
  std::string head;
  std::string tail;
};

RequestFrame Frame(const SoapOperation& op, const std::vector<std::string>& leading) {
  const std::string prefix = op.request_namespace.empty() ? "" : "m:";
  const std::string request = prefix + op.request_element;
  RequestFrame frame;
  std::string& h = frame.head;
  h = "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope xmlns:soap=\"" + std::string(kEnvelopeNs) +
      "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"><soap:Body><" +
      request;
  if (!prefix.empty()) h += " xmlns:m=\"" + EscapedAttribute(op.request_namespace) + "\"";
  h += ">";
  const std::string parameter_prefix = op.qualified_parameters ? prefix : "";
  for (size_t i = 0; i + 1 < op.parameters.size(); ++i) {
    const std::string name = parameter_prefix + op.parameters[i];
    h += "<" + name + ">";
    AppendEscapedText(h, leading[i].data(), leading[i].size());
    h += "</" + name + ">";
  }
  const std::string last = parameter_prefix + op.parameters.back();
  h += "<" + last + ">";
  frame.tail = "</" + last + "></" + request + "></soap:Body></soap:Envelope>";
  return frame;
}

// The request body: the frame's head, the last argument escaped piece by piece, the frame's tail.
// The argument is escaped straight into the sender's buffer; only a reference that does not fit there
// waits for the next read.
class RequestBody : public BodySource {
 public:
  RequestBody(RequestFrame frame, const TextSource& last) : frame_(std::move(frame)), last_(last) {
    uint64_t escaped = 0;
    for (uint64_t offset = 0; size_t n = last_.Read(offset, piece_.data(), piece_.size()); offset += n)
      escaped += n + EscapeGrowth(piece_.data(), n);
    size_ = frame_.head.size() + escaped + frame_.tail.size();
    pending_ = frame_.head;
  }

  uint64_t size() const override { return size_; }

  size_t Read(char* out, size_t size) override {
    size_t written = 0;
    while (written < size) {
      if (taken_ < pending_.size()) {
        const size_t n = std::min(size - written, pending_.size() - taken_);
        std::memcpy(out + written, pending_.data() + taken_, n);
        taken_ += n;
        written += n;
      } else if (!in_argument_) {
        break;
      } else if (at_ < end_) {
        written += EscapeInto(out + written, size - written);
      } else if (const size_t n = last_.Read(offset_, piece_.data(), piece_.size())) {
        offset_ += n;
        at_ = 0;
        end_ = n;
      } else {
        in_argument_ = false;
        pending_ = frame_.tail;
        taken_ = 0;
      }
    }
    return written;
  }

 private:
  // Escapes the piece from at_ into out (room bytes at most); returns the bytes written.
  size_t EscapeInto(char* out, size_t room) {
    size_t written = 0;
    while (written < room && at_ < end_) {
      const size_t special = NextEscaped(piece_.data(), at_, std::min(end_, at_ + (room - written)));
      std::memcpy(out + written, piece_.data() + at_, special - at_);
      written += special - at_;
      at_ = special;
      if (written == room || at_ == end_) break;
      const char* entity = EntityOf(piece_[at_++]);
      const size_t length = std::strlen(entity);
      if (length > room - written) {
        pending_.assign(entity, length);
        taken_ = 0;
        break;
      }
      std::memcpy(out + written, entity, length);
      written += length;
    }
    return written;
  }

  static constexpr size_t kPiece = 256 * 1024;
  std::vector<char> piece_ = std::vector<char>(kPiece);  // the last argument's text read from its source
  size_t at_ = 0, end_ = 0;                              // the part of piece_ not escaped yet
  RequestFrame frame_;
  const TextSource& last_;
  uint64_t size_ = 0;
  bool in_argument_ = true;  // the head or the argument is being sent, not yet the tail
  uint64_t offset_ = 0;
  std::string pending_;  // text not handed out yet: the head, the tail, or a reference
  size_t taken_ = 0;
};

class StringSource : public TextSource {
 public:
  explicit StringSource(const std::string& text) : text_(text) {}
  uint64_t size() const override { return text_.size(); }
  size_t Read(uint64_t offset, char* out, size_t size) const override {
    if (offset >= text_.size()) return 0;
    return text_.copy(out, size, static_cast<size_t>(offset));
  }

 private:
  const std::string& text_;
};

// The result text of an answer, or a failure for an HTTP error or a SOAP Fault.
std::string ReadAnswer(const HttpResponse& response, const SoapOperation& op, const std::string& endpoint) {
  pugi::xml_document doc;
  const bool parsed = static_cast<bool>(doc.load_string(response.body.c_str()));
  pugi::xml_node body = xml::FirstElement(xml::FirstElement(doc, "Envelope"), "Body");
  pugi::xml_node answer = xml::FirstElement(body);
  if (answer && xml::LocalName(answer.name()) == "Fault") {
    std::string text = xml::FirstElement(answer, "faultstring").text().get();
    std::string code = xml::FirstElement(answer, "faultcode").text().get();
    throw Error(err::kServiceFailure, "The service answered " + op.name + " with a SOAP fault: " + text +
                                          (code.empty() ? "" : " (" + code + ")"));
  }
  if (response.status != 200)
    throw Error(err::kServiceFailure, "The service at " + endpoint + " answered " + op.name +
                                          " with HTTP status " + std::to_string(response.status) + ".");
  if (!parsed || !answer)
    throw Error(err::kServiceFailure,
                "The service at " + endpoint + " gave no SOAP answer to " + op.name + ".");
  pugi::xml_node result =
      op.result_element.empty() ? xml::FirstElement(answer) : xml::FirstElement(answer, op.result_element);
  return result.text().get();
}

}  // namespace

SoapClient::SoapClient(const SoapOptions& options) : options_(options) {}
SoapClient::~SoapClient() = default;

void SoapClient::Init(const std::string& wsdl_url) {
  wsdl_.reset();
  HttpResponse response = HttpGet(wsdl_url, TimeoutsOf(options_));
  last_status_ = response.status;
  if (response.status != 200)
    throw Error(err::kServiceFailure, "The WSDL at " + wsdl_url + " cannot be read: HTTP status " +
                                          std::to_string(response.status) + ".");
  auto wsdl = std::make_unique<Wsdl>(Wsdl::Parse(response.body, wsdl_url));
  const std::string& endpoint = wsdl->endpoint();
  const std::string fault = WebAddressFault(endpoint);
  if (!fault.empty())
    throw Error(err::kServiceFailure, "The WSDL at " + wsdl_url + " gives the service address " + endpoint +
                                          ", which is refused: " + fault + ".");
  const std::string host = HostOfAddress(wsdl_url);
  if (HostOfAddress(endpoint) != host)
    throw Error(err::kServiceFailure, "The WSDL at " + wsdl_url + " gives the service address " + endpoint +
                                          ", which is refused: posts go only to the configured host " + host +
                                          ".");
  wsdl_ = std::move(wsdl);
}

std::string SoapClient::Call(const std::string& operation, const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    if (!wsdl_) throw Error(err::kServiceFailure, "The SOAP client was not initialised from a WSDL.");
    throw Error(err::kServiceFailure, "The operation " + operation + " takes " +
                                          std::to_string(wsdl_->Operation(operation).parameters.size()) +
                                          " arguments; 0 were given.");
  }
  const std::vector<std::string> leading(arguments.begin(), arguments.end() - 1);
  return Call(operation, leading, StringSource(arguments.back()));
}

std::string SoapClient::Call(const std::string& operation, const std::vector<std::string>& arguments,
                             const TextSource& last) {
  if (!wsdl_) throw Error(err::kServiceFailure, "The SOAP client was not initialised from a WSDL.");
  SoapOperation op = wsdl_->Operation(operation);
  if (arguments.size() + 1 != op.parameters.size())
    throw Error(err::kServiceFailure, "The operation " + operation + " takes " +
                                          std::to_string(op.parameters.size()) + " arguments; " +
                                          std::to_string(arguments.size() + 1) + " were given.");
  const std::vector<std::string> headers = {"Content-Type: text/xml; charset=utf-8",
                                            "SOAPAction: \"" + op.soap_action + "\""};
  RequestBody body(Frame(op, arguments), last);
  HttpResponse response = HttpPostStream(wsdl_->endpoint(), headers, body, TimeoutsOf(options_));
  last_status_ = response.status;
  return ReadAnswer(response, op, wsdl_->endpoint());
}

}  // namespace ent
