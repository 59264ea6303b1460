#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "jet/table_def.h"

namespace jet::test {

// One step of a file of cases; see cases/README.md.
struct CorpusStep {
  enum class Kind { Table, Change, Select };
  Kind kind = Kind::Select;
  int line = 0;
  TableDef table = {};
  std::string statement = {};
  std::vector<std::string> rows = {};  // as shown
  int error = 0;                       // 0: none is expected
};

// Throws std::runtime_error that names the line of what it does not understand.
std::vector<CorpusStep> readCorpus(const std::filesystem::path& file);

}  // namespace jet::test
