#include "ingest/import.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "base/printf.h"
#include "ingest/import_run.h"
#include "ingest/record_reader.h"
#include "platform/durable_files.h"
#include "schema/missing.h"

namespace ingest {

namespace {

using Outcome = ImportResult::Outcome;

ImportResult nothingToDo(std::string message = {}) {
  return {.outcome = Outcome::NothingToDo, .message = std::move(message)};
}

ImportResult failed(std::string message) {
  return {.outcome = Outcome::Failed, .message = std::move(message)};
}

std::string cannot(const char* verb, const std::filesystem::path& file, const std::error_code& error) {
  return base::format("cannot %s %s: %s", verb, file.string(), error.message());
}

bool isRegularFile(const std::filesystem::path& file) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(file, ignored);
}

bool fileExists(const std::filesystem::path& file) {
  std::error_code ignored;
  return std::filesystem::exists(file, ignored);
}

// The position that the row tells of, when the file begins with the bytes that the row's digest was made of.
bool beginsAsRead(const std::filesystem::path& file, const FileProgress& row) {
  std::ifstream stream(file, std::ios::binary);
  RecordReader reader(stream, 0);
  return reader.skipTo(row.bytes) && reader.position().digest.text() == row.digest;
}

}  // namespace

void ImportResult::addEarlier(const ImportResult& earlier) {
  imported += earlier.imported;
  refused += earlier.refused;
  const auto join = [](std::string first, const std::string& second) {
    if (first.empty() || second.empty() || first == second) return first.empty() ? second : first;
    return first + ", " + second;
  };
  refusedFile = join(earlier.refusedFile, refusedFile);
  restFile = join(earlier.restFile, restFile);
  if (refusedReason.empty()) refusedReason = earlier.refusedReason;
  if (message.empty()) {
    message = earlier.message;
    logged = earlier.logged;
  }
  if (phonebookFault.empty()) phonebookFault = earlier.phonebookFault;
}

int ImportResult::result() const {
  switch (outcome) {
    case Outcome::NothingToDo:
    case Outcome::Done:
    case Outcome::AlreadyComplete:
      return 1;
    case Outcome::StoppedByOperator:
    case Outcome::Interrupted:
    case Outcome::Failed:
      break;
  }
  return 0;
}

MonitorImport::MonitorImport(Recorder& recorder, ImportOptions options)
    : recorder_(recorder), options_(std::move(options)), rows_(recorder.parts().main), kept_(recorder.parts()) {
  options_.recordsPerBatch = std::max<std::int64_t>(options_.recordsPerBatch, 1);
}

// Looked at before a file is touched: without a database to write to, every record would be read in vain.
std::optional<std::string> MonitorImport::reasonNotToStart() const {
  if (!recorder_.isOpen()) return "the calls are not open; nothing was imported";
  if (recorder_.parts().main.readOnly()) return "the database is open for reading only; nothing was imported";
  return std::nullopt;
}

std::optional<MonitorFolder> MonitorImport::monitorFolder() const {
  const std::string setting = recorder_.parts().config.ReadConfigString(foundation::keys::PathMonitor);
  if (setting.empty()) return std::nullopt;
  return MonitorFolder(setting);
}

// Faults before a file is read come back as a result; the file is kept.
ImportResult MonitorImport::guarded(const std::filesystem::path& file, const std::function<ImportResult()>& work) {
  try {
    kept_.settle();
    return work();
  } catch (const std::runtime_error& error) {
    ImportResult result = failed(base::format("the import of %s stopped: %s", file.string(), describe(error)));
    result.logged = logFault(result.message);
    return result;
  }
}

// The fault's own text and, when a database lacks a table or a column, which.
std::string MonitorImport::describe(const std::exception& fault) const {
  std::string text = fault.what();
  if (!text.ends_with('.')) text += '.';
  if (dynamic_cast<const jet::Error*>(&fault) == nullptr) return text;
  const ExchangeParts& parts = recorder_.parts();
  std::string missing = schema::missingFrom(schema::Which::Main, parts.main);
  if (missing.empty() && parts.tariffs != nullptr)
    missing = schema::missingFrom(schema::Which::Tariffs, parts.tariffs->database());
  return missing.empty() ? text : text + " " + missing;
}

// False when the database takes no entry either; the result has it all.
bool MonitorImport::logFault(const std::string& text) {
  try {
    return recorder_.parts().log.WriteLog(security::LogError, "%s", text);
  } catch (const jet::Error&) {
    return false;
  }
}

