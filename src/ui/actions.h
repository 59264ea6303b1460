#pragma once

#include <QAction>
#include <QMenuBar>
#include <QToolBar>
#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "ui/icons.h"
#include "ui/texts.h"

namespace ui {

enum class Command {
  Import,
  ImportFile,
  MonitorFolder,
  Connect,
  Report,
  Preview,
  Print,
  PageSetup,
  SavePdf,
  Export,
  Summary,
  MonthPage,
  Bill,
  Convert,
  Settings,
  Password,
  Quit,
  QuickFilter,
  Filter,
  FilterOn,
  ClearFilter,
  ThisMonth,
  PreviousMonth,
  FilterByValue,
  ShowCalls,
  Totals,
  HideNumber,
  ShowNumber,
  AddToContacts,
  Recalc,
  DeleteZeroLength,
  ResetCalls,
  SearchContacts,
  NewContact,
  ResetContacts,
  Undo,
  New,
  Edit,
  Delete,
  Copy,
  CopyNumber,
  CopyHeadings,
  CopyTable,
  SelectAll,
  Sort,
  ContactCalls,
  WhyPrice,
  Columns,
  Refresh,
  Week,
  Missed,
  TrunkLoad,
  Alarms,
  PersonData,
  Anonymise,
  Currencies,
  LogFilter,
  ClearLog,
  Manual,
  Keys,
  Support,
  Updates,
  About,
};

// Everything that can be done from the main window, declared in one place: text, key, icon, menu, and the right without
// which it is not offered.
class Actions : public QObject {
  Q_OBJECT

 public:
  // `allowed` tells whether the session has a right.
  Actions(const Texts& texts, const std::function<bool(int object, int right)>& allowed, QObject* parent);

  [[nodiscard]] QAction* operator[](Command command) const { return actions_.at(command); }
  void fillMenuBar(QMenuBar& bar) const;
  void fillToolBar(QToolBar& bar) const;
  // Enables what makes sense in the open folder, as far as the session may do it.
  void offer(Command command, bool sensible) const;
  // Says in the command's entry what it would work on; empty: nothing in particular. A key gives the entry another text
  // of its own before that.
  void tellWhat(Command command, const QString& what, const char* textKey = nullptr) const;
  // The commands that have keys, with their texts: for the list of keys.
  [[nodiscard]] std::vector<std::pair<QString, QString>> keys() const;
  // What can be done with the row under the pointer.
  void fillContextMenu(QMenu& menu) const;

 signals:
  void triggered(ui::Command command);

 private:
  const Texts& texts_;
  std::map<Command, QAction*> actions_;
  std::set<Command> allowed_;
};

}  // namespace ui
