// A stand-in for the head office's web service, for demonstrations and tests: it publishes a WSDL
// shaped like an ASP.NET service's at /EntHost/service.asmx?WSDL and accepts sendReport posts. Each
// post is kept in memory and, when an output directory is set, stored there as NNNN.json (its six
// arguments in order; the document as its own NNNN.xml file) with a line in posts.txt (number,
// session, client, status, rows, the document's root element). A stored document is not also kept
// in memory: its argument is kept empty, so that documents of any size are stored at disk speed.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ent {

struct HeadOfficeOptions {
  std::string out_dir;          // empty: keep posts in memory only
  std::string answer = "True";  // the text every sendReport returns
  std::string fault;            // not empty: answer every post with this SOAP Fault
  std::string target_namespace = "http://tempuri.org/";
  std::string service_path = "/EntHost/service.asmx";  // where the WSDL tells clients to post
  std::vector<std::string> parameters = {"GUID", "Passcode", "SessionID", "ClientID", "strErr", "xmlDoc"};
  int delay_ms = 0;  // wait this long before answering a post
};

// One received post.
struct HeadOfficePost {
  int number = 0;  // 1, 2, ... in order of arrival
  std::string soap_action;
  std::vector<std::pair<std::string, std::string>> arguments;  // parameter name and text, in order
  int rows = -1;              // z:row elements in the document; -1 without a document
  std::string document_root;  // the document's root element ("xml" for a rowset), "" without one
};

class HeadOffice {
 public:
  explicit HeadOffice(HeadOfficeOptions options);
  ~HeadOffice();  // stops serving
  HeadOffice(const HeadOffice&) = delete;
  HeadOffice& operator=(const HeadOffice&) = delete;

  // Listens on host:port (port 0 picks a free one) and serves on a thread of its own until Stop or
  // destruction. Returns the port. Raises ent::Error when the address cannot be bound.
  int Start(const std::string& host, int port);
  // Blocks until the server stops (from another thread or a signal handler calling Stop).
  void Wait();
  void Stop();

  std::string WsdlUrl() const;  // http://host:port/EntHost/service.asmx?WSDL
  std::vector<HeadOfficePost> Posts() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ent
