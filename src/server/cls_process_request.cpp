#include "server/cls_process_request.h"

#include <string_view>

#include "common/error.h"
#include "common/log.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "common/variant.h"
#include "report/cls_prebuilt_report.h"
#include "server/execution_trace.h"
#include "server/request_document.h"
#include "server/sendable.h"
#include "server/token.h"

namespace ent {

namespace {

constexpr int32_t kObjectNotSet = 91;
const char kAdminHolds[] = "Database is in use by an administrator. Please try again later.";
const char kSizeMessage[] = "Target location requires a database compact.";

// An explicit jump to the failure path with no error (the posted text is then empty).
struct SilentFailure {};

pugi::xml_node Required(const pugi::xml_document& doc, const char* xpath) {
  pugi::xml_node node = doc.select_node(xpath).node();
  if (!node) throw Error(kObjectNotSet, std::string("The request document has no ") + xpath + " element.");
  return node;
}

// The job's identifiers from the host's copies, as the size failure and the failure path set them.
void SetIdentifiersFromCopies(clsPrebuiltReport& job, const std::string& session_id,
                              const std::string& client_id) {
  job.SessionID = ToNumeric(Variant(session_id)).ToText();
  job.ClientID = ToNumeric(Variant(client_id)).ToLong();
}

}  // namespace

void clsProcessRequest::set_bDebug(bool on) {
  debug_ = on;
  SetDebugSwitch(on);
}

void clsProcessRequest::set_ApplicationPath(const std::string& connection_string) {
  SetShopConnectionString(connection_string);
}

void clsProcessRequest::setDomDocument(const std::string& oDom) {
  request_ = std::make_unique<pugi::xml_document>();
  load_error_ = LoadRequestDocument(oDom, *request_);
}

void clsProcessRequest::dispose() {
  request_.reset();
}

void clsProcessRequest::prepareDBReport() {
  // Journal: the record of this request, written when the scope closes, on every path.
  ExecutionScope execution(SessionID, ClientID, request_.get());

  // 1. The token component; failing here is the one failure the host sees.
  std::unique_ptr<DbInUseToken> token;
  try {
    token = DbInUseToken::Create(token_dir_);
  } catch (const Error& e) {
    execution.record().status = e.description();  // Journal
    throw;
  }

  std::unique_ptr<clsPrebuiltReport> job;
  auto the_job = [&]() -> clsPrebuiltReport& {
    if (!job) job = std::make_unique<clsPrebuiltReport>();
    return *job;
  };
  std::shared_ptr<ISendable> result;
  std::string error_text;
  const std::string session_copy = SessionID;
  std::string client_copy;

  try {
    // 2.
    WriteLog(SessionID, "Start");
    client_copy = ClientID;
    SetLogName(SessionID);
    if (!request_) throw Error(kObjectNotSet, "There is no request document to read.");
    // 3.
    if (request_->select_node("//report/DateProcessed")) throw SilentFailure{};
    // 4.
    if (!token) {
      WriteLog(SessionID, "**oGlobalEntTokenDLL is NOTHING.**");
    } else if (token->GetdbInUse() == 1) {
      throw Error(err::kTokenInUse, kAdminHolds);
    }
    if (!db_size_) {
      // The size failure.
      size_err_ = kSizeMessage;
      WriteLog(SessionID, "DBSize Error: " + size_err_);
      SetIdentifiersFromCopies(the_job(), session_copy, client_copy);
      result.reset();
      error_text = size_err_;
    } else {
      // 6.
      if (token) {
        token->SetdbInUse(2);
        WriteLog(SessionID, "Setting DB in use by server.");
      }
      // 7. A document that could not be loaded fails here, with the reason it could not.
      if (!load_error_.empty()) throw Error(kObjectNotSet, load_error_);
      clsPrebuiltReport& j = the_job();
      j.CustomReport = Variant(ElementText(Required(*request_, "//report/type"))).ToDouble() == 2;
      j.ClientID = Variant(ElementText(Required(*request_, "//report/clientid"))).ToLong();
      if (j.CustomReport) j.sqlString = ElementText(Required(*request_, "//report/sql"));
      // 8.
      if (j.sqlString.empty() && j.CustomReport) throw SilentFailure{};
      // 9.
      j.reportName = ElementText(Required(*request_, "//report/name"));
      pugi::xml_node item = Required(*request_, "//report/params/reportItem");
      int n = 0;
      for (pugi::xml_node child = item.first_child(); child; child = child.next_sibling(), ++n) {
        pugi::xml_attribute second = child.type() == pugi::node_element
                                         ? child.first_attribute().next_attribute()
                                         : pugi::xml_attribute();
        if (!second)
          throw Error(kObjectNotSet,
                      "Parameter " + std::to_string(n) +
                          " of the request has no value (a reportItem child needs two attributes).");
        j.addParam("p" + std::to_string(n), second.value());
      }
      j.SessionID = ElementText(Required(*request_, "//report/sessionid"));
      // 10.
      EnterPhase(Phase::kRead);  // Journal: generateDOC marks where building the document starts
      result = j.generateDOC();
      EnterPhase(Phase::kOther);  // Journal
      error_text = j.StatusStr;
      // 11.
      if (token) {
        WriteLog(SessionID, "Setting DB in use by none.");
        token->SetdbInUse(0);
      }
    }
    // 12.
    if (!result) {
      result = std::make_shared<clsGenericReport>();
      if (error_text.empty()) error_text = "Unspecified Error";
      SetIdentifiersFromCopies(the_job(), session_copy, client_copy);
    }
    execution.record().rows = RowsOf(*result);  // Journal
    // 13.
    if (postToHost(*result, the_job().SessionID, the_job().ClientID, error_text)) {
      result->OnSucceed();
      WriteLog(SessionID, "Dom Sent");
    } else {
      result->OnFail();
      WriteLog(SessionID, "Report Sent Failed or Nothing to send");
    }
    // 14.
    job.reset();
    result.reset();
    request_.reset();
    token.reset();
    KillFlag = true;
    WriteLog(SessionID, "EXIT MAIN SUB");
    execution.record().status = error_text;  // Journal
    return;
  } catch (const SilentFailure&) {
    error_text.clear();
  } catch (const Error& e) {
    error_text = e.description();
  } catch (const std::exception& e) {
    error_text = e.what();
  }

  // The failure path: every step is attempted; a failing step is skipped without notice.
  auto attempt = [](auto&& step) {
    try {
      step();
    } catch (...) {
    }
  };
  attempt([&] { job.reset(); });
  attempt([&] { result.reset(); });
  attempt([&] { request_.reset(); });
  attempt([&] {
    if (token && token->GetdbInUse() == 2) token->SetdbInUse(0);
  });
  attempt([&] { token.reset(); });
  KillFlag = true;
  attempt([&] { result = std::make_shared<clsGenericReport>(); });
  attempt([&] { SetIdentifiersFromCopies(the_job(), session_copy, client_copy); });
  attempt([&] {
    if (result) postToHost(*result, the_job().SessionID, the_job().ClientID, error_text);
  });
  attempt([&] { WriteLog(SessionID, "ERROR: " + error_text); });
  execution.record().status = error_text;  // Journal
}

bool clsProcessRequest::postToHost(ISendable& result, const std::string& session_id, int32_t client_id,
                                   std::string& error_text) {
  // Journal: the post's time, outcome and HTTP status go into this request's record.
  EnterPhase(Phase::kPost);
  std::unique_ptr<SoapClient> client;
  auto journal_post = [&](const char* outcome, const std::string& detail) {
    EnterPhase(Phase::kOther);
    if (ExecutionRecord* record = CurrentExecution()) {
      record->post = outcome;
      record->post_detail = detail;
      record->http_status = client ? client->last_status() : 0;
    }
  };
  try {
    WriteLog(session_id, "Starting: " + result.TypeName());
    result.OnStart();
    (void)result.XMLDocument();
    client = std::make_unique<SoapClient>(soap_options_);
    WriteLog("CREATE SOAP OBJ");
    const std::string address = "http://" + HostAddress + ":" + HostPort + result.WSDL();
    WriteLog("SOAP INIT:" + address);
    client->Init(address);
    WriteLog("AFTER INIT");
    const std::string answer =
        result.Post(*client, GUID, Passcode, session_id, std::to_string(client_id), error_text);
    WriteLog("SOAP:RESP::" + answer);
    journal_post(answer == "True" ? "accepted" : "refused", answer);
    return answer == "True";
  } catch (const Error& e) {
    WriteLog("SEND SOAP ERR:" + e.description());
    journal_post("failed", e.description());
  } catch (const std::exception& e) {
    WriteLog(std::string("SEND SOAP ERR:") + e.what());
    journal_post("failed", e.what());
  }
  return false;
}

}  // namespace ent
