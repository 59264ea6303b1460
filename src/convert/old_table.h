#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/table_def.h"
#include "jet/value.h"

namespace convert {

// A table of an old file as it is found there.
struct OldTable {
  jet::TableDef definition;           // columns in their order; types as this program keeps them
  std::vector<std::string> oldTypes;  // the old file's type of each column, for the report ("LONG", "MEMO", ...)
  std::int64_t declaredRows = 0;      // the row count that the file itself declares
};

using OldRow = std::vector<jet::Value>;

// Receives an old file's content in the order it is read.
class OldFileSink {
 public:
  virtual ~OldFileSink() = default;
  virtual void beginTable(const OldTable& table) = 0;
  virtual void row(const OldRow& row) = 0;
  // A value that was damaged and could not be kept as it was; `what` is a sentence.
  virtual void problem(const std::string& what) = 0;
  virtual void endTable() = 0;
};

}  // namespace convert
