#pragma once

#include <QRadioButton>
#include <vector>

#include "ui/dialogs/form_dialog.h"

namespace ui {

// After two workstations edited the same fields of a record: which text each field keeps. Mine, unless the operator
// chooses the other one; closing the dialog keeps mine.
class ConflictDialog : public FormDialog {
 public:
  struct Field {
    QString label;
    QString mine;
    QString theirs;
  };
  // `news` is shown above the fields.
  ConflictDialog(const Texts& texts, const QString& news, const std::vector<Field>& fields, QWidget* parent);

  [[nodiscard]] bool takesTheirs(std::size_t field) const {
    return result() == Accepted && theirs_[field]->isChecked();
  }

 private:
  std::vector<QRadioButton*> theirs_;
};

}  // namespace ui
