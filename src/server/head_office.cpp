#include "server/head_office.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <mutex>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>
#include <thread>

#include "common/error.h"
#include "server/head_office_page.h"
#include "server/http_serving.h"
#include "server/post_arguments.h"
#include "server/xml_names.h"

namespace ent {

namespace {

const char kWsdlPath[] = "/EntHost/service.asmx";
const char kOperation[] = "sendReport";
const char kEnvelopeNs[] = "http://schemas.xmlsoap.org/soap/envelope/";
// An argument's text is kept in memory up to this size; a longer one (the document) goes to a file.
constexpr size_t kArgumentInMemory = size_t{1} << 20;

std::string XmlText(const pugi::xml_document& doc) {
  std::ostringstream out;
  doc.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
  return out.str();
}

pugi::xml_node Add(pugi::xml_node parent, const char* name,
                   std::initializer_list<std::pair<const char*, std::string>> attributes = {}) {
  pugi::xml_node node = parent.append_child(name);
  for (const auto& [key, value] : attributes) node.append_attribute(key) = value.c_str();
  return node;
}

std::string SoapAction(const std::string& ns) {
  return ns + (ns.empty() || ns.back() == '/' ? "" : "/") + kOperation;
}

// The service description, laid out as ASP.NET publishes one: a SOAP 1.1 and a SOAP 1.2 binding of
// one port type, document/literal, parameters as qualified elements of the target namespace.
std::string WsdlText(const HeadOfficeOptions& o, const std::string& location) {
  pugi::xml_document doc;
  pugi::xml_node decl = doc.append_child(pugi::node_declaration);
  decl.append_attribute("version") = "1.0";
  decl.append_attribute("encoding") = "utf-8";
  pugi::xml_node defs = Add(doc, "wsdl:definitions",
                            {{"xmlns:soap", "http://schemas.xmlsoap.org/wsdl/soap/"},
                             {"xmlns:tns", o.target_namespace},
                             {"xmlns:s", "http://www.w3.org/2001/XMLSchema"},
                             {"xmlns:soap12", "http://schemas.xmlsoap.org/wsdl/soap12/"},
                             {"targetNamespace", o.target_namespace},
                             {"xmlns:wsdl", "http://schemas.xmlsoap.org/wsdl/"}});
  pugi::xml_node schema = Add(Add(defs, "wsdl:types"), "s:schema",
                              {{"elementFormDefault", "qualified"}, {"targetNamespace", o.target_namespace}});
  pugi::xml_node in =
      Add(Add(Add(schema, "s:element", {{"name", kOperation}}), "s:complexType"), "s:sequence");
  for (const std::string& p : o.parameters)
    Add(in, "s:element", {{"minOccurs", "0"}, {"maxOccurs", "1"}, {"name", p}, {"type", "s:string"}});
  pugi::xml_node out =
      Add(Add(Add(schema, "s:element", {{"name", std::string(kOperation) + "Response"}}), "s:complexType"),
          "s:sequence");
  Add(out, "s:element",
      {{"minOccurs", "0"},
       {"maxOccurs", "1"},
       {"name", std::string(kOperation) + "Result"},
       {"type", "s:string"}});
  for (const char* direction : {"In", "Out"}) {
    const std::string element = std::string("tns:") + kOperation + (direction[0] == 'O' ? "Response" : "");
    Add(Add(defs, "wsdl:message", {{"name", std::string(kOperation) + "Soap" + direction}}), "wsdl:part",
        {{"name", "parameters"}, {"element", element}});
  }
  pugi::xml_node abstract =
      Add(Add(defs, "wsdl:portType", {{"name", "ServiceSoap"}}), "wsdl:operation", {{"name", kOperation}});
  Add(abstract, "wsdl:input", {{"message", std::string("tns:") + kOperation + "SoapIn"}});
  Add(abstract, "wsdl:output", {{"message", std::string("tns:") + kOperation + "SoapOut"}});
  for (const char* soap : {"soap", "soap12"}) {
    const std::string binding_name = soap[4] ? "ServiceSoap12" : "ServiceSoap";
    pugi::xml_node binding = Add(defs, "wsdl:binding", {{"name", binding_name}, {"type", "tns:ServiceSoap"}});
    Add(binding, (std::string(soap) + ":binding").c_str(),
        {{"transport", "http://schemas.xmlsoap.org/soap/http"}});
    pugi::xml_node op = Add(binding, "wsdl:operation", {{"name", kOperation}});
    Add(op, (std::string(soap) + ":operation").c_str(),
        {{"soapAction", SoapAction(o.target_namespace)}, {"style", "document"}});
    for (const char* io : {"wsdl:input", "wsdl:output"})
      Add(Add(op, io), (std::string(soap) + ":body").c_str(), {{"use", "literal"}});
  }
  pugi::xml_node service = Add(defs, "wsdl:service", {{"name", "Service"}});
  Add(Add(service, "wsdl:port", {{"name", "ServiceSoap"}, {"binding", "tns:ServiceSoap"}}), "soap:address",
      {{"location", location}});
  Add(Add(service, "wsdl:port", {{"name", "ServiceSoap12"}, {"binding", "tns:ServiceSoap12"}}),
      "soap12:address", {{"location", location}});
  return XmlText(doc);
}

// A SOAP 1.1 envelope around one element; `fill` adds the body's content.
template <typename Fill>
std::string Envelope(Fill fill) {
  pugi::xml_document doc;
  pugi::xml_node decl = doc.append_child(pugi::node_declaration);
  decl.append_attribute("version") = "1.0";
  decl.append_attribute("encoding") = "utf-8";
  pugi::xml_node env = Add(doc, "soap:Envelope", {{"xmlns:soap", kEnvelopeNs}});
  fill(Add(env, "soap:Body"));
  return XmlText(doc);
}

std::string FaultText(const std::string& code, const std::string& text) {
  return Envelope([&](pugi::xml_node body) {
    pugi::xml_node fault = Add(body, "soap:Fault");
    Add(fault, "faultcode").text().set(code.c_str());
    Add(fault, "faultstring").text().set(text.c_str());
    Add(fault, "detail");
  });
}

std::string AnswerText(const HeadOfficeOptions& o) {
  return Envelope([&](pugi::xml_node body) {
    pugi::xml_node response =
        Add(body, (std::string(kOperation) + "Response").c_str(), {{"xmlns", o.target_namespace}});
    Add(response, (std::string(kOperation) + "Result").c_str()).text().set(o.answer.c_str());
  });
}

std::string JsonString(const std::string& text) {
  std::ostringstream out;
  out << '"';
  for (unsigned char c : text) {
    switch (c) {
      case '"':
        out << "\\\"";
        break;
      case '\\':
        out << "\\\\";
        break;
      case '\n':
        out << "\\n";
        break;
      case '\r':
        out << "\\r";
        break;
      case '\t':
        out << "\\t";
        break;
      default:
        if (c < 0x20)
          out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << static_cast<int>(c) << std::dec;
        else
          out << static_cast<char>(c);
    }
  }
  out << '"';
  return out.str();
}

// The name of a document's first element, after any declaration, comment or blank; "" when the text
// does not start like a document.
std::string RootName(std::string_view text) {
  size_t at = 0;
  while (true) {
    at = text.find_first_not_of(" \t\r\n", at);
    if (at == std::string_view::npos || text[at] != '<') return "";
    if (text.compare(at, 4, "<!--") == 0) {
      at = text.find("-->", at);
    } else if (text.compare(at, 2, "<?") == 0) {
      at = text.find("?>", at);
    } else {
      size_t end = text.find_first_of(" \t\r\n/>", at + 1);
      return std::string(
          text.substr(at + 1, end == std::string_view::npos ? std::string_view::npos : end - at - 1));
    }
    if (at == std::string_view::npos) return "";
    at += 2;
  }
}

// One line of posts.txt: tabs and line breaks of the status become spaces.
std::string OneLine(std::string text, size_t limit) {
  for (char& c : text)
    if (c == '\t' || c == '\r' || c == '\n') c = ' ';
  return text.size() > limit ? text.substr(0, limit) + "..." : text;
}

}  // namespace

struct HeadOffice::Impl {
  HeadOfficeOptions options;
  // Reads a request's body in large pieces without polling first (httplib's own server reads 4 KB at
  // a time); a post of several hundred megabytes must have arrived within the deadline.
  DeadlineServer server;
  std::thread thread;
  std::string host;
  int port = 0;
  mutable std::mutex mutex;
  std::vector<HeadOfficePost> posts;

