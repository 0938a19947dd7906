#include "reports/parts/result_rowset.h"

#include "common/error.h"

namespace ent::parts {

std::unique_ptr<Recordset> NewResultRowset(const std::vector<std::string>& columns) {
  auto rowset = std::make_unique<Recordset>();
  for (const std::string& name : columns) rowset->AppendField(ResultTextField(name));
  rowset->Open();
  return rowset;
}

std::unique_ptr<Recordset> Required(std::unique_ptr<Recordset> rowset, const std::string& failure,
                                    std::string& status, const char* source) {
  if (!rowset) {
    status = failure;
    throw Error(err::kObjectRequired, status, source);
  }
  return rowset;
}

std::string TrimBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return "";
  const size_t last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

}  // namespace ent::parts
