#include "ui/qt_operator.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

namespace ui {

namespace {

// Of the progress window; ranges of calls may be larger than a window's 32 bits.
constexpr int kProgressSteps = 1000;
// The window is drawn and heard at least this often, in milliseconds.
constexpr qint64 kEventInterval = 20;
// Work that is done sooner than this, in milliseconds, shows no progress window.
constexpr qint64 kPatience = 300;

}  // namespace

QWidget* QtOperator::owner() const {
  QWidget* dialog = QApplication::activeModalWidget();
  return dialog != nullptr ? dialog : parent_.data();
}

QString QtOperator::caption(const char* key, const char* english) const {
  const QString text = language_ != nullptr ? toQt(language_->Translate(key)) : QString(key);
  return text == key ? QString(english) : text;
}

void QtOperator::messageBox(std::string_view text) {
  QMessageBox box(QMessageBox::Information, QApplication::applicationDisplayName(), toQt(text), QMessageBox::Ok,
                  owner());
  box.setObjectName("message");
  box.button(QMessageBox::Ok)->setText(caption("IDS_OK", "OK"));
  box.exec();
}

bool QtOperator::askYesNo(std::string_view text, Unattended unattended) {
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), toQt(text),
                  QMessageBox::Yes | QMessageBox::No, owner());
  box.setObjectName("question");
  box.button(QMessageBox::Yes)->setText(caption("IDS_YES", "Yes"));
  box.button(QMessageBox::No)->setText(caption("IDS_NO", "No"));
  // Enter gives the answer that loses nothing.
  box.setDefaultButton(unattended == Unattended::Yes ? QMessageBox::Yes : QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

void QtOperator::beep(int, int) {
  QApplication::beep();
}

void QtOperator::beep(Sound) {
  QApplication::beep();
}

void QtOperator::progressBegin(std::string_view title, std::string_view text, std::int64_t range) {
  working_ = true;
  title_ = toQt(title);
  text_ = toQt(text);
  range_ = std::max<std::int64_t>(range, 0);
  position_ = 0;
  sinceBegin_.start();
  sinceEvents_.start();
}

void QtOperator::openProgress() {
  progress_ = std::make_unique<QProgressDialog>(text_, caption("IDS_CANCEL", "Cancel"), 0,
                                                range_ > 0 ? kProgressSteps : 0, owner());
  progress_->setObjectName("progress");
  progress_->setWindowTitle(title_);
  progress_->setWindowModality(Qt::ApplicationModal);
  progress_->setAutoClose(false);
  progress_->setAutoReset(false);
  progress_->show();
}

bool QtOperator::progressStep(std::int64_t position) {
  if (!working_) return true;
  position_ = position;
  if (sinceEvents_.elapsed() < kEventInterval) return !progress_ || !progress_->wasCanceled();
  if (!progress_ && sinceBegin_.elapsed() >= kPatience) openProgress();
  if (progress_ && range_ > 0) {
    progress_->setValue(static_cast<int>(std::min(position, range_) * kProgressSteps / range_));
  }
  // Until the window is in front, a click would reach what is behind it.
  QApplication::processEvents(progress_ ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
  sinceEvents_.restart();
  return !progress_ || !progress_->wasCanceled();
}

void QtOperator::progressEnd() {
  progress_.reset();
  working_ = false;
}

}  // namespace ui
