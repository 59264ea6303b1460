#include "ui/command_handler.h"

#include <QApplication>
#include <string>
#include <utility>

#include "security/audit_log.h"
#include "ui/dialogs.h"
#include "ui/main_frame.h"
#include "ui/settings/settings_sheet.h"

namespace ui {

namespace {

constexpr int kKindNumber = 400;
constexpr int kKindName = 407;
constexpr int kKindExtension = 402;
constexpr int kFolderUsers = 97;
constexpr int kFolderGroups = 98;
constexpr int kFolderCalls = 100;
constexpr int kKindUser = 350;
constexpr int kKindGroup = 370;

// The filter settings that a column's value narrows by: the switch key (null: none) and the value's key.
struct FilterColumn {
  int folder;  // 0: any
  int kind;
  const char* switchKey;
  const char* valueKey;
};
constexpr FilterColumn kFilterColumns[] = {
    {103, 400, "OnArea", "Area"},
    {0, 400, nullptr, "Number"},
    {110, 418, "OnName", "Name"},
    {111, 426, nullptr, "Country"},
    {0, 402, "OnExtension", "ExtensionStr"},
    {0, 403, "OnTrunk", "Trunk"},
    {0, 405, "OnAccount", "Cont"},
    {0, 407, "OnName", "Name"},
    {0, 411, "OnArea", "Area"},
    {0, 413, "OnDepartment", "Department"},
    {0, 418, "OnClient", "Client"},
    {0, 419, "OnFolder", "Folder"},
    {0, 426, nullptr, "Provider"},
    {0, 427, nullptr, "Country"},
};

const FilterColumn* findFilterColumn(int folder, int kind) {
  for (const FilterColumn& column : kFilterColumns) {
    if (column.kind == kind && (column.folder == 0 || column.folder == folder)) return &column;
  }
  return nullptr;
}

// An extension is shown as "201 (name)"; the filter wants the number.
QString filterValue(int kind, const QString& shown) {
  return kind == kKindExtension ? shown.section(" (", 0, 0) : shown;
}

bool filterBy(const CommandTarget& target, int kind, const QString& shown) {
  const FilterColumn* column = findFilterColumn(target.list.folderId(), kind);
  if (column == nullptr) return false;
  std::vector<std::pair<std::string, std::string>> values{{"OnFilter", "1"}};
  if (column->switchKey != nullptr) values.emplace_back(column->switchKey, "1");
  values.emplace_back(column->valueKey, fromQt(filterValue(kind, shown)));
  target.document.callFilter().set(values);
  return true;
}

void filterByCurrentValue(const CommandTarget& target) {
  const QModelIndex current = target.list.currentIndex();
  if (!current.isValid()) return;
  if (filterBy(target, target.list.model().kindOf(current.column()), target.list.currentText())) {
    target.frame.reloadFolder();
  }
}

// A statistic's row leads to its calls: the filter takes the row's group, and the call list opens.
void showCallsBehindRow(const CommandTarget& target) {
  const folders::FolderView* folder = target.list.model().folder();
  if (folder == nullptr || !target.list.currentIndex().isValid()) return;
  if (!folders::isStatistic(folder->folder().definition()) || target.list.model().columnCount() == 0) return;
  const QString group = target.list.model().text(target.list.currentIndex().row(), 0);
  filterBy(target, target.list.model().kindOf(0), group);
  target.frame.reloadFolder();
  target.frame.selectFolder(kFolderCalls);
}

void hideOrShow(const CommandTarget& target, bool hide) {
  const QString number = target.list.currentText(kKindNumber);
  if (number.isEmpty()) return;
  if (hide) {
    target.document.hideNumber(fromQt(number));
  } else {
    target.document.showNumber(fromQt(number));
  }
  target.frame.reloadFolder();
}

void addToContacts(const CommandTarget& target) {
  const QString number = target.list.currentText(kKindNumber);
  if (number.isEmpty()) return;
  const QString name = target.list.currentText(kKindName);
  target.document.contactBook().AddFromCall(fromQt(name), "", "", fromQt(number), [&target](std::int32_t recordId) {
    editContact(target.document, target.texts, &target.frame, recordId);
    return true;
  });
}

void editRow(const CommandTarget& target, bool fresh) {
  const int folder = target.list.folderId();
  bool changed = false;
  if (folder == kFolderUsers) {
    changed =
        editUser(target.document, target.texts, &target.frame, fresh ? QString() : target.list.currentText(kKindUser));
  } else if (folder == kFolderGroups) {
    changed = editGroup(target.document, target.texts, &target.frame,
                        fresh ? QString() : target.list.currentText(kKindGroup));
  }
  if (changed) target.frame.reloadFolder();
}

void openConfigured(const CommandTarget& target, const char* key) {
  const std::string address =
      target.document.app().config().ReadConfigString(key, "general", foundation::StoreMachine, "");
  if (!address.empty()) target.document.app().surroundings().documents.open(address);
}

void clearLog(const CommandTarget& target) {
  auto& person = target.document.app().surroundings().person;
  if (!person.askYesNo(target.texts.language().Translate("IDS_CONFIRM_CLEAR_LOG"),
                       platform::Operator::Unattended::No)) {
    return;
  }
  target.document.log().ClearLog();
  target.frame.reloadFolder();
}

}  // namespace

void handleCommand(Command command, const CommandTarget& target) {
  server::CServerDoc& document = target.document;
  const Texts& texts = target.texts;
  CMainFrame& frame = target.frame;
  folders::FolderView* folder = target.list.model().folder();
  const auto reloadIf = [&frame](bool changed) {
    if (changed) frame.reloadFolder();
  };
  switch (command) {
    case Command::Import:
      return frame.importCalls();
    case Command::Report:
      if (folder != nullptr) makeListReport(document, texts, &frame, *folder, ReportUse::Open);
      return;
    case Command::Print:
      if (folder != nullptr) makeListReport(document, texts, &frame, *folder, ReportUse::Print);
      return;
    case Command::Export:
      if (folder != nullptr) exportFolder(document, texts, &frame, *folder);
      return;
    case Command::Summary:
      if (folder != nullptr) makeSummaryPage(document, texts, &frame, *folder);
      return;
    case Command::Bill:
      return makeBill(document, texts, &frame, filterValue(kKindExtension, target.list.currentText(kKindExtension)));
    case Command::Settings: {
      SettingsSheet sheet(document, texts, &frame);
      return reloadIf(sheet.exec() == QDialog::Accepted);
    }
    case Command::Password:
      document.login().ChangePassword(false);
      return;
    case Command::Quit:
      frame.close();
      return;
    case Command::Filter:
      return reloadIf(editCallFilter(document, texts, &frame));
    case Command::FilterOn:
      document.callFilter().set({{"OnFilter", document.callFilter().active() ? "0" : "1"}});
      return frame.reloadFolder();
    case Command::ClearFilter:
      document.callFilter().clear();
      return frame.reloadFolder();
    case Command::ThisMonth:
      document.callFilter().thisMonth();
      return frame.reloadFolder();
    case Command::PreviousMonth:
      document.callFilter().previousMonth();
      return frame.reloadFolder();
    case Command::FilterByValue:
      return filterByCurrentValue(target);
    case Command::ShowCalls:
      return showCallsBehindRow(target);
    case Command::HideNumber:
      return hideOrShow(target, true);
    case Command::ShowNumber:
      return hideOrShow(target, false);
    case Command::AddToContacts:
      return addToContacts(target);
    case Command::Recalc:
      return reloadIf(updateStoredCalls(document, texts, &frame));
    case Command::DeleteZeroLength:
      return reloadIf(document.deleteZeroLengthCalls());
    case Command::ResetCalls:
      return reloadIf(document.resetCalls());
    case Command::SearchContacts:
      return searchContacts(document, texts, &frame);
    case Command::NewContact:
      addContact(document, texts, &frame);
      return;
    case Command::ResetContacts:
      document.resetContacts();
      return;
    case Command::New:
      return editRow(target, true);
    case Command::Edit:
      return editRow(target, false);
    case Command::Copy:
      return target.list.copySelection();
    case Command::Columns:
      return target.list.chooseColumns();
    case Command::Refresh:
      return frame.reloadFolder();
    case Command::Currencies:
      return reloadIf(editCurrencies(document, texts, &frame));
    case Command::LogFilter:
      return reloadIf(editLogFilter(document, texts, &frame));
    case Command::ClearLog:
      return clearLog(target);
    case Command::Manual:
      return openConfigured(target, "Manual");
    case Command::Support:
      return openConfigured(target, "UrlSupport");
    case Command::Updates:
      return openConfigured(target, "UrlCheckUpdates");
    case Command::About:
      return showAbout(texts, &frame);
  }
}

}  // namespace ui
