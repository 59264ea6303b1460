#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet {

struct FieldDef {
  std::string name;
  Type type = Type::Text;
  int size = 255;                  // characters of a text column; 0 = memo, without limit
  bool autoIncrement = false;      // Long; the table's primary key
  std::string generatedFrom = {};  // read-only column, always equal to the named one; empty for ordinary columns
};

struct IndexDef {
  std::vector<std::string> fields;
  bool unique = false;
  // A server alone has it: lists are read in the order of its one field, and equal texts are found. In a file such an
  // index costs more than it brings, for columns are in memory sooner.
  bool forOrder = false;
};

struct TableDef {
  std::string name;
  std::vector<FieldDef> fields;
  std::vector<IndexDef> indexes = {};

  // The field of that name (case ignored); nothing when there is none.
  [[nodiscard]] const FieldDef* find(std::string_view field) const;
  // Whether an index begins with that field.
  [[nodiscard]] bool leadsAnIndex(std::string_view field) const;
  // The same of an index that is not merely for order.
  [[nodiscard]] bool leadsAFullIndex(std::string_view field) const;
  // Takes over the indexes for order of `other` whose field has no index here.
  void addOrders(const TableDef& other);
};

}  // namespace jet
