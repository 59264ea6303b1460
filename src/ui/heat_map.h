#pragma once

#include <array>
#include <optional>

#include "ui/dialogs/form_dialog.h"
#include "ui/painted_view.h"

namespace server {
class CServerDoc;
}

namespace ui {

// The calls of a weekday and hour: weekdays are numbered from 1, Sunday, as the calls' own statistic does.
struct WeekHour {
  int weekday = 1;
  int hour = 0;
};

// Calls by weekday and hour as a table of cells, the darker the more; each cell tells its number. The arrow keys go
// through the cells, Enter or a click asks for the calls of one.
class HeatMap : public PaintedView {
  Q_OBJECT

 public:
  using Counts = std::array<std::array<std::int64_t, 24>, 8>;  // by weekday; the first row is unused

  HeatMap(const Counts& counts, std::array<QString, 8> weekdays, QWidget* parent = nullptr);
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
  void drawCell(QPainter& painter, int row, int hour) const;
  [[nodiscard]] std::int64_t count(int row, int hour) const;
  [[nodiscard]] QString tell(const WeekHour& cell) const;

  Counts counts_;
  std::array<QString, 8> weekdays_;
  std::int64_t largest_ = 0;
  int headWidth_;
  int row_ = 0;
  int hour_ = 8;
};

// Shows the filtered calls of the week's hours; the chosen cell, or nothing. Throws jet::Error.
std::optional<WeekHour> showWeek(server::CServerDoc& document, const Texts& texts, QWidget* parent);

}  // namespace ui
