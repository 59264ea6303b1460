#include "ui/folder_view.h"

#include <QHeaderView>
#include <algorithm>

#include "folders/column_layout.h"
#include "ui/dialogs/columns_dialog.h"
#include "ui/first_columns.h"

namespace ui {

void CFolderView::applyLayout() {
  const auto& columns = model_->folder()->columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const int kind = columns[i].definition->kind;
    const int letters = firstLetters(kind, folders::formatOfKind(kind).format);
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

void CFolderView::chooseColumns() {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr) return;
  const folders::FolderDefinition& folder = open->folder().definition();
  ColumnsDialog dialog(texts_, folder, shownLayout(), firstLayout(folder), this);
  if (dialog.exec() != QDialog::Accepted) return;
  useLayout(dialog.layout());
  saveLayout();
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

void CFolderView::sortByCurrentColumn() {
  if (currentIndex().isValid()) sortByColumn(currentIndex().column());
}

void CFolderView::showSortIndicator() {
  const int key = model_->folder()->sortKey();
  const int column = model_->columnOf(std::abs(key));
  horizontalHeader()->setSortIndicatorShown(key != 0 && column >= 0);
  if (key != 0) {
    horizontalHeader()->setSortIndicator(column, key < 0 ? Qt::DescendingOrder : Qt::AscendingOrder);
  }
}

}  // namespace ui
