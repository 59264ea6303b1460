#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>

#include "platform/operator.h"
#include "ui/texts.h"

namespace ui {

// The operator as the window system reaches them: message boxes, sounds and a progress window.
class QtOperator : public platform::Operator {
 public:
  // The window that message boxes belong to; null before there is one.
  void setParent(QWidget* parent) { parent_ = parent; }
  // Caption of the progress window's button.
  void setCancelText(const QString& text) { cancelText_ = text; }

  void messageBox(std::string_view text) override;
  bool askYesNo(std::string_view text, Unattended unattended) override;
  void beep(int frequency, int duration) override;
  void beep(Sound sound) override;
  void progressBegin(std::string_view title, std::string_view text, std::int64_t range) override;
  bool progressStep(std::int64_t position) override;
  void progressEnd() override;

 private:
  QPointer<QWidget> parent_;
  QString cancelText_ = "Cancel";
  std::unique_ptr<QProgressDialog> progress_;
  QElapsedTimer sinceEvents_;
  std::int64_t range_ = 0;
};

}  // namespace ui
