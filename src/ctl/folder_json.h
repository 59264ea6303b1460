#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

// A folder as one JSON object with `id`, `caption`, `columns` (kind and caption) and `rows` (lists of texts), written
// as its parts come: columns first, then rows, then totals if wanted, then finish().
class FolderJson {
 public:
  FolderJson(std::ostream& out, int id, std::string_view caption);
  void addColumn(int kind, std::string_view caption);
  void addRow(const std::vector<std::string>& texts);
  // A text a column, empty where nothing is summed; object `totals`.
  void addTotals(const std::vector<std::string>& texts);
  void finish();

 private:
  void beginRows();

  std::ostream& out_;
  std::size_t columns_ = 0;
  std::size_t rows_ = 0;
  bool inRows_ = false;
  std::string totals_;
};

}  // namespace ctl
