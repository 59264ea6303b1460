#include "ui/chart_drawing.h"

#include <algorithm>
#include <numeric>

namespace ui {

namespace {

constexpr int kMargin = 10;
constexpr int kGap = 4;
constexpr int kLargestBar = 26;
constexpr int kWidestColumn = 80;
constexpr int kShortestBarSpace = 140;  // what the bars keep when captions are long
constexpr int kPoint = 3;               // radius
constexpr int kFewColumns = 12;         // each has its caption, cut where it must be

// Fractions of a pixel are part of a text's width.
int widthOf(const QFontMetrics& metrics, const QString& text) {
  return metrics.horizontalAdvance(text) + 2;
}

double largestValue(const std::vector<ChartBar>& bars) {
  double largest = 0;
  for (const ChartBar& bar : bars) largest = std::max({largest, bar.value, bar.before.value_or(0)});
  return largest;
}

// Of the names of weekdays and months, where they are too long.
constexpr int kBriefLetters = 3;

// "08:00 - 08:59" is told by its hour.
QString shortCaption(const QFontMetrics& metrics, const QString& caption, int width) {
  return widthOf(metrics, caption) <= width ? caption : caption.section(':', 0, 0);
}

class Drawing {
 public:
  Drawing(QPainter& painter, const Chart& chart, const QPalette& colours, const QFont& font)
      : painter_(painter), chart_(chart), colours_(colours), font_(font), metrics_(font, painter.device()) {}

  std::vector<QRect> draw(const QRect& page) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.fillRect(page, colours_.base());
    const int top = drawHead(page.adjusted(kMargin, kMargin, -kMargin, -kMargin));
    area_ = QRect(QPoint(page.left() + kMargin, top), QPoint(page.right() - kMargin, page.bottom() - kMargin));
    if (chart_.bars.empty()) {
      painter_.setPen(colours_.color(QPalette::PlaceholderText));
      painter_.drawText(area_, Qt::AlignCenter | Qt::TextWordWrap, chart_.emptyText);
      return {};
    }
    largest_ = largestValue(chart_.bars);
    return chart_.shape == ChartShape::Bars ? drawBars() : drawUpright();
  }

 private:
  // Title and names of the periods; where the bars begin.
  int drawHead(const QRect& place) {
    QFont bold = font_;
    bold.setBold(true);
    const QFontMetrics heading(bold, painter_.device());
    painter_.setFont(bold);
    painter_.setPen(colours_.color(QPalette::Text));
    painter_.drawText(place.left(), place.top() + heading.ascent(),
                      heading.elidedText(chart_.title, Qt::ElideRight, place.width()));
    painter_.setFont(font_);
    int top = place.top() + heading.height() + kGap;
    if (!chart_.before.isEmpty()) top += drawLegend(QPoint(place.left(), top)) + kGap;
    return top + kGap;
  }

  int drawLegend(const QPoint& place) {
    const int side = metrics_.ascent() - 2;
    int x = place.x();
    for (const bool before : {false, true}) {
      const QRect mark(x, place.y() + 2, side, side);
      before ? outline(mark) : bar(mark);
      const QString& name = before ? chart_.before : chart_.now;
      const int width = widthOf(metrics_, name);
      text(QRect(mark.right() + kGap, place.y(), width, metrics_.height()), Qt::AlignLeft | Qt::AlignVCenter, name);
      x = mark.right() + kGap + width + 4 * kGap;
    }
    return metrics_.height();
  }

  void text(const QRect& place, int alignment, const QString& shown) {
    painter_.setPen(colours_.color(QPalette::Text));
    painter_.drawText(place, alignment, shown);
  }
  void bar(const QRect& place) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(colours_.color(QPalette::Highlight));
    painter_.drawRoundedRect(place, 2, 2);
  }
  void outline(const QRect& place) {
    painter_.setPen(QPen(colours_.color(QPalette::Text), 1));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRect(place.adjusted(0, 0, -1, -1));
  }
  [[nodiscard]] int lengthOf(double value, int space) const {
    return largest_ > 0 ? static_cast<int>(space * std::max(0.0, value) / largest_) : 0;
  }

