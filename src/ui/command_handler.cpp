#include "ui/command_handler.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QRegularExpression>
#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/path.h"
#include "folders/numbers.h"
#include "foundation/definition_change.h"
#include "security/audit_log.h"
#include "ui/contact_calls.h"
#include "ui/dialogs.h"
#include "ui/dialogs/messages.h"
#include "ui/main_frame.h"
#include "ui/manual.h"
#include "ui/page_setup.h"
#include "ui/record_commands.h"
#include "ui/results/results.h"
#include "ui/settings/settings_sheet.h"

namespace ui {

namespace {

// The settings page that connects an exchange.
constexpr const char* kExchangePage = "IDS_PAGE_EXCHANGE";

// The filter settings that a column's value narrows by: the switch key (null: none) and the value's key.
namespace filterKeys = foundation::keys::filter;

struct FilterColumn {
  int folder;  // 0: any
  int kind;
  const foundation::NumberKey* switchKey;
  const foundation::Setting* valueKey;
  const char* entryKey;  // of the menu's entry
};
constexpr FilterColumn kFilterColumns[] = {
    {folders::FolderAreas, folders::KindNumber, &filterKeys::OnArea, &filterKeys::Area, "IDS_ONLY_AREA"},
    {0, folders::KindNumber, nullptr, &filterKeys::Number, "IDS_ONLY_NUMBER"},
    {folders::FolderNames, folders::KindClient, &filterKeys::OnName, &filterKeys::Name, "IDS_ONLY_NAME"},
    {folders::FolderCountries, folders::KindProvider, nullptr, &filterKeys::Country, "IDS_ONLY_COUNTRY"},
    {0, folders::KindExtension, &filterKeys::OnExtension, &filterKeys::ExtensionStr, "IDS_ONLY_EXTENSION"},
    {0, folders::KindTrunk, &filterKeys::OnTrunk, &filterKeys::Trunk, "IDS_ONLY_TRUNK"},
    {0, folders::KindAccount, &filterKeys::OnAccount, &filterKeys::Cont, "IDS_ONLY_ACCOUNT"},
    {0, folders::KindName, &filterKeys::OnName, &filterKeys::Name, "IDS_ONLY_NAME"},
    {0, folders::KindArea, &filterKeys::OnArea, &filterKeys::Area, "IDS_ONLY_AREA"},
    {0, folders::KindDepartment, &filterKeys::OnDepartment, &filterKeys::Department, "IDS_ONLY_DEPARTMENT"},
    {0, folders::KindClient, &filterKeys::OnClient, &filterKeys::Client, "IDS_ONLY_CLIENT"},
    {0, folders::KindFile, &filterKeys::OnFolder, &filterKeys::Folder, "IDS_ONLY_FOLDER"},
    {0, folders::KindProvider, nullptr, &filterKeys::Provider, "IDS_ONLY_PROVIDER"},
    {0, folders::KindCountry, nullptr, &filterKeys::Country, "IDS_ONLY_COUNTRY"},
};

const FilterColumn* findFilterColumn(int folder, int kind) {
  for (const FilterColumn& column : kFilterColumns) {
    if (column.kind == kind && (column.folder == 0 || column.folder == folder)) return &column;
  }
  return nullptr;
}

// An extension is shown as "201 (name)"; the filter wants the number.
QString filterValue(int kind, const QString& shown) {
  return kind == folders::KindExtension ? shown.section(" (", 0, 0) : shown;
}

bool filterBy(const CommandTarget& target, int kind, const QString& shown) {
  const FilterColumn* column = findFilterColumn(target.list.folderId(), kind);
  if (column == nullptr) return false;
  std::vector<std::pair<std::string, std::string>> values{{std::string(filterKeys::OnFilter.key), "1"}};
  if (column->switchKey != nullptr) values.emplace_back(column->switchKey->key, "1");
  values.emplace_back(column->valueKey->key, fromQt(filterValue(kind, shown)));
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

bool showsNumbers(const CFolderView& list) {
  return (list.folderId() == folders::FolderCalls || list.folderId() == folders::FolderTop) &&
         list.model().columnOf(folders::KindNumber) >= 0;
}

// The numbers of the selected rows, each once; of very many rows none.
std::vector<std::string> selectedNumbers(const CFolderView& list) {
  constexpr std::int64_t kMostRows = 1000;
  std::vector<std::string> numbers;
  if (list.selectedCount() > kMostRows) return numbers;
  for (const int row : list.selectedRows()) {
    std::string number = fromQt(list.model().text(row, list.model().columnOf(folders::KindNumber)));
    if (!number.empty() && std::ranges::find(numbers, number) == numbers.end()) numbers.push_back(std::move(number));
  }
  return numbers;
}

void hideOrShow(const CommandTarget& target, bool hide) {
  const std::vector<std::string> numbers = selectedNumbers(target.list);
  if (numbers.empty()) return target.frame.say(target.texts("IDS_SELECT_NUMBERS"));
  const auto set = [&document = target.document, numbers](bool hidden) {
    for (const std::string& number : numbers)
      hidden ? document.smdr().hideNumber(number) : document.smdr().showNumber(number);
  };
  set(hide);
  const std::string what = numbers.size() == 1
                               ? numbers.front()
                               : target.texts.language().TranslateFormat("IDS_UNDO_NUMBERS", numbers.size());
  target.frame.undo().push(target.texts.format(hide ? "IDS_UNDO_HIDE" : "IDS_UNDO_SHOW", what),
                           [set, hide] { set(!hide); });
  target.frame.reloadFolder();
  target.frame.say(target.texts.format(hide ? "IDS_NUMBERS_HIDDEN" : "IDS_NUMBERS_SHOWN", what));
}

// A contact that has the number is offered first; of a new one that was not completed the operator is asked.
void addToContacts(const CommandTarget& target) {
  const QString number = target.list.currentText(folders::KindNumber);
  if (number.isEmpty()) return;
  server::CServerDoc& document = target.document;
  if (const auto known = contactWithNumber(document, fromQt(number))) {
    const QString question = target.texts.format("IDS_CONTACT_HAS_NUMBER", contacts::displayName(*known));
    const Answer answer = ask(&target.frame, target.texts, question, Choices::YesNoCancel);
    if (answer == Answer::Yes) editContact(document, target.texts, &target.frame, known->recordId);
    if (answer != Answer::No) return;
  }
  const QString name = target.list.currentText(folders::KindName);
  document.contactBook().AddFromCall(fromQt(name), "", "", fromQt(number), [&target](std::int32_t recordId) {
    server::CServerDoc& document = target.document;
    if (editContact(document, target.texts, &target.frame, recordId)) return true;
    const auto added = document.contactBook().find(recordId);
    if (added && ask(&target.frame, target.texts, target.texts("IDS_CONTACT_KEEP_NEW")) != Answer::Yes) {
      document.contactBook().remove(*added);
    }
    return true;
  });
}

void showContactCalls(const CommandTarget& target) {
  const auto id = currentRecord(target.list);
  const auto contact = id ? target.document.contactBook().find(static_cast<std::int32_t>(*id)) : std::nullopt;
  if (contact) target.frame.showCallsOf(*contact);
}

void undoLast(const CommandTarget& target) {
  UndoStack& undo = target.frame.undo();
  if (undo.empty()) return;
  const QString what = undo.what();
  undo.undo();
  target.frame.reloadFolder();
  target.frame.say(target.texts.format("IDS_UNDO_DONE", fromQt(what)));
}

// The number of the row: a call's or a contact's first one.
QString numberOf(const CFolderView& list) {
  if (list.folderId() == folders::FolderContacts)
    return list.currentText(folders::KindTelephones).section(QRegularExpression("[,;/]"), 0, 0).trimmed();
  return showsNumbers(list) ? list.currentText(folders::KindNumber) : QString();
}

void openConfigured(const CommandTarget& target, const foundation::TextKey& key) {
  const std::string address = target.document.app().config().ReadConfigString(key);
  if (!address.empty()) target.document.app().surroundings().documents.open(address);
}

// Opens on the page of that caption; null: on the first one.
void editSettings(const CommandTarget& target, const char* pageKey) {
  SettingsSheet sheet(target.document, target.texts, &target.frame);
  sheet.keepStepsIn(target.frame.undo());
  if (pageKey != nullptr) sheet.showPage(target.texts(pageKey));
  if (sheet.exec() == QDialog::Accepted) target.frame.reloadFolder();
}

// Edits them; what was changed can be undone until somebody changes them again.
bool editCurrenciesUndoably(const CommandTarget& target) {
  server::CServerDoc& document = target.document;
  const auto before = document.currencies().entries;
  if (!editCurrencies(document, target.texts, &target.frame)) return false;
  if (document.currencies().entries == before) return true;
  target.frame.undo().push(target.texts("IDS_UNDO_CURRENCIES"),
                           [&document, before, after = document.currencies().entries] {
                             tariff::Currencies& currencies = document.currencies();
                             bool changedSince = false;
                             {
                               foundation::DefinitionChange change(currencies, document.database());
                               changedSince = currencies.entries != after;
                               if (!changedSince) {
                                 currencies.entries = before;
                                 change.save();
                               }
                             }
                             if (!changedSince) return;
                             server::CServerApp& app = document.app();
                             app.surroundings().person.messageBox(app.language().Translate("IDS_UNDO_CHANGED"));
                           });
  return true;
}

void importChosenFile(const CommandTarget& target) {
  const std::string folder = target.document.app().config().ReadConfigString(foundation::keys::PathMonitor);
  const QString file =
      QFileDialog::getOpenFileName(&target.frame, target.texts("IDS_ACTION_IMPORT_FILE").remove("..."),
                                   toQt(base::systemPath(folder).string()), target.texts("IDS_IMPORT_FILE_KINDS"));
  if (!file.isEmpty()) target.frame.importCallsOf(fromQt(file));
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

void offerCommands(const Actions& actions, const CFolderView& list, server::CServerDoc& document) {
  const int folder = list.folderId();
  const bool row = list.currentIndex().isValid();
  const bool rows = row || list.selectedCount() > 0;
  const folders::FolderView* open = list.model().folder();
  const bool statistic = open != nullptr && folders::isStatistic(open->folder().definition());
  for (const Command command :
       {Command::Report, Command::Preview, Command::Print, Command::SavePdf, Command::Export, Command::Columns}) {
    actions.offer(command, open != nullptr);
  }
  actions.offer(Command::Summary, statistic);
  actions.offer(Command::ShowCalls, row && statistic);
  actions.offer(Command::Totals,
                open != nullptr && open->folder().definition().condition == folders::ConditionSource::CallFilter);
  actions.offer(Command::HideNumber, rows && showsNumbers(list));
  actions.offer(Command::ShowNumber, rows && showsNumbers(list));
  actions.offer(Command::AddToContacts, row && showsNumbers(list));
  const FilterColumn* filters =
      row ? findFilterColumn(folder, list.model().kindOf(list.currentIndex().column())) : nullptr;
  const QString value = filters != nullptr ? list.currentText() : QString();
  actions.offer(Command::FilterByValue, filters != nullptr);
  actions.tellWhat(Command::FilterByValue, value, value.isEmpty() ? nullptr : filters->entryKey);
  const RecordRights records = recordRights(folder, document);
  actions.offer(Command::New, records.change);
  actions.offer(Command::Edit, row && records.view);
  actions.offer(Command::Delete, rows && records.change);
  for (const Command command : {Command::Copy, Command::CopyHeadings, Command::CopyTable}) actions.offer(command, rows);
  actions.offer(Command::CopyNumber, row && !numberOf(list).isEmpty());
  actions.offer(Command::SelectAll, open != nullptr);
  actions.offer(Command::Sort, row);
  actions.offer(Command::WhyPrice, row && folder == folders::FolderCalls);
  actions.offer(Command::ContactCalls, row && folder == folders::FolderContacts);
}

void handleCommand(Command command, const CommandTarget& target) {
  server::CServerDoc& document = target.document;
  const Texts& texts = target.texts;
  CMainFrame& frame = target.frame;
  folders::FolderView* folder = target.list.model().folder();
  const auto reloadIf = [&frame](bool changed) {
    if (changed) frame.reloadFolder();
  };
  const auto reloadContacts = [&] { reloadIf(target.list.folderId() == folders::FolderContacts); };
  switch (command) {
    case Command::Import:
      return frame.importAtOnce();
    case Command::ImportFile:
      return importChosenFile(target);
    case Command::MonitorFolder:
      return editSettings(target, "IDS_PAGE_PLACE");
    case Command::Connect:
      return editSettings(target, kExchangePage);
    case Command::PageSetup:
      return editPageSetup(&frame, document.app().config());
    case Command::Report:
      if (folder != nullptr) frame.sayFile(makeListReport(document, texts, &frame, *folder, ReportUse::Open));
      return;
    case Command::Print:
      if (folder != nullptr) frame.sayFile(makeListReport(document, texts, &frame, *folder, ReportUse::Print));
      return;
    case Command::Export:
      if (folder != nullptr) frame.sayFile(exportFolder(document, texts, &frame, *folder));
      return;
    case Command::Preview:
      if (folder != nullptr) previewFolder(document, texts, &frame, *folder);
      return;
    case Command::SavePdf:
      if (folder != nullptr) frame.sayFile(saveFolderAsPdf(document, texts, &frame, *folder));
      return;
    case Command::Week:
      if (const auto cell = showWeek(document, texts, &frame)) frame.showCallsOf(*cell);
      return;
    case Command::Missed:
      if (const auto calls = showMissedCalls(document, texts, &frame)) frame.showCallsOf(*calls);
      return;
    case Command::TrunkLoad:
      if (const auto calls = showTrunkLoad(document, texts, &frame)) frame.showCallsOf(*calls);
      return;
    case Command::Alarms:
      if (const auto calls = showAlarms(document, texts, &frame, [&] { editSettings(target, "IDS_PAGE_ALARMS"); })) {
        frame.showCallsOf(*calls);
      }
      return;
    case Command::MonthPage:
      return frame.sayFile(showMonth(document, texts, &frame));
    case Command::PersonData:
      return reloadIf(showPersonData(document, texts, &frame));
    case Command::Anonymise:
      return reloadIf(anonymiseCalls(document, texts, &frame));
    case Command::Summary:
      if (folder != nullptr) frame.sayFile(makeSummaryPage(document, texts, &frame, *folder));
      return;
    case Command::Bill:
      return frame.sayFile(
          makeBill(document, texts, &frame,
                   filterValue(folders::KindExtension, target.list.currentText(folders::KindExtension))));
    case Command::Convert:
      convertOldDatabase(document, texts, &frame);
      return;
    case Command::Settings:
      return editSettings(target, nullptr);
    case Command::Password:
      document.login().ChangePassword(false);
      return;
    case Command::Quit:
      frame.close();
      return;
    case Command::Filter:
      return reloadIf(editCallFilter(document, texts, &frame));
    case Command::FilterOn:
      document.callFilter().set({{std::string(filterKeys::OnFilter.key), document.callFilter().active() ? "0" : "1"}});
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
      return frame.showCallsBehindRow();
    case Command::Totals:
      return frame.showTotals();
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
      searchContacts(document, texts, &frame);
      return reloadContacts();
    case Command::NewContact:
      addContact(document, texts, &frame);
      return reloadContacts();
    case Command::ResetContacts:
      document.resetContacts();
      return reloadContacts();
    case Command::New:
      return reloadIf(newRecord(document, texts, &frame, target.list.folderId()));
    case Command::Edit:
      return reloadIf(editRecord(document, texts, &frame, target.list));
    case Command::Delete:
      return reloadIf(deleteRecords(document, texts, target.list, frame.undo()));
    case Command::Undo:
      return undoLast(target);
    case Command::Copy:
      return target.list.copySelection(CopyForm::Rows);
    case Command::CopyHeadings:
      return target.list.copySelection(CopyForm::WithHeadings);
    case Command::CopyTable:
      return target.list.copySelection(CopyForm::Table);
    case Command::CopyNumber:
      QApplication::clipboard()->setText(numberOf(target.list));
      return;
    case Command::SelectAll:
      return target.list.selectAll();
    case Command::Sort:
      return target.list.sortByCurrentColumn();
    case Command::ContactCalls:
      return showContactCalls(target);
    case Command::WhyPrice:
      if (const auto call = currentRecord(target.list)) explainPrice(document, texts, &frame, *call);
      return;
    case Command::QuickFilter:
      return frame.focusQuickFilter();
    case Command::Keys:
      return showKeys(texts, &frame, frame.actions().keys());
    case Command::Columns:
      return target.list.chooseColumns();
    case Command::Refresh:
      return frame.reloadFolder();
    case Command::Currencies:
      return reloadIf(editCurrenciesUndoably(target));
    case Command::LogFilter:
      return reloadIf(editLogFilter(document, texts, &frame));
    case Command::ClearLog:
      return clearLog(target);
    case Command::Manual:
      openManual(document.app(), manualPageOfFolder(target.list.folderId()));
      return;
    case Command::Support:
      return openConfigured(target, foundation::keys::UrlSupport);
    case Command::Updates:
      return openConfigured(target, foundation::keys::UrlCheckUpdates);
    case Command::About:
      return showAbout(document, texts, &frame);
  }
}

}  // namespace ui
