#pragma once

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

// A chart under the choices of what it shows: which figure, how many bars, and a menu to take it elsewhere.
class ChartPane : public QWidget {
  Q_OBJECT

 public:
  // `config` keeps the folder that pictures are saved in and the page set-up.
  ChartPane(const Texts& texts, foundation::ConfigManager& config, QWidget* parent = nullptr);

  // The figures that can be drawn, by the kinds of their columns. The figure chosen before stays chosen where it is
  // among them, else `standard` is.
  void offerMeasures(const std::vector<std::pair<int, QString>>& measures, int standard);
  [[nodiscard]] int measure() const;  // kind; 0 when there is none
  // Bars that are wanted; 0: as many as fit.
  [[nodiscard]] int wanted() const;
  // `all`: rows that could have a bar.
  void show(const QString& title, std::vector<ChartView::Bar> bars, const QString& emptyText, ChartView::Shape shape,
            std::int64_t all);
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
  void tellHowMany();

  const Texts& texts_;
  foundation::ConfigManager& config_;
  QComboBox* measures_;
  QComboBox* numbers_;
  QLabel* shown_;
  QToolButton* menu_;
  QScrollArea* scroll_;
  ChartView* chart_;
  std::int64_t all_ = 0;
  int preferred_ = 0;  // the kind that the operator chose last
};

}  // namespace ui