  // `received` holds the last argument's text, the document (kept out of `post` when it is stored).
  void Store(const HeadOfficePost& post, PostArguments& received) const {
    if (options.out_dir.empty()) return;
    const bool has_document = !post.arguments.empty() && received.last_size() > 0;
    char stem[16];
    std::snprintf(stem, sizeof stem, "%04d", post.number);
    const std::filesystem::path dir(options.out_dir);
    std::ofstream json(dir / (std::string(stem) + ".json"), std::ios::binary);
    json << "{\n  \"soapAction\": " << JsonString(post.soap_action) << ",\n  \"arguments\": [";
    for (size_t i = 0; i < post.arguments.size(); ++i) {
      const auto& [name, value] = post.arguments[i];
      const bool is_document = i + 1 == post.arguments.size() && has_document;
      json << (i ? "," : "") << "\n    {\"name\": " << JsonString(name) << ", "
           << (is_document ? "\"file\": " + JsonString(std::string(stem) + ".xml")
                           : "\"value\": " + JsonString(value))
           << "}";
    }
    json << "\n  ],\n  \"rows\": " << post.rows << "\n}\n";
    if (has_document) received.StoreLast((dir / (std::string(stem) + ".xml")).string());
    auto arg = [&](size_t i) { return i < post.arguments.size() ? post.arguments[i].second : std::string(); };
    std::ofstream(dir / "posts.txt", std::ios::binary | std::ios::app)
        << stem << '\t' << OneLine(arg(2), 40) << '\t' << OneLine(arg(3), 12) << '\t' << OneLine(arg(4), 100)
        << '\t' << post.rows << '\t' << post.document_root << '\n';
  }

