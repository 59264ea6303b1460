#include "ui/actions.h"

#include <QMenu>
#include <functional>
#include <optional>

#include "security/rights.h"
#include "ui/dialogs/mnemonics.h"

namespace ui {

namespace {

enum class Menu { File, Edit, View, Calls, Filter, Contacts, Tools, Help };

struct MenuText {
  Menu menu;
  const char* key;
};
constexpr MenuText kMenus[] = {
    {Menu::File, "IDS_MENU_FILE"},   {Menu::Edit, "IDS_MENU_EDIT"},     {Menu::View, "IDS_MENU_VIEW"},
    {Menu::Calls, "IDS_MENU_CALLS"}, {Menu::Filter, "IDS_MENU_FILTER"}, {Menu::Contacts, "IDS_MENU_CONTACTS"},
    {Menu::Tools, "IDS_MENU_TOOLS"}, {Menu::Help, "IDS_MENU_HELP"},
};

enum Where : unsigned { InEmptyList = 0, InMenu = 1, InToolBar = 2, InContextMenu = 4, BeforeSeparator = 8 };

struct Declaration {
  Command command;
  Menu menu;
  const char* textKey;
  const char* shortcut;
  std::optional<Icon> icon;
  unsigned where;
  int object;  // 0: for everybody
  int right;
};

using security::ObjectAdministration;
using security::ObjectCalls;
using security::RightChange;
using security::RightView;

constexpr Declaration kDeclarations[] = {
    {Command::Import, Menu::File, "IDS_ACTION_IMPORT", "F9", Icon::Import, InMenu | InToolBar, ObjectCalls,
     RightChange},
    {Command::ImportFile,
     Menu::File,
     "IDS_ACTION_IMPORT_FILE",
     "",
     {},
     InMenu | BeforeSeparator,
     ObjectCalls,
     RightChange},
    {Command::MonitorFolder,
     Menu::Tools,
     "IDS_ACTION_MONITOR_FOLDER",
     "",
     {},
     InEmptyList,
     ObjectAdministration,
     RightChange},
    {Command::Connect, Menu::Tools, "IDS_ACTION_CONNECT", "", {}, InEmptyList, ObjectAdministration, RightChange},
    {Command::Report, Menu::File, "IDS_ACTION_REPORT", "Ctrl+R", Icon::Report, InMenu | InToolBar, ObjectCalls,
     RightView},
    {Command::Summary, Menu::File, "IDS_ACTION_SUMMARY", "", Icon::Statistic, InMenu, ObjectCalls, RightView},
    {Command::MonthPage, Menu::File, "IDS_ACTION_MONTH", "", Icon::Calendar, InMenu, ObjectCalls, RightView},
    {Command::Bill, Menu::File, "IDS_ACTION_BILL", "Ctrl+B", Icon::Bill, InMenu | InToolBar, ObjectCalls, RightView},
    {Command::Export,
     Menu::File,
     "IDS_ACTION_EXPORT",
     "Ctrl+E",
     {},
     InMenu | InContextMenu | BeforeSeparator,
     ObjectCalls,
     RightView},
    {Command::Preview, Menu::File, "IDS_ACTION_PREVIEW", "Ctrl+Shift+P", {}, InMenu, ObjectCalls, RightView},
    {Command::SavePdf, Menu::File, "IDS_ACTION_SAVE_PDF", "", {}, InMenu, ObjectCalls, RightView},
    {Command::PageSetup, Menu::File, "IDS_ACTION_PAGE_SETUP", "", {}, InMenu, 0, 0},
    {Command::Print, Menu::File, "IDS_ACTION_PRINT", "Ctrl+P", {}, InMenu | BeforeSeparator, ObjectCalls, RightView},
    {Command::Quit, Menu::File, "IDS_ACTION_QUIT", "Ctrl+Q", {}, InMenu, 0, 0},
    {Command::Undo, Menu::Edit, "IDS_ACTION_UNDO", "Ctrl+Z", {}, InMenu | BeforeSeparator, 0, 0},
    {Command::Copy, Menu::Edit, "IDS_ACTION_COPY", "Ctrl+C", {}, InMenu | InContextMenu, 0, 0},
    {Command::CopyNumber, Menu::Edit, "IDS_ACTION_COPY_NUMBER", "Ctrl+Alt+C", {}, InMenu | InContextMenu, 0, 0},
    {Command::CopyHeadings, Menu::Edit, "IDS_ACTION_COPY_HEADINGS", "Ctrl+Shift+C", {}, InMenu, 0, 0},
    {Command::CopyTable, Menu::Edit, "IDS_ACTION_COPY_TABLE", "", {}, InMenu, 0, 0},
    {Command::SelectAll, Menu::Edit, "IDS_ACTION_SELECT_ALL", "Ctrl+A", {}, InMenu | BeforeSeparator, 0, 0},
    {Command::New, Menu::Edit, "IDS_ACTION_NEW", "Ctrl+N", {}, InMenu | InContextMenu, 0, 0},
    {Command::Edit, Menu::Edit, "IDS_ACTION_EDIT", "Ctrl+Return", {}, InMenu | InContextMenu, 0, 0},
    {Command::Delete, Menu::Edit, "IDS_ACTION_DELETE", "Del", {}, InMenu | InContextMenu | BeforeSeparator, 0, 0},
    {Command::Sort, Menu::View, "IDS_ACTION_SORT", "Ctrl+T", {}, InMenu, 0, 0},
    {Command::Columns, Menu::View, "IDS_ACTION_COLUMNS", "", {}, InMenu | InContextMenu | BeforeSeparator, 0, 0},
    {Command::Week, Menu::View, "IDS_ACTION_WEEK", "", Icon::Clock, InMenu, ObjectCalls, RightView},
    {Command::Missed, Menu::View, "IDS_ACTION_MISSED", "Ctrl+M", Icon::Calls, InMenu, ObjectCalls, RightView},
    {Command::TrunkLoad, Menu::View, "IDS_ACTION_TRUNK_LOAD", "", Icon::Statistic, InMenu, ObjectCalls, RightView},
    {Command::Alarms, Menu::View, "IDS_ACTION_ALARMS", "Ctrl+Shift+A", Icon::Log, InMenu | BeforeSeparator,
     ObjectAdministration, RightView},
    {Command::Refresh, Menu::View, "IDS_ACTION_REFRESH", "F5", {}, InMenu, 0, 0},
    {Command::ShowCalls, Menu::Calls, "IDS_ACTION_SHOW_CALLS", "", Icon::Calls, InMenu | InContextMenu, ObjectCalls,
     RightView},
    {Command::WhyPrice, Menu::Calls, "IDS_ACTION_WHY_PRICE", "", {}, InMenu | InContextMenu, ObjectCalls, RightView},
    {Command::Totals, Menu::Calls, "IDS_ACTION_TOTALS", "F8", {}, InMenu | BeforeSeparator, ObjectCalls, RightView},
    {Command::HideNumber,
     Menu::Calls,
     "IDS_ACTION_HIDE_NUMBER",
     "Ctrl+H",
     {},
     InMenu | InContextMenu,
     ObjectCalls,
     RightChange},
    {Command::ShowNumber,
     Menu::Calls,
     "IDS_ACTION_SHOW_NUMBER",
     "Ctrl+Shift+H",
     {},
     InMenu | InContextMenu | BeforeSeparator,
     ObjectCalls,
     RightChange},
    {Command::Recalc, Menu::Calls, "IDS_ACTION_RECALC", "", Icon::Recalc, InMenu, ObjectCalls, RightChange},
    {Command::DeleteZeroLength, Menu::Calls, "IDS_ACTION_DELETE_ZERO", "", {}, InMenu, ObjectCalls, RightChange},
    {Command::ResetCalls, Menu::Calls, "IDS_ACTION_RESET_CALLS", "", {}, InMenu, ObjectAdministration, RightChange},
    {Command::QuickFilter, Menu::Filter, "IDS_ACTION_QUICK_FILTER", "Ctrl+F", Icon::Search, InMenu, 0, 0},
    {Command::Filter, Menu::Filter, "IDS_ACTION_FILTER", "Ctrl+L", Icon::Filter, InMenu | InToolBar, ObjectCalls,
     RightView},
    {Command::FilterOn,
     Menu::Filter,
     "IDS_ACTION_FILTER_ON",
     "Ctrl+Shift+F",
     {},
     InMenu | BeforeSeparator,
     ObjectCalls,
     RightView},
    {Command::FilterByValue,
     Menu::Filter,
     "IDS_ACTION_FILTER_VALUE",
     "Ctrl+G",
     {},
     InMenu | InContextMenu,
     ObjectCalls,
     RightView},
    {Command::ThisMonth, Menu::Filter, "IDS_ACTION_THIS_MONTH", "F7", Icon::Calendar, InMenu | InToolBar, ObjectCalls,
     RightView},
    {Command::PreviousMonth,
     Menu::Filter,
     "IDS_ACTION_PREVIOUS_MONTH",
     "F6",
     {},
     InMenu | BeforeSeparator,
     ObjectCalls,
     RightView},
    {Command::ClearFilter, Menu::Filter, "IDS_ACTION_CLEAR_FILTER", "", {}, InMenu, ObjectCalls, RightView},
    {Command::SearchContacts, Menu::Contacts, "IDS_ACTION_SEARCH_CONTACTS", "Ctrl+K", Icon::Search, InMenu | InToolBar,
     ObjectCalls, RightView},
    {Command::ContactCalls, Menu::Contacts, "IDS_ACTION_CONTACT_CALLS", "", Icon::Calls,
     InMenu | InContextMenu | BeforeSeparator, ObjectCalls, RightView},
    {Command::NewContact, Menu::Contacts, "IDS_ACTION_NEW_CONTACT", "", Icon::Contacts, InMenu, ObjectCalls,
     RightChange},
    {Command::AddToContacts,
     Menu::Contacts,
     "IDS_ACTION_ADD_CONTACT",
     "Ctrl+D",
     {},
     InMenu | InContextMenu | BeforeSeparator,
     ObjectCalls,
     RightChange},
    {Command::ResetContacts,
     Menu::Contacts,
     "IDS_ACTION_RESET_CONTACTS",
     "",
     {},
     InMenu,
     ObjectAdministration,
     RightChange},
    {Command::Settings, Menu::Tools, "IDS_ACTION_SETTINGS", "Ctrl+,", Icon::Settings, InMenu | InToolBar,
     ObjectAdministration, RightView},
    {Command::Currencies,
     Menu::Tools,
     "IDS_ACTION_CURRENCIES",
     "",
     {},
     InMenu | BeforeSeparator,
     ObjectAdministration,
     RightView},
    {Command::LogFilter, Menu::Tools, "IDS_ACTION_LOG_FILTER", "", Icon::LogFiltered, InMenu, ObjectAdministration,
     RightView},
    {Command::ClearLog,
     Menu::Tools,
     "IDS_ACTION_CLEAR_LOG",
     "",
     {},
     InMenu | BeforeSeparator,
     ObjectAdministration,
     RightChange},
    {Command::PersonData, Menu::Tools, "IDS_ACTION_PERSON", "", Icon::Users, InMenu, ObjectAdministration, RightChange},
    {Command::Anonymise,
     Menu::Tools,
     "IDS_ACTION_ANONYMISE",
     "",
     {},
     InMenu | BeforeSeparator,
     ObjectAdministration,
     RightChange},
    {Command::Convert, Menu::Tools, "IDS_ACTION_CONVERT", "", {}, InMenu, ObjectAdministration, RightChange},
    {Command::Password, Menu::Tools, "IDS_ACTION_PASSWORD", "", {}, InMenu, 0, 0},
    {Command::Manual, Menu::Help, "IDS_ACTION_MANUAL", "F1", {}, InMenu, 0, 0},
    {Command::Keys, Menu::Help, "IDS_ACTION_KEYS", "", {}, InMenu | BeforeSeparator, 0, 0},
    {Command::Support, Menu::Help, "IDS_ACTION_SUPPORT", "", {}, InMenu, 0, 0},
    {Command::Updates, Menu::Help, "IDS_ACTION_UPDATES", "", {}, InMenu | BeforeSeparator, 0, 0},
    {Command::About, Menu::Help, "IDS_ACTION_ABOUT", "", Icon::Program, InMenu, 0, 0},
};

}  // namespace

Actions::Actions(const Texts& texts, const std::function<bool(int, int)>& allowed, QObject* parent)
    : QObject(parent), texts_(texts) {
  for (const Declaration& declared : kDeclarations) {
    auto* action = new QAction(texts(declared.textKey), this);
    action->setObjectName(declared.textKey);
    if (declared.shortcut[0] != '\0') {
      action->setShortcut(QKeySequence(declared.shortcut));
      const QString text = texts(declared.textKey).remove('&').remove("...");
      action->setToolTip(text + " (" + action->shortcut().toString(QKeySequence::NativeText) + ')');
    }
    if (declared.icon) action->setIcon(icon(*declared.icon));
    action->setVisible(declared.object == 0 || allowed(declared.object, declared.right));
    // What is not offered must not answer to its key either.
    action->setEnabled(action->isVisible());
    connect(action, &QAction::triggered, this, [this, command = declared.command] { emit triggered(command); });
    actions_[declared.command] = action;
    if (action->isEnabled()) allowed_.insert(declared.command);
  }
  actions_[Command::FilterOn]->setCheckable(true);
}

void Actions::fillMenuBar(QMenuBar& bar) const {
  // Those of the list's own menu come from several menus, and must differ there too.
  QList<QAction*> ofRows;
  for (const Declaration& declared : kDeclarations) {
    if ((declared.where & InContextMenu) != 0) ofRows << actions_.at(declared.command);
  }
  assignMnemonics(ofRows);
  for (const MenuText& menu : kMenus) {
    QMenu* shown = bar.addMenu(texts_(menu.key));
    for (const Declaration& declared : kDeclarations) {
      if (declared.menu != menu.menu || (declared.where & InMenu) == 0) continue;
      shown->addAction(actions_.at(declared.command));
      if ((declared.where & BeforeSeparator) != 0) shown->addSeparator();
    }
    assignMnemonics(shown->actions());
  }
}

std::vector<std::pair<QString, QString>> Actions::keys() const {
  std::vector<std::pair<QString, QString>> keys;
  for (const Declaration& declared : kDeclarations) {
    const QAction* action = actions_.at(declared.command);
    if (!action->isVisible() || action->shortcut().isEmpty()) continue;
    keys.emplace_back(texts_(declared.textKey).remove('&').remove("..."),
                      action->shortcut().toString(QKeySequence::NativeText));
  }
  return keys;
}

void Actions::fillToolBar(QToolBar& bar) const {
  for (const Declaration& declared : kDeclarations) {
    if ((declared.where & InToolBar) == 0) continue;
    bar.addAction(actions_.at(declared.command));
    if ((declared.where & BeforeSeparator) != 0) bar.addSeparator();
  }
}

void Actions::offer(Command command, bool sensible) const {
  actions_.at(command)->setEnabled(sensible && allowed_.contains(command));
}

void Actions::tellWhat(Command command, const QString& what, const char* textKey) const {
  constexpr const char* kPlainText = "plainText";
  constexpr qsizetype kMostLetters = 40;
  QAction* action = actions_.at(command);
  if (!action->property(kPlainText).isValid()) action->setProperty(kPlainText, action->text());
  QString text = textKey != nullptr ? texts_(textKey) : action->property(kPlainText).toString();
  if (!what.isEmpty()) {
    const QString cut = what.size() > kMostLetters ? what.left(kMostLetters).trimmed() + QChar(0x2026) : what;
    text += ": " + QString(cut).replace("&", "&&");
  }
  action->setText(text);
}

// What fits the row alone comes first.
void Actions::fillContextMenu(QMenu& menu) const {
  const auto add = [&](bool ofEveryList) {
    for (const Declaration& declared : kDeclarations) {
      const bool ofEvery = declared.menu == Menu::File || declared.menu == Menu::Edit || declared.menu == Menu::View;
      if ((declared.where & InContextMenu) == 0 || ofEvery != ofEveryList) continue;
      if (actions_.at(declared.command)->isEnabled()) menu.addAction(actions_.at(declared.command));
    }
  };
  add(false);
  menu.addSeparator();
  add(true);
}

}  // namespace ui
