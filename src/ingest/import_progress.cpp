#include "ingest/import_progress.h"

#include <memory>

namespace ingest {

namespace {

std::unique_ptr<jet::Recordset> openRows(jet::Database& main) {
  return main.openRecordset("SELECT * FROM ImportProgress");
}

// A path may hold quotation marks and apostrophes, so rows are compared here and not by a condition; there are few.
bool moveTo(jet::Recordset& rows, std::string_view file) {
  if (rows.bof() && rows.eof()) return false;
  for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
    if (rows.get("File").toText() == file) return true;
  }
  return false;
}

}  // namespace

std::vector<FileProgress> ImportProgress::all() {
  std::vector<FileProgress> result;
  const auto rows = openRows(main_);
  if (rows->bof() && rows->eof()) return result;
  for (rows->moveFirst(); !rows->eof(); rows->moveNext()) {
    result.push_back({.file = rows->get("File").toText(),
                      .records = rows->get("Records").toLong(),
                      .bytes = rows->get("Bytes").toLong(),
                      .digest = rows->get("Digest").toText(),
                      .stoppedByOperator = rows->get("StoppedByOperator").toBool()});
  }
  return result;
}

void ImportProgress::store(const FileProgress& progress) {
  const auto rows = openRows(main_);
  if (moveTo(*rows, progress.file)) {
    rows->edit();
  } else {
    rows->addNew();
  }
  rows->set("File", progress.file);
  rows->set("Records", progress.records);
  rows->set("Bytes", static_cast<double>(progress.bytes));
  rows->set("Digest", progress.digest);
  rows->set("StoppedByOperator", progress.stoppedByOperator);
  rows->update();
}

void ImportProgress::rename(std::string_view from, std::string_view to) {
  if (from == to) return;
  const auto rows = openRows(main_);
  if (!moveTo(*rows, from)) return;
  rows->edit();
  rows->set("File", to);
  rows->update();
}

void ImportProgress::setAside(std::string_view file) {
  const auto rows = openRows(main_);
  if (!moveTo(*rows, file)) return;
  const std::string digest = rows->get("Digest").toText();
  // Nothing was read: nothing to find again.
  if (rows->get("Bytes").toLong() == 0) {
    rows->remove();
    return;
  }
  rows->edit();
  rows->set("File", "moved:" + digest);
  rows->update();
}

void ImportProgress::forget(std::string_view file) {
  const auto rows = openRows(main_);
  if (moveTo(*rows, file)) rows->remove();
}

}  // namespace ingest
