#include "ui/record_table.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QShortcut>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/csv.h"

namespace ui {

namespace {

// Columns take the width of what stands in this many rows.
constexpr int kRowsMeasured = 200;

// Cells with a fixed set of values are edited in a combo box.
class ChoiceDelegate : public QStyledItemDelegate {
 public:
  ChoiceDelegate(const RecordTableModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const RecordColumn& column = model_.column(index.column());
    if (!column.choices) return QStyledItemDelegate::createEditor(parent, option, index);
    auto* box = new QComboBox(parent);
    box->addItems(column.choices());
    return box;
  }

  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    if (auto* box = qobject_cast<QComboBox*>(editor)) {
      box->setCurrentText(index.data(Qt::EditRole).toString());
    } else {
      QStyledItemDelegate::setEditorData(editor, index);
    }
  }

  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    if (auto* box = qobject_cast<QComboBox*>(editor)) {
      model->setData(index, box->currentText(), Qt::EditRole);
    } else {
      QStyledItemDelegate::setModelData(editor, model, index);
    }
  }

 private:
  const RecordTableModel& model_;
};

}  // namespace

RecordTable::RecordTable(RecordTableModel* model, const QString& name, const Texts& texts, QWidget* parent)
    : QWidget(parent), texts_(texts), model_(model), sorted_(new QSortFilterProxyModel(this)), view_(new QTableView) {
  model_->setParent(this);
  sorted_->setSourceModel(model_);
  sorted_->setFilterKeyColumn(-1);
  sorted_->setFilterCaseSensitivity(Qt::CaseInsensitive);
  sorted_->setSortCaseSensitivity(Qt::CaseInsensitive);
  view_->setObjectName(name);
  view_->setModel(sorted_);
  view_->setItemDelegate(new ChoiceDelegate(*model_, view_));
  view_->setSortingEnabled(true);
  view_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                         QAbstractItemView::AnyKeyPressed);
  view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 10);
  view_->setWordWrap(false);
  view_->horizontalHeader()->setResizeContentsPrecision(kRowsMeasured);
  view_->resizeColumnsToContents();
  view_->horizontalHeader()->setStretchLastSection(true);

  auto* search = new QLineEdit;
  search->setPlaceholderText(texts("IDS_SEARCH"));
  search->setAccessibleName(texts("IDS_SEARCH"));
  search->setClearButtonEnabled(true);
  connect(search, &QLineEdit::textChanged, sorted_, &QSortFilterProxyModel::setFilterFixedString);
  connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this] { emit currentRowChanged(currentRow()); });

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(search);
  layout->addWidget(view_);
  buttons_ = makeButtons(texts);
  layout->addWidget(buttons_);
}

QWidget* RecordTable::makeButtons(const Texts& texts) {
  auto* bar = new QWidget;
  auto* layout = new QHBoxLayout(bar);
  layout->setContentsMargins(0, 0, 0, 0);
  const auto add = [&](const char* key, const char* objectName, auto slot) {
    auto* button = new QPushButton(texts(key));
    button->setObjectName(objectName);
    connect(button, &QPushButton::clicked, this, slot);
    layout->addWidget(button);
  };
  if (model_->canInsert()) {
    add("IDS_ADD", "add", &RecordTable::addRow);
    connect(new QShortcut(QKeySequence(Qt::Key_Insert), view_, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &RecordTable::addRow);
  }
  if (model_->canRemove()) {
    add("IDS_DELETE", "delete", &RecordTable::removeSelected);
    connect(new QShortcut(QKeySequence::Delete, view_, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated,
            this, &RecordTable::removeSelected);
  }
  layout->addStretch();
  if (model_->canInsert()) add("IDS_IMPORT_CSV", "importCsv", &RecordTable::importCsv);
  add("IDS_EXPORT_CSV", "exportCsv", &RecordTable::exportCsv);
  return bar;
}

int RecordTable::currentRow() const {
  const QModelIndex current = view_->currentIndex();
  return current.isValid() ? sorted_->mapToSource(current).row() : -1;
}

void RecordTable::setReadOnly(bool readOnly) {
  view_->setEditTriggers(readOnly ? QAbstractItemView::NoEditTriggers
                                  : QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                        QAbstractItemView::AnyKeyPressed);
  buttons_->setEnabled(!readOnly);
}

void RecordTable::addRow() {
  const int row = model_->rowCount();
  if (!model_->insertRow(row)) return;
  const QModelIndex added = sorted_->mapFromSource(model_->index(row, 0));
  view_->setCurrentIndex(added);
  view_->scrollTo(added);
  view_->edit(added);
}

void RecordTable::removeSelected() {
  std::vector<int> rows;
  for (const QModelIndex& index : view_->selectionModel()->selectedRows()) {
    rows.push_back(sorted_->mapToSource(index).row());
  }
  std::sort(rows.rbegin(), rows.rend());
  for (const int row : rows) model_->removeRow(row);
}

void RecordTable::exportCsv() {
  const QString name = QFileDialog::getSaveFileName(this, texts_("IDS_EXPORT_CSV"), {}, "CSV (*.csv)");
  if (name.isEmpty()) return;
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly)) {
    QMessageBox::warning(this, texts_("IDS_EXPORT_CSV"), texts_.format("IDS_CANTWRITEFILE", fromQt(name)));
    return;
  }
  QStringList cells;
  for (int c = 0; c < model_->columnCount(); ++c) cells << model_->column(c).caption;
  file.write(csvLine(cells).toUtf8());
  for (int r = 0; r < model_->rowCount(); ++r) {
    cells.clear();
    for (int c = 0; c < model_->columnCount(); ++c) cells << model_->column(c).read(r);
    file.write(csvLine(cells).toUtf8());
  }
}

// Columns are matched by their captions, so that a file may hold them in another order; rows are added.
void RecordTable::importCsv() {
  const QString name = QFileDialog::getOpenFileName(this, texts_("IDS_IMPORT_CSV"), {}, "CSV (*.csv *.txt)");
  if (name.isEmpty()) return;
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) {
    QMessageBox::warning(this, texts_("IDS_IMPORT_CSV"), texts_.format("IDS_CANTREADFILE", fromQt(name)));
    return;
  }
  const auto rows = readCsv(QString::fromUtf8(file.readAll()).remove(QChar(0xFEFF)));
  if (rows.empty()) return;
  std::vector<int> columns;
  for (const QString& caption : rows.front()) {
    int found = -1;
    for (int c = 0; c < model_->columnCount(); ++c) {
      if (model_->column(c).caption.compare(caption.trimmed(), Qt::CaseInsensitive) == 0) found = c;
    }
    columns.push_back(found);
  }
  int refused = 0;
  for (std::size_t r = 1; r < rows.size(); ++r) {
    const int at = model_->rowCount();
    model_->insertRow(at);
    for (std::size_t c = 0; c < columns.size() && c < static_cast<std::size_t>(rows[r].size()); ++c) {
      if (columns[c] < 0 || !model_->column(columns[c]).write) continue;
      if (!model_->column(columns[c]).write(at, rows[r][static_cast<qsizetype>(c)])) ++refused;
    }
  }
  model_->reload();
  if (refused > 0) {
    QMessageBox::warning(this, texts_("IDS_IMPORT_CSV"), texts_.format("IDS_CSV_REFUSED", refused));
  }
}

}  // namespace ui
