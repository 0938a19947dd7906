// The object the host creates for one report request: the host sets its properties, hands it the
// request document (setDomDocument) and calls prepareDBReport, which reads the request, takes the
// database-in-use token, runs the report job, gives the token back and posts the result or an error
// text to the head office. It returns after the post with KillFlag set; the only failure the host
// ever sees is a token component that cannot be created.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "server/soap_client.h"

namespace ent {

class ISendable;

class clsProcessRequest {
 public:
  clsProcessRequest() = default;
  ~clsProcessRequest() { dispose(); }
  clsProcessRequest(const clsProcessRequest&) = delete;
  clsProcessRequest& operator=(const clsProcessRequest&) = delete;

  // Properties set by the host.
  std::string HostAddress;
  std::string HostPort;
  std::string GUID;
  std::string Passcode;
  std::string ClientID;
  std::string SessionID;
  bool KillFlag = false;

  bool bDebug() const { return debug_; }
  void set_bDebug(bool on);                        // also sets the thread's debug switch
  void set_DBSize(bool fits) { db_size_ = fits; }  // the host's verdict on the database's size
  void set_SizeErr(std::string text) { size_err_ = std::move(text); }
  void set_XMLPath(std::string path) { xml_path_ = std::move(path); }
  void set_ApplicationPath(const std::string& connection_string);  // the thread's shop connection string

  // Loads the request document; a text that does not parse, or is nested too deep, leaves an empty
  // document, and prepareDBReport posts the reason when it reads the request.
  void setDomDocument(const std::string& oDom);
  void dispose();
  void main() {}
  void prepareDBReport();

  // Where this build keeps the database-in-use token, and how it talks SOAP.
  void set_TokenDirectory(std::string directory) { token_dir_ = std::move(directory); }
  void set_SoapOptions(const SoapOptions& options) { soap_options_ = options; }

 private:
  struct Run;
  void startRun(Run& run);
  void failForSize(Run& run);
  void holdToken(Run& run);
  void readRequest(Run& run);
  void runJob(Run& run);
  void releaseToken(Run& run);
  void postResult(Run& run);
  void finish(Run& run);
  void failAndPost(Run& run);
  bool postToHost(ISendable& result, const std::string& session_id, int32_t client_id,
                  std::string& error_text);

  bool debug_ = false;
  bool db_size_ = false;
  std::string size_err_;
  std::string xml_path_;
  std::unique_ptr<pugi::xml_document> request_;
  std::string load_error_;  // why the request document could not be loaded, "" when it could
  std::string token_dir_;
  SoapOptions soap_options_;
};

}  // namespace ent
