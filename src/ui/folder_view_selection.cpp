#include "ui/folder_view.h"

#include <QApplication>
#include <QHeaderView>
#include <algorithm>
#include <set>

#include "platform/progress.h"
#include "ui/sorted_table.h"

namespace ui {

namespace {

// Largest selection that is copied: what a clipboard and its reader bear.
constexpr std::int64_t kCopyLimit = 100'000;

}  // namespace

std::int64_t CFolderView::selectedCount() const {
  std::int64_t rows = 0;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    if (range.left() == 0) rows += range.height();
  }
  return rows;
}

std::vector<int> CFolderView::selectedRows() const {
  std::set<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) rows.insert(row);
  }
  return {rows.begin(), rows.end()};
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

}  // namespace ui
