#include "ui/record_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <utility>

namespace ui {

namespace {

constexpr int kFieldsAbreast = 2;

}  // namespace

RecordForm::RecordForm(RecordTable& table, const std::set<int>& listed, Applies applies, QWidget* parent)
    : QWidget(parent), table_(table), applies_(std::move(applies)) {
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  RecordTableModel* model = table.model();
  for (int column = 0; column < model->columnCount(); ++column) {
    table.view()->setColumnHidden(column, !listed.contains(column));
    fields_.push_back(makeField(column));
    QWidget* editor = fields_.back().editor;
    const RecordColumn& shown = model->column(column);
    editor->setObjectName(QString("%1Field%2").arg(table.view()->objectName()).arg(column));
    editor->setAccessibleName(shown.caption);
    editor->setAccessibleDescription(shown.hint);
    editor->setToolTip(shown.hint);
    auto* label = new QLabel(shown.checkbox ? QString() : shown.caption);
    if (!shown.checkbox) label->setBuddy(editor);
    const int row = column / kFieldsAbreast;
    const int place = column % kFieldsAbreast * 2;
    grid->addWidget(label, row, place);
    grid->addWidget(editor, row, place + 1);
    grid->setColumnStretch(place + 1, 1);
  }
  connect(&table, &RecordTable::currentRowChanged, this, &RecordForm::showRecord);
  connect(model, &RecordTableModel::edited, this, &RecordForm::showRecord);
  connect(model, &RecordTableModel::refused, this, &RecordForm::showRecord);
  if (model->rowCount() > 0) table.view()->selectRow(0);
  showRecord();
}

RecordForm::Field RecordForm::makeField(int column) {
  const RecordColumn& shown = table_.model()->column(column);
  if (shown.checkbox) return makeSwitch(column);
  return shown.choices ? makeChoice(column) : makeLine(column);
}

RecordForm::Field RecordForm::makeSwitch(int column) {
  const RecordColumn& shown = table_.model()->column(column);
  auto* box = new QCheckBox(shown.caption);
  connect(box, &QCheckBox::clicked, this, [this, column](bool on) { write(column, on ? "1" : "0"); });
  return {box, [box, &shown](int row) { box->setChecked(row >= 0 && shown.read(row) == "1"); }};
}

RecordForm::Field RecordForm::makeChoice(int column) {
  const RecordColumn& shown = table_.model()->column(column);
  auto* box = new QComboBox;
  box->setEditable(shown.typeable);
  const auto take = [this, column, box] { write(column, box->currentText()); };
  connect(box, &QComboBox::activated, this, take);
  if (shown.typeable) connect(box->lineEdit(), &QLineEdit::editingFinished, this, take);
  return {box, [box, &shown](int row) {
            box->clear();
            if (row < 0) return;
            box->addItems(shown.choices(row));
            const QString text = shown.read(row);
            // A value that is not offered any more is shown, too.
            if (!shown.typeable && box->findText(text) < 0) box->addItem(text);
            box->setCurrentText(text);
          }};
}

RecordForm::Field RecordForm::makeLine(int column) {
  const RecordColumn& shown = table_.model()->column(column);
  auto* line = new QLineEdit;
  connect(line, &QLineEdit::editingFinished, this, [this, column, line] { write(column, line->text()); });
  return {line, [line, &shown](int row) {
            line->setText(row >= 0 ? shown.read(row) : QString());
            line->setCursorPosition(0);
          }};
}

void RecordForm::write(int column, const QString& text) {
  RecordTableModel* model = table_.model();
  const int row = table_.currentRow();
  if (showing_ || row < 0) return;
  model->setData(model->index(row, column), text, Qt::EditRole);
}

void RecordForm::showRecord() {
  showing_ = true;
  const RecordTableModel& model = *table_.model();
  const int row = table_.currentRow() < model.rowCount() ? table_.currentRow() : -1;
  for (int column = 0; column < model.columnCount(); ++column) {
    const Field& field = fields_[static_cast<std::size_t>(column)];
    const Qt::ItemFlags flags = row < 0 ? Qt::ItemFlags() : model.flags(model.index(row, column));
    const bool means = row >= 0 && (!applies_ || applies_(row, column));
    field.show(row);
    field.editor->setEnabled(means && (flags & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)) != 0);
  }
  showing_ = false;
}

}  // namespace ui
