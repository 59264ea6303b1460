#pragma once

#include <QWidget>
#include <functional>
#include <set>
#include <vector>

#include "ui/record_table.h"

namespace ui {

// The current record of a table as a form under it, for records with more fields than fit side by side.
class RecordForm : public QWidget {
  Q_OBJECT

 public:
  // Whether a column means something for a row, by its other values.
  using Applies = std::function<bool(int row, int column)>;

  // The table keeps the `listed` columns in sight and hides the others. An empty `applies`: all columns mean something.
  // The table must outlive the form.
  RecordForm(RecordTable& table, const std::set<int>& listed, Applies applies, QWidget* parent = nullptr);

 private:
  struct Field {
    QWidget* editor = nullptr;
    std::function<void(int row)> show;  // -1: no record
  };
  Field makeField(int column);
  Field makeSwitch(int column);
  Field makeChoice(int column);
  Field makeLine(int column);
  void write(int column, const QString& text);
  void showRecord();

  RecordTable& table_;
  Applies applies_;
  std::vector<Field> fields_;  // one a column
  bool showing_ = false;
};

}  // namespace ui
