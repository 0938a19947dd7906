#include "server/execution_trace.h"

#include <chrono>
#include <cstdlib>
#include <sstream>

#include "job/sendable.h"
#include "server/execution_journal.h"

namespace ent {

namespace {

struct ThreadTrace {
  ExecutionScope* scope = nullptr;
  ExecutionRecord last;
};

thread_local ThreadTrace current;

}  // namespace

bool ExecutionRecord::failed() const {
  return (status != "0" && status != "No records found.") || post != "accepted";
}

ExecutionScope::ExecutionScope(const std::string& session, const std::string& client,
                               const pugi::xml_document* request)
    : outer_(current.scope) {
  record_.start_ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
  record_.session = session;
  record_.client = client;
  if (request) {
    const std::string type = request->select_node("//report/type").node().text().get();
    char* end = nullptr;
    const double kind = std::strtod(type.c_str(), &end);
    const bool custom = end != type.c_str() && kind == 2;
    record_.code = custom ? "custom" : request->select_node("//report/name").node().text().get();
    pugi::xml_node item = request->select_node("//report/params/reportItem").node();
    for (pugi::xml_node child = item.first_child(); child; child = child.next_sibling())
      record_.params.push_back(child.first_attribute().next_attribute().value());
  }
  current.scope = this;
}

ExecutionScope::~ExecutionScope() {
  const PhaseTimes times = clock_.times();
  record_.read_ms = times.read_ms;
  record_.build_ms = times.build_ms;
  record_.post_ms = times.post_ms;
  record_.total_ms = clock_.total_ms();
  current.scope = outer_;
  try {
    current.last = record_;
    RecordExecution(record_);
  } catch (...) {
    // The record is lost; the request it describes has already been answered.
  }
}

ExecutionRecord* CurrentExecution() {
  return current.scope ? &current.scope->record() : nullptr;
}

int64_t RowsOf(const ISendable& result) {
  const auto& document = result.XMLDocument();
  if (!document) return 0;
  // A rowset document is only made with rows; a finished document (the invoice) counts none.
  return document->rows() > 0 ? static_cast<int64_t>(document->rows()) : -1;
}

const ExecutionRecord& LastExecution() {
  return current.last;
}

std::string DescribeExecution(const ExecutionRecord& r) {
  std::ostringstream line;
  auto quoted = [](const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
      if (c == '"' || c == '\\') out += '\\';
      out += (c == '\n' || c == '\r') ? ' ' : c;
    }
    return out + "\"";
  };
  auto ms = [](double value) { return std::to_string(static_cast<int64_t>(value + 0.5)) + "ms"; };
  line << (r.code.empty() ? "-" : r.code) << " session=" << quoted(r.session)
       << " client=" << quoted(r.client) << " rows=" << r.rows << " bytes=" << r.document_bytes
       << " status=" << quoted(r.status) << " post=" << (r.post.empty() ? "none" : r.post)
       << " http=" << r.http_status << " read=" << ms(r.read_ms) << " build=" << ms(r.build_ms)
       << " send=" << ms(r.post_ms) << " total=" << ms(r.total_ms);
  if (r.post == "failed" || r.post == "refused") line << " detail=" << quoted(r.post_detail);
  return line.str();
}

}  // namespace ent
