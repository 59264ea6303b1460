#include "ui/sorted_table.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMimeData>
#include <algorithm>

namespace ui {

namespace {

// Columns take the width of what is in this many rows.
constexpr int kRowsMeasured = 200;
constexpr int kWidestMeasured = 420;  // pixels
constexpr int kColumnMargin = 8;

}  // namespace

NaturalOrder::NaturalOrder(QObject* parent) : QSortFilterProxyModel(parent) {
  collator_.setNumericMode(true);
  collator_.setCaseSensitivity(Qt::CaseInsensitive);
  setFilterKeyColumn(-1);
  setFilterCaseSensitivity(Qt::CaseInsensitive);
}

bool NaturalOrder::lessThan(const QModelIndex& left, const QModelIndex& right) const {
  if (sortRole() != Qt::DisplayRole) {
    const QVariant first = left.data(sortRole());
    const QVariant second = right.data(sortRole());
    // Empty cells come first.
    if (first.isValid() && second.isValid()) return first.toDouble() < second.toDouble();
    if (first.isValid() != second.isValid()) return second.isValid();
  }
  return collator_.compare(left.data().toString(), right.data().toString()) < 0;
}

void fitColumns(QTableView& view) {
  view.horizontalHeader()->setResizeContentsPrecision(kRowsMeasured);
  view.resizeColumnsToContents();
  for (int column = 0; column < view.model()->columnCount(); ++column) {
    view.setColumnWidth(column, std::min(view.columnWidth(column) + kColumnMargin, kWidestMeasured));
  }
}

void copyCells(const std::vector<QStringList>& lines, CopyAs form) {
  QString text;
  QString table = "<table border=\"1\">";
  for (const QStringList& cells : lines) {
    text += cells.join('\t') + '\n';
    table += "<tr>";
    for (const QString& cell : cells) table += "<td>" + cell.toHtmlEscaped() + "</td>";
    table += "</tr>";
  }
  auto* copied = new QMimeData;
  copied->setText(text);
  if (form == CopyAs::Table) copied->setHtml(table + "</table>");
  QApplication::clipboard()->setMimeData(copied);
}

}  // namespace ui
