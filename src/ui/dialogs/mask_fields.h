#pragma once

#include <QCheckBox>
#include <QSpinBox>

#include "security/session.h"
#include "ui/texts.h"

namespace ui {

// What a user, or the members of a group, do not see of numbers and names.
class MaskFields : public QWidget {
 public:
  MaskFields(const security::Mask& mask, const Texts& texts, QWidget* parent = nullptr);

  [[nodiscard]] security::Mask mask() const;

 private:
  QSpinBox* digits_;
  QCheckBox* privateNames_;
};

}  // namespace ui
