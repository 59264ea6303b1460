#include "ui/results/result_table.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <numeric>

#include "platform/progress.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

constexpr int kRowSpace = 8;  // between the texts of two rows, in pixels

}  // namespace

ResultModel::ResultModel(const Texts& texts, QObject* parent)
    : QAbstractTableModel(parent), separators_(folders::separatorsOf(texts.language())) {}

void ResultModel::setTable(folders::PlainTable table) {
  beginResetModel();
  table_ = std::move(table);
  endResetModel();
}

int ResultModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.rows.size());
}

int ResultModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.columns.size());
}

QVariant ResultModel::data(const QModelIndex& index, int role) const {
  const folders::PlainRow& row = table_.rows[static_cast<std::size_t>(index.row())];
  const folders::PlainColumn& column = table_.columns[static_cast<std::size_t>(index.column())];
  const folders::PlainCell& cell = row.cells[static_cast<std::size_t>(index.column())];
  // Long texts do not fit their columns.
  if (role == Qt::DisplayRole || role == Qt::ToolTipRole) return toQt(folders::textOf(column, cell, separators_));
  if (role == kSortRole) {
    if (const auto* number = std::get_if<double>(&cell)) return *number;
    if (const auto* moment = std::get_if<base::DateTime>(&cell)) {
      return static_cast<double>(moment->secondsSinceDayZero());
    }
    return {};
  }
  if (role == Qt::TextAlignmentRole) {
    const bool right = folders::alignmentOf(column) == folders::Alignment::Right;
    return QVariant::fromValue(Qt::AlignVCenter | (right ? Qt::AlignRight : Qt::AlignLeft));
  }
  if (role == Qt::FontRole && row.stressed) {
    QFont bold;
    bold.setBold(true);
    return bold;
  }
  return {};
}

QVariant ResultModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section >= columnCount()) return {};
  const folders::PlainColumn& column = table_.columns[static_cast<std::size_t>(section)];
  if (role == Qt::DisplayRole) return toQt(column.heading);
  if (role != Qt::TextAlignmentRole) return {};
  const bool right = folders::alignmentOf(column) == folders::Alignment::Right;
  return QVariant::fromValue(Qt::AlignVCenter | (right ? Qt::AlignRight : Qt::AlignLeft));
}

ResultTable::ResultTable(server::CServerDoc& document, const Texts& texts, const char* name, QWidget* parent)
    : QWidget(parent),
      document_(document),
      texts_(texts),
      model_(new ResultModel(texts, this)),
      sorted_(new NaturalOrder(this)),
      view_(named(new QTableView, name)),
      search_(named(new QLineEdit, "search")),
      buttons_(new QHBoxLayout),
      written_(new FileLine(document, texts)) {
  sorted_->setSourceModel(model_);
  sorted_->setSortRole(ResultModel::kSortRole);
  view_->setModel(sorted_);
  view_->installEventFilter(this);
  view_->setSortingEnabled(true);
  view_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
  view_->horizontalHeader()->setHighlightSections(false);
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setTabKeyNavigation(false);
  view_->setShowGrid(false);
  view_->setAlternatingRowColors(true);
  view_->setWordWrap(false);
  view_->verticalHeader()->hide();
  view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + kRowSpace);
  search_->setPlaceholderText(texts("IDS_SEARCH"));
  search_->setAccessibleName(texts("IDS_SEARCH"));
  search_->setClearButtonEnabled(true);
  connect(search_, &QLineEdit::textChanged, sorted_, &QSortFilterProxyModel::setFilterFixedString);
  connect(view_, &QTableView::doubleClicked, this, [this] { emit activated(currentRow()); });
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ResultTable::selectionChanged);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(search_);
  layout->addWidget(view_, 1);
  layout->addLayout(buttons_);
  layout->addWidget(written_);
  buttons_->addStretch();
  auto* copying = named(new QPushButton(texts("IDS_ACTION_COPY_TABLE")), "copyTable");
  auto* exporting = named(new QPushButton(texts("IDS_ACTION_EXPORT")), "export");
  for (QPushButton* button : {copying, exporting}) buttons_->addWidget(button);
  connect(copying, &QPushButton::clicked, this, &ResultTable::copy);
  connect(exporting, &QPushButton::clicked, this, &ResultTable::exportRows);
}

