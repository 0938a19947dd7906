#include "server/cls_process_request.h"

#include <string_view>

#include "common/error.h"
#include "common/log.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "common/variant.h"
#include "job/cls_prebuilt_report.h"
#include "job/sendable.h"
#include "server/execution_trace.h"
#include "server/request_document.h"
#include "server/token.h"

namespace ent {

namespace {

const char kAdminHolds[] = "Database is in use by an administrator. Please try again later.";
const char kSizeMessage[] = "Target location requires a database compact.";

// An explicit jump to the failure path with no error (the posted text is then empty).
struct SilentFailure {};

pugi::xml_node Required(const pugi::xml_document& doc, const char* xpath) {
  pugi::xml_node node = doc.select_node(xpath).node();
  if (!node)
    throw Error(err::kObjectNotSet, std::string("The request document has no ") + xpath + " element.");
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

// What one run of prepareDBReport carries from step to step.
struct clsProcessRequest::Run {
  std::unique_ptr<DbInUseToken> token;
  std::unique_ptr<clsPrebuiltReport> job;
  std::shared_ptr<ISendable> result;
  std::string error_text;
  std::string session_copy;  // the host's identifiers as they were when the run started
  std::string client_copy;

  // The job, created when a step first needs it.
  clsPrebuiltReport& the_job() {
    if (!job) job = std::make_unique<clsPrebuiltReport>();
    return *job;
  }
};

void clsProcessRequest::prepareDBReport() {
  // Journal: the record of this request, written when the scope closes, on every path.
  ExecutionScope execution(SessionID, ClientID, request_.get());
  Run run;
  run.session_copy = SessionID;
  try {
    run.token = DbInUseToken::Create(token_dir_);
  } catch (const Error& e) {
    // The one failure the host sees: without the token nothing may touch the database.
    execution.record().status = e.description();  // Journal
    throw;
  }

  try {
    startRun(run);
    if (!db_size_) {
      failForSize(run);
    } else {
      holdToken(run);
      readRequest(run);
      runJob(run);
      releaseToken(run);
    }
    if (!run.result) {
      run.result = std::make_shared<clsGenericReport>();
      if (run.error_text.empty()) run.error_text = "Unspecified Error";
      SetIdentifiersFromCopies(run.the_job(), run.session_copy, run.client_copy);
    }
    execution.record().rows = RowsOf(*run.result);  // Journal
    postResult(run);
    finish(run);
  } catch (const SilentFailure&) {
    run.error_text.clear();
    failAndPost(run);
  } catch (const Error& e) {
    run.error_text = e.description();
    failAndPost(run);
  } catch (const std::exception& e) {
    run.error_text = e.what();
    failAndPost(run);
  }
  execution.record().status = run.error_text;  // Journal
}

// Opens the log, and stops requests that must not run: none at all, one already processed (a head
// office resending an answered request gets no answer), or a database an administrator holds.
void clsProcessRequest::startRun(Run& run) {
  WriteLog(SessionID, "Start");
  run.client_copy = ClientID;
  SetLogName(SessionID);
  if (!request_) throw Error(err::kObjectNotSet, "There is no request document to read.");
  if (request_->select_node("//report/DateProcessed")) throw SilentFailure{};
  if (!run.token) {
    WriteLog(SessionID, "**oGlobalEntTokenDLL is NOTHING.**");
  } else if (run.token->GetdbInUse() == 1) {
    throw Error(err::kTokenInUse, kAdminHolds);
  }
}

// The host judged the database too large to work on: the head office is told so, nothing runs.
void clsProcessRequest::failForSize(Run& run) {
  size_err_ = kSizeMessage;
  WriteLog(SessionID, "DBSize Error: " + size_err_);
  SetIdentifiersFromCopies(run.the_job(), run.session_copy, run.client_copy);
  run.result.reset();
  run.error_text = size_err_;
}

// Tells an administrator that the server is working on the database.
void clsProcessRequest::holdToken(Run& run) {
  if (!run.token) return;
  run.token->SetdbInUse(2);
  WriteLog(SessionID, "Setting DB in use by server.");
}

// Fills the job from the request document: its kind, client, SQL text or report code, parameters
// and session. A document that could not be loaded fails here, with the reason it could not; a
// custom request without SQL ends silently.
void clsProcessRequest::readRequest(Run& run) {
  if (!load_error_.empty()) throw Error(err::kObjectNotSet, load_error_);
  clsPrebuiltReport& j = run.the_job();
  j.CustomReport = Variant(ElementText(Required(*request_, "//report/type"))).ToDouble() == 2;
  j.ClientID = Variant(ElementText(Required(*request_, "//report/clientid"))).ToLong();
  if (j.CustomReport) j.sqlString = ElementText(Required(*request_, "//report/sql"));
  if (j.sqlString.empty() && j.CustomReport) throw SilentFailure{};
  j.reportName = ElementText(Required(*request_, "//report/name"));
  pugi::xml_node item = Required(*request_, "//report/params/reportItem");
  int n = 0;
  for (pugi::xml_node child = item.first_child(); child; child = child.next_sibling(), ++n) {
    pugi::xml_attribute second =
        child.type() == pugi::node_element ? child.first_attribute().next_attribute() : pugi::xml_attribute();
    if (!second)
      throw Error(err::kObjectNotSet,
                  "Parameter " + std::to_string(n) +
                      " of the request has no value (a reportItem child needs two attributes).");
    j.addParam("p" + std::to_string(n), second.value());
  }
  j.SessionID = ElementText(Required(*request_, "//report/sessionid"));
}

void clsProcessRequest::runJob(Run& run) {
  EnterPhase(Phase::kRead);  // Journal: generateDOC marks where building the document starts
  run.result = run.job->generateDOC();
  EnterPhase(Phase::kOther);  // Journal
  run.error_text = run.job->StatusStr;
}

// The database is free again for an administrator, before the (possibly slow) post.
void clsProcessRequest::releaseToken(Run& run) {
  if (!run.token) return;
  WriteLog(SessionID, "Setting DB in use by none.");
  run.token->SetdbInUse(0);
}

void clsProcessRequest::postResult(Run& run) {
  if (postToHost(*run.result, run.the_job().SessionID, run.the_job().ClientID, run.error_text)) {
    run.result->OnSucceed();
    WriteLog(SessionID, "Dom Sent");
  } else {
    run.result->OnFail();
    WriteLog(SessionID, "Report Sent Failed or Nothing to send");
  }
}

void clsProcessRequest::finish(Run& run) {
  run.job.reset();
  run.result.reset();
  request_.reset();
  run.token.reset();
  KillFlag = true;
  WriteLog(SessionID, "EXIT MAIN SUB");
}

// The failure path: the token is given back if this server held it, and the failure text is posted.
// Every step is attempted; a failing step is skipped without notice, since the head office's answer
// matters more than a clean shutdown.
void clsProcessRequest::failAndPost(Run& run) {
  auto attempt = [](auto&& step) {
    try {
      step();
    } catch (...) {
    }
  };
  attempt([&] { run.job.reset(); });
  attempt([&] { run.result.reset(); });
  attempt([&] { request_.reset(); });
  attempt([&] {
    if (run.token && run.token->GetdbInUse() == 2) run.token->SetdbInUse(0);
  });
  attempt([&] { run.token.reset(); });
  KillFlag = true;
  attempt([&] { run.result = std::make_shared<clsGenericReport>(); });
  attempt([&] { SetIdentifiersFromCopies(run.the_job(), run.session_copy, run.client_copy); });
  attempt([&] {
    if (run.result) postToHost(*run.result, run.the_job().SessionID, run.the_job().ClientID, run.error_text);
  });
  attempt([&] { WriteLog(SessionID, "ERROR: " + run.error_text); });
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
    if (ExecutionRecord* record = CurrentExecution(); record && result.XMLDocument())
      record->document_bytes = static_cast<int64_t>(result.XMLDocument()->bytes());  // Journal
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
