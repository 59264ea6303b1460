#include "ctl/folder_json.h"

#include <nlohmann/json.hpp>
#include <ostream>

namespace ctl {

namespace {

// Bytes that are no UTF-8 must not end the command.
std::string dump(const nlohmann::ordered_json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

FolderJson::FolderJson(std::ostream& out, int id, std::string_view caption) : out_(out) {
  out_ << "{\"id\": " << id << ", \"caption\": " << dump(caption) << ",\n \"columns\": [";
}

void FolderJson::addColumn(int kind, std::string_view caption) {
  out_ << (columns_++ > 0 ? ", " : "") << dump({{"kind", kind}, {"caption", caption}});
}

void FolderJson::beginRows() {
  if (!inRows_) out_ << "],\n \"rows\": [";
  inRows_ = true;
}

void FolderJson::addRow(const std::vector<std::string>& texts) {
  beginRows();
  out_ << (rows_++ > 0 ? ",\n  " : "\n  ") << dump(texts);
}

void FolderJson::addTotals(const std::vector<std::string>& texts) {
  beginRows();
  totals_ = dump(texts);
}

void FolderJson::finish() {
  beginRows();
  out_ << ']';
  if (!totals_.empty()) out_ << ",\n \"totals\": " << totals_;
  out_ << "}\n";
}

}  // namespace ctl
