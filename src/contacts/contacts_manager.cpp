#include "contacts/contacts_manager.h"

#include <algorithm>
#include <vector>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/dialled_number.h"

namespace contacts {

namespace {

void appendDistinct(std::vector<std::string>& list, std::string text) {
  if (!text.empty() && std::find(list.begin(), list.end(), text) == list.end()) list.push_back(std::move(text));
}

// The digits of one number as it is written for people; a leading plus sign is the international "00".
std::string digitsOf(std::string_view written) {
  std::string digits;
  for (const char c : base::trim(written)) {
    if (c == '+' && digits.empty()) {
      digits = "00";
    } else if ((c >= '0' && c <= '9') || c == '*' || c == '#') {
      digits += c;
    }
  }
  return digits;
}

}  // namespace

void ContactsManager::Open(jet::Database& database) {
  database_ = &database;
  recordset_ = database.openRecordset("SELECT * from contacts ORDER BY Name ASC");
}

void ContactsManager::Close() {
  recordset_.reset();
  database_ = nullptr;
}

std::unique_ptr<jet::Recordset> ContactsManager::openSheetRecordset() {
  return database_->openRecordset(base::format("SELECT * FROM %s", kContactsTable));
}

std::optional<CONTACTENTRYDESC> ContactsManager::find(std::int32_t recordId) {
  const auto row = openSheetRecordset();
  row->findFirst(base::format("RecordID = %d", recordId));
  if (row->noMatch()) return std::nullopt;
  return readContact(*row);
}

std::int32_t ContactsManager::NextRecordNumber() {
  const auto taken = config_.takeNumber(foundation::keys::contacts::NextRecID);
  if (!taken) person_.messageBox(language_.Translate("IDS_CANTGETNEXTRECID"));
  return taken.value_or(0);
}

std::int32_t ContactsManager::AddFromCall(std::string_view first, std::string_view second, std::string_view address,
                                          std::string_view telephone, const EditSheet& editSheet) {
  if (!isOpen()) {
    person_.messageBox(language_.Translate("IDS_SMDR_CANTADDTOCONTACTS"));
    return 0;
  }
  CONTACTENTRYDESC contact;
  if (!second.empty()) {
    contact.name = base::format("%s %s", first, second);
    contact.contact = contact.name;
  } else {
    contact.organization = first;
    contact.contact = first;
  }
  contact.telString = contact.telView = contact.tel = telephone;
  contact.address = address;
  const std::int32_t recordId = add(std::move(contact));
  if (editSheet && !editSheet(recordId)) person_.messageBox(language_.Translate("IDS_CANTEDITRECORD"));
  return recordId;
}

std::int32_t ContactsManager::add(CONTACTENTRYDESC contact) {
  contact.recordId = NextRecordNumber();  // before the transaction: the operator may be told something
  jet::Transaction transaction(*database_);
  recordset_->addNew();
  writeFields(*recordset_, contact);
  updateOrReport(*recordset_);
  tags_.Touch(kContactsTable);
  log_.WriteLog(security::LogAdd, language_.Translate("IDS_LOG_ADD_CONTACTS"), contact.contact);
  transaction.commit();
  return contact.recordId;
}

SaveResult ContactsManager::save(const CONTACTENTRYDESC& original, const CONTACTENTRYDESC& edited, bool overwrite) {
  jet::Transaction transaction(*database_);
  const auto row = openSheetRecordset();
  row->findFirst(base::format("RecordID = %d", original.recordId));
  if (row->noMatch()) return SaveResult::DeletedByOther;
  if (!overwrite && readContact(*row) != original) return SaveResult::ChangedByOther;
  row->edit();
  writeFields(*row, edited);
  updateOrReport(*row);
  tags_.Touch(kContactsTable);
  log_.WriteLog(security::LogEdit, language_.Translate("IDS_LOG_EDIT_CONTACTS"), edited.contact);
  transaction.commit();
  return SaveResult::Done;
}

SaveResult ContactsManager::remove(const CONTACTENTRYDESC& contact) {
  jet::Transaction transaction(*database_);
  const auto row = openSheetRecordset();
  row->findFirst(base::format("RecordID = %d", contact.recordId));
  if (row->noMatch()) return SaveResult::DeletedByOther;
  row->remove();
  tags_.Touch(kContactsTable);
  log_.WriteLog(security::LogDelete, language_.Translate("IDS_LOG_DEL_CONTACTS"), contact.contact);
  transaction.commit();
  return SaveResult::Done;
}

std::string ContactsManager::message(SaveResult result) const {
  switch (result) {
    case SaveResult::ChangedByOther:
      return language_.Translate("IDS_LAN_RECORD_CHANGED");
    case SaveResult::DeletedByOther:
      return language_.Translate("IDS_LAN_RECORD_DELETED_NO");
    default:
      return {};
  }
}

void ContactsManager::writeFields(jet::Recordset& row, const CONTACTENTRYDESC& contact) {
  const auto& names = row.fieldNames();
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (base::equalFoldAscii(names[i], "RecordID")) {
      row.set(i, contact.recordId);
      continue;
    }
    if (base::equalFoldAscii(names[i], "Tip")) {
      row.set(i, contact.tip);
      continue;
    }
    const auto* field = std::find_if(kContactTextFields.begin(), kContactTextFields.end(),
                                     [&](const auto& f) { return base::equalFoldAscii(f.column, names[i]); });
    if (field == kContactTextFields.end()) {
      person_.messageBox("Non-fatal: field not found in buffer (WriteBuffer)");
    } else {
      row.set(i, contact.*field->member);
    }
  }
}

// Writes the row; when that fails, the begun row is given up before the fault goes on to the caller.
void ContactsManager::updateOrReport(jet::Recordset& row) {
  try {
    row.update();
  } catch (const jet::Error&) {
    try {
      row.cancelUpdate();
    } catch (const jet::Error& error) {
      person_.messageBox(base::format("Cleanup: CancelUpdate failed. File: %s, Line: %d. Error:\n%s", "ContactsSheet",
                                      __LINE__, error.description()));
    }
    throw;
  }
}

std::string ContactsManager::localPrefix() {
  return base::format("00%s%s", config_.ReadConfigString(foundation::keys::CountryCode),
                      config_.ReadConfigString(foundation::keys::AreaCode));
}

std::string ContactsManager::searchedNumbers(std::string_view shown) {
  const std::string country = config_.ReadConfigString(foundation::keys::CountryCode);
  const std::string area = config_.ReadConfigString(foundation::keys::AreaCode);
  std::vector<std::string> forms;
  for (const std::string& written : base::split(shown, ",;/\r\n")) {
    const std::string digits = digitsOf(written);
    if (digits.empty()) continue;
    appendDistinct(forms, digits);
    if (digits.size() > 1 && digits[0] == '0' && digits[1] != '0') {
      appendDistinct(forms, base::format("00%s%s", country, digits.substr(1)));
    }
    appendDistinct(forms, tariff::normaliseNumber(digits, "", country, area));
  }
  std::string joined;
  for (const std::string& form : forms) joined += (joined.empty() ? "" : " ") + form;
  return joined;
}

}  // namespace contacts
