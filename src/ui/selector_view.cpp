#include "ui/selector_view.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QSignalBlocker>

#include "folders/catalogue.h"
#include "folders/numbers.h"
#include "ui/icons.h"

namespace ui {

namespace {

constexpr int kIdRole = Qt::UserRole;

enum class Branch { Calls, Parties, Places, Time, Administration };

struct Place {
  int id;
  Branch branch;
  Icon icon;
};

// Where each folder hangs in the tree. A folder that is not named here hangs under the calls.
constexpr Place kPlaces[] = {
    {folders::FolderUsers, Branch::Administration, Icon::Users},
    {folders::FolderGroups, Branch::Administration, Icon::Groups},
    {folders::FolderLog, Branch::Administration, Icon::Log},
    {folders::FolderCalls, Branch::Calls, Icon::Calls},
    {folders::FolderExtensions, Branch::Parties, Icon::Statistic},
    {folders::FolderTop, Branch::Places, Icon::Statistic},
    {folders::FolderAreas, Branch::Places, Icon::Statistic},
    {folders::FolderTrunks, Branch::Parties, Icon::Statistic},
    {folders::FolderDepartments, Branch::Parties, Icon::Statistic},
    {folders::FolderClients, Branch::Parties, Icon::Statistic},
    {folders::FolderFiles, Branch::Parties, Icon::Statistic},
    {folders::FolderAccounts, Branch::Parties, Icon::Statistic},
    {folders::FolderNames, Branch::Places, Icon::Statistic},
    {folders::FolderCountries, Branch::Places, Icon::Statistic},
    {folders::FolderProviders, Branch::Places, Icon::Statistic},
    {folders::FolderWeekdays, Branch::Time, Icon::Calendar},
    {folders::FolderDays, Branch::Time, Icon::Calendar},
    {folders::FolderMonths, Branch::Time, Icon::Calendar},
    {folders::FolderHours, Branch::Time, Icon::Clock},
};

Place placeOf(int id) {
  for (const Place& place : kPlaces) {
    if (place.id == id) return place;
  }
  return {id, Branch::Calls, Icon::Statistic};
}

}  // namespace

CSelectorView::CSelectorView(const Texts& texts, QWidget* parent) : QTreeWidget(parent), texts_(texts) {
  setObjectName("selector");
  setAccessibleName(texts("IDS_FOLDER_TREE"));
  setHeaderHidden(true);
  setIconSize(QSize(20, 20));
  connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
    if (current != nullptr && current->data(0, kIdRole).isValid()) {
      emit folderSelected(current->data(0, kIdRole).toInt());
    }
  });
}

void CSelectorView::mousePressEvent(QMouseEvent* event) {
  const int before = selectedId();
  QTreeWidget::mousePressEvent(event);
  if (before != 0 && selectedId() == before && itemAt(event->pos()) == currentItem()) emit folderChosenAgain(before);
}

QTreeWidgetItem* CSelectorView::addGroup(const QString& caption, const QIcon& groupIcon) {
  auto* item = new QTreeWidgetItem(this, {caption});
  item->setIcon(0, groupIcon);
  item->setFlags(Qt::ItemIsEnabled);
  QFont bold = item->font(0);
  bold.setBold(true);
  item->setFont(0, bold);
  return item;
}

void CSelectorView::addEntry(QTreeWidgetItem* parent, int id, const QString& caption, const QIcon& entryIcon) {
  auto* item = parent != nullptr ? new QTreeWidgetItem(parent, {caption}) : new QTreeWidgetItem(this, {caption});
  item->setIcon(0, entryIcon);
  item->setData(0, kIdRole, id);
}

void CSelectorView::build(const Access& access, bool logFiltered) {
  const QSignalBlocker quiet(this);
  clear();
  QTreeWidgetItem* parties = nullptr;
  QTreeWidgetItem* places = nullptr;
  QTreeWidgetItem* time = nullptr;
  QTreeWidgetItem* administration = nullptr;
  if (access.calls) {
    addEntry(nullptr, folders::FolderCalls, texts_("IDS_FOLDER_CALLS"), icon(Icon::Calls));
    parties = addGroup(texts_("IDS_TREE_PARTIES"), icon(Icon::Groups));
    places = addGroup(texts_("IDS_TREE_DESTINATIONS"), icon(Icon::Statistic));
    time = addGroup(texts_("IDS_TREE_TIME"), icon(Icon::Clock));
    addEntry(nullptr, folders::FolderContacts, texts_("IDS_CONTACTS"), icon(Icon::Contacts));
  }
  if (access.administration) administration = addGroup(texts_("IDS_ADMINISTRATION"), icon(Icon::Settings));
  for (const folders::FolderDefinition& folder : folders::standardFolders()) {
    const Place place = placeOf(folder.id);
    QTreeWidgetItem* parent = place.branch == Branch::Parties          ? parties
                              : place.branch == Branch::Places         ? places
                              : place.branch == Branch::Time           ? time
                              : place.branch == Branch::Administration ? administration
                                                                       : nullptr;
    if (parent == nullptr) continue;
    const Icon shown = place.icon == Icon::Log && logFiltered ? Icon::LogFiltered : place.icon;
    addEntry(parent, folder.id, texts_(folder.caption), icon(shown));
  }
  expandAll();
}

void CSelectorView::select(int id) {
  for (QTreeWidgetItemIterator item(this); *item != nullptr; ++item) {
    if ((*item)->data(0, kIdRole).isValid() && (*item)->data(0, kIdRole).toInt() == id) setCurrentItem(*item);
  }
}

void CSelectorView::mark(int id) {
  const QSignalBlocker quiet(this);
  select(id);
}

int CSelectorView::selectedId() const {
  return currentItem() != nullptr && currentItem()->data(0, kIdRole).isValid() ? currentItem()->data(0, kIdRole).toInt()
                                                                               : 0;
}

}  // namespace ui
