#include "server/soap_client.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "common/error.h"
#include "server/head_office.h"
#include "server/http_client.h"
#include "server/http_serving.h"
#include "support/error_text.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

const std::vector<std::string> kSix = {"guid", "code", "S1", "7", "0", "<xml a='1'>&amp;</xml>"};

std::string InitFailure(const std::string& url, const SoapOptions& options = {5, 10}) {
  return test::ErrorText([&] { SoapClient(options).Init(url); });
}

// Serves one text at /wsdl on loopback, in chunks without a length, as a service of its own might.
class TextServer {
 public:
  explicit TextServer(std::string text) : text_(std::move(text)) {
    server_.Get("/wsdl", [this](const httplib::Request&, httplib::Response& response) {
      response.set_chunked_content_provider("text/xml", [this](size_t offset, httplib::DataSink& sink) {
        if (offset < text_.size()) {
          const size_t n = std::min<size_t>(65536, text_.size() - offset);
          return sink.write(text_.data() + offset, n);
        }
        sink.done();
        return true;
      });
    });
    port_ = StartServing(server_, "127.0.0.1", 0, thread_);
  }
  ~TextServer() {
    server_.stop();
    thread_.join();
  }
  std::string Url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/wsdl"; }

 private:
  std::string text_;
  httplib::Server server_;
  std::thread thread_;
  int port_ = 0;
};

// The stand-in's WSDL with its service address replaced.
std::string WsdlWithAddress(const HeadOffice& office, const std::string& address) {
  std::string text = HttpGet(office.WsdlUrl(), {}).body;
  const std::string own = office.WsdlUrl().substr(0, office.WsdlUrl().find('?'));
  for (size_t at = text.find(own); at != std::string::npos; at = text.find(own, at + address.size()))
    text.replace(at, own.size(), address);
  return text;
}

std::string Failure(SoapClient& client, const std::vector<std::string>& args = kSix,
                    const std::string& operation = "sendReport") {
  return test::ErrorText([&] { client.Call(operation, args); });
}

// Nothing is built in: a service with another namespace, address and parameter names is called
// the way its WSDL describes it.
TEST(SoapClientTest, CallsTheServiceTheWayItsWsdlDescribesIt) {
  test::TempDir dir;
  HeadOfficeOptions options;
  options.out_dir = dir.file("posts");
  options.target_namespace = "urn:example:headoffice";
  options.service_path = "/elsewhere/reports.svc";
  options.parameters = {"shop", "secret", "session", "client", "status", "document"};
  HeadOffice office(options);
  office.Start("127.0.0.1", 0);
  SoapClient client({5, 10});
  client.Init(office.WsdlUrl());

  // The document is escaped piece by piece into the sender's buffer: references that straddle two
  // pieces or two writes, CR LF, UTF-8 next to markup and runs of every length arrive as they were.
  std::string document = "<xml a='1'>";
  for (int i = 0; document.size() < 700 * 1024; ++i)
    document +=
        "<r v='" + std::string(i % 23, 'x') + "\xC3\xA4&amp;&#x3c;'>" + std::string(i % 7, 'y') + "\r\n</r>";
  document += "</xml>";
  std::vector<std::string> args = kSix;
  args.back() = document;
  EXPECT_EQ(client.Call("sendReport", args), "True");
  const auto posts = office.Posts();
  ASSERT_EQ(posts.size(), 1u);
  std::string arguments = posts[0].soap_action;
  for (const auto& [name, value] : posts[0].arguments) arguments += " " + name + "=" + value;
  EXPECT_EQ(arguments,
            "urn:example:headoffice/sendReport shop=guid secret=code session=S1 client=7 status=0 "
            "document=");  // the document is in its file
  EXPECT_TRUE(test::FileText(dir.file("posts/0001.xml")) == document) << "the stored document differs";

  EXPECT_EQ(Failure(client, {"too", "few"}), "The operation sendReport takes 6 arguments; 2 were given.");
  EXPECT_NE(Failure(client, kSix, "deleteEverything").find("deleteEverything"), std::string::npos);
  SoapClient uninitialised({5, 10});
  EXPECT_EQ(Failure(uninitialised), "The SOAP client was not initialised from a WSDL.");
}

// The WSDL comes from the head office's side; the address it gives must not turn the shop's server
// into a client for other protocols or other machines.
TEST(SoapClientTest, PostsGoOnlyByHttpToTheHostTheWsdlCameFrom) {
  HeadOffice office{HeadOfficeOptions{}};
  const std::string port = std::to_string(office.Start("127.0.0.1", 0));
  const std::string at = "127.0.0.1:" + port;
  const std::string any_scheme = "only http:// and https:// addresses are used.";
  const std::string other_host = "posts go only to the configured host 127.0.0.1.";
  for (const auto& [address, reason] : std::vector<std::pair<std::string, std::string>>{
           {"gopher://" + at + "/_PING%0D%0A", any_scheme},
           {"file:///etc/passwd", any_scheme},
           {"httpx://" + at + "/EntHost/service.asmx", any_scheme},
           {"//" + at + "/EntHost/service.asmx", any_scheme},
           {"http://127.0.0.2:" + port + "/EntHost/service.asmx", other_host},
           {"http://localhost:" + port + "/EntHost/service.asmx", other_host},
           {"http://[::1]:" + port + "/EntHost/service.asmx", other_host},
           // A user name before the host is refused, not read past: which host is meant stays plain.
           {"http://127.0.0.1@10.1.2.3/EntHost/service.asmx",
            "it names a user (user@host); user names and passwords are not taken from addresses."}}) {
    TextServer wsdl(WsdlWithAddress(office, address));
    EXPECT_EQ(InitFailure(wsdl.Url()), "The WSDL at " + wsdl.Url() + " gives the service address " + address +
                                           ", which is refused: " + reason);
  }
  EXPECT_TRUE(office.Posts().empty());

  // Any port of that host, the scheme in any case.
  TextServer moved(WsdlWithAddress(office, "HTTP://" + at + "/EntHost/service.asmx"));
  SoapClient client({5, 10});
  client.Init(moved.Url());
  EXPECT_EQ(client.Call("sendReport", kSix), "True");
  EXPECT_EQ(office.Posts().size(), 1u);
}

TEST(SoapClientTest, AnswersLongerThanTheCapAreRefused) {
  // The cap is the largest size taken, whether the answer is announced with its length or sent in
  // chunks without one.
  HeadOffice plain{HeadOfficeOptions{}};
  plain.Start("127.0.0.1", 0);
  const std::string wsdl = HttpGet(plain.WsdlUrl(), {}).body;
  TextServer same(wsdl);
  for (const std::string& url : {plain.WsdlUrl(), same.Url()}) {
    EXPECT_EQ(InitFailure(url, {5, 10, wsdl.size()}), "") << url;
    EXPECT_EQ(InitFailure(url, {5, 10, wsdl.size() - 1}),
              "The answer of the service at " + url + " is longer than " + std::to_string(wsdl.size() - 1) +
                  " bytes; it is refused.");
  }
}

}  // namespace
}  // namespace ent
