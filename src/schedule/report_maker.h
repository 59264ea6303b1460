#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "exchange/party_definitions.h"
#include "folders/folder_view.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "mail/smtp.h"
#include "platform/clock.h"
#include "schedule/schedule.h"
#include "security/audit_log.h"
#include "security/users.h"
#include "tariff/currencies.h"

namespace schedule {

// A private folder for a report's file, gone with the object. A program that is killed leaves it to the system.
class WorkFolder {
 public:
  WorkFolder();  // throws std::system_error
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder();
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A finished report as a mail that lacks sender and recipient. Its attachment lives as long as `folder`.
struct MadeReport {
  std::shared_ptr<const WorkFolder> folder;
  mail::Message message;
};

// Makes the reports of schedules, with a filter, a language and a user of their own: those of the program around it
// play no part.
class ReportMaker {
 public:
  struct Parts {
    jet::Database& main;
    const foundation::LanguageFile& texts;
    const exchange::PartyDefinitions& definitions;
    const tariff::Currencies& currencies;
    security::AuditLog& log;
    security::UserDirectory& users;
    const platform::Clock& clock;
  };
  explicit ReportMaker(const Parts& parts) : parts_(parts) {}

  // What requireSound cannot see: the folder and its columns, the filter, the language, the user and his right to look
  // at calls. Throws std::invalid_argument that says what is wrong, and jet::Error.
  void requirePossible(const Schedule& schedule);

  // The report that was due then. Throws as requirePossible, and std::runtime_error when the file cannot be made.
  [[nodiscard]] MadeReport make(const Schedule& schedule, base::DateTime due);

 private:
  Parts parts_;
};

}  // namespace schedule
