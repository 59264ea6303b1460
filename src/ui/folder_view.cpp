#include "ui/folder_view.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "folders/column_layout.h"
#include "folders/numbers.h"
#include "folders/quick_search.h"
#include "folders/view_log.h"
#include "platform/progress.h"
#include "security/rights.h"
#include "ui/first_columns.h"
#include "ui/roomy_delegate.h"

namespace ui {

CFolderView::CFolderView(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QTableView(parent),
      document_(document),
      texts_(texts),
      model_(new FolderModel(this)),
      readAhead_(new ReadAhead(document.database(), document.app().surroundings().person, this)) {
  setObjectName("recordList");
  setModel(model_);
  setItemDelegate(new RoomyDelegate(this));
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setWordWrap(false);
  setAlternatingRowColors(true);
  setCornerButtonEnabled(false);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  verticalHeader()->setVisible(false);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  horizontalHeader()->setSectionsMovable(true);
  horizontalHeader()->setSectionsClickable(true);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &CFolderView::sortByColumn);
  connect(horizontalHeader(), &QHeaderView::customContextMenuRequested, this, &CFolderView::chooseColumns);
  connect(this, &QTableView::entered, this, [this](const QModelIndex& index) {
    if (selectsUnderPointer_) setCurrentIndex(index);
  });
  platform::Operator& person = document.app().surroundings().person;
  model_->setBusy([&person] { return person.busy(); });
  searching_.setSingleShot(true);
  connect(&searching_, &QTimer::timeout, this, &CFolderView::goOnSearching);
  connect(model_, &FolderModel::pageMissed, this, &CFolderView::readMissedPage, Qt::QueuedConnection);
  connect(model_, &FolderModel::readFailed, this, &CFolderView::failed, Qt::QueuedConnection);
  connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& index) { emit rowActivated(index.row()); });
}

void CFolderView::closeFolder() {
  first_.reset();
  awaited_ = false;
  readAhead_->end();
  model_->setFolder(nullptr);
}

int CFolderView::folderId() const {
  return model_->folder() != nullptr ? model_->folder()->folder().id() : 0;
}

std::string CFolderView::progressText() const {
  return texts_.language().Translate("IDS_READING_ROWS");
}

CFolderView::View CFolderView::openView(const folders::FolderDefinition& folder, int sortKey, const Narrowed& by,
                                        const folders::ColumnLayout* layout) {
  const platform::Progress progress(document_.app().surroundings().person,
                                    folders::folderCaption(folder, texts_.language()), progressText());
  try {
    auto view =
        std::make_unique<folders::FolderView>(folder, document_.folderServices(), document_.valueFormatter(), sortKey);
    if (layout != nullptr) view->setLayout(*layout);
    narrow(*view, by);
    return view;
  } catch (const jet::Error& error) {
    if (!error.canceled()) emit failed(toQt(error.description()));
    return nullptr;
  }
}

std::unique_ptr<folders::FolderView> CFolderView::sameFolder(const filter::FilterSettings& settings) const {
  const folders::FolderView& open = *model_->folder();
  auto view = std::make_unique<folders::FolderView>(open.folder().definition(), document_.folderServices(),
                                                    document_.valueFormatter(), open.sortKey());
  view->setLayout(open.layout());
  narrow(*view, present());
  view->useSettings(settings);
  return view;
}

// Counts the rows and reads the first ones; only then the view takes the place of the one that is shown.
bool CFolderView::show(View view, FolderModel::Window window) {
  if (!view) return false;
  const platform::Progress progress(document_.app().surroundings().person, view->folder().caption(), progressText());
  try {
    model_->setFolder(std::move(view), window);
    first_.reset();
    awaited_ = false;
    if (window == FolderModel::Window::AtStart) folders::logShown(*model_->folder());
    readAhead_->begin(folders::quickSelect(*model_->folder()),
                      window == FolderModel::Window::AtStart ? ReadAhead::When::Soon : ReadAhead::When::Later);
    return true;
  } catch (const jet::Error& error) {
    if (!error.canceled()) emit failed(toQt(error.description()));
    return false;
  }
}

bool CFolderView::openFolder(const folders::FolderDefinition& folder, std::optional<folders::Narrowing> narrowing) {
  saveLayout();
  rememberPlace();
  const auto place = left_.find(folder.id);
  const bool returns = place != left_.end() && !narrowing;
  const int sortKey = returns ? place->second.sortKey : firstSortKey(folder.id);
  auto& app = document_.app();
  std::optional<folders::ColumnLayout> layout = folders::keptLayout(app.config(), folder);
  if (layout) {
    layout = folders::usableLayout(*layout, folder.columns, folder.flags, texts_.language(), app.surroundings().person);
  } else {
    layout = firstLayout(folder);
  }
  if (!show(openView(folder, sortKey, {narrowing, {}}, &*layout), FolderModel::Window::AtStart)) {
    return false;
  }
  narrowing_ = std::move(narrowing);
  typedWords_.clear();
  useLayout(model_->folder()->layout());
  applyInterfaceOptions();
  scrollToTop();
  if (returns) returnToPlace(place->second);
  return true;
}

