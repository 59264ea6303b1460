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

bool TableDef::leadsAFullIndex(std::string_view field) const {
  return std::ranges::any_of(indexes, [&](const IndexDef& index) {
    return !index.forOrder && base::equalFoldAscii(index.fields.front(), field);
  });
}

void TableDef::addOrders(const TableDef& other) {
  for (const IndexDef& index : other.indexes) {
    const std::string& field = index.fields.front();
    if (index.forOrder && find(field) != nullptr && !leadsAnIndex(field)) indexes.push_back(index);
  }
}

}  // namespace jet
