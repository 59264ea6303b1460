#include "ui/folder_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

#include "folders/column_layout.h"
#include "folders/numbers.h"
#include "folders/quick_search.h"
#include "folders/view_log.h"
#include "platform/progress.h"
#include "security/rights.h"
#include "ui/dialogs/columns_dialog.h"
#include "ui/sorted_table.h"

namespace ui {

namespace {

// Largest selection that is copied: what a clipboard and its reader bear.
constexpr std::int64_t kCopyLimit = 100'000;

// Milliseconds after which rows that were wanted while other work went on are asked for again.
constexpr int kRetryInterval = 50;

// For how long the first rows with typed words are looked for at a time: before the list is shown, and after that.
constexpr std::chrono::milliseconds kFirstLook(40);
constexpr std::chrono::milliseconds kFurtherLook(8);

// The order in which a folder opens. Newest calls first is what the desk asks for, and the dearest of the numbers.
int firstSortKey(int folder) {
  switch (folder) {
    case folders::FolderLog:
      return -folders::KindLogTime;
    case folders::FolderCalls:
      return -folders::KindTime;
    case folders::FolderTop:
      return -folders::KindCostSum;
    case folders::FolderContacts:
      return folders::KindContactPerson;
    default:
      return 0;
  }
}

// A first width for a column without a kept one, in digits: of calls, duration and cost are seen in a window of 1280
// pixels.
int defaultLetters(int kind, folders::Format format) {
  constexpr std::pair<int, int> kWidths[] = {{folders::KindGroupDescription, 60},
                                             {folders::KindLogText, 70},
                                             {folders::KindNumber, 15},
                                             {folders::KindTrunk, 6},
                                             {folders::KindDuration, 9},
                                             {folders::KindAccount, 9},
                                             {folders::KindName, 19},
                                             {folders::KindCostReference, 10},
                                             {folders::KindArea, 14}};
  for (const auto& [column, letters] : kWidths) {
    if (column == kind) return letters;
  }
  switch (format) {
    case folders::Format::DateTime:
      return 19;
    case folders::Format::Text:
      return 22;
    case folders::Format::Extension:
      return 18;
    case folders::Format::Hour:
      return 14;
    default:
      return 12;
  }
}

// The columns of a list that was never arranged: of a contact the telephone comes right after the name.
folders::ColumnLayout firstLayout(const folders::FolderDefinition& folder) {
  folders::ColumnLayout layout = folders::defaultLayout(folder.columns, folder.flags);
  const auto telephone = std::ranges::find(layout.visible, 210);
  if (folder.id == folders::FolderContacts && telephone != layout.visible.end()) {
    std::rotate(layout.visible.begin() + 1, telephone, telephone + 1);
  }
  return layout;
}

// Keeps a number that ends at the right and a text that begins at the left apart.
class RoomyDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStyle& style = *(option.widget != nullptr ? option.widget->style() : QApplication::style());
    const QString text = std::exchange(cell.text, QString());
    style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);
    cell.text = text;
    cell.rect.adjust(kCellMargin, 0, -kCellMargin, 0);
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    style.drawItemText(painter, cell.rect, static_cast<int>(cell.displayAlignment), cell.palette, true,
                       cell.fontMetrics.elidedText(text, Qt::ElideRight, cell.rect.width()),
                       selected ? QPalette::HighlightedText : QPalette::Text);
  }

  // A text that is cut is told whole.
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override {
    const QString text = index.data().toString();
    const bool cut = event->type() == QEvent::ToolTip &&
                     option.fontMetrics.horizontalAdvance(text) > option.rect.width() - 2 * kCellMargin;
    if (!cut) return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), text, view);
    return true;
  }

 private:
  static constexpr int kCellMargin = 6;
};

}  // namespace

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

void CFolderView::expectWords() {
  if (model_->folder() != nullptr) readAhead_->begin(folders::quickSelect(*model_->folder()), ReadAhead::When::Now);
}

void CFolderView::closeFolder() {
  first_.reset();
  readAhead_->end();
  model_->setFolder(nullptr);
}

int CFolderView::folderId() const {
  return model_->folder() != nullptr ? model_->folder()->folder().id() : 0;
}

std::string CFolderView::progressText() const {
  return texts_.language().Translate("IDS_READING_ROWS");
}

