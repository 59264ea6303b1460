#include "ctl/folder_json.h"

#include <ostream>

#include "ctl/json_text.h"

namespace ctl {

FolderJson::FolderJson(std::ostream& out, int id, std::string_view caption) : out_(out) {
  out_ << "{\"id\": " << id << ", \"caption\": " << jsonText(caption) << ",\n \"columns\": [";
}

void FolderJson::addColumn(int kind, std::string_view caption) {
  out_ << (columns_++ > 0 ? ", " : "") << jsonText({{"kind", kind}, {"caption", caption}});
}

void FolderJson::beginRows() {
  if (!inRows_) out_ << "],\n \"rows\": [";
  inRows_ = true;
}

void FolderJson::addRow(const std::vector<std::string>& texts) {
  beginRows();
  out_ << (rows_++ > 0 ? ",\n  " : "\n  ") << jsonText(texts);
}

void FolderJson::addTotals(const std::vector<std::string>& texts) {
  totals_ = jsonText(texts);
}

void FolderJson::finish() {
  beginRows();
  out_ << ']';
  if (!totals_.empty()) out_ << ",\n \"totals\": " << totals_;
  out_ << "}\n";
}

}  // namespace ctl
