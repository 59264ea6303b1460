#include "jet/table_def.h"

#include <algorithm>

#include "base/text.h"

namespace jet {

const FieldDef* TableDef::find(std::string_view field) const {
  for (const FieldDef& candidate : fields) {
    if (base::equalFoldAscii(candidate.name, field)) return &candidate;
  }
  return nullptr;
}

bool TableDef::leadsAnIndex(std::string_view field) const {
  return std::ranges::any_of(indexes,
                             [&](const IndexDef& index) { return base::equalFoldAscii(index.fields.front(), field); });
}

}  // namespace jet
