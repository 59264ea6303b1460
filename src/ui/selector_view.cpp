#include "ui/selector_view.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QSignalBlocker>

#include "folders/catalogue.h"
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
    {97, Branch::Administration, Icon::Users}, {98, Branch::Administration, Icon::Groups},
    {99, Branch::Administration, Icon::Log},   {100, Branch::Calls, Icon::Calls},
    {101, Branch::Parties, Icon::Statistic},   {102, Branch::Places, Icon::Statistic},
    {103, Branch::Places, Icon::Statistic},    {104, Branch::Parties, Icon::Statistic},
    {106, Branch::Parties, Icon::Statistic},   {107, Branch::Parties, Icon::Statistic},
    {108, Branch::Parties, Icon::Statistic},   {109, Branch::Parties, Icon::Statistic},
    {110, Branch::Places, Icon::Statistic},    {111, Branch::Places, Icon::Statistic},
    {112, Branch::Places, Icon::Statistic},    {113, Branch::Time, Icon::Calendar},
    {114, Branch::Time, Icon::Calendar},       {115, Branch::Time, Icon::Calendar},
    {116, Branch::Time, Icon::Clock},
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
    addEntry(nullptr, 100, texts_("IDS_FOLDER_CALLS"), icon(Icon::Calls));
    parties = addGroup(texts_("IDS_TREE_PARTIES"), icon(Icon::Groups));
    places = addGroup(texts_("IDS_TREE_DESTINATIONS"), icon(Icon::Statistic));
    time = addGroup(texts_("IDS_TREE_TIME"), icon(Icon::Clock));
    addEntry(nullptr, folders::kContactsList, texts_("IDS_CONTACTS"), icon(Icon::Contacts));
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
