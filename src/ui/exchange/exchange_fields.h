#pragma once

#include <QFormLayout>
#include <QJsonObject>
#include <QWidget>
#include <span>
#include <vector>

#include "ui/texts.h"

namespace ui {

enum class ExchangeFieldKind {
  Text,
  Number,
  Secret,
  List,    // texts with commas between
  Choice,  // one of `choices`
  Steps,   // of a login: a line each, what is waited for and what is sent, with a bar between
};

// A value of the site file that the page edits.
struct ExchangeField {
  const char* key;  // as in the site file
  const char* captionKey;
  ExchangeFieldKind kind = ExchangeFieldKind::Text;
  const char* example = "";  // shown while there is no value
  const char* choices = "";  // "value=IDS_TEXT" or "value" with commas between; the first one is written as no value
};

// A way for lines to arrive.
struct ExchangeTransport {
  const char* key;
  const char* captionKey;
  std::span<const ExchangeField> fields;
};

[[nodiscard]] std::span<const ExchangeTransport> exchangeTransports();
// What a source needs to read its lines.
[[nodiscard]] std::span<const ExchangeField> readingFields();
// The alarm when no line comes.
[[nodiscard]] std::span<const ExchangeField> quietFields();

// A form over a table of fields.
class FieldForm : public QWidget {
  Q_OBJECT

 public:
  FieldForm(std::span<const ExchangeField> fields, const Texts& texts);

  // A value of another form than the field's (numbers of trunks in a table) is shown as "..." and stays.
  void setValues(const QJsonObject& values);
  // `over` with what the fields have; empty ones take their key away.
  [[nodiscard]] QJsonObject values(QJsonObject over) const;
  void setFieldVisible(const char* key, bool visible);

 signals:
  void edited();

 private:
  struct Row {
    const ExchangeField* field;
    QWidget* editor;
  };
  QWidget* makeEditor(const ExchangeField& field, const Texts& texts);

  QFormLayout* form_;
  std::vector<Row> rows_;
};

}  // namespace ui
