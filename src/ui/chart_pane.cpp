#include "ui/chart_pane.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QMenu>
#include <QPrintDialog>
#include <QPrinter>
#include <QStyle>
#include <QSvgGenerator>
#include <QVBoxLayout>

#include "ui/dialogs/file_question.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/mnemonics.h"
#include "ui/flow_layout.h"
#include "ui/page_setup.h"

namespace ui {

namespace {

constexpr int kNumbers[] = {10, 20, 50};
constexpr int kAll = 400;            // more cannot be read
constexpr int kColumnsThatFit = 20;  // with their captions
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
      shapes_(named(new QComboBox, "chartShape")),
      numbers_(named(new QComboBox, "chartNumber")),
      compare_(named(new QCheckBox(texts("IDS_CHART_COMPARE")), "chartCompare")),
      shown_(named(new QLabel, "chartShown")),
      menu_(named(new QToolButton, "chartMenu")),
      scroll_(new QScrollArea),
      chart_(new ChartView(texts)) {
  measures_->setAccessibleName(texts("IDS_CHART_MEASURE"));
  measures_->setToolTip(texts("IDS_CHART_MEASURE"));
  shapes_->setAccessibleName(texts("IDS_CHART_SHAPE"));
  shapes_->setToolTip(texts("IDS_CHART_SHAPE"));
  numbers_->setAccessibleName(texts("IDS_CHART_NUMBER"));
  numbers_->setToolTip(texts("IDS_CHART_NUMBER"));
  compare_->setToolTip(texts("IDS_CHART_COMPARE_TIP"));
  numbers_->addItem(texts("IDS_CHART_FITTING"), 0);
  for (const int number : kNumbers) numbers_->addItem(QString::number(number), number);
  numbers_->addItem(texts("IDS_CHART_ALL"), kAll);
  buildMenu();
  auto* bar = new QWidget;
  auto* choices = new FlowLayout(bar);
  choices->setContentsMargins(8, 4, 8, 0);
  choices->setSpacing(8);
  // As high as the boxes, in whose middle their texts are.
  for (QWidget* text : {static_cast<QWidget*>(shown_), static_cast<QWidget*>(compare_)}) {
    text->setMinimumHeight(measures_->sizeHint().height());
  }
  choices->addWidget(measures_);
  choices->addWidget(shapes_);
  choices->addWidget(numbers_);
  choices->addWidget(shown_);
  choices->addWidget(compare_);
  choices->addWidget(menu_);
  scroll_->setWidget(chart_);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setFocusPolicy(Qt::NoFocus);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(bar);
  layout->addWidget(scroll_, 1);
  connect(measures_, &QComboBox::activated, this, [this] {
    preferred_ = measure();
    emit choiceChanged();
  });
  connect(shapes_, &QComboBox::activated, this, [this] {
    (onAxis_ ? axisShape_ : plainShape_) = shape();
    emit choiceChanged();
  });
  connect(numbers_, &QComboBox::activated, this, &ChartPane::choiceChanged);
  connect(compare_, &QCheckBox::clicked, this, &ChartPane::choiceChanged);
  connect(chart_, &ChartView::drawn, this, &ChartPane::tellHowMany);
}

void ChartPane::buildMenu() {
  menu_->setText(texts_("IDS_CHART_MENU") + "   ");  // room for the arrow
  menu_->setAccessibleName(texts_("IDS_CHART_MENU"));
  menu_->setToolTip(texts_("IDS_CHART_MENU_TIP"));
  menu_->setPopupMode(QToolButton::InstantPopup);
  menu_->setFocusPolicy(Qt::TabFocus);
  auto* menu = new QMenu(menu_);
  menu->addAction(texts_("IDS_CHART_COPY"), this, &ChartPane::copyPicture)->setObjectName("chartCopy");
  menu->addAction(texts_("IDS_CHART_SAVE"), this, &ChartPane::savePicture)->setObjectName("chartSave");
  menu->addAction(texts_("IDS_ACTION_PRINT"), this, &ChartPane::print)->setObjectName("chartPrint");
  assignMnemonics(menu->actions());
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

void ChartPane::offerShapes(bool onAxis) {
  onAxis_ = onAxis;
  shapes_->clear();
  const auto offer = [this](const char* key, ChartShape shape) {
    shapes_->addItem(texts_(key), static_cast<int>(shape));
  };
  offer("IDS_CHART_COLUMNS", ChartShape::Columns);
  if (onAxis) offer("IDS_CHART_LINE", ChartShape::Line);
  offer("IDS_CHART_BARS", ChartShape::Bars);
  shapes_->setCurrentIndex(shapes_->findData(static_cast<int>(onAxis ? axisShape_ : plainShape_)));
}

ChartShape ChartPane::shape() const {
  return static_cast<ChartShape>(shapes_->currentData().toInt());
}

void ChartPane::offerComparison(bool sensible) {
  compare_->setVisible(sensible);
}

void ChartPane::show(Chart chart, std::int64_t all) {
  all_ = all;
  chart.shape = shape();
  // An axis is whole or it is none.
  numbers_->setVisible(!onAxis_);
  const int number = numbers_->currentData().toInt();
  chart.wanted = chart.shape != ChartShape::Bars ? 0 : onAxis_ ? kAll : number;
  const auto most = static_cast<std::size_t>(number > 0 ? number : kColumnsThatFit);
  if (chart.shape == ChartShape::Columns && !onAxis_ && chart.bars.size() > most) chart.bars.resize(most);
  chart_->show(std::move(chart));
  tellHowMany();
}

// The bars that there is room for, which a larger window may change.
void ChartPane::tellHowMany() {
  const bool some = !onAxis_ && !chart_->bars().empty();
  shown_->setText(some ? texts_.format("IDS_CHART_SHOWN", chart_->shownBars(), all_) : QString());
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
  const QString name =
      toQt(askFile(config_, texts_, this,
                   {"saveChart", "IDS_CHART_SAVE", {"PNG (*.png)", "SVG (*.svg)"}, chart_->shown().title})
               .string());
  if (name.isEmpty()) return;
  const bool vectors = name.endsWith(".svg", Qt::CaseInsensitive);
  // Made in memory first: the writers of pictures do not notice a disk that becomes full.
  QBuffer made;
  const bool written = made.open(QIODevice::WriteOnly) && (vectors ? drawSvg(made) : picture().save(&made, "PNG")) &&
                       replaceFile(name, made.data());
  if (!written) return warn(this, texts_, texts_.format("IDS_CANTWRITEFILE", fromQt(name)));
  emit saved(name);
}

bool ChartPane::drawSvg(QIODevice& device) const {
  QSvgGenerator svg;
  svg.setOutputDevice(&device);
  svg.setTitle(chart_->shown().title);
  svg.setSize(kPicture);
  svg.setViewBox(QRect(QPoint(0, 0), kPicture));
  QPainter painter;
  if (!painter.begin(&svg)) return false;
  chart_->draw(painter, QRect(QPoint(0, 0), kPicture), paper());
  return painter.end();
}

void ChartPane::print() {
  QPrinter printer(QPrinter::HighResolution);
  usePageSetup(printer, config_);
  printer.setDocName(chart_->shown().title);
  QPrintDialog dialog(&printer, this);
  if (dialog.exec() != QDialog::Accepted) return;
  keepPageSetup(printer, config_);
  QPainter painter;
  if (!painter.begin(&printer)) return warn(this, texts_, texts_("IDS_PRINTER_REFUSES"));
  const QSizeF sheet = printer.pageRect(QPrinter::DevicePixel).size();
  const qreal scale = sheet.width() / kPicture.width();
  painter.scale(scale, scale);
  chart_->draw(painter, QRect(0, 0, kPicture.width(), static_cast<int>(sheet.height() / scale)), paper());
  if (painter.end() && !printer.outputFileName().isEmpty()) emit saved(printer.outputFileName());
}

}  // namespace ui
