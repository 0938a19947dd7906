#include "job/sendable.h"

#include "common/error.h"
#include "common/log.h"
#include "common/soap_call.h"
#include "common/text.h"

namespace ent {

namespace {

// Leading and trailing blanks removed (other white space is kept), then the first 250 characters.
std::string TrimAndCut(const std::string& text) {
  const std::string trimmed = TrimBlanks(text);
  // Cut at 250 characters, not bytes, so a multi-byte character is never split.
  size_t chars = 0, i = 0;
  for (; i < trimmed.size(); ++i) {
    if ((static_cast<unsigned char>(trimmed[i]) & 0xC0) != 0x80) {
      if (chars == 250) break;
      ++chars;
    }
  }
  return trimmed.substr(0, i);
}

// The document as the SOAP client reads it.
class DocumentSource : public TextSource {
 public:
  explicit DocumentSource(const ResultDocument& document) : document_(document) {}
  uint64_t size() const override { return document_.bytes(); }
  size_t Read(uint64_t offset, char* out, size_t size) const override {
    return document_.Read(offset, out, size);
  }

 private:
  const ResultDocument& document_;
};

}  // namespace

std::string clsGenericReport::Post(SoapCall& client, const std::string& GUID, const std::string& Passcode,
                                   const std::string& SessionID, const std::string& ClientID,
                                   const std::string& strErr) {
  if (strErr == "0" || document_) {
    WriteLog("SOAP: SEND NON-ERROR RESPONSE.");
    if (!document_)
      throw Error(err::kObjectRequired, "Object required: there is no result document to send.");
    const DocumentSource source(*document_);
    return client.Call("sendReport", {GUID, Passcode, SessionID, ClientID, strErr}, source);
  }
  WriteLog("SOAP: SEND ERR::" + strErr);
  return client.Call("sendReport", {GUID, Passcode, SessionID, ClientID, TrimAndCut(strErr), ""});
}

}  // namespace ent
