#include "album.h"

#include <QApplication>
#include <QPainter>
#include <set>
#include <stdexcept>

#include "ui/dialogs/form_dialog.h"

namespace pictures {

namespace {

constexpr int kTitleMargin = 6;

// Offscreen windows have no frame; their titles are texts like the others.
QImage withTitle(const QImage& picture, const QString& title, qreal ratio) {
  const QFontMetrics metrics(QApplication::font());
  const int height = metrics.height() + 2 * kTitleMargin;
  QImage framed(picture.width(), picture.height() + static_cast<int>(height * ratio), QImage::Format_RGB32);
  framed.setDevicePixelRatio(ratio);
  framed.fill(QColor(0x3b, 0x5b, 0x8c));
  QPainter painter(&framed);
  painter.setPen(Qt::white);
  painter.drawText(QPoint(kTitleMargin, kTitleMargin + metrics.ascent()), title);
  painter.drawImage(QPoint(0, height), picture);
  return framed;
}

}  // namespace

void Album::take(QWidget& window, const std::string& name) {
  window.show();
  while (window.property(ui::kStillReading).toBool()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  for (int i = 0; i < 3; ++i) QApplication::processEvents();  // layouts, then what they move
  const QPixmap picture = window.grab();
  const std::string file = folder_ + '/' + prefix_ + '-' + name + ".png";
  if (!withTitle(picture.toImage(), window.windowTitle(), picture.devicePixelRatio())
           .save(QString::fromStdString(file))) {
    throw std::runtime_error("cannot write " + file);
  }
  ++taken_;
}

void Album::takeModal(const std::string& name, const std::function<void()>& open, const Step& prepare) {
  meetModals(open, {[&](QDialog& dialog) {
               if (prepare) prepare(dialog);
               take(dialog, name);
               // Not close(): a changed form would ask.
               dialog.done(QDialog::Rejected);
             }});
}

void Album::meetModals(const std::function<void()>& open, std::vector<Step> steps) {
  QTimer timer;
  std::size_t met = 0;
  std::set<QWidget*> seen;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    const bool ready = dialog != nullptr && dialog->isVisible() && !dialog->property(ui::kStillReading).toBool();
    if (!ready || !seen.insert(dialog).second) return;
    if (met == steps.size()) {
      qWarning("A window that nobody expected: %s", qPrintable(dialog->objectName()));
      dialog->done(QDialog::Rejected);
      return;
    }
    // Not from the timer's own slot: it would not fire for a window that the step opens.
    QTimer::singleShot(0, dialog, [dialog, step = steps[met++]] { step(*dialog); });
  });
  timer.start(5);
  open();
  if (met != steps.size()) qWarning("%zu windows did not open", steps.size() - met);
}

}  // namespace pictures