// Both at once, as one condition of the list itself.
void CFolderView::narrow(folders::FolderView& view, const Narrowed& by) const {
  const std::string words = folders::quickCriteria(view, fromQt(by.words));
  if (words.empty() && !by.narrowing) return;
  folders::Narrowing both = by.narrowing.value_or(folders::Narrowing());
  if (!words.empty()) {
    both.criteria = both.criteria.empty() ? words : "(" + both.criteria + ") AND " + words;
    both.text += (both.text.empty() ? "" : "; ") + ('"' + fromQt(by.words) + '"');
  }
  view.narrow(both);
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

bool CFolderView::find(const QString& typed) {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr) return false;
  const folders::ColumnLayout layout = open->layout();
  if (!typed.isEmpty()) readAhead_->begin(folders::quickSelect(*open), ReadAhead::When::Now);
  const bool first = !typed.isEmpty() && folders::FirstMatches::canFind(*open) && readAhead_->goOn();
  const bool shown = first ? showFirst(typed)
                           : show(openView(open->folder().definition(), open->sortKey(), {narrowing_, typed}, &layout),
                                  FolderModel::Window::AtStart);
  if (!shown) return false;
  typedWords_ = typed;
  scrollToTop();
  if (!typed.isEmpty() && model_->rowCount() > 0) setCurrentIndex(model_->index(0, 0));
  return true;
}

// What the search needs is not read yet: the first rows are found without it.
bool CFolderView::showFirst(const QString& typed) {
  const folders::FolderView& open = *model_->folder();
  const folders::ColumnLayout layout = open.layout();
  View list = openView(open.folder().definition(), open.sortKey(), {narrowing_, {}}, &layout);
  View found = openView(open.folder().definition(), open.sortKey(), {narrowing_, typed}, &layout);
  if (!list || !found) return false;
  try {
    first_ = std::make_unique<folders::FirstMatches>(std::move(list), folders::quickCriteria(*found, fromQt(typed)),
                                                     FolderModel::kFirstRows);
    first_->lookFor(kFirstLook);
    model_->setFirstRows(std::move(found), first_->rows());
  } catch (const jet::Error& error) {
    first_.reset();
    emit failed(toQt(error.description()));
    return false;
  }
  searching_.start(0);
  return true;
}

void CFolderView::goOnSearching() {
  if (!first_) return;
  if (document_.app().surroundings().person.busy()) return searching_.start(kRetryInterval);
  if (!readAhead_->reading()) return finishSearching();
  if (first_->done()) return searching_.start(kRetryInterval);
  const auto before = static_cast<std::ptrdiff_t>(first_->rows().size());
  try {
    first_->lookFor(kFurtherLook);
  } catch (const jet::Error& error) {
    first_.reset();
    return emit failed(toQt(error.description()));
  }
  searching_.start(0);
  if (first_->rows().begin() + before == first_->rows().end()) return;
  model_->addFirstRows({first_->rows().begin() + before, first_->rows().end()});
  if (before == 0) setCurrentIndex(model_->index(0, 0));
  emit searched();
}

// The rows that are shown stay where they are; the others follow them.
void CFolderView::finishSearching() {
  const folders::FolderView& open = *model_->folder();
  const folders::ColumnLayout layout = open.layout();
  if (showWhereItWas(openView(open.folder().definition(), open.sortKey(), present(), &layout))) emit searched();
}

bool CFolderView::reload() {
  folders::FolderView* open = model_->folder();
  if (open == nullptr) return false;
  if (searching()) return find(typedWords_);
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
  setShowGrid(config.ReadConfigInt("iface_Grid", "general", foundation::StoreMachine, 0) == 1);
  selectsUnderPointer_ = config.ReadConfigInt("iface_Hover", "general", foundation::StoreMachine, 0) == 1;
  setMouseTracking(selectsUnderPointer_);
  if (config.ReadConfigInt("iface_Autoselect", "general", foundation::StoreMachine, 0) == 1) selectRow(0);
}

void CFolderView::applyLayout() {
  const auto& columns = model_->folder()->columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const int kind = columns[i].definition->kind;
    const int letters = defaultLetters(kind, folders::formatOfKind(kind).format);
    const int heading = fontMetrics().horizontalAdvance(toQt(columns[i].caption)) + 36;
    const int width = columns[i].width > 0 ? columns[i].width
                                           : std::max(heading, fontMetrics().horizontalAdvance(QString(letters, '0')));
    setColumnWidth(static_cast<int>(i), width);
  }
}

// As the headings are: the operator may have moved them.
folders::ColumnLayout CFolderView::shownLayout() const {
  folders::ColumnLayout layout;
  for (int place = 0; place < model_->columnCount(); ++place) {
    const int column = horizontalHeader()->logicalIndex(place);
    layout.visible.push_back(model_->kindOf(column));
    layout.widths.emplace_back(model_->kindOf(column), columnWidth(column));
  }
  return layout;
}

void CFolderView::useLayout(const folders::ColumnLayout& layout) {
  model_->setLayout(layout);
  for (int column = 0; column < model_->columnCount(); ++column) {
    horizontalHeader()->moveSection(horizontalHeader()->visualIndex(column), column);
  }
  applyLayout();
  showSortIndicator();
}

void CFolderView::saveLayout() {
  if (model_->folder() == nullptr) return;
  folders::keepLayout(document_.app().config(), model_->folder()->folder().definition(), shownLayout());
}

