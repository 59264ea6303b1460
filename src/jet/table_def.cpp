#include "jet/table_def.h"

#include "base/text.h"

namespace jet {

const FieldDef* TableDef::find(std::string_view field) const {
  for (const FieldDef& candidate : fields) {
    if (base::equalFoldAscii(candidate.name, field)) return &candidate;
  }
  return nullptr;
}

}  // namespace jet
