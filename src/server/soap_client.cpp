#include "server/soap_client.h"

#include <algorithm>
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

// Text content escaped for an element: markup characters as references, and CR as a reference so
// that the receiver reads CR LF line ends back as they were (a parser turns a raw CR LF into LF).
void AppendEscapedText(std::string& out, const char* text, size_t size) {
  size_t plain = 0;  // where the run of characters that need no escaping began
  for (size_t i = 0; i < size; ++i) {
    const char* entity;
    switch (text[i]) {
      case '&':
        entity = "&amp;";
        break;
      case '<':
        entity = "&lt;";
        break;
      case '>':
        entity = "&gt;";
        break;
      case '\r':
        entity = "&#xD;";
        break;
      default:
        continue;
    }
    out.append(text + plain, i - plain);
    out += entity;
    plain = i + 1;
  }
  out.append(text + plain, size - plain);
}

// Bytes AppendEscapedText adds to a text.
uint64_t EscapeGrowth(const char* text, size_t size) {
  uint64_t growth = 0;
  for (size_t i = 0; i < size; ++i) {
    const char c = text[i];
    growth += c == '&' ? 4 : c == '<' || c == '>' ? 3 : c == '\r' ? 4 : 0;
  }
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
class RequestBody : public BodySource {
 public:
  RequestBody(RequestFrame frame, const TextSource& last) : frame_(std::move(frame)), last_(last) {
    std::vector<char> piece(kPiece);
    uint64_t escaped = 0;
    for (uint64_t offset = 0; size_t n = last_.Read(offset, piece.data(), piece.size()); offset += n)
      escaped += n + EscapeGrowth(piece.data(), n);
    size_ = frame_.head.size() + escaped + frame_.tail.size();
    pending_ = frame_.head;
  }

  uint64_t size() const override { return size_; }

  size_t Read(char* out, size_t size) override {
    while (taken_ == pending_.size() && stage_ < 2) {
      pending_.clear();
      taken_ = 0;
      if (stage_ == 0) {
        piece_.resize(kPiece);
        size_t n = last_.Read(offset_, piece_.data(), piece_.size());
        offset_ += n;
        if (n > 0) {
          AppendEscapedText(pending_, piece_.data(), n);
          continue;
        }
        stage_ = 1;
      }
      if (stage_ == 1) {
        pending_ = frame_.tail;
        stage_ = 2;
      }
    }
    const size_t n = std::min(size, pending_.size() - taken_);
    std::copy_n(pending_.data() + taken_, n, out);
    taken_ += n;
    return n;
  }

 private:
  static constexpr size_t kPiece = 256 * 1024;
  std::vector<char> piece_;  // the last argument's text read from its source
  RequestFrame frame_;
  const TextSource& last_;
  uint64_t size_ = 0;
  int stage_ = 0;  // 0: the last argument, 1: the tail, 2: done
  uint64_t offset_ = 0;
  std::string pending_;  // escaped text not handed out yet
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