// A list of the calls of a row, or of those with the typed words, is no place to come back to; its order is.
void CFolderView::rememberPlace() {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr || narrowing_) return;
  Left& left = left_[folderId()];
  left = {open->sortKey(), -1, {}};
  if (!currentIndex().isValid() || !typedWords_.isEmpty()) return;
  left.position = model_->position(currentIndex().row());
  left.key = model_->key(currentIndex().row());
}

// The record that was current, unless it moved.
void CFolderView::returnToPlace(const Left& left) {
  const int row = left.position < model_->totalRows() ? model_->rowAt(left.position) : -1;
  if (row < 0 || left.key.empty() || model_->key(row) != left.key) return;
  setCurrentIndex(model_->index(row, 0));
  scrollTo(currentIndex(), QAbstractItemView::PositionAtCenter);
}

bool CFolderView::reload(Reload how) {
  folders::FolderView* open = model_->folder();
  if (open == nullptr) return false;
  if (searching()) return find(typedWords_);
  if (how == Reload::Beside && awaitsRows(*open)) return false;
  const folders::ColumnLayout layout = open->layout();
  return showWhereItWas(openView(open->folder().definition(), open->sortKey(), present(), &layout));
}

bool CFolderView::showWhereItWas(View view) {
  const std::int64_t before = model_->totalRows();
  const int top = rowAt(0);
  const QModelIndex current = currentIndex();
  const std::int64_t position = current.isValid() ? model_->position(current.row()) : -1;
  const std::string key = current.isValid() ? model_->key(current.row()) : std::string();
  if (!show(std::move(view), FolderModel::Window::WhereItWas)) return false;
  // New rows are above the record in a list that begins with the newest, below it in one that ends with them.
  for (const std::int64_t place : {position, position + model_->totalRows() - before}) {
    const int row = model_->rowAt(place);
    if (key.empty() || row < 0 || model_->key(row) != key) continue;
    setCurrentIndex(model_->index(row, std::min(current.column(), model_->columnCount() - 1)));
    break;
  }
  if (top > 0) scrollTo(model_->index(std::min(top, model_->rowCount() - 1), 0), QAbstractItemView::PositionAtTop);
  return true;
}

void CFolderView::readMissedPage(std::int64_t number) {
  platform::Operator& person = document_.app().surroundings().person;
  if (person.busy()) {
    QTimer::singleShot(kRetryInterval, this, [this, number] { readMissedPage(number); });
    return;
  }
  const platform::Progress progress(person, model_->folder() != nullptr ? model_->folder()->folder().caption() : "",
                                    progressText());
  model_->readPage(number);
}

void CFolderView::applyInterfaceOptions() {
  auto& config = document_.app().config();
  setShowGrid(config.ReadConfigInt(foundation::keys::iface_Grid) == 1);
  selectsUnderPointer_ = config.ReadConfigInt(foundation::keys::iface_Hover) == 1;
  setMouseTracking(selectsUnderPointer_);
  if (config.ReadConfigInt(foundation::keys::iface_Autoselect) == 1) selectRow(0);
}

void CFolderView::contextMenuEvent(QContextMenuEvent* event) {
  emit contextMenuWanted(event->globalPos());
}

void CFolderView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    copySelection(CopyForm::Rows);
  } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentIndex().isValid()) {
    emit rowActivated(currentIndex().row());
  } else {
    // The window of a very long folder goes along to its ends.
    if (event->matches(QKeySequence::MoveToStartOfDocument)) model_->moveWindow(0);
    if (event->matches(QKeySequence::MoveToEndOfDocument)) model_->moveWindow(model_->totalRows());
    QTableView::keyPressEvent(event);
  }
}

CFolderView::Nothing CFolderView::nothing() const {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr || model_->totalRows() > 0) return Nothing::HasRows;
  const folders::FolderDefinition& folder = open->folder().definition();
  if (searching()) return Nothing::Searching;
  if (!typedWords_.isEmpty()) return Nothing::NotFound;
  if (folder.id == folders::FolderContacts) return Nothing::NoContacts;
  if (folder.condition != folders::ConditionSource::CallFilter) return Nothing::NoEntries;
  return document_.callFilter().active() || narrowing_ ? Nothing::Filtered : Nothing::NoCalls;
}

QString CFolderView::emptyText() const {
  switch (nothing()) {
    case Nothing::HasRows:
      return {};
    case Nothing::Searching:
      return texts_("IDS_SEARCHINGROWS");
    case Nothing::NotFound:
      return texts_.format("IDS_EMPTY_FOUND", fromQt(typedWords_));
    case Nothing::Filtered:
      return texts_(narrowing_ ? "IDS_EMPTY_NO_CALLS" : "IDS_EMPTY_LIST");
    case Nothing::NoCalls: {
      const bool mayLead = document_.HasRight(security::ObjectAdministration, security::RightChange);
      return texts_(mayLead ? "IDS_EMPTY_CALLS" : "IDS_EMPTY_NO_CALLS");
    }
    case Nothing::NoContacts:
      return texts_("IDS_EMPTY_CONTACTS");
    case Nothing::NoEntries:
      break;
  }
  const bool log = model_->folder()->folder().definition().condition == folders::ConditionSource::LogFilter;
  return texts_(log ? "IDS_EMPTY_LOG" : "IDS_EMPTY_TABLE");
}

void CFolderView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  emit rowsSelected();
}

void CFolderView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  emit currentCellChanged();
}

}  // namespace ui
