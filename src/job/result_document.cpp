#include "job/result_document.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <sstream>
#include <vector>

#include "common/error.h"

namespace ent {

namespace {

// pugixml writer that appends to a spool file.
class SpoolXmlWriter : public pugi::xml_writer {
 public:
  explicit SpoolXmlWriter(SpoolFile& file) : file_(file) {}
  void write(const void* data, size_t size) override { file_.Append(static_cast<const char*>(data), size); }

 private:
  SpoolFile& file_;
};

}  // namespace

std::shared_ptr<ResultDocument> ResultDocument::FromRowset(Recordset& rs) {
  auto document = std::make_shared<ResultDocument>();
  SpoolWriteBuffer buffer(document->file_);
  std::ostream out(&buffer);
  std::ostringstream head;
  document->rows_ = rs.SaveRowsThenHead(out, head);
  out.flush();
  if (!out) throw Error(err::kWriteFailed, "Write to file failed.");
  document->head_ = std::move(head).str();
  return document;
}

size_t ResultDocument::Read(uint64_t offset, char* out, size_t size) const {
  if (offset < head_.size()) {
    const size_t n = std::min<uint64_t>(size, head_.size() - offset);
    std::memcpy(out, head_.data() + offset, n);
    return n;
  }
  return file_.ReadAt(offset - head_.size(), out, size);
}

std::shared_ptr<ResultDocument> ResultDocument::FromXml(const pugi::xml_document& doc) {
  auto document = std::make_shared<ResultDocument>();
  SpoolXmlWriter writer(document->file_);
  doc.save(writer, "", pugi::format_raw | pugi::format_no_declaration | pugi::format_attribute_single_quote,
           pugi::encoding_utf8);
  return document;
}

void ResultDocument::CopyTo(std::ostream& out) const {
  std::vector<char> piece(1 << 20);
  uint64_t offset = 0;
  while (size_t n = Read(offset, piece.data(), piece.size())) {
    out.write(piece.data(), static_cast<std::streamsize>(n));
    if (!out) throw Error(err::kWriteFailed, "Write to file failed.");
    offset += n;
  }
}

}  // namespace ent