void CFolderView::sortByColumn(int column) {
  const folders::FolderView& open = *model_->folder();
  const int kind = model_->kindOf(column);
  if (open.columns()[static_cast<std::size_t>(column)].definition->sort == nullptr) return;
  const int sortKey = open.sortKey() == kind ? -kind : kind;
  const folders::ColumnLayout layout = open.layout();
  if (show(openView(open.folder().definition(), sortKey, present(), &layout), FolderModel::Window::AtStart)) {
    scrollToTop();
    emit sorted();
  }
  showSortIndicator();
}

void CFolderView::showSortIndicator() {
  const int key = model_->folder()->sortKey();
  const int column = model_->columnOf(std::abs(key));
  horizontalHeader()->setSortIndicatorShown(key != 0 && column >= 0);
  if (key != 0) {
    horizontalHeader()->setSortIndicator(column, key < 0 ? Qt::DescendingOrder : Qt::AscendingOrder);
  }
}

std::int64_t CFolderView::selectedCount() const {
  std::int64_t rows = 0;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    if (range.left() == 0) rows += range.height();
  }
  return rows;
}

QString CFolderView::selectionTotals() const {
  if (selectedCount() < 2) return {};
  std::vector<Rows> selected;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    if (range.left() == 0) selected.push_back({model_->position(range.top()), range.height()});
  }
  return totalsOf(selected, selectedCount());
}

QString CFolderView::totals() const {
  return totalsOf({{0, model_->totalRows()}}, model_->totalRows());
}

QString CFolderView::totalsOf(const std::vector<Rows>& parts, std::int64_t count) const {
  folders::FolderView* open = model_->folder();
  if (open == nullptr) return {};
  platform::Operator& person = document_.app().surroundings().person;
  const platform::Progress progress(person, open->folder().caption(), progressText(), count);
  folders::FolderView::Totals totals(*open);
  std::int64_t read = 0;
  bool stopped = false;
  for (const Rows& part : parts) {
    open->readRows(part.first, part.count, [&](std::span<const folders::CellValue> row) {
      totals.add(row);
      stopped = !person.progressStep(++read);
      return !stopped;
    });
    if (stopped) return {};
  }
  QStringList sums;
  for (std::size_t column = 0; column < open->columns().size(); ++column) {
    if (totals.sum(column).value_or(0) == 0) continue;
    sums << toQt(open->columns()[column].caption) + " " + toQt(totals.textWithCurrency(column));
  }
  return sums.join("   ");
}

std::vector<int> CFolderView::selectedRows() const {
  std::set<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) rows.insert(row);
  }
  return {rows.begin(), rows.end()};
}

QString CFolderView::currentText(int kind) const {
  const int column = model_->columnOf(kind);
  return column < 0 || !currentIndex().isValid() ? QString() : model_->text(currentIndex().row(), column);
}

QString CFolderView::currentText() const {
  return currentIndex().isValid() ? model_->text(currentIndex().row(), currentIndex().column()) : QString();
}

// The cells of a row as they are shown, from left to right; -1: the headings.
QStringList CFolderView::cellsOf(int row) const {
  QStringList cells;
  for (int place = 0; place < model_->columnCount(); ++place) {
    const int column = horizontalHeader()->logicalIndex(place);
    cells << (row < 0 ? model_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()
                      : model_->text(row, column));
  }
  return cells;
}

void CFolderView::copySelection(CopyForm form) {
  if (selectedCount() > kCopyLimit) return emit failed(texts_.format("IDS_COPY_TOO_MANY", kCopyLimit));
  std::vector<QStringList> lines;
  if (form != CopyForm::Rows) lines.push_back(cellsOf(-1));
  for (const int row : selectedRows()) lines.push_back(cellsOf(row));
  copyCells(lines, form == CopyForm::Table ? CopyAs::Table : CopyAs::Text);
}

void CFolderView::chooseColumns() {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr) return;
  const folders::FolderDefinition& folder = open->folder().definition();
  ColumnsDialog dialog(texts_, folder, shownLayout(), firstLayout(folder), this);
  if (dialog.exec() != QDialog::Accepted) return;
  useLayout(dialog.layout());
  saveLayout();
}

void CFolderView::sortByCurrentColumn() {
  if (currentIndex().isValid()) sortByColumn(currentIndex().column());
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

void CFolderView::keyboardSearch(const QString& typed) {
  const bool goesOn = sinceTyped_.isValid() && sinceTyped_.elapsed() < QApplication::keyboardInputInterval();
  sinceTyped_.start();
  typed_ = goesOn ? typed_ + typed : typed;
  const QModelIndex current = currentIndex();
  // Further letters may still fit the current row.
  const int from = current.isValid() ? current.row() - (goesOn ? 1 : 0) : -1;
  const int row = model_->findAtHand(typed_, from, std::max(0, current.column()));
  if (row >= 0) setCurrentIndex(model_->index(row, std::max(0, current.column())));
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
