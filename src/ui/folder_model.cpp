#include "ui/folder_model.h"

#include <QElapsedTimer>
#include <QFont>
#include <QStringList>
#include <algorithm>
#include <iterator>

namespace ui {

namespace {

// Milliseconds that the drawing of a window may wait for rows.
constexpr qint64 kSlowPage = 50;

// Columns whose caption does not say all.
struct ColumnTip {
  int kind;
  const char* key;
};
constexpr ColumnTip kColumnTips[] = {
    {folders::KindTrunk, "IDS_TIP_TRUNK"},
    {folders::KindAccount, "IDS_TIP_ACCOUNT"},
    {folders::KindCostReference, "IDS_TIP_COST_REF"},
    {folders::KindRedirected, "IDS_TIP_REDIRECTED"},
    {folders::KindCost, "IDS_TIP_COST"},
    {folders::KindCode, "IDS_TIP_CODE"},
    {folders::KindRing, "IDS_TIP_RING"},
    {folders::KindPriceSum, "IDS_TIP_PRICE"},
    {folders::KindPrice, "IDS_TIP_PRICE"},
    {folders::KindCostSum, "IDS_TIP_COST_REF"},
    {folders::KindCostAverage, "IDS_TIP_AVERAGE"},
    {folders::KindRingAverage, "IDS_TIP_AVERAGE"},
    {folders::KindPriceAverage, "IDS_TIP_AVERAGE"},
    {folders::KindPulses, "IDS_TIP_PULSES"},
};

int qtAlignment(folders::Alignment alignment) {
  switch (alignment) {
    case folders::Alignment::Right:
      return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    case folders::Alignment::Center:
      return static_cast<int>(Qt::AlignCenter);
    default:
      return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
  }
}

}  // namespace

void FolderModel::setFolder(std::unique_ptr<folders::FolderView> folder, Window window) {
  const std::int64_t total = folder ? folder->rowCount() : 0;
  QElapsedTimer reading;
  reading.start();
  Page first = total > 0 ? folder->shownRows(0, kPageRows) : Page();
  slow_ = reading.elapsed() > kSlowPage;
  beginResetModel();
  folder_ = std::move(folder);
  pages_.clear();
  missed_.clear();
  pages_.emplace(0, std::move(first));
  total_ = total;
  rows_ = static_cast<int>(std::min(total_, windowRows_));
  start_ = window == Window::WhereItWas ? std::clamp<std::int64_t>(start_, 0, total_ - rows_) : 0;
  endResetModel();
}

void FolderModel::setFirstRows(std::unique_ptr<folders::FolderView> folder, Page rows) {
  beginResetModel();
  folder_ = std::move(folder);
  pages_.clear();
  missed_.clear();
  rows_ = static_cast<int>(rows.size());
  total_ = rows_;
  start_ = 0;
  pages_.emplace(0, std::move(rows));
  endResetModel();
}

void FolderModel::addFirstRows(Page rows) {
  if (rows.empty()) return;
  const int more = static_cast<int>(rows.size());
  beginInsertRows({}, rows_, rows_ + more - 1);
  Page& page = pages_[0];
  std::ranges::move(rows, std::back_inserter(page));
  rows_ += more;
  total_ = rows_;
  endInsertRows();
}

void FolderModel::setLayout(const folders::ColumnLayout& layout) {
  if (!folder_ || folder_->layout() == layout) return;
  beginResetModel();
  folder_->setLayout(layout);
  pages_.clear();
  endResetModel();
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

int FolderModel::rowAt(std::int64_t position) const {
  return position >= start_ && position < start_ + rows_ ? static_cast<int>(position - start_) : -1;
}

// Reads the page and keeps it; one that cannot be read is kept empty, so that a fault is told once and not for each
// cell.
const FolderModel::Page& FolderModel::keepPage(std::int64_t number) const {
  if (pages_.size() >= kPagesKept) pages_.clear();
  QElapsedTimer reading;
  reading.start();
  Page read;
  try {
    read = folder_->shownRows(number * kPageRows, kPageRows);
  } catch (const jet::Error& error) {
    if (!error.canceled()) emit readFailed(toQt(error.description()));
  }
  slow_ = reading.elapsed() > kSlowPage;
  return pages_.insert_or_assign(number, std::move(read)).first->second;
}

void FolderModel::readPage(std::int64_t number) {
  if (!folder_ || missed_.erase(number) == 0) return;
  keepPage(number);
  const int top = rowAt(std::max(number * kPageRows, start_));
  if (top < 0) return;
  emit dataChanged(index(top, 0), index(std::min(top + kPageRows, rows_) - 1, columnCount() - 1));
}

const FolderModel::Page* FolderModel::page(std::int64_t number) const {
  if (const auto kept = pages_.find(number); kept != pages_.end()) return &kept->second;
  if (!slow_ && !(busy_ && busy_())) return &keepPage(number);
  if (missed_.insert(number).second) emit pageMissed(number);
  return nullptr;
}

const folders::FolderView::ShownRow* FolderModel::row(int row) const {
  const Page* found = page(position(row) / kPageRows);
  const auto index = static_cast<std::size_t>(position(row) % kPageRows);
  return found != nullptr && index < found->size() ? &(*found)[index] : nullptr;
}

QString FolderModel::text(int row, int column) const {
  const auto* shown = this->row(row);
  if (shown == nullptr || static_cast<std::size_t>(column) >= shown->texts.size()) return {};
  return toQt(shown->texts[static_cast<std::size_t>(column)]);
}

std::string FolderModel::key(int row) const {
  const auto* shown = this->row(row);
  return shown != nullptr ? shown->key : std::string();
}

int FolderModel::findAtHand(const QString& text, int row, int column) const {
  std::set<int> matching;
  for (const auto& [number, page] : pages_) {
    for (std::size_t i = 0; i < page.size(); ++i) {
      const int at = rowAt(number * kPageRows + static_cast<std::int64_t>(i));
      if (at < 0 || static_cast<std::size_t>(column) >= page[i].texts.size()) continue;
      const QString shown = toQt(page[i].texts[static_cast<std::size_t>(column)]);
      if (shown.startsWith(text, Qt::CaseInsensitive)) matching.insert(at);
    }
  }
  if (matching.empty()) return -1;
  const auto after = matching.upper_bound(row);
  return after != matching.end() ? *after : *matching.begin();
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
    case Qt::FontRole: {
      // A call that is marked hidden and yet in the list.
      const auto* shown = row(index.row());
      if (shown == nullptr || !shown->hidden) return {};
      QFont italic;
      italic.setItalic(true);
      return italic;
    }
    case Qt::TextAlignmentRole:
      return qtAlignment(folder_->columns()[static_cast<std::size_t>(index.column())].alignment);
    default:
      return {};
  }
}

QVariant FolderModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (!folder_ || orientation != Qt::Horizontal) return {};
  const folders::ViewColumn& column = folder_->columns()[static_cast<std::size_t>(section)];
  if (role == Qt::DisplayRole) return toQt(column.caption);
  if (role == Qt::TextAlignmentRole) return qtAlignment(column.alignment);
  if (role != Qt::ToolTipRole) return {};
  const auto& texts = folder_->services().texts;
  const auto* tip = std::ranges::find(kColumnTips, column.definition->kind, &ColumnTip::kind);
  QStringList lines{toQt(column.caption)};
  if (tip != std::end(kColumnTips)) lines << toQt(texts.Translate(tip->key));
  if (column.definition->sort != nullptr) lines << toQt(texts.Translate("IDS_TIP_SORTS"));
  return lines.join('\n');
}

}  // namespace ui
