#include "ui/folder_view.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <algorithm>
#include <set>

#include "folders/column_layout.h"

namespace ui {

namespace {

// Largest selection that is copied: what a clipboard and its reader bear.
constexpr std::size_t kCopyLimit = 100000;

// A first width for a column without a kept one, in average letters.
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

}  // namespace

CFolderView::CFolderView(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : QTableView(parent), document_(document), texts_(texts), model_(new FolderModel(this)) {
  setObjectName("recordList");
  setModel(model_);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setWordWrap(false);
  setAlternatingRowColors(true);
  setCornerButtonEnabled(false);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  verticalHeader()->setVisible(false);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  horizontalHeader()->setSectionsMovable(true);
  horizontalHeader()->setSectionsClickable(true);
  horizontalHeader()->setHighlightSections(false);
  connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &CFolderView::sortByColumn);
  connect(model_, &FolderModel::readFailed, this, &CFolderView::failed, Qt::QueuedConnection);
  connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& index) { emit rowActivated(index.row()); });
}

int CFolderView::folderId() const {
  return model_->folder() != nullptr ? model_->folder()->folder().id() : 0;
}

void CFolderView::openFolder(const folders::FolderDefinition& folder) {
  saveLayout();
  model_->setFolder(nullptr);
  const auto layouts = folders::loadLayouts(document_.app().config(), folders::kFolderLayouts);
  auto view = std::make_unique<folders::FolderView>(folder, document_.folderServices(), document_.valueFormatter());
  const auto position = static_cast<std::size_t>(&folder - folders::standardFolders().data());
  if (position < layouts.size()) {
    view->setLayout(folders::usableLayout(layouts[position], folder.columns, folder.flags, texts_.language(),
                                          document_.app().surroundings().person));
  }
  // Newest calls first is what the desk asks for.
  if (folder.id == 100) view->sort(-401);
  model_->setFolder(std::move(view));
  applyLayout();
  applyInterfaceOptions();
  showSortIndicator();
  scrollToTop();
}

void CFolderView::reload() {
  const QModelIndex current = currentIndex();
  const int top = rowAt(0);
  model_->refresh();
  if (current.isValid() && current.row() < model_->rowCount()) {
    setCurrentIndex(model_->index(current.row(), current.column()));
  }
  if (top > 0) scrollTo(model_->index(std::min(top, model_->rowCount() - 1), 0), QAbstractItemView::PositionAtTop);
}

void CFolderView::applyInterfaceOptions() {
  auto& config = document_.app().config();
  setShowGrid(config.ReadConfigInt("iface_Grid", "general", foundation::StoreMachine, 0) == 1);
  setMouseTracking(config.ReadConfigInt("iface_Hover", "general", foundation::StoreMachine, 0) == 1);
  if (config.ReadConfigInt("iface_Autoselect", "general", foundation::StoreMachine, 0) == 1) selectRow(0);
}

void CFolderView::applyLayout() {
  const auto& columns = model_->folder()->columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const int letters = defaultLetters(folders::formatOfKind(columns[i].definition->kind).format);
    const int heading = fontMetrics().horizontalAdvance(toQt(columns[i].caption)) + 36;
    const int width =
        columns[i].width > 0 ? columns[i].width : std::max(heading, fontMetrics().averageCharWidth() * letters);
    setColumnWidth(static_cast<int>(i), width);
  }
}

void CFolderView::saveLayout() {
  if (model_->folder() == nullptr) return;
  auto layout = model_->folder()->layout();
  layout.widths.clear();
  for (int column = 0; column < model_->columnCount(); ++column) {
    layout.widths.emplace_back(model_->kindOf(column), columnWidth(column));
  }
  auto& config = document_.app().config();
  auto layouts = folders::loadLayouts(config, folders::kFolderLayouts);
  const auto all = folders::standardFolders();
  // Every folder's layout stands at its place, so those that were never opened get their default.
  for (std::size_t i = layouts.size(); i < all.size(); ++i) {
    layouts.push_back(folders::defaultLayout(all[i].columns, all[i].flags));
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].id == folderId()) layouts[i] = layout;
  }
  folders::saveLayouts(config, folders::kFolderLayouts, layouts);
}

void CFolderView::sortByColumn(int column) {
  const int kind = model_->kindOf(column);
  if (model_->folder()->columns()[static_cast<std::size_t>(column)].definition->sort == nullptr) return;
  const bool descending = model_->folder()->sortKey() == kind;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  try {
    model_->sortBy(descending ? -kind : kind);
  } catch (const jet::Error& error) {
    emit failed(toQt(error.description()));
  }
  QApplication::restoreOverrideCursor();
  showSortIndicator();
  scrollToTop();
}

void CFolderView::showSortIndicator() {
  const int key = model_->folder()->sortKey();
  const int column = model_->columnOf(std::abs(key));
  horizontalHeader()->setSortIndicatorShown(key != 0 && column >= 0);
  if (key != 0) {
    horizontalHeader()->setSortIndicator(column, key < 0 ? Qt::DescendingOrder : Qt::AscendingOrder);
  }
}

std::vector<int> CFolderView::selectedRows() const {
  std::set<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom() && rows.size() < kCopyLimit; ++row) rows.insert(row);
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
  auto layout = folder->layout();
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
  saveLayout();
  layout = folder->layout();
  auto& visible = layout.visible;
  if (!chosen->isChecked()) {
    // A list needs a column.
    if (visible.size() > 1) visible.erase(std::remove(visible.begin(), visible.end(), kind), visible.end());
  } else {
    visible.push_back(kind);
  }
  for (int column = 0; column < model_->columnCount(); ++column) {
    layout.widths.emplace_back(model_->kindOf(column), columnWidth(column));
  }
  folder->setLayout(layout);
  model_->sortBy(folder->sortKey());
  applyLayout();
  showSortIndicator();
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
    QTableView::keyPressEvent(event);
  }
}

void CFolderView::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model_->rowCount() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap,
                   texts_("IDS_EMPTY_LIST"));
}

void CFolderView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  int rows = 0;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    if (range.left() == 0) rows += range.height();
  }
  emit selectionChangedTo(rows);
}

}  // namespace ui
