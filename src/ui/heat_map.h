#pragma once

#include <array>
#include <optional>

#include "ui/painted_view.h"

namespace ui {

// The calls of a weekday and hour: weekdays are numbered from 1, Sunday, as the calls' own statistic does.
struct WeekHour {
  int weekday = 1;
  int hour = 0;
};

// Calls by weekday and hour as a table of cells, the darker the more; each cell tells its number. The arrow keys go
// through the cells, Enter or a click asks for the calls of one. Where cells are narrow their numbers are smaller, or
// thousands ("12k"), and only every third hour has its label.
class HeatMap : public PaintedView {
  Q_OBJECT

 public:
  using Counts = std::array<std::array<std::int64_t, 24>, 8>;  // by weekday; the first row is unused

  // Without calls at first.
  explicit HeatMap(std::array<QString, 8> weekdays, QWidget* parent = nullptr);
  void setCounts(const Counts& counts);
  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QString markedText() const override;

 signals:
  void chosen(int weekday, int hour);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] QRect cell(int row, int hour) const;  // row 0: Monday
  [[nodiscard]] std::optional<WeekHour> cellAt(const QPoint& place) const;
  // How the numbers are written in cells of the present width.
  struct Figures {
    QFont font;
    bool thousands;
  };
  [[nodiscard]] Figures figures() const;
  [[nodiscard]] static QString figure(std::int64_t count, bool thousands);
  void drawHours(QPainter& painter) const;
  void drawCell(QPainter& painter, int row, int hour, const Figures& figures) const;
  [[nodiscard]] std::int64_t count(int row, int hour) const;
  [[nodiscard]] QString tell(const WeekHour& cell) const;

  Counts counts_{};
  std::array<QString, 8> weekdays_;
  std::int64_t largest_ = 0;
  int headWidth_;
  int row_ = 0;
  int hour_ = 8;
};

}  // namespace ui
