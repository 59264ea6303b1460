#include "ingest/kept_files.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "base/printf.h"
#include "ingest/record_reader.h"
#include "platform/durable_files.h"

namespace ingest {

namespace {

constexpr const char* kRefusedEnding = ".refused";
constexpr const char* kRestEnding = ".rest";

void check(const std::error_code& error, const char* what, const std::string& file) {
  if (error) throw std::filesystem::filesystem_error(what, file, error);
}

// FILE of FILE.refused.N; any other name as it is.
std::string withoutRefused(const std::string& file) {
  const std::size_t dot = file.rfind('.');
  if (dot == std::string::npos || dot + 1 == file.size()) return file;
  const bool number = std::all_of(file.begin() + static_cast<std::ptrdiff_t>(dot) + 1, file.end(),
                                  [](unsigned char c) { return std::isdigit(c) != 0; });
  const std::string name = file.substr(0, dot);
  if (!number || !name.ends_with(kRefusedEnding)) return file;
  return name.substr(0, name.size() - std::string_view(kRefusedEnding).size());
}

}  // namespace

bool KeptFiles::isRefusedName(const std::filesystem::path& file) {
  return withoutRefused(file.string()) != file.string();
}

// Neither a file that exists nor one that a row still counts on: the row's import would cut off what is not its own.
std::string KeptFiles::freeName(const std::string& file, const char* kind) {
  const std::vector<FileProgress> rows = rows_.all();
  for (int n = 1;; ++n) {
    std::string name = base::format("%s%s.%d", withoutRefused(file), kind, n);
    const bool counted = std::any_of(rows.begin(), rows.end(), [&](const FileProgress& row) {
      return row.refused.file == name || row.rest.file == name;
    });
    std::error_code ignored;
    if (!counted && !std::filesystem::exists(std::filesystem::symlink_status(name, ignored))) return name;
  }
}

void KeptFiles::settle() {
  for (const FileProgress& row : rows_.all()) {
    if (!row.refused.file.empty()) settle(row);
  }
}

FileProgress KeptFiles::rowOf(const std::string& file) {
  for (FileProgress& row : rows_.all()) {
    if (row.file == file && !row.elsewhere) return std::move(row);
  }
  return {.file = file, .digest = ReadPosition().digest.text()};
}

// A file that is longer than its row says may be one that another program is adding to.
bool KeptFiles::settle(const FileProgress& seen) {
  std::error_code error;
  const auto size = std::filesystem::file_size(seen.refused.file, error);
  if (!error && size == static_cast<std::uintmax_t>(seen.refused.bytes)) return false;
  jet::Transaction transaction(main_);
  FileProgress row = rowOf(seen.file);
  if (!row.refused.file.empty()) settleAlone(row);
  transaction.commit();
  return true;
}

void KeptFiles::settleAlone(FileProgress& row) {
  const KeptFile refused = row.refused;
  std::error_code error;
  const auto size = std::filesystem::file_size(refused.file, error);
  const auto counted = static_cast<std::uintmax_t>(refused.bytes);
  if (error == std::errc::no_such_file_or_directory || (!error && size < counted)) {
    // Imported and deleted meanwhile, or moved, or cut by hand; without bytes it was not made yet.
    if (counted == 0) return;
    row.refused = {.earlier = refused.earlier + refused.bytes};
    rows_.store(row);
    return;
  }
  check(error, "cannot read", refused.file);
  if (size == counted) return;
  check(counted == 0 ? platform::removeDurably(refused.file) : platform::writeDurably(refused.file, refused.bytes, {}),
        "cannot cut", refused.file);
}

// Names the file before it is made, with an entry that the log holds once.
void KeptFiles::name(FileProgress& progress, KeptFile FileProgress::*kept, const char* kind, const char* entry) {
  const std::string file = freeName(progress.file, kind);
  FileProgress named = progress;
  (named.*kept).file = file;
  jet::Transaction transaction(main_);
  if (kept == &FileProgress::refused) {
    // A row of its own, at its start: its bytes must never make it pass for the beginning of another file.
    rows_.setAside(file);
    rows_.store({.file = file, .digest = ReadPosition().digest.text()});
  }
  rows_.store(named);
  log_.WriteLog(security::LogError, entry, file);
  transaction.commit();
  main_.makeDurable();
  progress = named;
}

void KeptFiles::prepare(FileProgress& progress) {
  if (!progress.refused.file.empty() && settle(progress)) progress.refused = rowOf(progress.file).refused;
  if (!progress.refused.file.empty()) return;
  name(progress, &FileProgress::refused, kRefusedEnding, "Calls that could not be recorded are kept in %s");
}

void KeptFiles::refuse(FileProgress& progress, std::span<const unsigned char> record) {
  const KeptFile& refused = progress.refused;
  std::error_code error;
  const auto size = std::filesystem::file_size(refused.file, error);
  const bool whole = refused.bytes == 0 || (!error && size >= static_cast<std::uintmax_t>(refused.bytes));
  if (refused.file.empty() || !whole) {
    // By an import of this file that ended since prepare().
    check(std::make_error_code(std::errc::no_such_file_or_directory), "was taken away just now", refused.file);
  }
  check(platform::writeDurably(refused.file, refused.bytes, record), "cannot write", refused.file);
  progress.refused.bytes += static_cast<std::int64_t>(record.size());
}

bool KeptFiles::isKept(const FileProgress& progress, std::int64_t bytes, std::span<const unsigned char> record) {
  const KeptFile& kept = progress.refused;
  if (kept.earlier + kept.bytes < bytes) return false;
  if (bytes <= kept.earlier) return true;
  std::ifstream file(kept.file, std::ios::binary);
  if (!file) return true;
  std::string found(record.size(), '\0');
  file.seekg(bytes - kept.earlier - static_cast<std::int64_t>(record.size()));
  file.read(found.data(), static_cast<std::streamsize>(found.size()));
  return file && std::equal(record.begin(), record.end(), found.begin(),
                            [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); });
}

void KeptFiles::keepRest(FileProgress& progress, const std::filesystem::path& file) {
  if (progress.rest.file.empty()) {
    name(progress, &FileProgress::rest, kRestEnding, "What could not be read of the monitor's file is kept in %s");
  }
  check(platform::copyRestDurably(file, progress.bytes, progress.rest.file), "cannot write", progress.rest.file);
}

}  // namespace ingest
