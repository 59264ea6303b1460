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
// Nor does a wait for a database that is over sooner. Pulses that are further apart belong to two of them.
constexpr qint64 kWaitPatience = 1000;
constexpr qint64 kBetweenPulses = 100;

}  // namespace

QWidget* QtOperator::owner() {
  endWait();
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
  endWait();
  working_ = true;
  title_ = toQt(title);
  text_ = toQt(text);
  range_ = std::max<std::int64_t>(range, 0);
  position_ = 0;
  sinceBegin_.start();
  sinceEvents_.start();
}

std::unique_ptr<QProgressDialog> QtOperator::makeProgress(const char* name, const QString& title, const QString& text,
                                                          const QString& end, int steps) {
  auto window = std::make_unique<QProgressDialog>(text, end, 0, steps, owner());
  window->setObjectName(name);
  window->setWindowTitle(title);
  window->setWindowModality(Qt::ApplicationModal);
  window->setAutoClose(false);
  window->setAutoReset(false);
  window->show();
  return window;
}

void QtOperator::openProgress() {
  progress_ = makeProgress("progress", title_, text_, caption("IDS_CANCEL", "Cancel"), range_ > 0 ? kProgressSteps : 0);
}

void QtOperator::hearEvents(const QProgressDialog* window) {
  const bool takesClicks = window != nullptr && !window->wasCanceled();
  QApplication::processEvents(takesClicks ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
  sinceEvents_.restart();
}

bool QtOperator::progressStep(std::int64_t position) {
  if (!working_) return true;
  position_ = position;
  if (sinceEvents_.elapsed() < kEventInterval) return !progress_ || !progress_->wasCanceled();
  if (!progress_ && sinceBegin_.elapsed() >= kPatience) openProgress();
  if (progress_ && range_ > 0) {
    progress_->setValue(static_cast<int>(std::min(position, range_) * kProgressSteps / range_));
  }
  hearEvents(progress_.get());
  return !progress_ || !progress_->wasCanceled();
}

bool QtOperator::waitPulse() {
  if (inPulse_) return true;
  const bool goesOn = sinceWait_.isValid() && sincePulse_.elapsed() <= kBetweenPulses;
  sincePulse_.start();
  if (!goesOn) {
    endWait();
    sinceWait_.start();
    sinceEvents_.start();
  }
  if (sinceWait_.elapsed() < kWaitPatience || sinceEvents_.elapsed() < kEventInterval) {
    return !wait_ || !wait_->wasCanceled();
  }
  inPulse_ = true;
  if (!wait_) {
    wait_ = makeProgress("waiting", QApplication::applicationDisplayName(),
                         caption("IDS_WAITING_DATABASE", "Waiting for the database..."),
                         caption("IDS_GIVE_UP", "Give up"), 0);
    // Events that are heard outside of a pulse mean that the wait is over.
    waitOver_ = new QTimer(wait_.get());
    QObject::connect(waitOver_, &QTimer::timeout, wait_.get(), [this] {
      if (!inPulse_) endWait();
    });
    waitOver_->start(static_cast<int>(kBetweenPulses));
  }
  hearEvents(wait_.get());
  inPulse_ = false;
  sincePulse_.start();
  return !wait_ || !wait_->wasCanceled();
}

void QtOperator::waitIsOver() {
  endWait();
  sinceWait_.invalidate();
}

// Later deleted: its own timer may be what calls. That must not call again, for this may be gone before the window is.
void QtOperator::endWait() {
  if (!wait_) return;
  waitOver_->stop();
  wait_->hide();
  wait_.release()->deleteLater();
}

void QtOperator::progressEnd() {
  progress_.reset();
  working_ = false;
}

}  // namespace ui