ImportResult MonitorImport::run() {
  if (const auto reason = reasonNotToStart()) return failed(*reason);
  const auto folder = monitorFolder();
  if (!folder) return nothingToDo("setting PathMonitor (section general) names no folder");
  return guarded(folder->backup(), [&] {
    if (const auto reason = moveLeftOverAside(*folder)) return nothingToDo(*reason);
    if (const auto result = takeOver(*folder)) return *result;
    return readFile({.file = folder->backup().string()}, folder->backup(), true);
  });
}

// The reason when it is still there: then the new file must not take its name.
std::optional<std::string> MonitorImport::moveLeftOverAside(const MonitorFolder& folder) {
  if (!fileExists(folder.backup())) return std::nullopt;
  const std::filesystem::path name = folder.freeBackupName();
  recorder_.parts().log.WriteLog(security::LogError, "monitor.data.bk exists, renaming to %s", name.string());
  if (const std::error_code error = platform::renameDurably(folder.backup(), name)) {
    return cannot("rename", folder.backup(), error);
  }
  rows_.rename(folder.backup().string(), name.string());
  return std::nullopt;
}

// Gives the monitor's file the backup name; a result when there is nothing to read then.
std::optional<ImportResult> MonitorImport::takeOver(const MonitorFolder& folder) {
  std::error_code error;
  const auto status = std::filesystem::symlink_status(folder.source(), error);
  if (status.type() == std::filesystem::file_type::not_found) {
    const bool folderThere = fileExists(folder.source().parent_path());
    return folderThere ? nothingToDo() : nothingToDo(cannot("read", folder.source().parent_path(), error));
  }
  if (error) return nothingToDo(cannot("read", folder.source(), error));
  // Opening a pipe would wait for its other end.
  if (!isRegularFile(folder.source())) return nothingToDo(folder.source().string() + " is not a file");
  {
    // Before the rename, so that a kill right after it leaves a backup that is known as interrupted.
    jet::Transaction transaction(recorder_.parts().main);
    rows_.setAside(folder.backup().string());
    rows_.store({.file = folder.backup().string(), .digest = ReadPosition().digest.text()});
    transaction.commit();
  }
  error = platform::renameDurably(folder.source(), folder.backup());
  if (!error) return std::nullopt;
  rows_.forget(folder.backup().string());
  if (error == std::errc::no_such_file_or_directory) return nothingToDo();
  return nothingToDo(cannot("rename", folder.source(), error));
}

ImportResult MonitorImport::importFile(const std::filesystem::path& file) {
  if (const auto reason = reasonNotToStart()) return failed(*reason);
  const std::filesystem::path path = absolutePath(file);
  const auto folder = monitorFolder();
  if (folder && path == folder->source()) {
    return failed(path.string() + " is the file that the monitor writes to; an import without a file takes it over");
  }
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) return failed(cannot("read", path, error));
  if (!std::filesystem::is_regular_file(status)) return failed(path.string() + " is not a file");
  return guarded(path, [&] {
    const bool deleted = isDeletedWhenComplete(path);
    FileProgress from = progressOf(path);
    const bool begun = from.bytes > 0;
    ImportResult result = readFile(std::move(from), path, deleted);
    if (begun && result.outcome == Outcome::Done && result.imported == 0) {
      result.outcome = Outcome::AlreadyComplete;
      result.message = base::format("every record of %s is in the database already", path.string());
    }
    return result;
  });
}

bool MonitorImport::isDeletedWhenComplete(const std::filesystem::path& file) {
  const auto folder = monitorFolder();
  if (folder && folder->isBackupName(file)) return true;
  // Made by an import, when a row says so: a person's file may have such a name too.
  const std::vector<FileProgress> rows = rows_.all();
  return KeptFiles::isRefusedName(file) &&
         std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row.file == file; });
}

// Where to go on: by the file's own row, else by any row whose bytes the file begins with (it was renamed or copied),
// else from its start. Leaves the row to go on with named after the file, unless the row's own file is still there, as
// one of another machine may be: one row then counts for the file and its copy.
FileProgress MonitorImport::progressOf(const std::filesystem::path& file) {
  const std::vector<FileProgress> rows = rows_.all();
  const auto own = std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.file == file; });
  if (own != rows.end() && beginsAsRead(file, *own)) return *own;

  const FileProgress* best = nullptr;
  for (const FileProgress& row : rows) {
    // The bytes of refused records alone say nothing: the file may be the one that they are kept in.
    const bool further = row.hasStoredCalls() && (best == nullptr || row.bytes > best->bytes);
    if (further && beginsAsRead(file, row)) best = &row;
  }
  FileProgress result = best != nullptr ? *best : FileProgress{.digest = ReadPosition().digest.text()};
  if (best == nullptr || !(best->elsewhere || fileExists(best->file))) {
    result.file = file.string();
    jet::Transaction transaction(recorder_.parts().main);
    rows_.setAside(result.file);
    if (best != nullptr) rows_.rename(best->file, result.file);
    transaction.commit();
  }
  return result;
}

