#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QScrollArea>
#include <QToolButton>
#include <utility>
#include <vector>

#include "foundation/config_manager.h"
#include "ui/chart_view.h"
#include "ui/texts.h"

namespace ui {

// A chart under the choices of what it shows: which figure, as what, how many bars, whether beside the period before;
// and a menu to take it elsewhere.
class ChartPane : public QWidget {
  Q_OBJECT

 public:
  // `config` keeps the folder that pictures are saved in and the page set-up.
  ChartPane(const Texts& texts, foundation::ConfigManager& config, QWidget* parent = nullptr);

  // The figures that can be drawn, by the kinds of their columns. The figure chosen before stays chosen where it is
  // among them, else `standard` is.
  void offerMeasures(const std::vector<std::pair<int, QString>>& measures, int standard);
  [[nodiscard]] int measure() const;  // kind; 0 when there is none
  // On an axis of time columns, a line or bars; else bars or columns. The shape chosen before for the like stays.
  void offerShapes(bool onAxis);
  [[nodiscard]] ChartShape shape() const;
  // Where the filter has a period that another one came before.
  void offerComparison(bool sensible);
  [[nodiscard]] bool compares() const { return compare_->isVisibleTo(this) && compare_->isChecked(); }
  // In the chosen shape, with as many bars as are wanted. `all`: rows that could have a bar.
  void show(Chart chart, std::int64_t all);
  [[nodiscard]] ChartView& chart() const { return *chart_; }

 signals:
  void choiceChanged();
  void saved(const QString& file);

 private:
  void buildMenu();
  void copyPicture();
  void savePicture();
  void print();
  [[nodiscard]] QImage picture() const;
  [[nodiscard]] bool drawSvg(QIODevice& device) const;
  void tellHowMany();

  const Texts& texts_;
  foundation::ConfigManager& config_;
  QComboBox* measures_;
  QComboBox* shapes_;
  QComboBox* numbers_;
  QCheckBox* compare_;
  QLabel* shown_;
  QToolButton* menu_;
  QScrollArea* scroll_;
  ChartView* chart_;
  std::int64_t all_ = 0;
  int preferred_ = 0;  // the kind that the operator chose last
  bool onAxis_ = false;
  ChartShape axisShape_ = ChartShape::Columns;
  ChartShape plainShape_ = ChartShape::Bars;
};

}  // namespace ui
