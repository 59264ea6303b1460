#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "ingest/import_progress.h"
#include "ingest/kept_files.h"
#include "ingest/monitor_folder.h"
#include "ingest/recorder.h"

namespace ingest {

struct ImportResult {
  enum class Outcome {
    NothingToDo,        // no monitor file, or it cannot be taken over: see message
    Done,               // read to its end
    AlreadyComplete,    // every record of the file was in the database already (importFile only)
    StoppedByOperator,  // after a failed record; the file is kept for importFile
    Interrupted,        // by shouldStop or at the progress window; resumeStoppedImports goes on
    Failed,             // the database or the file failed; resumeStoppedImports goes on
  };
  Outcome outcome = Outcome::NothingToDo;
  std::int64_t imported = 0;        // records read by this call and dealt with for good, whatever the outcome
  std::int64_t refused = 0;         // of these, records that could not be stored: they are in refusedFile
  std::string refusedReason = {};   // of the first that was refused by a fault; the audit log has the numbers
  std::string refusedFile = {};     // for importFile, when the cause is mended; several names are parted by ", "
  std::string restFile = {};        // what followed the last whole record of a file
  std::string phonebookFault = {};  // why calls have no name from the phonebook; empty when it could be asked
  std::string message = {};         // for the operator, empty when there is nothing else to say
  bool logged = false;              // the message is in the audit log too

  // Adds what an earlier call of the same run did; outcome and message stay where there is a message.
  void addEarlier(const ImportResult& earlier);

  // The documented result: 0 when the import was stopped before the file's end, else 1.
  [[nodiscard]] int result() const;
};

struct ImportOptions {
  // Rows are written in batches, one transaction each, so that other copies get their turn.
  std::int64_t recordsPerBatch = 1000;
  std::chrono::milliseconds timePerBatch{100};
  // Asked before each record; true ends the import after a commit. May be empty.
  std::function<bool()> shouldStop = {};
};

// Takes over the monitor's file and records its calls. A kill at any moment leaves every record either in the database
// once or in a file that importFile completes without doubling: see docs/storage.md. A fault of one call is asked
// about, and its record kept beside the file when the import goes on; any other fault ends the run and comes back in
// the result.
class MonitorImport {
 public:
  explicit MonitorImport(Recorder& recorder, ImportOptions options = {});

  // One run over "monitor.data" in the folder of setting "PathMonitor". A left-over backup is renamed aside and not
  // read.
  ImportResult run();
  // Reads a file from its first record that is not yet in the database. A backup of the monitor folder and a file of
  // refused records are deleted when they are complete; any other file stays.
  ImportResult importFile(const std::filesystem::path& file);
  // Completes the backups whose import was interrupted, by a kill, shouldStop or a fault; not those that the operator
  // stopped. To be called once before the first run.
  ImportResult resumeStoppedImports();

 private:
  [[nodiscard]] std::optional<std::string> reasonNotToStart() const;
  [[nodiscard]] std::optional<MonitorFolder> monitorFolder() const;
  ImportResult guarded(const std::filesystem::path& file, const std::function<ImportResult()>& work);

  std::optional<std::string> moveLeftOverAside(const MonitorFolder& folder);
  std::optional<ImportResult> takeOver(const MonitorFolder& folder);
  [[nodiscard]] FileProgress progressOf(const std::filesystem::path& file);
  [[nodiscard]] bool isDeletedWhenComplete(const std::filesystem::path& file);
  ImportResult readFile(FileProgress from, const std::filesystem::path& file, bool deleteWhenComplete);
  void finish(FileProgress progress, const std::filesystem::path& file, std::int64_t size, bool deleteWhenComplete,
              ImportResult& result);
  std::string deleteComplete(const std::filesystem::path& file, const FileProgress& progress, std::int64_t dealtWith);
  [[nodiscard]] std::string describe(const std::exception& fault) const;
  [[nodiscard]] bool logFault(const std::string& text);

  Recorder& recorder_;
  ImportOptions options_;
  ImportProgress rows_;
  KeptFiles kept_;
};

}  // namespace ingest
