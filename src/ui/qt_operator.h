#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
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
  bool progressPulse() override { return working_ ? progressStep(position_) : waitPulse(); }
  void waitIsOver() override;
  [[nodiscard]] bool busy() const override { return working_ || inPulse_; }

 private:
  // Messages and progress belong to the dialog that is open, else to the main window.
  [[nodiscard]] QWidget* owner();
  [[nodiscard]] QString caption(const char* key, const char* english) const;

  QPointer<QWidget> parent_;
  const foundation::LanguageFile* language_ = nullptr;
  void openProgress();
  std::unique_ptr<QProgressDialog> makeProgress(const char* name, const QString& title, const QString& text,
                                                const QString& end, int steps);
  // Hears the window's events: all of them only while a window that can end the work takes the clicks.
  void hearEvents(const QProgressDialog* window);
  bool waitPulse();
  void endWait();

  // The work under way. Its window opens when it lasts.
  bool working_ = false;
  QString title_;
  QString text_;
  std::int64_t range_ = 0;  // 0: unknown
  std::int64_t position_ = 0;
  QElapsedTimer sinceBegin_;
  QElapsedTimer sinceEvents_;
  std::unique_ptr<QProgressDialog> progress_;

  // The wait for a database outside of such work, whose end is not told.
  bool inPulse_ = false;
  QElapsedTimer sinceWait_;
  QElapsedTimer sincePulse_;
  std::unique_ptr<QProgressDialog> wait_;
  QTimer* waitOver_ = nullptr;  // of wait_
};

}  // namespace ui
