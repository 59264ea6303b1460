#include "ui/record_table_model.h"

#include <algorithm>

namespace ui {

namespace {

int alignmentOf(const RecordColumn& column) {
  return static_cast<int>((column.rightAligned ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

}  // namespace

RecordTableModel::RecordTableModel(std::vector<RecordColumn> columns, Rows rows, QObject* parent)
    : QAbstractTableModel(parent), columns_(std::move(columns)), rows_(std::move(rows)) {}

int RecordTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_.count();
}

int RecordTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant RecordTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const RecordColumn& shown = column(index.column());
  if (shown.checkbox) {
    if (role == Qt::CheckStateRole) return shown.read(index.row()) == "1" ? Qt::Checked : Qt::Unchecked;
    return {};
  }
  if (role == Qt::DisplayRole || role == Qt::EditRole) return shown.read(index.row());
  if (role == Qt::TextAlignmentRole) return alignmentOf(shown);
  return {};
}

QVariant RecordTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Vertical) return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
  if (role == Qt::DisplayRole) return column(section).caption;
  if (role == Qt::ToolTipRole) return column(section).hint;
  if (role == Qt::TextAlignmentRole) return alignmentOf(column(section));
  return {};
}

Qt::ItemFlags RecordTableModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = QAbstractTableModel::flags(index);
  if (!index.isValid()) return flags;
  const RecordColumn& shown = column(index.column());
  if (!shown.write || shown.automatic || readOnly_) return flags;
  return flags | (shown.checkbox ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

bool RecordTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || (role != Qt::EditRole && role != Qt::CheckStateRole)) return false;
  const RecordColumn& shown = column(index.column());
  if (!shown.write) return false;
  const QString text =
      role == Qt::CheckStateRole ? QString(value.toInt() == Qt::Checked ? "1" : "0") : value.toString();
  if (text == shown.read(index.row())) return true;
  keepStep();
  if (!shown.write(index.row(), text)) {
    if (rows_.keep) steps_.pop_back();
    emit refused(index.column(), text);
    return false;
  }
  // Other columns of the row may be derived from this one.
  emit dataChanged(this->index(index.row(), 0), this->index(index.row(), columnCount() - 1));
  emit edited();
  return true;
}

bool RecordTableModel::insertRows(int row, int count, const QModelIndex& parent) {
  if (parent.isValid() || !rows_.insert || row < 0 || row > rowCount()) return false;
  keepStep();
  beginInsertRows({}, row, row + count - 1);
  for (int i = 0; i < count; ++i) rows_.insert(row + i);
  endInsertRows();
  emit edited();
  return true;
}

bool RecordTableModel::removeRows(int row, int count, const QModelIndex& parent) {
  if (parent.isValid() || !rows_.remove || row < 0 || row + count > rowCount()) return false;
  keepStep();
  beginRemoveRows({}, row, row + count - 1);
  for (int i = count; i-- > 0;) rows_.remove(row + i);
  endRemoveRows();
  emit edited();
  return true;
}

void RecordTableModel::removeThese(std::vector<int> rows) {
  if (!rows_.remove || rows.empty()) return;
  keepStep();
  std::ranges::sort(rows, std::greater());
  for (const int row : rows) {
    beginRemoveRows({}, row, row);
    rows_.remove(row);
    endRemoveRows();
  }
  emit edited();
}

void RecordTableModel::keepStep() {
  if (!rows_.keep) return;
  steps_.push_back(rows_.keep());
  if (steps_.size() > kSteps) steps_.pop_front();
}

void RecordTableModel::undo() {
  if (steps_.empty()) return;
  const auto bringBack = std::move(steps_.back());
  steps_.pop_back();
  beginResetModel();
  bringBack();
  endBulkChange();
}

void RecordTableModel::beginBulkChange() {
  keepStep();
  beginResetModel();
}

void RecordTableModel::endBulkChange() {
  endResetModel();
  emit edited();
}

int RecordTableModel::append() {
  const int row = rows_.count();
  rows_.insert(row);
  return row;
}

void RecordTableModel::clear() {
  for (int row = rows_.count(); row-- > 0;) rows_.remove(row);
}

}  // namespace ui
