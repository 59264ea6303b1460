#pragma once

#include <QWidget>
#include <vector>

namespace ui {

// A bar for each row of a statistic folder. Hours, weekdays and months keep the folder's order; the rest show the
// largest bars first. Painted in the palette's colours.
class ChartView : public QWidget {
  Q_OBJECT

 public:
  struct Bar {
    QString caption;
    QString valueText;
    double value = 0;
  };

  explicit ChartView(QWidget* parent = nullptr);
  void setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText);
  [[nodiscard]] const std::vector<Bar>& bars() const { return bars_; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {240, 160}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString title_;
  QString emptyText_;
  std::vector<Bar> bars_;
};

}  // namespace ui
