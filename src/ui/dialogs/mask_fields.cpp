#include "ui/dialogs/mask_fields.h"

#include <QFormLayout>

#include "security/masks.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

MaskFields::MaskFields(const security::Mask& mask, const Texts& texts, QWidget* parent)
    : QWidget(parent),
      digits_(named(new QSpinBox, "maskDigits")),
      privateNames_(named(new QCheckBox(texts("IDS_MASK_PRIVATE_NAMES")), "maskPrivateNames")) {
  digits_->setRange(0, security::kMostMaskedDigits);
  digits_->setSpecialValueText(texts("IDS_MASK_NO_DIGITS"));
  digits_->setValue(mask.digits);
  digits_->setToolTip(texts("IDS_MASK_HINT"));
  privateNames_->setChecked(mask.privateNames);
  privateNames_->setToolTip(texts("IDS_MASK_HINT"));
  auto* form = new QFormLayout(this);
  form->setContentsMargins(0, 0, 0, 0);
  form->addRow(texts("IDS_MASK_DIGITS"), digits_);
  form->addRow(QString(), privateNames_);
}

security::Mask MaskFields::mask() const {
  return {.digits = digits_->value(), .privateNames = privateNames_->isChecked()};
}

}  // namespace ui
