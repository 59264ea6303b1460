#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/texts.h"

namespace ui {

// Gives a widget the name by which tests and the style find it.
template <typename Widget>
Widget* named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

// A window's property that is true while it is open and what it shows is still read.
inline constexpr const char* kStillReading = "reading";

// Makes the buttons the last of their dialog for Tab, and so gives the first field the focus: dialogs are
// filled after their buttons are made.
void focusButtonsLast(QDialogButtonBox& buttons);

// A dialog with a body and, under it, the buttons "ok" and "cancel". Derived dialogs fill the body in their
// constructor.
class FormDialog : public QDialog {
 public:
  FormDialog(const Texts& texts, const char* captionKey, const char* name, QWidget* parent);

  void setVisible(bool visible) override;

 protected:
  [[nodiscard]] const Texts& texts() const { return texts_; }
  [[nodiscard]] QVBoxLayout* body() { return body_; }
  [[nodiscard]] QPushButton* okButton() { return buttons_->button(QDialogButtonBox::Ok); }
  [[nodiscard]] QPushButton* cancelButton() { return buttons_->button(QDialogButtonBox::Cancel); }
  // A further button, at the other end of their row.
  QPushButton* addButton(const char* key, const char* name);
  QCheckBox* makeCheckBox(const char* key, const char* name);
  // A sentence under a field or list, over the whole width.
  QLabel* makeHint(const QString& text);
  // For those who lack the right to change: the editors only show, OK cannot be pressed, and a sentence says why.
  void allowOnlyLooking();

 private:
  [[nodiscard]] QSize roomySize() const;
  void scrollWhatIsTooLarge();

  const Texts& texts_;
  QVBoxLayout* body_;
  QDialogButtonBox* buttons_;
  bool prepared_ = false;
};

}  // namespace ui
