#include "ingest/import_progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "jet/stored_database.h"

namespace ingest {

namespace {

constexpr std::string_view kRefused = "refused";
constexpr std::string_view kRest = "rest";
// Before the digest in the name of a row whose file is another one now.
constexpr std::string_view kMoved = "moved:";

std::string hostName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return "localhost";
  return name.data();
}

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

bool moveToFile(jet::Recordset& rows, const StoredFileNames& names, std::string_view file) {
  return moveTo(rows, [&] { return names.areEqual(rows.get("File").toText(), file); });
}

void storeKept(jet::Database& main, const StoredFileNames& names, std::string_view of, std::string_view kind,
               const KeptFile& kept) {
  if (kept == KeptFile{}) return;
  const auto rows = openKept(main);
  const bool known = moveTo(
      *rows, [&] { return names.areEqual(rows->get("File").toText(), of) && rows->get("Kind").toText() == kind; });
  if (known) {
    rows->edit();
  } else {
    rows->addNew();
  }
  rows->set("File", names.stored(of));
  rows->set("Kind", kind);
  rows->set("KeptFile", kept.file);
  rows->set("Bytes", static_cast<double>(kept.bytes));
  rows->set("Earlier", static_cast<double>(kept.earlier));
  rows->update();
}

// The kept files of one file, under its new name.
void renameKept(jet::Database& main, const StoredFileNames& names, std::string_view from, std::string_view to) {
  const auto rows = openKept(main);
  while (moveToFile(*rows, names, from)) {
    rows->edit();
    rows->set("File", names.stored(to));
    rows->update();
  }
}

void removeKept(jet::Database& main, const StoredFileNames& names, std::string_view of) {
  const auto rows = openKept(main);
  while (moveToFile(*rows, names, of)) rows->remove();
}

void readKept(jet::Database& main, const StoredFileNames& names, std::vector<FileProgress>& files) {
  const auto rows = openKept(main);
  if (rows->bof() && rows->eof()) return;
  for (rows->moveFirst(); !rows->eof(); rows->moveNext()) {
    const std::string of = names.shown(rows->get("File").toText());
    const auto owner = std::find_if(files.begin(), files.end(), [&](const auto& each) { return each.file == of; });
    if (owner == files.end() || owner->elsewhere) continue;
    KeptFile& kept = rows->get("Kind").toText() == kRest ? owner->rest : owner->refused;
    kept = {.file = rows->get("KeptFile").toText(),
            .bytes = rows->get("Bytes").toLong(),
            .earlier = rows->get("Earlier").toLong()};
  }
}

}  // namespace

StoredFileNames::StoredFileNames(const jet::Database& main)
    : machine_(jet::isServerAddress(main.path().string()) ? hostName() + ":" : "") {}

std::string StoredFileNames::stored(std::string_view file) const {
  return file.starts_with('/') ? machine_ + std::string(file) : std::string(file);
}

std::string StoredFileNames::shown(std::string_view stored) const {
  const bool own = !machine_.empty() && stored.starts_with(machine_ + "/");
  return std::string(own ? stored.substr(machine_.size()) : stored);
}

bool StoredFileNames::areEqual(std::string_view stored, std::string_view file) const {
  return stored == file || stored == this->stored(file);
}

bool StoredFileNames::isElsewhere(std::string_view stored) const {
  return !machine_.empty() && !stored.starts_with('/') && !stored.starts_with(machine_ + "/") &&
         stored.find(":/") != std::string_view::npos;
}

std::vector<FileProgress> ImportProgress::all() {
  std::vector<FileProgress> result;
  const auto rows = openRows(main_);
  if (rows->bof() && rows->eof()) return result;
  for (rows->moveFirst(); !rows->eof(); rows->moveNext()) {
    const std::string file = rows->get("File").toText();
    result.push_back({.file = names_.shown(file),
                      .records = rows->get("Records").toLong(),
                      .bytes = rows->get("Bytes").toLong(),
                      .digest = rows->get("Digest").toText(),
                      .stoppedByOperator = rows->get("StoppedByOperator").toBool(),
                      .elsewhere = names_.isElsewhere(file)});
  }
  readKept(main_, names_, result);
  return result;
}

void ImportProgress::store(const FileProgress& progress) {
  const auto rows = openRows(main_);
  if (moveToFile(*rows, names_, progress.file)) {
    rows->edit();
  } else {
    rows->addNew();
  }
  rows->set("File", names_.stored(progress.file));
  rows->set("Records", progress.records);
  rows->set("Bytes", static_cast<double>(progress.bytes));
  rows->set("Digest", progress.digest);
  rows->set("StoppedByOperator", progress.stoppedByOperator);
  rows->update();
  storeKept(main_, names_, progress.file, kRefused, progress.refused);
  storeKept(main_, names_, progress.file, kRest, progress.rest);
}

void ImportProgress::rename(std::string_view from, std::string_view to) {
  if (from == to) return;
  const auto rows = openRows(main_);
  if (!moveToFile(*rows, names_, from)) return;
  rows->edit();
  rows->set("File", names_.stored(to));
  rows->update();
  renameKept(main_, names_, from, to);
}

void ImportProgress::setAside(std::string_view file) {
  const auto rows = openRows(main_);
  if (!moveToFile(*rows, names_, file)) return;
  const std::string digest = rows->get("Digest").toText();
  // Nothing was read: nothing to find again.
  if (rows->get("Bytes").toLong() == 0) {
    rows->remove();
    removeKept(main_, names_, file);
    return;
  }
  const std::string name = std::string(kMoved) + digest;
  rows->edit();
  rows->set("File", name);
  rows->update();
  renameKept(main_, names_, file, name);
}

void ImportProgress::forget(std::string_view file) {
  const auto rows = openRows(main_);
  if (moveToFile(*rows, names_, file)) rows->remove();
  removeKept(main_, names_, file);
}

}  // namespace ingest
