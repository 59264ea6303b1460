#include "ui/folder_view.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <algorithm>
#include <set>
#include <utility>

#include "folders/column_layout.h"
#include "platform/progress.h"

namespace ui {

namespace {

// Largest selection that is copied: what a clipboard and its reader bear.
constexpr std::int64_t kCopyLimit = 100'000;

// Milliseconds after which rows that were wanted while other work went on are asked for again.
constexpr int kRetryInterval = 50;

// The order in which a folder opens. Newest calls first is what the desk asks for.
int firstSortKey(int folder) {
  constexpr int kDateDescending = -401;
  constexpr int kContact = 201;
  switch (folder) {
    case 100:
      return kDateDescending;
    case folders::kContactsList:
      return kContact;
    default:
      return 0;
  }
}

// A first width for a column without a kept one, in digits.
int defaultLetters(folders::Format format) {
  switch (format) {
    case folders::Format::DateTime:
      return 20;
    case folders::Format::Text:
    case folders::Format::Extension:
      return 22;
    case folders::Format::Hour:
      return 14;
    default:
      return 12;
  }
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

 private:
  static constexpr int kCellMargin = 6;
};

}  // namespace

CFolderView::CFolderView(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QTableView(parent), document_(document), texts_(texts), model_(new FolderModel(this)) {
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
  connect(model_, &FolderModel::pageMissed, this, &CFolderView::readMissedPage, Qt::QueuedConnection);
  connect(model_, &FolderModel::readFailed, this, &CFolderView::failed, Qt::QueuedConnection);
  connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& index) { emit rowActivated(index.row()); });
}

int CFolderView::folderId() const {
  return model_->folder() != nullptr ? model_->folder()->folder().id() : 0;
}

std::string CFolderView::progressText() const {
  return texts_.language().Translate("IDS_READING_ROWS");
}

CFolderView::View CFolderView::openView(const folders::FolderDefinition& folder, int sortKey,
                                        const std::optional<folders::Narrowing>& narrowing,
                                        const folders::ColumnLayout* layout) {
  const platform::Progress progress(document_.app().surroundings().person,
                                    folders::folderCaption(folder, texts_.language()), progressText());
  try {
    auto view =
        std::make_unique<folders::FolderView>(folder, document_.folderServices(), document_.valueFormatter(), sortKey);
    if (layout != nullptr) view->setLayout(*layout);
    if (narrowing) view->narrow(narrowing);
    return view;
  } catch (const jet::Error& error) {
    if (!error.canceled()) emit failed(toQt(error.description()));
    return nullptr;
  }
}

// Counts the rows and reads the first ones; only then the view takes the place of the one that is shown.
bool CFolderView::show(View view, FolderModel::Window window) {
  if (!view) return false;
  const platform::Progress progress(document_.app().surroundings().person, view->folder().caption(), progressText());
  try {
    model_->setFolder(std::move(view), window);
    emptyText_ = reasonForNothing();
    return true;
  } catch (const jet::Error& error) {
    if (!error.canceled()) emit failed(toQt(error.description()));
    return false;
  }
}

bool CFolderView::openFolder(const folders::FolderDefinition& folder, std::optional<folders::Narrowing> narrowing) {
  saveLayout();
  auto& app = document_.app();
  std::optional<folders::ColumnLayout> layout = folders::keptLayout(app.config(), folder);
  if (layout) {
    layout = folders::usableLayout(*layout, folder.columns, folder.flags, texts_.language(), app.surroundings().person);
  }
  if (!show(openView(folder, firstSortKey(folder.id), narrowing, layout ? &*layout : nullptr),
            FolderModel::Window::AtStart)) {
    return false;
  }
  useLayout(model_->folder()->layout());
  applyInterfaceOptions();
  scrollToTop();
  return true;
}

bool CFolderView::reload() {
  folders::FolderView* open = model_->folder();
  if (open == nullptr) return false;
  const std::int64_t before = model_->totalRows();
  const int top = rowAt(0);
  const QModelIndex current = currentIndex();
  const std::int64_t position = current.isValid() ? model_->position(current.row()) : -1;
  const std::string key = current.isValid() ? model_->key(current.row()) : std::string();
  const folders::ColumnLayout layout = open->layout();
  if (!show(openView(open->folder().definition(), open->sortKey(), open->narrowing(), &layout),
            FolderModel::Window::WhereItWas)) {
    return false;
  }
  // New rows stand above the record in a list that begins with the newest, below it in one that ends with them.
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
    const int letters = defaultLetters(folders::formatOfKind(columns[i].definition->kind).format);
    const int heading = fontMetrics().horizontalAdvance(toQt(columns[i].caption)) + 36;
    const int width = columns[i].width > 0 ? columns[i].width
                                           : std::max(heading, fontMetrics().horizontalAdvance(QString(letters, '0')));
    setColumnWidth(static_cast<int>(i), width);
  }
}

// As the headings stand: the operator may have moved them.
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
  if (show(openView(open.folder().definition(), sortKey, open.narrowing(), &layout), FolderModel::Window::AtStart)) {
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

void CFolderView::copySelection() {
  if (selectedCount() > kCopyLimit) return emit failed(texts_.format("IDS_COPY_TOO_MANY", kCopyLimit));
  QString text;
  for (const int row : selectedRows()) {
    QStringList cells;
    for (int column = 0; column < model_->columnCount(); ++column) {
      cells << model_->text(row, horizontalHeader()->logicalIndex(column));
    }
    text += cells.join('\t') + '\n';
  }
  QApplication::clipboard()->setText(text);
}

void CFolderView::chooseColumns() {
  folders::FolderView* folder = model_->folder();
  if (folder == nullptr) return;
  QMenu menu(this);
  for (const folders::ColumnDefinition& column : folder->folder().definition().columns) {
    if ((column.flags & folders::ColumnKey) != 0 || column.flags == 0) continue;
    QAction* action = menu.addAction(texts_(column.caption));
    action->setCheckable(true);
    action->setChecked(model_->columnOf(column.kind) >= 0);
    action->setData(column.kind);
  }
  const QAction* chosen = menu.exec(QCursor::pos());
  if (chosen == nullptr) return;
  const int kind = chosen->data().toInt();
  folders::ColumnLayout layout = shownLayout();
  auto& visible = layout.visible;
  if (chosen->isChecked()) {
    visible.push_back(kind);
  } else if (visible.size() > 1) {  // a list needs a column
    visible.erase(std::remove(visible.begin(), visible.end(), kind), visible.end());
  }
  useLayout(layout);
  saveLayout();
}

void CFolderView::contextMenuEvent(QContextMenuEvent* event) {
  emit contextMenuWanted(event->globalPos());
}

void CFolderView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    copySelection();
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

QString CFolderView::reasonForNothing() const {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr || model_->totalRows() > 0) return {};
  const folders::FolderDefinition& folder = open->folder().definition();
  if (folder.condition == folders::ConditionSource::LogFilter) return texts_("IDS_EMPTY_LOG");
  if (folder.condition != folders::ConditionSource::CallFilter) return texts_("IDS_EMPTY_TABLE");
  if (document_.callFilter().active()) return texts_("IDS_EMPTY_LIST");
  return texts_("IDS_EMPTY_CALLS");
}

void CFolderView::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model_->rowCount() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
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
