#include "ui/record_table.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QShortcut>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/flow_layout.h"
#include "ui/record_table_csv.h"
#include "ui/sorted_table.h"

namespace ui {

namespace {

constexpr auto kEditTriggers =
    QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed;

// Cells with a fixed set of values are edited in a combo box.
class ChoiceDelegate : public QStyledItemDelegate {
 public:
  ChoiceDelegate(const RecordTableModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const RecordColumn& column = model_.column(index.column());
    if (!column.choices) return QStyledItemDelegate::createEditor(parent, option, index);
    auto* box = new QComboBox(parent);
    const auto* sorted = qobject_cast<const QSortFilterProxyModel*>(index.model());
    box->addItems(column.choices((sorted != nullptr ? sorted->mapToSource(index) : index).row()));
    box->setEditable(column.typeable);
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
    : QWidget(parent),
      texts_(texts),
      model_(model),
      sorted_(new NaturalOrder(this)),
      view_(new QTableView),
      search_(new QLineEdit),
      problem_(new QLabel) {
  model_->setParent(this);
  sorted_->setSourceModel(model_);
  view_->setObjectName(name);
  view_->setModel(sorted_);
  view_->setItemDelegate(new ChoiceDelegate(*model_, view_));
  view_->setSortingEnabled(true);
  view_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setEditTriggers(kEditTriggers);
  view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 10);
  view_->setWordWrap(false);
  fitColumns(*view_);
  // Numbers and switches would be far from the rest.
  const RecordColumn& last = model_->column(model_->columnCount() - 1);
  view_->horizontalHeader()->setStretchLastSection(!last.rightAligned && !last.checkbox);

  search_->setObjectName("search");
  search_->setPlaceholderText(texts("IDS_SEARCH"));
  search_->setAccessibleName(texts("IDS_SEARCH"));
  search_->setClearButtonEnabled(true);
  problem_->setObjectName("problem");
  problem_->setWordWrap(true);
  problem_->hide();
  connect(search_, &QLineEdit::textChanged, sorted_, &QSortFilterProxyModel::setFilterFixedString);
  connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this] { emit currentRowChanged(currentRow()); });
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &RecordTable::offerButtons);
  connect(model_, &RecordTableModel::refused, this, &RecordTable::explainRefusal);
  connect(model_, &RecordTableModel::edited, problem_, &QLabel::hide);
  connect(model_, &RecordTableModel::edited, this, &RecordTable::offerButtons);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(search_);
  layout->addWidget(view_);
  layout->addWidget(problem_);
  layout->addWidget(makeButtons());
  offerButtons();
}

QPushButton* RecordTable::addButton(QLayout& bar, const char* key, const char* name, void (RecordTable::*slot)()) {
  auto* button = new QPushButton(texts_(key));
  button->setObjectName(name);
  connect(button, &QPushButton::clicked, this, slot);
  bar.addWidget(button);
  return button;
}

QWidget* RecordTable::makeButtons() {
  auto* bar = new QWidget;
  auto* layout = new FlowLayout(bar);
  const auto onKey = [this](const QKeySequence& key, void (RecordTable::*slot)()) {
    connect(new QShortcut(key, view_, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated, this, slot);
  };
  if (model_->canInsert()) {
    add_ = addButton(*layout, "IDS_ADD", "add", &RecordTable::addRow);
    onKey(QKeySequence(Qt::Key_Insert), &RecordTable::addRow);
  }
  if (model_->canRemove()) {
    delete_ = addButton(*layout, "IDS_DELETE", "delete", &RecordTable::removeSelected);
    onKey(QKeySequence::Delete, &RecordTable::removeSelected);
  }
  if (model_->canImport()) {
    undo_ = addButton(*layout, "IDS_ACTION_UNDO", "undo", &RecordTable::undo);
    onKey(QKeySequence::Undo, &RecordTable::undo);
  }
  layout->addStretch();
  if (model_->canImport()) import_ = addButton(*layout, "IDS_IMPORT_CSV", "importCsv", &RecordTable::importCsv);
  addButton(*layout, "IDS_EXPORT_CSV", "exportCsv", &RecordTable::exportWanted);
  return bar;
}

void RecordTable::offerButtons() {
  if (add_ != nullptr) add_->setEnabled(!readOnly_);
  if (delete_ != nullptr) delete_->setEnabled(!readOnly_ && view_->selectionModel()->hasSelection());
  if (undo_ != nullptr) undo_->setEnabled(!readOnly_ && model_->canUndo());
  if (import_ != nullptr) import_->setEnabled(!readOnly_);
}

void RecordTable::explainRefusal(int column, const QString& text) {
  const RecordColumn& refused = model_->column(column);
  problem_->setText(texts_.format("IDS_TABLE_REFUSED", fromQt(text), fromQt(refused.caption)) + ' ' + refused.hint);
  problem_->show();
}

int RecordTable::currentRow() const {
  const QModelIndex current = view_->currentIndex();
  return current.isValid() ? sorted_->mapToSource(current).row() : -1;
}

void RecordTable::setReadOnly(bool readOnly) {
  readOnly_ = readOnly;
  model_->setReadOnly(readOnly);
  view_->setEditTriggers(readOnly ? QAbstractItemView::NoEditTriggers : kEditTriggers);
  offerButtons();
}

void RecordTable::addRow() {
  if (readOnly_) return;
  search_->clear();  // it would hide the new row
  const int row = model_->rowCount();
  if (!model_->insertRow(row)) return;
  int first = 0;
  while (first + 1 < model_->columnCount() && (model_->flags(model_->index(row, first)) & Qt::ItemIsEditable) == 0) {
    ++first;
  }
  const QModelIndex added = sorted_->mapFromSource(model_->index(row, first));
  view_->setCurrentIndex(added);
  view_->scrollTo(added);
  view_->edit(added);
}

void RecordTable::removeSelected() {
  if (readOnly_) return;
  std::vector<int> rows;
  for (const QModelIndex& index : view_->selectionModel()->selectedRows()) {
    rows.push_back(sorted_->mapToSource(index).row());
  }
  if (rows.empty()) return;
  const auto count = rows.size();
  model_->removeThese(std::move(rows));
  problem_->setText(texts_.format("IDS_TABLE_DELETED", count));
  problem_->show();
}

void RecordTable::undo() {
  if (!readOnly_) model_->undo();
}

void RecordTable::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return QWidget::keyPressEvent(event);
  if (view_->hasFocus() && !readOnly_ && view_->currentIndex().isValid()) view_->edit(view_->currentIndex());
}

void RecordTable::importCsv() {
  if (!importTable(*model_, texts_, this)) return;
  search_->clear();
  fitColumns(*view_);
}

}  // namespace ui
