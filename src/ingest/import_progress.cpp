#include "ingest/import_progress.h"

#include <algorithm>
#include <memory>

namespace ingest {

namespace {

constexpr std::string_view kRefused = "refused";
constexpr std::string_view kRest = "rest";

std::unique_ptr<jet::Recordset> openRows(jet::Database& main) {
  return main.openRecordset("SELECT * FROM ImportProgress");
}

std::unique_ptr<jet::Recordset> openKept(jet::Database& main) {
  return main.openRecordset("SELECT * FROM ImportKept");
}

// A path may hold quotation marks and apostrophes, so rows are compared here and not by a condition; there are few.
template <typename Matches>
bool moveTo(jet::Recordset& rows, const Matches& matches) {
  if (rows.bof() && rows.eof()) return false;
  for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
    if (matches()) return true;
  }
  return false;
}

bool moveToFile(jet::Recordset& rows, std::string_view file) {
  return moveTo(rows, [&] { return rows.get("File").toText() == file; });
}

void storeKept(jet::Database& main, std::string_view of, std::string_view kind, const KeptFile& kept) {
  if (kept == KeptFile{}) return;
  const auto rows = openKept(main);
  const bool known =
      moveTo(*rows, [&] { return rows->get("File").toText() == of && rows->get("Kind").toText() == kind; });
  if (known) {
    rows->edit();
  } else {
    rows->addNew();
  }
  rows->set("File", of);
  rows->set("Kind", kind);
  rows->set("KeptFile", kept.file);
  rows->set("Bytes", static_cast<double>(kept.bytes));
  rows->set("Earlier", static_cast<double>(kept.earlier));
  rows->update();
}

// The kept files of one file, under its new name.
void renameKept(jet::Database& main, std::string_view from, std::string_view to) {
  const auto rows = openKept(main);
  while (moveToFile(*rows, from)) {
    rows->edit();
    rows->set("File", to);
    rows->update();
  }
}

void removeKept(jet::Database& main, std::string_view of) {
  const auto rows = openKept(main);
  while (moveToFile(*rows, of)) rows->remove();
}

void readKept(jet::Database& main, std::vector<FileProgress>& files) {
  const auto rows = openKept(main);
  if (rows->bof() && rows->eof()) return;
  for (rows->moveFirst(); !rows->eof(); rows->moveNext()) {
    const std::string of = rows->get("File").toText();
    const auto owner = std::find_if(files.begin(), files.end(), [&](const auto& each) { return each.file == of; });
    if (owner == files.end()) continue;
    KeptFile& kept = rows->get("Kind").toText() == kRest ? owner->rest : owner->refused;
    kept = {.file = rows->get("KeptFile").toText(),
            .bytes = rows->get("Bytes").toLong(),
            .earlier = rows->get("Earlier").toLong()};
  }
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
  readKept(main_, result);
  return result;
}

void ImportProgress::store(const FileProgress& progress) {
  const auto rows = openRows(main_);
  if (moveToFile(*rows, progress.file)) {
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
  storeKept(main_, progress.file, kRefused, progress.refused);
  storeKept(main_, progress.file, kRest, progress.rest);
}

void ImportProgress::rename(std::string_view from, std::string_view to) {
  if (from == to) return;
  const auto rows = openRows(main_);
  if (!moveToFile(*rows, from)) return;
  rows->edit();
  rows->set("File", to);
  rows->update();
  renameKept(main_, from, to);
}

void ImportProgress::setAside(std::string_view file) {
  const auto rows = openRows(main_);
  if (!moveToFile(*rows, file)) return;
  const std::string digest = rows->get("Digest").toText();
  // Nothing was read: nothing to find again.
  if (rows->get("Bytes").toLong() == 0) {
    rows->remove();
    removeKept(main_, file);
    return;
  }
  const std::string name = "moved:" + digest;
  rows->edit();
  rows->set("File", name);
  rows->update();
  renameKept(main_, file, name);
}

void ImportProgress::forget(std::string_view file) {
  const auto rows = openRows(main_);
  if (moveToFile(*rows, file)) rows->remove();
  removeKept(main_, file);
}

}  // namespace ingest
