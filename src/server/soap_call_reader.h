// Reads the call in a SOAP envelope piece by piece as the text arrives, without keeping the text:
// the call's namespace and name, then each argument (a child element of the call) with its text,
// handed on in pieces as it is decoded. The call is where the head office looks for it: the root
// element named Envelope, its first child named Body, that Body's first child element. An argument's
// text is its first text node (character data, or one CDATA section; blanks alone are no text node),
// with entities decoded and line ends read as LF.
// Refused: a document type declaration, unbalanced tags, text outside the root, nesting deeper than
// the limit, and markup (a tag, comment, declaration) longer than the limit.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ent {

class SoapCallSink {
 public:
  virtual ~SoapCallSink() = default;
  virtual void Call(std::string_view ns, std::string_view local) = 0;
  virtual void ArgumentStart(std::string_view local) = 0;
  virtual void ArgumentText(std::string_view piece) = 0;
  virtual void ArgumentEnd() = 0;
};

class SoapCallReader {
 public:
  explicit SoapCallReader(SoapCallSink& sink, size_t max_depth = 64, size_t max_markup = 1 << 20);

  // The next piece of the text. False once the text cannot be a well-formed document; error() says why.
  bool Feed(std::string_view piece);
  // The end of the text. False when the document is incomplete or was refused.
  bool Finish();
  const std::string& error() const { return error_; }

 private:
  struct Open {
    std::string name;     // as written, for the end tag
    size_t bindings = 0;  // namespace bindings this element added
  };
  enum class Role { kOther, kEnvelope, kBody, kCall, kArgument };
  enum class Run { kNone, kOpen, kDone };  // the current argument's first text node

  bool Fail(std::string text);
  // Consumes what it can of `text` from `at`; returns where it stopped (a token not complete yet).
  size_t Consume(std::string_view text, size_t at, bool final);
  bool StartTag(std::string_view tag);
  bool EndTag(std::string_view tag);
  void Text(std::string_view raw);
  void CdataText(std::string_view raw);
  void EndRun();
  void Emit(std::string_view decoded);
  // Raw character data onto out, its line ends as LF.
  void AppendRaw(std::string& out, std::string_view raw);
  bool InArgumentText() const;

  SoapCallSink& sink_;
  size_t max_depth_, max_markup_;
  std::string pending_;  // an incomplete token carried to the next piece
  std::string error_;
  bool failed_ = false, finished_ = false;
  bool seen_root_ = false;
  std::vector<Open> open_;
  std::vector<Role> roles_;
  std::vector<std::pair<std::string, std::string>> bindings_;  // prefix, namespace
  bool body_seen_ = false, call_seen_ = false;
  Run run_ = Run::kNone;
  std::string blanks_;     // leading blanks of a text node, held until it proves not blank
  bool after_cr_ = false;  // the last raw character emitted was a CR (its LF is dropped)
  bool in_cdata_ = false;
  bool bom_checked_ = false;
};

}  // namespace ent
