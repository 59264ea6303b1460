#include "ui/qt_operator.h"

#include <QApplication>
#include <QMessageBox>

namespace ui {

namespace {

// Of the progress window; ranges of calls may be larger than a window's 32 bits.
constexpr int kProgressSteps = 1000;
// The window is drawn and heard at least this often, in milliseconds.
constexpr qint64 kEventInterval = 40;

}  // namespace

void QtOperator::messageBox(std::string_view text) {
  QMessageBox box(QMessageBox::Information, QApplication::applicationDisplayName(), toQt(text), QMessageBox::Ok,
                  parent_);
  box.exec();
}

bool QtOperator::askYesNo(std::string_view text, Unattended unattended) {
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), toQt(text),
                  QMessageBox::Yes | QMessageBox::No, parent_);
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
  progress_ = std::make_unique<QProgressDialog>(toQt(text), cancelText_, 0, kProgressSteps, parent_);
  progress_->setWindowTitle(toQt(title));
  progress_->setWindowModality(Qt::WindowModal);
  progress_->setMinimumDuration(300);
  progress_->setAutoClose(false);
  progress_->setAutoReset(false);
  sinceEvents_.start();
}

bool QtOperator::progressStep(std::int64_t position) {
  if (!progress_) return true;
  if (sinceEvents_.elapsed() >= kEventInterval) {
    progress_->setValue(static_cast<int>(std::min(position, range_) * kProgressSteps / range_));
    QApplication::processEvents();
    sinceEvents_.restart();
  }
  return !progress_->wasCanceled();
}

void QtOperator::progressEnd() {
  progress_.reset();
}

}  // namespace ui
