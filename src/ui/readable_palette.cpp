#include "ui/readable_palette.h"

#include <QApplication>
#include <QEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace ui {

namespace {

constexpr QPalette::ColorGroup kGroups[] = {QPalette::Active, QPalette::Inactive};
// Texts and what they are on.
constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> kTexts[] = {
    {QPalette::PlaceholderText, QPalette::Base},
    {QPalette::Link, QPalette::Base},
    {QPalette::Link, QPalette::Window},
    {QPalette::LinkVisited, QPalette::Base},
};
constexpr double kStep = 0.05;

// A part of the light of a colour's channel, linear.
double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double brightness(const QColor& colour) {
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

// The colour as it is seen on a ground that it lets through.
QColor seen(const QColor& colour, const QColor& ground) {
  QColor whole = colour;
  whole.setAlpha(255);
  return mixed(ground, whole, static_cast<double>(colour.alphaF()));
}

// As far towards black or white as is needed.
QColor readable(const QColor& colour, const QColor& other) {
  const QColor end = brightness(other) > 0.18 ? Qt::black : Qt::white;
  QColor changed = colour;
  for (double part = kStep; part < 1 && contrastOf(changed, other) < kReadable; part += kStep) {
    changed = mixed(colour, end, part);
  }
  return changed;
}

class PaletteKeeper : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp) apply();
    return QObject::eventFilter(watched, event);
  }
  static void apply() {
    const QPalette wanted = readablePalette(QApplication::palette());
    if (wanted != QApplication::palette()) QApplication::setPalette(wanted);
  }
};

}  // namespace

QColor mixed(const QColor& from, const QColor& to, double part) {
  const auto channel = [part](float a, float b) { return static_cast<float>(a + (b - a) * part); };
  return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                          channel(from.blueF(), to.blueF()));
}

double contrastOf(const QColor& text, const QColor& ground) {
  const double one = brightness(seen(text, ground)) + 0.05;
  const double other = brightness(ground) + 0.05;
  return std::max(one, other) / std::min(one, other);
}

QPalette readablePalette(QPalette palette) {
  for (const auto group : kGroups) {
    const auto colour = [&](QPalette::ColorRole role) { return palette.color(group, role); };
    for (const auto& [text, ground] : kTexts) {
      if (contrastOf(colour(text), colour(ground)) >= kReadable) continue;
      palette.setColor(group, text, readable(seen(colour(text), colour(ground)), colour(ground)));
    }
    // Of selected rows the ground gives way: their text is often white already.
    if (contrastOf(colour(QPalette::HighlightedText), colour(QPalette::Highlight)) < kReadable) {
      palette.setColor(group, QPalette::Highlight,
                       readable(colour(QPalette::Highlight), colour(QPalette::HighlightedText)));
    }
  }
  return palette;
}

void keepPaletteReadable() {
  qApp->installEventFilter(new PaletteKeeper(qApp));
  PaletteKeeper::apply();
}

}  // namespace ui
