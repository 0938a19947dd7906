#include "server/soap_client.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "common/error.h"
#include "server/head_office.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

const std::vector<std::string> kSix = {"guid", "code", "S1", "7", "0", "<xml a='1'>&amp;</xml>"};

std::string Failure(SoapClient& client, const std::vector<std::string>& args = kSix) {
  try {
    client.Call("sendReport", args);
  } catch (const Error& e) {
    return e.description();
  }
  return "";
}

TEST(SoapClientTest, PostsTheArgumentsInOrderAndStoresThem) {
  test::TempDir dir;
  HeadOfficeOptions options;
  options.out_dir = dir.file("posts");
  HeadOffice office(options);
  office.Start("127.0.0.1", 0);
  SoapClient client({5, 10});
  client.Init(office.WsdlUrl());
  EXPECT_EQ(client.Call("sendReport", kSix), "True");

  auto posts = office.Posts();
  ASSERT_EQ(posts.size(), 1u);
  EXPECT_EQ(posts[0].soap_action, "http://tempuri.org/sendReport");
  ASSERT_EQ(posts[0].arguments.size(), 6u);
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(posts[0].arguments[i].first, options.parameters[i]);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(posts[0].arguments[i].second, kSix[i]);
  EXPECT_EQ(posts[0].arguments[5].second, "");  // the document is in its file

  std::ifstream xml(dir.file("posts/0001.xml"));
  std::stringstream text;
  text << xml.rdbuf();
  EXPECT_EQ(text.str(), kSix[5]);
  std::ifstream list(dir.file("posts/posts.txt"));
  std::string line;
  std::getline(list, line);
  EXPECT_EQ(line, "0001\tS1\t7\t0\t0\txml");
}

// Nothing is built in: a service with another namespace, address and parameter names is called
// the way its WSDL describes it.
TEST(SoapClientTest, FollowsWhatTheWsdlSays) {
  HeadOfficeOptions options;
  options.target_namespace = "urn:example:headoffice";
  options.service_path = "/elsewhere/reports.svc";
  options.parameters = {"shop", "secret", "session", "client", "status", "document"};
  options.answer = "True";
  HeadOffice office(options);
  office.Start("127.0.0.1", 0);
  SoapClient client({5, 10});
  client.Init(office.WsdlUrl());
  EXPECT_EQ(client.Call("sendReport", kSix), "True");
  auto posts = office.Posts();
  ASSERT_EQ(posts.size(), 1u);
  EXPECT_EQ(posts[0].soap_action, "urn:example:headoffice/sendReport");
  EXPECT_EQ(posts[0].arguments[0].first, "shop");
  EXPECT_EQ(posts[0].arguments[5].second, kSix[5]);
}

TEST(SoapClientTest, FailuresHaveClearDescriptions) {
  HeadOfficeOptions faulty;
  faulty.fault = "Shop is not registered.";
  HeadOffice office(faulty);
  office.Start("127.0.0.1", 0);
  SoapClient client({5, 10});
  client.Init(office.WsdlUrl());
  EXPECT_EQ(Failure(client),
            "The service answered sendReport with a SOAP fault: Shop is not registered. (soap:Server)");
  EXPECT_EQ(Failure(client, {"too", "few"}), "The operation sendReport takes 6 arguments; 2 were given.");
  try {
    client.Call("deleteEverything", kSix);
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("deleteEverything"), std::string::npos);
  }

  SoapClient uninitialised({5, 10});
  EXPECT_EQ(Failure(uninitialised), "The SOAP client was not initialised from a WSDL.");

  // A port where nothing listens any more.
  std::string closed_url;
  {
    HeadOffice gone{HeadOfficeOptions{}};
    gone.Start("127.0.0.1", 0);
    closed_url = gone.WsdlUrl();
  }
  try {
    SoapClient(SoapOptions{2, 5}).Init(closed_url);
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.description().rfind("The service at " + closed_url + " cannot be reached: ", 0), 0u)
        << e.description();
  }

  // A page that is not a WSDL.
  try {
    SoapClient(SoapOptions{2, 5}).Init(closed_url.substr(0, closed_url.find('?')));
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("cannot be"), std::string::npos) << e.description();
  }
}

TEST(SoapClientTest, ASilentServiceTimesOut) {
  HeadOfficeOptions slow;
  slow.delay_ms = 1500;
  HeadOffice office(slow);
  office.Start("127.0.0.1", 0);
  SoapClient client({1, 1});
  client.Init(office.WsdlUrl());
  EXPECT_NE(Failure(client).find("no answer in time"), std::string::npos);
}

}  // namespace
}  // namespace ent
