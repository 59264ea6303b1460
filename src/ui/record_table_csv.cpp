#include "ui/record_table_csv.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStringConverter>

#include "base/codepage.h"
#include "base/csv.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/mnemonics.h"

namespace ui {

namespace {

// Spreadsheets know UTF-8 by it.
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

enum class Placement { Replace, Add, Cancel };

Placement askPlacement(const Texts& texts, QWidget* parent) {
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), texts("IDS_CSV_PLACEMENT"),
                  QMessageBox::NoButton, parent);
  box.setObjectName("placement");
  auto* replace = named(box.addButton(texts("IDS_CSV_REPLACE"), QMessageBox::AcceptRole), "replace");
  auto* add = named(box.addButton(texts("IDS_CSV_ADD"), QMessageBox::AcceptRole), "addRows");
  auto* cancel = named(box.addButton(texts("IDS_CANCEL"), QMessageBox::RejectRole), "cancel");
  box.setDefaultButton(add);
  box.setEscapeButton(cancel);
  assignMnemonics(box);
  box.exec();
  if (box.clickedButton() == replace) return Placement::Replace;
  return box.clickedButton() == add ? Placement::Add : Placement::Cancel;
}

// UTF-8, or what spreadsheets of the operator's country write.
QString textOf(const QByteArray& bytes, int codepage) {
  QStringDecoder utf8(QStringDecoder::Utf8);
  QString text = utf8(bytes);
  if (utf8.hasError()) text = toQt(base::decode(bytes.toStdString(), codepage));
  return text.remove(QChar(0xFEFF));
}

std::vector<QStringList> rowsOf(const QString& text) {
  std::vector<QStringList> rows;
  for (const std::vector<std::string>& cells : base::csvRows(fromQt(text))) {
    QStringList& row = rows.emplace_back();
    for (const std::string& cell : cells) row << toQt(cell);
  }
  return rows;
}

QByteArray lineOf(const QStringList& cells) {
  QStringList fields;
  for (const QString& cell : cells) fields << toQt(base::csvCell(fromQt(cell)));
  return fields.join(',').toUtf8() + "\r\n";
}

// The model's column for each of the file's; -1 for a caption that the table does not have.
std::vector<int> matchColumns(const RecordTableModel& model, const QStringList& captions) {
  std::vector<int> columns;
  for (const QString& caption : captions) {
    int found = -1;
    for (int c = 0; c < model.columnCount(); ++c) {
      if (model.column(c).caption.compare(caption.trimmed(), Qt::CaseInsensitive) == 0) found = c;
    }
    columns.push_back(found);
  }
  return columns;
}

struct ImportCount {
  int records = 0;
  int withoutRow = 0;
  int refusedValues = 0;
  QString firstRefused;  // the line of the file and its value
};

class Import {
 public:
  Import(RecordTableModel& model, std::vector<int> columns, const Texts& texts)
      : model_(model), columns_(std::move(columns)), texts_(texts) {}

  // `line` counts from 1, the captions' line.
  void take(const QStringList& cells, int line) {
    const int row = rowFor(cells);
    if (row < 0) {
      ++count_.withoutRow;
      return;
    }
    taken_.insert(row);
    ++count_.records;
    for (std::size_t c = 0; c < columns_.size() && c < static_cast<std::size_t>(cells.size()); ++c) {
      if (columns_[c] < 0 || !model_.column(columns_[c]).write) continue;
      const QString& cell = cells[static_cast<qsizetype>(c)];
      if (model_.column(columns_[c]).read(row) == cell || model_.column(columns_[c]).write(row, cell)) continue;
      if (count_.refusedValues++ == 0) count_.firstRefused = explain(columns_[c], cell, line);
    }
  }
  [[nodiscard]] const ImportCount& count() const { return count_; }

 private:
  int rowFor(const QStringList& cells) {
    if (model_.canInsert()) return model_.append();
    for (std::size_t c = 0; c < columns_.size() && c < static_cast<std::size_t>(cells.size()); ++c) {
      if (columns_[c] == 0) return model_.rowFor(cells[static_cast<qsizetype>(c)].trimmed(), taken_);
    }
    return -1;
  }
  [[nodiscard]] QString explain(int column, const QString& cell, int line) const {
    const RecordColumn& refused = model_.column(column);
    return texts_.format("IDS_CSV_FIRST_REFUSED", line, fromQt(cell), fromQt(refused.caption)) + ' ' + refused.hint;
  }

  RecordTableModel& model_;
  std::vector<int> columns_;
  const Texts& texts_;
  ImportCount count_;
  std::set<int> taken_;
};

void tellResult(const ImportCount& count, const Texts& texts, QWidget* parent) {
  QString text = texts.format("IDS_CSV_TAKEN", count.records);
  if (count.withoutRow > 0) text += "\n" + texts.format("IDS_CSV_NO_ROW", count.withoutRow);
  if (count.refusedValues > 0) {
    text += "\n\n" + texts.format("IDS_CSV_REFUSED", count.refusedValues) + "\n" + count.firstRefused;
  }
  inform(parent, texts, text);
}

}  // namespace

bool exportTable(const RecordTableModel& model, const Texts& texts, QWidget* parent, const QString& file) {
  QStringList cells;
  for (int c = 0; c < model.columnCount(); ++c) cells << model.column(c).caption;
  QByteArray content = kByteOrderMark + lineOf(cells);
  for (int r = 0; r < model.rowCount(); ++r) {
    cells.clear();
    for (int c = 0; c < model.columnCount(); ++c) cells << model.column(c).read(r);
    content += lineOf(cells);
  }
  const bool written = replaceFile(file, content);
  if (!written) warn(parent, texts, texts.format("IDS_CANTWRITEFILE", fromQt(file)));
  return written;
}

bool importTable(RecordTableModel& model, const Texts& texts, QWidget* parent) {
  const QString name = QFileDialog::getOpenFileName(parent, texts("IDS_IMPORT_CSV"), {}, "CSV (*.csv *.txt)");
  if (name.isEmpty()) return false;
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) {
    warn(parent, texts, texts.format("IDS_CANTREADFILE", fromQt(name)));
    return false;
  }
  const auto rows = rowsOf(textOf(file.readAll(), texts.language().codepage()));
  const std::vector<int> columns = rows.empty() ? std::vector<int>() : matchColumns(model, rows.front());
  if (std::all_of(columns.begin(), columns.end(), [](int column) { return column < 0; })) {
    QStringList wanted;
    for (int c = 0; c < model.columnCount(); ++c) wanted << model.column(c).caption;
    warn(parent, texts, texts.format("IDS_CSV_NO_COLUMNS", fromQt(name), fromQt(wanted.join(", "))));
    return false;
  }
  const bool asks = model.canInsert() && model.rowCount() > 0;
  const Placement placement = asks ? askPlacement(texts, parent) : Placement::Add;
  if (placement == Placement::Cancel) return false;
  model.beginBulkChange();
  if (placement == Placement::Replace) model.clear();
  Import import(model, columns, texts);
  for (std::size_t r = 1; r < rows.size(); ++r) import.take(rows[r], static_cast<int>(r) + 1);
  model.endBulkChange();
  tellResult(import.count(), texts, parent);
  return true;
}

}  // namespace ui
