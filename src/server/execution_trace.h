// What one request did, kept whatever the debug switch says: the execution record. prepareDBReport
// opens an ExecutionScope for its request; the steps it passes through mark their phases on its
// clock (common/phase_clock.h), and when the scope closes the
// record goes to the journal and the metrics (RecordExecution, execution_journal.h).
#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "common/phase_clock.h"

namespace ent {

class ISendable;

struct ExecutionRecord {
  int64_t start_ms = 0;             // milliseconds since 1970-01-01 UTC
  std::string session;              // the host's session identifier (it names the debug log)
  std::string client;               // the client identifier as the host gave it
  std::string code;                 // the report code, "custom" for free SQL, "" when unreadable
  std::vector<std::string> params;  // p0, p1, ... exactly as the request gave them
  int64_t rows = 0;                 // rows of the posted rowset; -1 for a document of another kind
  int64_t document_bytes = 0;       // bytes of the posted document's text
  std::string status;               // the status text posted ("0" after success)
  std::string post;                 // "accepted", "refused", "failed", or "" when nothing was posted
  std::string post_detail;          // the service's answer, or why the post failed
  long http_status = 0;             // of the last exchange with the head office; 0 for none
  double read_ms = 0, build_ms = 0, post_ms = 0, total_ms = 0;

  // A failure for the operator: the report did not give its rows, or the head office did not take
  // the post. "No records found." is an answer, not a failure.
  bool failed() const;
};

class ExecutionScope {
 public:
  // Starts the clock and takes the code and parameters from the request document (which may be
  // null or unreadable; then they stay empty).
  ExecutionScope(const std::string& session, const std::string& client, const pugi::xml_document* request);
  // Closes the record and hands it to RecordExecution. Never throws.
  ~ExecutionScope();
  ExecutionScope(const ExecutionScope&) = delete;
  ExecutionScope& operator=(const ExecutionScope&) = delete;

  ExecutionRecord& record() { return record_; }

 private:
  ExecutionRecord record_;
  ExecutionScope* outer_;
  PhaseClock clock_;
};

// The record of the request running on this thread; nullptr outside a scope.
ExecutionRecord* CurrentExecution();

// The rows a result carries: the z:row elements of a rowset document, 0 without a document, -1 for
// a document of another kind (the invoice).
int64_t RowsOf(const ISendable& result);

// The record of the last request that finished on this thread (empty before the first).
const ExecutionRecord& LastExecution();

// One line for people: "BL01 session=S1 client=3 rows=12 bytes=3456 status=\"0\" post=accepted
// http=200 read=12ms build=3ms send=20ms total=40ms".
std::string DescribeExecution(const ExecutionRecord& record);

}  // namespace ent
