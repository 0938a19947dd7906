// Placeholder until the filter parser lands.
#include "data/row_filter.h"

#include "common/error.h"

namespace ent {

std::unique_ptr<RowFilter> RowFilter::Parse(std::string_view, const std::vector<Field>&) {
  throw Error(3001, "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
}

}  // namespace ent
