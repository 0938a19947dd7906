#include "server/soap_call_reader.h"

#include <cstdint>

namespace ent {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool MayBecome(std::string_view text, std::string_view literal) {
  return text.size() < literal.size() && literal.substr(0, text.size()) == text;
}

std::string_view Local(std::string_view name) {
  const size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

void AppendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// The character an entity reference (the text between '&' and ';') stands for; false when it is
// none of the predefined ones or a character number, in which case it is kept as written.
bool Entity(std::string_view name, std::string& out) {
  if (name == "lt") return out += '<', true;
  if (name == "gt") return out += '>', true;
  if (name == "amp") return out += '&', true;
  if (name == "quot") return out += '"', true;
  if (name == "apos") return out += '\'', true;
  if (name.size() < 2 || name[0] != '#') return false;
  const bool hex = name[1] == 'x';
  std::string_view digits = name.substr(hex ? 2 : 1);
  if (digits.empty() || digits.size() > 8) return false;
  uint32_t cp = 0;
  for (char c : digits) {
    int d = c >= '0' && c <= '9'          ? c - '0'
            : hex && c >= 'a' && c <= 'f' ? c - 'a' + 10
            : hex && c >= 'A' && c <= 'F' ? c - 'A' + 10
                                          : -1;
    if (d < 0) return false;
    cp = cp * (hex ? 16 : 10) + static_cast<uint32_t>(d);
  }
  if (cp > 0x10FFFF) return false;
  AppendUtf8(out, cp);
  return true;
}

// Decodes the entity references of an attribute value.
std::string AttributeValue(std::string_view raw) {
  std::string out;
  for (size_t i = 0; i < raw.size(); ++i) {
    const size_t semi = raw[i] == '&' ? raw.find(';', i) : std::string_view::npos;
    if (semi != std::string_view::npos && Entity(raw.substr(i + 1, semi - i - 1), out)) {
      i = semi;
    } else {
      out += raw[i];
    }
  }
  return out;
}

}  // namespace

SoapCallReader::SoapCallReader(SoapCallSink& sink, size_t max_depth, size_t max_markup)
    : sink_(sink), max_depth_(max_depth), max_markup_(max_markup) {}

bool SoapCallReader::Fail(std::string text) {
  if (!failed_) error_ = std::move(text);
  failed_ = true;
  return false;
}

bool SoapCallReader::Feed(std::string_view piece) {
  if (failed_ || finished_) return false;
  if (!bom_checked_) {
    // A UTF-8 byte order mark may open the text; it is no part of the document.
    constexpr std::string_view kBom = "\xEF\xBB\xBF";
    pending_.append(piece);
    piece = {};
    if (pending_.size() < kBom.size() && kBom.substr(0, pending_.size()) == pending_) return true;
    bom_checked_ = true;
    if (std::string_view(pending_).substr(0, kBom.size()) == kBom) pending_.erase(0, kBom.size());
  }
  size_t stop;
  if (pending_.empty()) {
    stop = Consume(piece, 0, false);
    if (!failed_) pending_.assign(piece.substr(stop));
  } else {
    pending_.append(piece);
    stop = Consume(pending_, 0, false);
    if (!failed_) pending_.erase(0, stop);
  }
  if (!failed_ && pending_.size() > max_markup_)
    Fail("markup longer than " + std::to_string(max_markup_) + " bytes");
  return !failed_;
}

bool SoapCallReader::Finish() {
  if (failed_ || finished_) return false;
  finished_ = true;
  const size_t stop = Consume(pending_, 0, true);
  if (failed_) return false;
  if (stop < pending_.size()) return Fail("the text ends inside markup");
  if (in_cdata_) return Fail("the text ends inside a CDATA section");
  if (!seen_root_) return Fail("no root element");
  if (!open_.empty()) return Fail("element <" + open_.back().name + "> is not closed");
  return true;
}

bool SoapCallReader::InArgumentText() const {
  return !roles_.empty() && roles_.back() == Role::kArgument;
}

size_t SoapCallReader::Consume(std::string_view text, size_t at, bool final) {
  while (at < text.size() && !failed_) {
    if (in_cdata_) {
      const size_t end = text.find("]]>", at);
      if (end == std::string_view::npos) {
        // The last two characters may begin the end marker.
        const size_t keep =
            final ? text.size() : std::max(at, text.size() - std::min<size_t>(2, text.size()));
        CdataText(text.substr(at, keep - at));
        return keep;
      }
      CdataText(text.substr(at, end - at));
      in_cdata_ = false;
      EndRun();
      at = end + 3;
      continue;
    }
    if (text[at] != '<') {
      size_t end = text.find('<', at);
      if (end == std::string_view::npos) {
        end = text.size();
        // An entity reference cut by the end of the piece waits for the next one.
        const size_t amp = text.rfind('&');
        if (!final && amp != std::string_view::npos && amp >= at &&
            text.find(';', amp) == std::string_view::npos && text.size() - amp < 16)
          end = amp;
      }
      Text(text.substr(at, end - at));
      if (end == at) return at;
      at = end;
      continue;
    }
    const std::string_view rest = text.substr(at);
    auto need_more = [&](size_t scanned) {
      if (final)
        Fail("the text ends inside markup");
      else if (scanned > max_markup_)
        Fail("markup longer than " + std::to_string(max_markup_) + " bytes");
      return at;
    };
    if (rest.size() < 2 || MayBecome(rest, "<!--") || MayBecome(rest, "<![CDATA[")) return need_more(0);
    if (rest.substr(0, 4) == "<!--") {
      const size_t end = rest.find("-->", 4);
      if (end == std::string_view::npos) return need_more(rest.size());
      EndRun();
      at += end + 3;
    } else if (rest.substr(0, 9) == "<![CDATA[") {
      if (open_.empty()) {
        Fail("a CDATA section outside the root element");
        break;
      }
      EndRun();
      in_cdata_ = true;
      if (InArgumentText() && run_ == Run::kNone) run_ = Run::kOpen;
      at += 9;
    } else if (rest[1] == '!') {
      Fail("document type declarations are not accepted");
    } else if (rest[1] == '?') {
      const size_t end = rest.find("?>", 2);
      if (end == std::string_view::npos) return need_more(rest.size());
      EndRun();
      at += end + 2;
    } else if (rest[1] == '/') {
      const size_t end = rest.find('>', 2);
      if (end == std::string_view::npos) return need_more(rest.size());
      if (!EndTag(rest.substr(2, end - 2))) break;
      at += end + 1;
    } else {
      char quote = 0;
      size_t end = 1;
      for (; end < rest.size(); ++end) {
        if (quote) {
          if (rest[end] == quote) quote = 0;
        } else if (rest[end] == '"' || rest[end] == '\'') {
          quote = rest[end];
        } else if (rest[end] == '>') {
          break;
        }
      }
      if (end == rest.size()) return need_more(rest.size());
      if (!StartTag(rest.substr(1, end - 1))) break;
      at += end + 1;
    }
  }
  return at;
}

bool SoapCallReader::StartTag(std::string_view tag) {
  const bool empty = !tag.empty() && tag.back() == '/';
  if (empty) tag.remove_suffix(1);
  size_t i = 0;
  while (i < tag.size() && !IsBlank(tag[i])) ++i;
  const std::string_view name = tag.substr(0, i);
  if (name.empty() || name.find_first_of("<>=\"'&") != std::string_view::npos)
    return Fail("a malformed start tag");
  if (open_.empty() && seen_root_) return Fail("a second root element");
  if (open_.size() >= max_depth_) return Fail("elements nested deeper than " + std::to_string(max_depth_));
  EndRun();
  Open element{std::string(name), 0};
  while (true) {
    while (i < tag.size() && IsBlank(tag[i])) ++i;
    if (i == tag.size()) break;
    const size_t eq = tag.find('=', i);
    if (eq == std::string_view::npos) return Fail("a malformed attribute in <" + element.name + ">");
    std::string_view attribute = tag.substr(i, eq - i);
    while (!attribute.empty() && IsBlank(attribute.back())) attribute.remove_suffix(1);
    size_t v = eq + 1;
    while (v < tag.size() && IsBlank(tag[v])) ++v;
    if (attribute.empty() || attribute.find_first_of(kBlanks) != std::string_view::npos || v == tag.size() ||
        (tag[v] != '"' && tag[v] != '\''))
      return Fail("a malformed attribute in <" + element.name + ">");
    const size_t close = tag.find(tag[v], v + 1);
    if (close == std::string_view::npos) return Fail("a malformed attribute in <" + element.name + ">");
    if (attribute == "xmlns" || attribute.substr(0, 6) == "xmlns:") {
      bindings_.emplace_back(std::string(attribute.size() > 5 ? attribute.substr(6) : std::string_view()),
                             AttributeValue(tag.substr(v + 1, close - v - 1)));
      ++element.bindings;
    }
    i = close + 1;
    if (i < tag.size() && !IsBlank(tag[i])) return Fail("a malformed attribute in <" + element.name + ">");
  }

  const Role parent = roles_.empty() ? Role::kOther : roles_.back();
  const std::string_view local = Local(name);
  Role role = Role::kOther;
  if (open_.empty()) {
    seen_root_ = true;
    if (local == "Envelope") role = Role::kEnvelope;
  } else if (parent == Role::kEnvelope && !body_seen_ && local == "Body") {
    body_seen_ = true;
    role = Role::kBody;
  } else if (parent == Role::kBody && !call_seen_) {
    call_seen_ = true;
    role = Role::kCall;
    const size_t colon = name.find(':');
    const std::string_view prefix =
        colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
    std::string_view ns;
    for (auto b = bindings_.rbegin(); b != bindings_.rend(); ++b) {
      if (b->first == prefix) {
        ns = b->second;
        break;
      }
    }
    sink_.Call(ns, local);
  } else if (parent == Role::kCall) {
    role = Role::kArgument;
    run_ = Run::kNone;
    blanks_.clear();
    after_cr_ = false;
    sink_.ArgumentStart(local);
  }
  open_.push_back(std::move(element));
  roles_.push_back(role);
  if (empty) {
    std::string written = open_.back().name;
    return EndTag(written);
  }
  return true;
}

bool SoapCallReader::EndTag(std::string_view tag) {
  while (!tag.empty() && IsBlank(tag.back())) tag.remove_suffix(1);
  if (open_.empty() || open_.back().name != tag)
    return Fail("end tag </" + std::string(tag) + "> does not close " +
                (open_.empty() ? std::string("any element") : "<" + open_.back().name + ">"));
  EndRun();
  if (roles_.back() == Role::kArgument) sink_.ArgumentEnd();
  bindings_.resize(bindings_.size() - open_.back().bindings);
  open_.pop_back();
  roles_.pop_back();
  return true;
}

void SoapCallReader::EndRun() {
  if (run_ == Run::kOpen) run_ = Run::kDone;
  blanks_.clear();
  after_cr_ = false;
}

void SoapCallReader::Text(std::string_view raw) {
  if (raw.empty()) return;
  if (open_.empty()) {
    if (raw.find_first_not_of(kBlanks) != std::string_view::npos) Fail("text outside the root element");
    return;
  }
  if (!InArgumentText() || run_ == Run::kDone) return;
  // The whole piece is decoded first and handed on at once: a document sent as text has a reference
  // every few characters.
  std::string decoded;
  if (run_ == Run::kNone) {
    // Blanks alone make no text node; they count once something else follows them.
    const size_t first = raw.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
      blanks_.append(raw);
      return;
    }
    run_ = Run::kOpen;
    AppendRaw(decoded, blanks_);
    blanks_.clear();
  }
  decoded.reserve(decoded.size() + raw.size());
  size_t i = 0;
  while (i < raw.size()) {
    const size_t amp = raw.find('&', i);
    const size_t end = amp == std::string_view::npos ? raw.size() : amp;
    if (end > i) AppendRaw(decoded, raw.substr(i, end - i));
    if (amp == std::string_view::npos) break;
    const size_t semi = raw.find(';', amp);
    if (semi != std::string_view::npos && Entity(raw.substr(amp + 1, semi - amp - 1), decoded)) {
      i = semi + 1;
    } else {
      decoded += '&';
      i = amp + 1;
    }
    after_cr_ = false;
  }
  Emit(decoded);
}

void SoapCallReader::CdataText(std::string_view raw) {
  if (!InArgumentText() || run_ != Run::kOpen) return;
  std::string text;
  AppendRaw(text, raw);
  Emit(text);
}

void SoapCallReader::Emit(std::string_view decoded) {
  if (!decoded.empty()) sink_.ArgumentText(decoded);
}

void SoapCallReader::AppendRaw(std::string& out, std::string_view raw) {
  // Line ends as an XML reader reports them: CR LF and a lone CR become LF.
  size_t i = 0;
  if (after_cr_ && !raw.empty() && raw[0] == '\n') i = 1;
  after_cr_ = false;
  while (i < raw.size()) {
    const size_t cr = raw.find('\r', i);
    if (cr == std::string_view::npos) {
      out.append(raw.substr(i));
      return;
    }
    out.append(raw.substr(i, cr - i));
    out += '\n';
    i = cr + 1;
    if (i == raw.size()) {
      after_cr_ = true;
    } else if (raw[i] == '\n') {
      ++i;
    }
  }
}

}  // namespace ent
