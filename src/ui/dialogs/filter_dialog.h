#pragma once

#include <QGridLayout>
#include <QLineEdit>
#include <QSpinBox>

#include "filter/settings.h"
#include "server/server_doc.h"
#include "ui/dialogs/choice_box.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/period_edit.h"

namespace ui {

// The call filter of the workstation, all of it. Touching a value switches it, and the filter, on.
class CCallsFilterDlg : public FormDialog {
 public:
  CCallsFilterDlg(server::CServerDoc& document, const Texts& texts, QWidget* parent);

  // OnFilter: checks the fields and writes the settings.
  void accept() override;

 private:
  using Settings = filter::FilterSettings;

  // A switch with its value; the switch is null for values that act when they are not empty.
  struct Row {
    QCheckBox* on = nullptr;
    ChoiceBox* list = nullptr;  // or
    QLineEdit* line = nullptr;
    std::int32_t Settings::*flag = nullptr;
    std::string Settings::*text = nullptr;
    // These act only when they are 1, the others on any non-zero value.
    bool exactlyOne = false;

    [[nodiscard]] QString value() const { return list != nullptr ? list->value() : line->text().trimmed(); }
    void show(const QString& value, const QString& shown) const;
  };

  void buildParties(QGridLayout& grid);
  void buildDestinations(QGridLayout& grid);
  QWidget* buildTime();
  // Without a source the value is typed only.
  Row& addRow(QGridLayout& grid, const char* key, const char* name, Row row, ChoiceBox::Source source = {});
  Row& row(std::string Settings::*text);
  [[nodiscard]] std::vector<ChoiceBox::Choice> read(const std::function<std::vector<std::string>()>& values);

  void show(const Settings& settings, const filter::DisplayNames& names, const filter::DialogPeriod& period);
  [[nodiscard]] Settings gather();
  void clearFields();
  void setMonth(void (*setMonth)(Settings&, base::DateTime));

  server::CServerDoc& document_;
  QCheckBox* onFilter_;
  QCheckBox* hidden_;
  QCheckBox* onIncoming_;
  QCheckBox* onOutgoing_;
  std::vector<Row> rows_;
  QCheckBox* onTrunk_ = nullptr;
  ChoiceBox* trunk_ = nullptr;
  QCheckBox* onPeriod_ = nullptr;
  PeriodEdit* period_ = nullptr;
  QCheckBox* onMinDuration_ = nullptr;
  QSpinBox* minDuration_ = nullptr;  // seconds
};

}  // namespace ui
