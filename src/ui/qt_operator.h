#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <memory>

#include "platform/operator.h"
#include "ui/texts.h"

namespace ui {

// The operator as the window system reaches them: message boxes, sounds and a progress window.
class QtOperator : public platform::Operator {
 public:
  // The window that message boxes belong to; null before there is one.
  void setParent(QWidget* parent) { parent_ = parent; }
  // For the captions of buttons; English until then. Must outlive this object.
  void setLanguage(const foundation::LanguageFile& language) { language_ = &language; }

  void messageBox(std::string_view text) override;
  bool askYesNo(std::string_view text, Unattended unattended) override;
  void beep(int frequency, int duration) override;
  void beep(Sound sound) override;
  void progressBegin(std::string_view title, std::string_view text, std::int64_t range) override;
  bool progressStep(std::int64_t position) override;
  void progressEnd() override;
  bool progressPulse() override { return progressStep(position_); }
  [[nodiscard]] bool busy() const override { return working_; }

 private:
  // Messages and progress belong to the dialog that is open, else to the main window.
  [[nodiscard]] QWidget* owner() const;
  [[nodiscard]] QString caption(const char* key, const char* english) const;

  QPointer<QWidget> parent_;
  const foundation::LanguageFile* language_ = nullptr;
  void openProgress();

  // The work under way. Its window opens when it lasts.
  bool working_ = false;
  QString title_;
  QString text_;
  std::int64_t range_ = 0;  // 0: unknown
  std::int64_t position_ = 0;
  QElapsedTimer sinceBegin_;
  QElapsedTimer sinceEvents_;
  std::unique_ptr<QProgressDialog> progress_;
};

}  // namespace ui