  // As many as fit with a readable line each.
  std::vector<QRect> drawBars() {
    const int line = chartLineHeight(metrics_);
    const int most = static_cast<int>(chart_.bars.size());
    const int shown = chart_.wanted > 0 ? std::min(chart_.wanted, most) : std::clamp(area_.height() / line, 1, most);
    const int step = std::clamp(area_.height() / shown, line, std::max(line, kLargestBar + kGap));
    int captionWidth = 0;
    int valueWidth = 0;
    largest_ = 0;
    for (int i = 0; i < shown; ++i) {
      const ChartBar& bar = chart_.bars[static_cast<std::size_t>(i)];
      captionWidth = std::max(captionWidth, widthOf(metrics_, bar.caption));
      valueWidth = std::max(valueWidth, widthOf(metrics_, bar.valueText));
      largest_ = std::max({largest_, bar.value, bar.before.value_or(0)});
    }
    captionWidth = std::min(captionWidth,
                            std::max(area_.width() * 2 / 5, area_.width() - valueWidth - kShortestBarSpace - kGap * 4));
    const int left = area_.left() + captionWidth + kGap * 2;
    const int space = std::max(10, area_.right() - left - valueWidth - kGap * 2);
    std::vector<QRect> places;
    for (int i = 0; i < shown; ++i) {
      const ChartBar& bar = chart_.bars[static_cast<std::size_t>(i)];
      const QRect row(area_.left(), area_.top() + i * step, area_.width(), step - kGap);
      text(QRect(row.left(), row.top(), captionWidth, row.height()), Qt::AlignRight | Qt::AlignVCenter,
           metrics_.elidedText(bar.caption, Qt::ElideRight, captionWidth));
      const int length = drawRow(bar, QRect(left, row.top(), space, row.height()));
      places.emplace_back(left, row.top(), std::max(length, 2), row.height());
      text(QRect(left + length + kGap, row.top(), valueWidth + kGap, row.height()), Qt::AlignLeft | Qt::AlignVCenter,
           bar.valueText);
    }
    return places;
  }

  // A bar, and under it that of the period before; the longer one's length.
  int drawRow(const ChartBar& shown, const QRect& place) {
    const int length = lengthOf(shown.value, place.width());
    const auto part = [&](int top, int width, int height) {
      return QRect(place.left(), place.top() + top, std::max(width, 2), height);
    };
    if (!shown.before) {
      bar(part(0, length, place.height()));
      return length;
    }
    const int upper = place.height() * 3 / 5;
    const int before = lengthOf(*shown.before, place.width());
    bar(part(0, length, upper));
    outline(part(upper + 1, before, place.height() - upper - 1));
    return std::max(length, before);
  }

  // Columns or a line.
  std::vector<QRect> drawUpright() {
    const int line = chartLineHeight(metrics_);
    const int space = std::max(10, area_.height() - 2 * line);
    const int bottom = area_.bottom() - line;
    const bool columns = chart_.shape == ChartShape::Columns;
    const std::vector<QRect> places = columns ? drawColumns(bottom, space) : drawLine(bottom, space);
    drawCaptions(places, bottom + kGap);
    drawValues(places);
    return places;
  }

  // The part of the axis that belongs to a bar, as wide as it is drawn at most.
  [[nodiscard]] QRect slot(std::size_t index, int bottom, int height) const {
    const int count = static_cast<int>(chart_.bars.size());
    const int at = static_cast<int>(index);
    const int left = area_.left() + area_.width() * at / count;
    const int width = area_.width() * (at + 1) / count - area_.width() * at / count;
    return {left, bottom - height, std::clamp(width - kGap, 2, kWidestColumn), height};
  }

  std::vector<QRect> drawColumns(int bottom, int space) {
    std::vector<QRect> places;
    for (std::size_t i = 0; i < chart_.bars.size(); ++i) {
      const ChartBar& shown = chart_.bars[i];
      QRect place = slot(i, bottom, std::max(1, lengthOf(shown.value, space)));
      places.push_back(place);
      if (shown.before) {
        QRect before = slot(i, bottom, std::max(1, lengthOf(*shown.before, space)));
        const int half = std::max(1, place.width() / 2);
        before.setWidth(half);
        place.setLeft(place.left() + half);
        outline(before);
        places.back() = places.back().united(before);
      }
      bar(place);
      own_.push_back(place);
    }
    return places;
  }