ImportResult MonitorImport::readFile(FileProgress from, const std::filesystem::path& file, bool deleteWhenComplete) {
  const ExchangeParts& parts = recorder_.parts();
  std::ifstream stream;
  if (isRegularFile(file)) stream.open(file, std::ios::binary);
  if (!stream.is_open()) {
    const std::string message = base::format("can't open %s", file.string());
    const bool logged = parts.log.WriteLog(security::LogError, "%s", message);
    return {
        .outcome = deleteWhenComplete ? Outcome::NothingToDo : Outcome::Failed, .message = message, .logged = logged};
  }
  std::error_code error;
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(file, error));
  RecordReader reader(stream, parts.language.codepage());
  if (!reader.skipTo(from.bytes)) return failed(file.string() + " became shorter while it was read");

  ImportRun reading(recorder_, options_, reader, std::move(from));
  ImportResult result;
  try {
    // Also of extended records, which makes the progress an estimate.
    result.outcome = reading.readAll(error ? 0 : size / static_cast<std::int64_t>(exchange::kNormalRecordSize));
    if (result.outcome == Outcome::Failed) result.message = base::format("cannot read %s to its end", file.string());
    if (result.outcome == Outcome::Done) {
      finish(reading.progress(), file, error ? 0 : size, deleteWhenComplete, result);
    }
  } catch (const std::runtime_error& fault) {
    result.outcome = Outcome::Failed;
    const std::string reason = describe(fault);
    result.message = base::format(
        "the import of %s stopped: %s %d of its records were dealt with before that, the "
        "others wait in the file.",
        file.string(), reason, reading.progress().records);
    result.logged = logFault(base::format("the import of %s stopped: %s", file.string(), reason));
  }
  result.imported = reading.recordsRead();
  result.refused = reading.recordsRefused();
  result.refusedReason = reading.refusedReason();
  if (result.refused > 0) result.refusedFile = reading.progress().refused.file;
  result.phonebookFault = recorder_.phonebookFault();
  return result;
}

// After the last record. What follows it is kept before the file is deleted.
void MonitorImport::finish(FileProgress progress, const std::filesystem::path& file, std::int64_t size,
                           bool deleteWhenComplete, ImportResult& result) {
  const bool hasRest = progress.bytes < size;
  if (hasRest && deleteWhenComplete) {
    kept_.keepRest(progress, file);
    result.restFile = progress.rest.file;
  } else if (hasRest) {
    result.message = base::format("%s: from byte %d on there is no whole call record; the rest was not read",
                                  file.string(), progress.bytes);
  }
  if (!deleteWhenComplete) return;
  const std::int64_t dealtWith = std::max(size, progress.bytes);
  if (const std::string reason = deleteComplete(file, progress, dealtWith); !reason.empty()) result.message = reason;
}

// The order keeps a kill or a power cut between any two steps harmless: see docs/storage.md. The reason when the file
// is still there; its row tells what of it is left to read. Another program may be keeping calls in it: it adds them
// within a transaction.
std::string MonitorImport::deleteComplete(const std::filesystem::path& file, const FileProgress& progress,
                                          std::int64_t dealtWith) {
  recorder_.parts().main.makeDurable();
  jet::Transaction others(recorder_.parts().main);
  std::error_code error;
  if (std::filesystem::file_size(file, error) > static_cast<std::uintmax_t>(dealtWith) && !error) {
    return base::format("%s: calls were kept in it while it was read; import it again", file.string());
  }
  error = platform::removeDurably(file);
  others.commit();
  if (error && error != std::errc::no_such_file_or_directory) return cannot("delete", file, error);
  if (progress.elsewhere || fileExists(progress.file)) return {};
  rows_.forget(progress.file);
  // Named for a record that could be stored after all.
  if (progress.refused.bytes == 0 && !progress.refused.file.empty()) rows_.forget(progress.refused.file);
  return {};
}

ImportResult MonitorImport::resumeStoppedImports() {
  if (const auto reason = reasonNotToStart()) return failed(*reason);
  const auto folder = monitorFolder();
  if (!folder) return nothingToDo();
  ImportResult total;
  for (const std::filesystem::path& backup : folder->backups()) {
    const std::vector<FileProgress> rows = rows_.all();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto& each) { return each.file == backup; });
    if (row == rows.end() || row->stoppedByOperator) continue;
    ImportResult one = importFile(backup);
    if (one.outcome == Outcome::AlreadyComplete) one.message.clear();
    one.addEarlier(total);
    total = one;
    if (total.result() == 0) break;
  }
  return total;
}

}  // namespace ingest
