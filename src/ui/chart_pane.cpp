#include "ui/chart_pane.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QMenu>
#include <QPrintDialog>
#include <QPrinter>
#include <QStyle>
#include <QVBoxLayout>
#include <fstream>

#include "folders/bar_chart.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/page_setup.h"

namespace ui {

namespace {

constexpr int kNumbers[] = {10, 20, 50};
constexpr int kAll = 400;            // more cannot be read
constexpr int kPictureScale = 2;     // for papers and large screens
constexpr QSize kPicture(960, 540);  // before that

// Taken elsewhere, a chart is on paper.
QPalette paper() {
  return QApplication::style()->standardPalette();
}

}  // namespace

ChartPane::ChartPane(const Texts& texts, foundation::ConfigManager& config, QWidget* parent)
    : QWidget(parent),
      texts_(texts),
      config_(config),
      measures_(named(new QComboBox, "chartMeasure")),
      numbers_(named(new QComboBox, "chartNumber")),
      shown_(named(new QLabel, "chartShown")),
      menu_(named(new QToolButton, "chartMenu")),
      scroll_(new QScrollArea),
      chart_(new ChartView) {
  measures_->setAccessibleName(texts("IDS_CHART_MEASURE"));
  measures_->setToolTip(texts("IDS_CHART_MEASURE"));
  numbers_->setAccessibleName(texts("IDS_CHART_NUMBER"));
  numbers_->setToolTip(texts("IDS_CHART_NUMBER"));
  numbers_->addItem(texts("IDS_CHART_FITTING"), 0);
  for (const int number : kNumbers) numbers_->addItem(QString::number(number), number);
  numbers_->addItem(texts("IDS_CHART_ALL"), kAll);
  buildMenu();
  auto* choices = new QHBoxLayout;
  choices->setContentsMargins(8, 4, 8, 0);
  choices->addWidget(measures_);
  choices->addWidget(numbers_);
  choices->addWidget(shown_);
  choices->addStretch();
  choices->addWidget(menu_);
  scroll_->setWidget(chart_);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setFocusPolicy(Qt::NoFocus);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(choices);
  layout->addWidget(scroll_, 1);
  connect(measures_, &QComboBox::activated, this, [this] {
    preferred_ = measure();
    emit choiceChanged();
  });
  connect(numbers_, &QComboBox::activated, this, &ChartPane::choiceChanged);
  connect(chart_, &ChartView::drawn, this, &ChartPane::tellHowMany);
}

void ChartPane::buildMenu() {
  menu_->setText(texts_("IDS_CHART_MENU"));
  menu_->setAccessibleName(texts_("IDS_CHART_MENU"));
  menu_->setPopupMode(QToolButton::InstantPopup);
  menu_->setFocusPolicy(Qt::TabFocus);
  auto* menu = new QMenu(menu_);
  menu->addAction(texts_("IDS_CHART_COPY"), this, &ChartPane::copyPicture)->setObjectName("chartCopy");
  menu->addAction(texts_("IDS_CHART_SAVE"), this, &ChartPane::savePicture)->setObjectName("chartSave");
  menu->addAction(texts_("IDS_ACTION_PRINT"), this, &ChartPane::print)->setObjectName("chartPrint");
  menu_->setMenu(menu);
}

void ChartPane::offerMeasures(const std::vector<std::pair<int, QString>>& measures, int standard) {
  measures_->clear();
  for (const auto& [kind, caption] : measures) measures_->addItem(caption, kind);
  for (const int kind : {preferred_, standard}) {
    const int index = measures_->findData(kind);
    if (index < 0) continue;
    measures_->setCurrentIndex(index);
    return;
  }
}

int ChartPane::measure() const {
  return measures_->currentData().toInt();
}

int ChartPane::wanted() const {
  return numbers_->currentData().toInt();
}

void ChartPane::show(const QString& title, std::vector<ChartView::Bar> bars, const QString& emptyText,
                     ChartView::Shape shape, std::int64_t all) {
  all_ = all;
  // An axis is whole or it is none.
  numbers_->setVisible(shape == ChartView::Shape::Lines);
  chart_->setBars(title, std::move(bars), emptyText, shape);
  chart_->wantBars(shape == ChartView::Shape::Lines ? wanted() : 0);
  tellHowMany();
}

// The lines that have a bar, which a larger window may change.
void ChartPane::tellHowMany() {
  const bool lines = chart_->shape() == ChartView::Shape::Lines && !chart_->bars().empty();
  shown_->setText(lines ? texts_.format("IDS_CHART_SHOWN", chart_->shownBars(), all_) : QString());
}

QImage ChartPane::picture() const {
  QImage image(kPicture * kPictureScale, QImage::Format_RGB32);
  image.setDevicePixelRatio(kPictureScale);
  QPainter painter(&image);
  chart_->draw(painter, QRect(QPoint(0, 0), kPicture), paper());
  return image;
}

void ChartPane::copyPicture() {
  QApplication::clipboard()->setImage(picture());
}

void ChartPane::savePicture() {
  const QString name = toQt(
      askFile(config_, texts_, this, {"saveChart", "IDS_CHART_SAVE", {"PNG (*.png)", "SVG (*.svg)"}, chart_->title()})
          .string());
  if (name.isEmpty()) return;
  bool written = false;
  if (name.endsWith(".svg", Qt::CaseInsensitive)) {
    std::vector<folders::Bar> bars;
    for (const ChartView::Bar& bar : chart_->bars()) {
      bars.push_back({fromQt(bar.caption), bar.value, fromQt(bar.valueText)});
    }
    std::ofstream file(fromQt(name), std::ios::binary);
    file << folders::barChartSvg(bars, fromQt(chart_->title()));
    written = file.flush().good();
  } else {
    written = picture().save(name, "PNG");
  }
  if (!written) return warn(this, texts_, texts_.format("IDS_CANTWRITEFILE", fromQt(name)));
  emit saved(name);
}

void ChartPane::print() {
  QPrinter printer(QPrinter::HighResolution);
  usePageSetup(printer, config_);
  printer.setDocName(chart_->title());
  QPrintDialog dialog(&printer, this);
  if (dialog.exec() != QDialog::Accepted) return;
  keepPageSetup(printer, config_);
  QPainter painter(&printer);
  const QSizeF sheet = printer.pageRect(QPrinter::DevicePixel).size();
  const qreal scale = sheet.width() / kPicture.width();
  painter.scale(scale, scale);
  chart_->draw(painter, QRect(0, 0, kPicture.width(), static_cast<int>(sheet.height() / scale)), paper());
}

}  // namespace ui
