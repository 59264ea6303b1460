#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "contacts/contact.h"
#include "foundation/change_tags.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/operator.h"
#include "security/audit_log.h"

namespace contacts {

// What became of a contact that was to be saved or deleted.
enum class SaveResult {
  Done,
  ChangedByOther,  // another copy changed the row since it was read; nothing was written
  DeletedByOther,  // the row is gone; nothing was written
  Failed,          // the database refused; the operator was told
};

// The contacts book. Other copies may edit the same rows: a row is written only when it still is what was read.
class ContactsManager {
 public:
  ContactsManager(foundation::ConfigManager& config, foundation::ChangeTags& tags,
                  const foundation::LanguageFile& language, security::AuditLog& log, platform::Operator& person)
      : config_(config), tags_(tags), language_(language), log_(log), person_(person) {}

  void Open(jet::Database& database);
  void Close();
  // The store's result set, ordered by name; only while open.
  [[nodiscard]] jet::Recordset& recordset() { return *recordset_; }
  [[nodiscard]] bool isOpen() const { return recordset_ != nullptr; }

  [[nodiscard]] std::optional<CONTACTENTRYDESC> find(std::int32_t recordId);

  // The next free RecordID. Without the counter the operator is told, the counter restarts at 1 and 0 is given.
  std::int32_t NextRecordNumber();

  // Opens the modal sheet on a contact that was just made from a call; false when its row cannot be edited.
  using EditSheet = std::function<bool(std::int32_t recordId)>;
  // Makes a contact from a call: first and last name, or a company in `first` alone. Returns its RecordID, 0 on
  // failure.
  std::int32_t AddFromCall(std::string_view first, std::string_view second, std::string_view address,
                           std::string_view telephone, const EditSheet& editSheet);

  // Adds a contact; its recordId is given by the counter and returned. Throws jet::Error.
  std::int32_t add(CONTACTENTRYDESC contact);
  // Writes `edited` over the row that was read as `original`; `overwrite` writes even when another copy changed it.
  SaveResult save(const CONTACTENTRYDESC& original, const CONTACTENTRYDESC& edited, bool overwrite = false);
  SaveResult remove(const CONTACTENTRYDESC& contact);

  // The operator's text for a result that is not Done; empty for Done and Failed.
  [[nodiscard]] std::string message(SaveResult result) const;

  // Numbers as searched, from numbers as shown (separated by comma, semicolon, slash or line end): each one's digits,
  // its international form, and the form that calls to it are looked up by, so that a call finds the contact's name and
  // a search finds the number as written.
  [[nodiscard]] std::string searchedNumbers(std::string_view shown);
  // "00" + country code + area code.
  [[nodiscard]] std::string localPrefix();

 private:
  void writeFields(jet::Recordset& row, const CONTACTENTRYDESC& contact);
  void updateOrReport(jet::Recordset& row);
  std::unique_ptr<jet::Recordset> openSheetRecordset();

  foundation::ConfigManager& config_;
  foundation::ChangeTags& tags_;
  const foundation::LanguageFile& language_;
  security::AuditLog& log_;
  platform::Operator& person_;
  jet::Database* database_ = nullptr;
  std::unique_ptr<jet::Recordset> recordset_;
};

}  // namespace contacts
