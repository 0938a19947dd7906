#include "job/result_document.h"

#include <ostream>
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
  document->rows_ = rs.SaveFlattened(out);
  out.flush();
  if (!out) throw Error(err::kWriteFailed, "Write to file failed.");
  return document;
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
