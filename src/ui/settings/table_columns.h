#pragma once

#include <QLabel>
#include <QVBoxLayout>
#include <functional>
#include <vector>

#include "ui/record_table.h"
#include "ui/settings/settings_page.h"
#include "ui/texts.h"

namespace ui {

// The list that a table edits, and what is to be told of a change. `list` gives the records as they are now.
template <typename Record>
struct EditedList {
  std::function<std::vector<Record>&()> list;
  std::function<void()> touch;

  [[nodiscard]] Record& at(int row) const { return list()[static_cast<std::size_t>(row)]; }
};

// A column over one member: `show` and `take` turn it into text and back; `take` gives false for what it refuses.
template <typename Record, typename Member>
RecordColumn memberColumn(const QString& caption, const EditedList<Record>& records, Member Record::*member,
                          std::function<QString(const Member&)> show,
                          std::function<bool(const QString&, Member&)> take) {
  RecordColumn column;
  column.caption = caption;
  column.read = [records, member, show](int row) { return show(records.at(row).*member); };
  column.write = [records, member, take](int row, const QString& text) {
    if (!take(text.trimmed(), records.at(row).*member)) return false;
    records.touch();
    return true;
  };
  return column;
}

template <typename Record>
RecordColumn textColumn(const QString& caption, const EditedList<Record>& records, std::string Record::*member) {
  return memberColumn<Record, std::string>(
      caption, records, member, [](const std::string& value) { return toQt(value); },
      [](const QString& text, std::string& value) {
        value = fromQt(text);
        return true;
      });
}

// Whole numbers from 0.
template <typename Record>
RecordColumn numberColumn(const QString& caption, const EditedList<Record>& records, std::int32_t Record::*member,
                          const QString& hint) {
  RecordColumn column = memberColumn<Record, std::int32_t>(
      caption, records, member, [](const std::int32_t& value) { return QString::number(value); },
      [](const QString& text, std::int32_t& value) {
        bool valid = false;
        const int number = text.toInt(&valid);
        if (valid && number >= 0) value = number;
        return valid && number >= 0;
      });
  column.rightAligned = true;
  column.hint = hint;
  return column;
}

// The record's own number, which others refer to: the program gives it, an import may.
template <typename Record>
RecordColumn keyColumn(const QString& caption, const EditedList<Record>& records, std::int32_t Record::*member,
                       const QString& hint) {
  RecordColumn column = numberColumn(caption, records, member, hint);
  column.automatic = true;
  column.write = [records, member](int row, const QString& text) {
    bool valid = false;
    const int number = text.toInt(&valid);
    if (!valid || number <= 0) return false;
    for (const Record& other : records.list()) {
      if (&other != &records.at(row) && other.*member == number) return false;
    }
    records.at(row).*member = number;
    records.touch();
    return true;
  };
  return column;
}

// What brings back the records of now.
template <typename Record>
std::function<std::function<void()>()> keeperOf(const EditedList<Record>& records) {
  return [records]() -> std::function<void()> {
    return [records, before = records.list()] {
      records.list() = before;
      records.touch();
    };
  };
}

template <typename Record>
RecordTableModel::Rows editableRows(const EditedList<Record>& records, std::function<Record()> fresh) {
  RecordTableModel::Rows rows;
  rows.count = [records] { return static_cast<int>(records.list().size()); };
  rows.insert = [records, fresh](int at) {
    Record record = fresh();
    records.list().insert(records.list().begin() + at, std::move(record));
    records.touch();
  };
  rows.keep = keeperOf(records);
  rows.remove = [records](int at) {
    records.list().erase(records.list().begin() + at);
    records.touch();
  };
  return rows;
}

// A page with a table under a sentence that says what it is for.
inline SettingsPage tablePage(const QString& caption, RecordTableModel* model, const QString& name, const QString& hint,
                              const Texts& texts) {
  auto* table = new RecordTable(model, name, texts);
  table->view()->setAccessibleName(caption);
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  auto* label = new QLabel(hint);
  label->setWordWrap(true);
  layout->addWidget(label);
  layout->addWidget(table);
  SettingsPage made;
  made.caption = caption;
  made.widget = page;
  made.table = table;
  return made;
}

}  // namespace ui
