#include "ui/qt_operator.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace ui {

namespace {

// Of the progress window; ranges of calls may be larger than a window's 32 bits.
constexpr int kProgressSteps = 1000;
// The window is drawn and heard at least this often, in milliseconds.
constexpr qint64 kEventInterval = 40;

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
  range_ = range > 0 ? range : 1;
  progress_ =
      std::make_unique<QProgressDialog>(toQt(text), caption("IDS_CANCEL", "Cancel"), 0, kProgressSteps, owner());
  progress_->setObjectName("progress");
  progress_->setWindowTitle(toQt(title));
  progress_->setWindowModality(Qt::ApplicationModal);
  progress_->setMinimumDuration(300);
  progress_->setAutoClose(false);
  progress_->setAutoReset(false);
  sinceEvents_.start();
}

bool QtOperator::progressStep(std::int64_t position) {
  if (!progress_) return true;
  if (sinceEvents_.elapsed() >= kEventInterval) {
    progress_->setValue(static_cast<int>(std::min(position, range_) * kProgressSteps / range_));
    // Until the window stands in front, a click would reach what is behind it.
    QApplication::processEvents(progress_->isVisible() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    sinceEvents_.restart();
  }
  return !progress_->wasCanceled();
}

void QtOperator::progressEnd() {
  progress_.reset();
}

}  // namespace ui