void ResultTable::setTable(folders::PlainTable table) {
  view_->setAccessibleName(toQt(table.title));
  model_->setTable(std::move(table));
  fitColumns(*view_);
  // A number would be far from the rest.
  const auto& columns = model_->table().columns;
  view_->horizontalHeader()->setStretchLastSection(!columns.empty() &&
                                                   folders::alignmentOf(columns.back()) != folders::Alignment::Right);
  emit selectionChanged();
}

int ResultTable::currentRow() const {
  const QModelIndex current = view_->currentIndex();
  return current.isValid() ? sorted_->mapToSource(current).row() : -1;
}

std::vector<int> ResultTable::selectedRows() const {
  std::vector<int> rows;
  for (const QModelIndex& index : view_->selectionModel()->selectedRows()) {
    rows.push_back(sorted_->mapToSource(index).row());
  }
  return rows;
}

QPushButton* ResultTable::addButton(const char* key, const char* name) {
  auto* button = named(new QPushButton(texts_(key)), name);
  int before = 0;  // the stretch
  while (buttons_->itemAt(before)->widget() != nullptr) ++before;
  buttons_->insertWidget(before, button);
  return button;
}

QStringList ResultTable::cellsOf(int line) const {
  QStringList cells;
  for (int column = 0; column < sorted_->columnCount(); ++column) {
    cells << (line < 0 ? sorted_->headerData(column, Qt::Horizontal).toString()
                       : sorted_->index(line, column).data().toString());
  }
  return cells;
}

std::vector<int> ResultTable::selectedLines() const {
  std::vector<int> lines;
  for (const QModelIndex& index : view_->selectionModel()->selectedRows()) lines.push_back(index.row());
  std::sort(lines.begin(), lines.end());
  return lines;
}

// The selected rows; all of them where not more than the current one is selected.
void ResultTable::copy() {
  std::vector<int> lines = selectedLines();
  if (lines.size() < 2) {
    lines.resize(static_cast<std::size_t>(sorted_->rowCount()));
    std::iota(lines.begin(), lines.end(), 0);
  }
  std::vector<QStringList> cells{cellsOf(-1)};
  for (const int line : lines) cells.push_back(cellsOf(line));
  copyCells(cells, CopyAs::Table);
}

void ResultTable::copySelected() {
  std::vector<QStringList> cells;
  for (const int line : selectedLines()) cells.push_back(cellsOf(line));
  if (!cells.empty()) copyCells(cells, CopyAs::Text);
}

folders::PlainTable ResultTable::shownTable() const {
  const folders::PlainTable& all = model_->table();
  folders::PlainTable shown{all.title, all.columns, {}, all.remarks, all.overCalls};
  for (int row = 0; row < sorted_->rowCount(); ++row) {
    const int source = sorted_->mapToSource(sorted_->index(row, 0)).row();
    shown.rows.push_back(all.rows[static_cast<std::size_t>(source)]);
  }
  return shown;
}

void ResultTable::exportRows() {
  const std::filesystem::path file = askFile(document_.app().config(), texts_, this,
                                             {"export",
                                              "IDS_ACTION_EXPORT",
                                              {"XLSX (*.xlsx)", "CSV (*.csv)", "PDF (*.pdf)", "HTML (*.html)"},
                                              toQt(table().title)});
  if (file.empty()) return;
  attempt(this, texts_, [&] {
    const platform::Progress progress(document_.app().surroundings().person,
                                      texts_.language().Translate("IDS_ACTION_EXPORT"),
                                      texts_.language().TranslateFormat("IDS_WRITING_FILE", file.string()));
    if (folders::writePlainTable(shownTable(), document_.folderServices(), file)) written_->say(file);
  });
}

// The view by itself would copy a single cell.
bool ResultTable::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
    return QWidget::eventFilter(watched, event);
  }
  copySelected();
  return true;
}

void ResultTable::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter) {  // not the dialog's button
    if (view_->hasFocus() && currentRow() >= 0) emit activated(currentRow());
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace ui
