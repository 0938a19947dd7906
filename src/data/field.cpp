#include "data/field.h"

namespace ent {

bool IsTextType(DataType type) {
  switch (type) {
    case DataType::kChar:
    case DataType::kVarChar:
    case DataType::kWChar:
    case DataType::kVarWChar:
    case DataType::kLongVarChar:
    case DataType::kLongVarWChar:
      return true;
    default:
      return false;
  }
}

Field AppendedField(std::string name, DataType type, int64_t size) {
  Field f;
  f.name = std::move(name);
  f.type = type;
  f.defined_size = size;
  f.may_be_null = false;
  f.appended = true;
  return f;
}

}  // namespace ent
