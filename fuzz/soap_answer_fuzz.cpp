// Any answer a head office's service could give to a post: read over real HTTP on loopback by the
// SOAP client, which must fail with a text or return the result, never crash.
#include <httplib.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "common/error.h"
#include "server/head_office.h"
#include "server/http_client.h"
#include "server/http_serving.h"
#include "server/soap_client.h"

namespace {

// A service whose WSDL is the stand-in head office's and whose every answer is the current input.
struct Service {
  Service() {
    ent::HeadOffice office{ent::HeadOfficeOptions{}};
    const int office_port = office.Start("127.0.0.1", 0);
    std::string wsdl = ent::HttpGet(office.WsdlUrl(), {5, 10}).body;
    office.Stop();
    server.Get("/EntHost/service.asmx", [this](const httplib::Request&, httplib::Response& response) {
      response.set_content(wsdl_text, "text/xml");
    });
    server.Post("/EntHost/service.asmx", [this](const httplib::Request&, httplib::Response& response) {
      std::lock_guard<std::mutex> lock(mutex);
      response.status = status;
      response.set_content(answer, "text/xml");
    });
    const int port = ent::StartServing(server, "127.0.0.1", 0, thread);
    const std::string from = "127.0.0.1:" + std::to_string(office_port);
    for (size_t at = wsdl.find(from); at != std::string::npos; at = wsdl.find(from, at + 1))
      wsdl.replace(at, from.size(), "127.0.0.1:" + std::to_string(port));
    wsdl_text = wsdl;
    client.Init("http://127.0.0.1:" + std::to_string(port) + "/EntHost/service.asmx?WSDL");
  }

  httplib::Server server;
  std::thread thread;
  std::string wsdl_text;
  std::mutex mutex;
  std::string answer;
  int status = 200;
  ent::SoapClient client{ent::SoapOptions{5, 10}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Service* service = new Service();
  {
    std::lock_guard<std::mutex> lock(service->mutex);
    // The first byte picks the HTTP status (a fault comes with 500), the rest is the answer.
    service->status = size > 0 && (data[0] & 1) ? 500 : 200;
    service->answer.assign(reinterpret_cast<const char*>(data), size);
  }
  try {
    service->client.Call("sendReport", {"g", "p", "s", "1", "0", "<xml/>"});
  } catch (const ent::Error&) {
  }
  return 0;
}