  // Reads the envelope as the body arrives, never holding the body: the arguments are decoded on the
  // way, and a document too large to keep in memory goes straight into a file in the output folder.
  void HandlePost(const httplib::Request& request, httplib::Response& response,
                  const httplib::ContentReader& content) {
    auto fail = [&](const std::string& code, const std::string& text) {
      response.status = 500;
      response.set_content(FaultText(code, text), "text/xml; charset=utf-8");
    };
    PostArguments received(options.out_dir, kArgumentInMemory);
    SoapCallReader reader(received);
    bool well_formed = true;
    std::string store_failure;
    content([&](const char* data, size_t size) {
      try {
        if (well_formed && store_failure.empty()) well_formed = reader.Feed(std::string_view(data, size));
      } catch (const Error& e) {
        store_failure = e.description();
      }
      return true;  // the whole body is read whatever it holds
    });
    std::string action = request.get_header_value("SOAPAction");
    if (action.size() >= 2 && action.front() == '"' && action.back() == '"')
      action = action.substr(1, action.size() - 2);
    if (action != SoapAction(options.target_namespace))
      return fail("soap:Client",
                  "Server did not recognize the value of HTTP Header SOAPAction: " + action + ".");
    if (!store_failure.empty()) return fail("soap:Server", store_failure);
    if (!well_formed || !reader.Finish()) return fail("soap:Client", "The request is not an XML document.");
    if (!received.has_call() || received.call_local() != kOperation ||
        received.call_ns() != options.target_namespace)
      return fail("soap:Client", "The request does not call sendReport in " + options.target_namespace + ".");

    HeadOfficePost post;
    post.soap_action = action;
    auto& arguments = received.arguments();
    if (!arguments.empty() && received.last_size() > 0) {
      post.document_root = RootName(received.last_head());
      if (!post.document_root.empty()) post.rows = received.last_rows();
    }
    // The document (the last argument) is kept in memory only when there is no folder to store it in.
    for (size_t i = 0; i < arguments.size(); ++i) {
      const bool last = i + 1 == arguments.size();
      post.arguments.emplace_back(arguments[i].first, !last ? arguments[i].second
                                                      : options.out_dir.empty()
                                                          ? std::move(arguments[i].second)
                                                          : std::string());
    }
    try {
      std::lock_guard<std::mutex> lock(mutex);
      post.number = static_cast<int>(posts.size()) + 1;
      Store(post, received);
      posts.push_back(std::move(post));
    } catch (const Error& e) {
      return fail("soap:Server", e.description());
    }
    if (options.delay_ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(options.delay_ms));
    if (!options.fault.empty()) return fail("soap:Server", options.fault);
    response.set_content(AnswerText(options), "text/xml; charset=utf-8");
  }
};

HeadOffice::HeadOffice(HeadOfficeOptions options) : impl_(std::make_unique<Impl>()) {
  impl_->options = std::move(options);
}

HeadOffice::~HeadOffice() {
  Stop();
}

int HeadOffice::Start(const std::string& host, int port) {
  Impl& s = *impl_;
  if (!s.options.out_dir.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(s.options.out_dir, ec);
    if (ec)
      throw Error(err::kServiceFailure,
                  "cannot create the folder " + s.options.out_dir + ": " + ec.message());
  }
  s.server.Get(kWsdlPath, [&s](const httplib::Request& request, httplib::Response& response) {
    if (!request.has_param("WSDL") && !request.has_param("wsdl")) {
      response.set_content("This is the stand-in head office. Its service description is at ?WSDL.\n",
                           "text/plain");
      return;
    }
    // The address the client used to reach us, so that the WSDL points back the same way.
    std::string authority = request.get_header_value("Host");
    if (authority.empty()) authority = s.host + ":" + std::to_string(s.port);
    const std::string location = "http://" + authority + s.options.service_path;
    response.set_content(WsdlText(s.options, location), "text/xml; charset=utf-8");
  });
  s.server.Post(s.options.service_path,
                [&s](const httplib::Request& request, httplib::Response& response,
                     const httplib::ContentReader& content) { s.HandlePost(request, response, content); });
  AddHeadOfficePages(s.server, s.options.out_dir);
  s.host = host;
  s.server.set_request_deadline(std::chrono::minutes(10));
  s.port = StartServing(s.server, host, port, s.thread);
  return s.port;
}

void HeadOffice::Wait() {
  if (impl_->thread.joinable()) impl_->thread.join();
}

void HeadOffice::Stop() {
  impl_->server.stop();
  Wait();
}

std::string HeadOffice::WsdlUrl() const {
  return "http://" + impl_->host + ":" + std::to_string(impl_->port) + kWsdlPath + "?WSDL";
}

std::vector<HeadOfficePost> HeadOffice::Posts() const {
  std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->posts;
}

}  // namespace ent
