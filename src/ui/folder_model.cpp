#include "ui/folder_model.h"

#include <algorithm>

namespace ui {

void FolderModel::setFolder(std::unique_ptr<folders::FolderView> folder) {
  beginResetModel();
  folder_ = std::move(folder);
  start_ = 0;
  forgetPages();
  endResetModel();
}

void FolderModel::refresh() {
  if (!folder_) return;
  beginResetModel();
  try {
    folder_->refresh();
  } catch (...) {
    forgetPages();
    endResetModel();
    throw;
  }
  forgetPages();
  endResetModel();
}

void FolderModel::sortBy(int sortKey) {
  if (!folder_) return;
  beginResetModel();
  try {
    folder_->sort(sortKey);
  } catch (...) {
    forgetPages();
    endResetModel();
    throw;
  }
  start_ = 0;
  forgetPages();
  endResetModel();
}

void FolderModel::setLayout(const folders::ColumnLayout& layout) {
  if (!folder_) return;
  beginResetModel();
  folder_->setLayout(layout);
  pages_.clear();
  endResetModel();
}

void FolderModel::forgetPages() {
  pages_.clear();
  total_ = folder_ ? folder_->rowCount() : 0;
  rows_ = static_cast<int>(std::min(total_, windowRows_));
  start_ = std::clamp<std::int64_t>(start_, 0, total_ - rows_);
}

void FolderModel::moveWindow(std::int64_t start) {
  start = std::clamp<std::int64_t>(start, 0, total_ - rows_);
  if (start == start_) return;
  emit layoutAboutToBeChanged();
  const std::int64_t by = start_ - start;
  start_ = start;
  shiftPersistentRows(by);
  emit layoutChanged();
}

// Rows that leave the window become invalid.
void FolderModel::shiftPersistentRows(std::int64_t by) {
  const QModelIndexList before = persistentIndexList();
  QModelIndexList after;
  for (const QModelIndex& index : before) {
    const std::int64_t row = index.row() + by;
    const bool inside = row >= 0 && row < rows_;
    after << (inside ? createIndex(static_cast<int>(row), index.column()) : QModelIndex());
  }
  changePersistentIndexList(before, after);
}

int FolderModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int FolderModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() || !folder_ ? 0 : static_cast<int>(folder_->columns().size());
}

const std::vector<std::string>* FolderModel::row(int row) const {
  const std::int64_t position = this->position(row);
  const std::int64_t number = position / kPageRows;
  auto page = pages_.find(number);
  if (page == pages_.end()) {
    if (pages_.size() >= kPagesKept) pages_.clear();
    try {
      page = pages_.emplace(number, folder_->rows(number * kPageRows, kPageRows)).first;
    } catch (const jet::Error& error) {
      // An empty page, so that a fault is told once and not for each cell.
      page = pages_.emplace(number, Page()).first;
      emit readFailed(toQt(error.description()));
    }
  }
  const auto index = static_cast<std::size_t>(position % kPageRows);
  return index < page->second.size() ? &page->second[index] : nullptr;
}

QString FolderModel::text(int row, int column) const {
  const auto* cells = this->row(row);
  if (cells == nullptr || static_cast<std::size_t>(column) >= cells->size()) return {};
  return toQt((*cells)[static_cast<std::size_t>(column)]);
}

int FolderModel::kindOf(int column) const {
  return folder_->columns()[static_cast<std::size_t>(column)].definition->kind;
}

int FolderModel::columnOf(int kind) const {
  for (int column = 0; column < columnCount(); ++column) {
    if (kindOf(column) == kind) return column;
  }
  return -1;
}

QVariant FolderModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !folder_) return {};
  switch (role) {
    case Qt::DisplayRole:
      return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
      switch (folder_->columns()[static_cast<std::size_t>(index.column())].alignment) {
        case folders::Alignment::Right:
          return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
        case folders::Alignment::Center:
          return static_cast<int>(Qt::AlignCenter);
        default:
          return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
      }
    default:
      return {};
  }
}

QVariant FolderModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (!folder_ || orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return toQt(folder_->columns()[static_cast<std::size_t>(section)].caption);
}

}  // namespace ui