  std::vector<QRect> drawLine(int bottom, int space) {
    std::vector<QPoint> now;
    std::vector<QPoint> before;
    std::vector<QRect> places;
    for (std::size_t i = 0; i < chart_.bars.size(); ++i) {
      const ChartBar& shown = chart_.bars[i];
      const auto point = [&](double value) {
        return QPoint(slot(i, bottom, 1).center().x(), bottom - lengthOf(value, space));
      };
      now.push_back(point(shown.value));
      if (shown.before) before.push_back(point(*shown.before));
      places.emplace_back(now.back() - QPoint(kPoint, kPoint), QSize(2 * kPoint + 1, 2 * kPoint + 1));
    }
    painter_.setPen(QPen(colours_.color(QPalette::Mid), 1));
    painter_.drawLine(area_.left(), bottom, area_.right(), bottom);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(colours_.color(QPalette::Text), 1, Qt::DashLine));
    painter_.drawPolyline(before.data(), static_cast<int>(before.size()));
    painter_.setPen(QPen(colours_.color(QPalette::Highlight), 2));
    painter_.drawPolyline(now.data(), static_cast<int>(now.size()));
    painter_.setBrush(colours_.color(QPalette::Highlight));
    for (const QPoint& point : now) painter_.drawEllipse(point, kPoint, kPoint);
    return places;
  }

  // Every caption, or every second, third ... where they are wider than their part of the axis.
  void drawCaptions(const std::vector<QRect>& places, int top) {
    const int pitch = places.size() > 1 ? places[1].center().x() - places[0].center().x() : area_.width();
    int widest = 0;
    for (const ChartBar& bar : chart_.bars) {
      widest = std::max(widest, widthOf(metrics_, shortCaption(metrics_, bar.caption, pitch)));
    }
    const int needed = widest + kGap;
    const int step = places.size() <= kFewColumns ? 1 : std::max(1, (needed + pitch - 1) / std::max(1, pitch));
    const int room = std::max(1, pitch * step - kGap);
    int free = area_.left() - kMargin;
    const bool brief = step == 1 && widest > room;
    for (std::size_t i = 0; i < places.size(); i += static_cast<std::size_t>(step)) {
      const QString full = shortCaption(metrics_, chart_.bars[i].caption, room);
      const QString caption = metrics_.elidedText(brief ? full.left(kBriefLetters) : full, Qt::ElideRight, room);
      const int width = widthOf(metrics_, caption);
      QRect place(places[i].center().x() - width / 2, top, width, metrics_.height());
      // Those at the ends may reach into the margins, and not beyond.
      place.moveLeft(std::min(std::max(place.left(), area_.left() - kMargin), area_.right() + kMargin - width));
      if (place.left() < free) continue;
      text(place, Qt::AlignHCenter | Qt::AlignTop, caption);
      free = place.right() + kGap;
    }
  }

  // The tallest first: a value wider than its column is shown where its neighbours leave room.
  void drawValues(const std::vector<QRect>& places) {
    std::vector<std::size_t> order(places.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order,
                             [&](auto left, auto right) { return chart_.bars[left].value > chart_.bars[right].value; });
    std::vector<QRect> taken = places;
    for (const std::size_t i : order) {
      const ChartBar& bar = chart_.bars[i];
      if (bar.value <= 0) continue;
      const int width = widthOf(metrics_, bar.valueText);
      // Over the bar itself: where the period before reaches higher, a value there would be taken for its.
      const QRect& own = own_.empty() ? places[i] : own_[i];
      QRect place(own.center().x() - width / 2, own.top() - metrics_.height() - 1, width, metrics_.height());
      place.moveLeft(std::clamp(place.left(), area_.left(), std::max(area_.left(), area_.right() - width)));
      if (std::ranges::any_of(taken, [&](const QRect& other) { return other.intersects(place); })) continue;
      // The lines go on under it.
      if (chart_.shape == ChartShape::Line) painter_.fillRect(place, colours_.base());
      text(place, Qt::AlignCenter, bar.valueText);
      taken.push_back(place.adjusted(-kGap, 0, kGap, 0));
    }
  }

  QPainter& painter_;
  const Chart& chart_;
  const QPalette& colours_;
  const QFont& font_;
  QFontMetrics metrics_;
  QRect area_;              // under the title
  std::vector<QRect> own_;  // of columns: without that of the period before
  double largest_ = 0;
};

}  // namespace

int chartLineHeight(const QFontMetrics& metrics) {
  return metrics.height() + kGap;
}

std::vector<QRect> drawChart(QPainter& painter, const QRect& page, const Chart& chart, const QPalette& colours,
                             const QFont& font) {
  return Drawing(painter, chart, colours, font).draw(page);
}

}  // namespace ui
