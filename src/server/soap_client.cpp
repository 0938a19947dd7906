#include "server/soap_client.h"

#include <pugixml.hpp>
#include <sstream>
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

std::string RequestText(const SoapOperation& op, const std::vector<std::string>& arguments) {
  pugi::xml_document doc;
  pugi::xml_node declaration = doc.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "utf-8";
  pugi::xml_node envelope = doc.append_child("soap:Envelope");
  envelope.append_attribute("xmlns:soap") = std::string(kEnvelopeNs).c_str();
  envelope.append_attribute("xmlns:xsi") = "http://www.w3.org/2001/XMLSchema-instance";
  envelope.append_attribute("xmlns:xsd") = "http://www.w3.org/2001/XMLSchema";
  pugi::xml_node body = envelope.append_child("soap:Body");
  const std::string prefix = op.request_namespace.empty() ? "" : "m:";
  pugi::xml_node request = body.append_child((prefix + op.request_element).c_str());
  if (!prefix.empty()) request.append_attribute("xmlns:m") = op.request_namespace.c_str();
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string name = (op.qualified_parameters ? prefix : "") + op.parameters[i];
    request.append_child(name.c_str()).text().set(arguments[i].c_str());
  }
  std::ostringstream out;
  doc.save(out, "", pugi::format_raw);
  return out.str();
}

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
  try {
    CheckWebAddress(endpoint);
  } catch (const Error&) {
    throw Error(err::kServiceFailure,
                "The WSDL at " + wsdl_url + " gives the service address " + endpoint +
                    ", which is refused: only http:// and https:// addresses are used.");
  }
  const std::string host = HostOfAddress(wsdl_url);
  if (HostOfAddress(endpoint) != host)
    throw Error(err::kServiceFailure, "The WSDL at " + wsdl_url + " gives the service address " + endpoint +
                                          ", which is refused: posts go only to the configured host " + host +
                                          ".");
  wsdl_ = std::move(wsdl);
}

std::string SoapClient::Call(const std::string& operation, const std::vector<std::string>& arguments) {
  if (!wsdl_) throw Error(err::kServiceFailure, "The SOAP client was not initialised from a WSDL.");
  SoapOperation op = wsdl_->Operation(operation);
  if (arguments.size() != op.parameters.size())
    throw Error(err::kServiceFailure, "The operation " + operation + " takes " +
                                          std::to_string(op.parameters.size()) + " arguments; " +
                                          std::to_string(arguments.size()) + " were given.");
  const std::vector<std::string> headers = {"Content-Type: text/xml; charset=utf-8",
                                            "SOAPAction: \"" + op.soap_action + "\""};
  HttpResponse response =
      HttpPost(wsdl_->endpoint(), headers, RequestText(op, arguments), TimeoutsOf(options_));
  last_status_ = response.status;
  return ReadAnswer(response, op, wsdl_->endpoint());
}

}  // namespace ent
