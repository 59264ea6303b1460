#include "ui/single_lines.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QRegularExpression>

namespace ui {

namespace {

void joinLines(QLineEdit& field) {
  static const QRegularExpression kBreaks("[\\r\\n\\x{2028}\\x{2029}]+");
  const QString text = field.text();
  if (!text.contains(kBreaks)) return;
  field.setText(text.split(kBreaks, Qt::SkipEmptyParts).join(' ').trimmed());
}

// Fields are met before they are shown for the first time.
class Joiner : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* watched, QEvent* event) override {
    constexpr const char* kMet = "singleLine";
    auto* field = event->type() == QEvent::Polish ? qobject_cast<QLineEdit*>(watched) : nullptr;
    if (field != nullptr && !field->property(kMet).toBool()) {
      field->setProperty(kMet, true);
      connect(field, &QLineEdit::textChanged, field, [field] { joinLines(*field); });
    }
    return QObject::eventFilter(watched, event);
  }
};

}  // namespace

void keepLinesSingle() {
  qApp->installEventFilter(new Joiner(qApp));
}

}  // namespace ui
