#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QSpinBox>

#include "base/printf.h"
#include "folders/month_page.h"
#include "folders/month_texts.h"
#include "ui/chart_view.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/record_list.h"
#include "ui/dialogs/report_place.h"
#include "ui/file_line.h"
#include "ui/results/result_dialog.h"
#include "ui/results/results.h"
#include "ui/scroll_page.h"

namespace ui {

namespace {

constexpr int kMonths = 12;
constexpr int kFirstYear = 1980;
constexpr int kLastYear = 2100;

// The page of a month: chosen, looked at, saved.
class MonthDialog : public ResultDialog {
 public:
  MonthDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_MONTH", "monthPage", parent),
        month_(named(new QComboBox, "month")),
        year_(named(new QSpinBox, "year")),
        preview_(new QVBoxLayout),
        saved_(new FileLine(document, texts)) {
    for (int month = 1; month <= kMonths; ++month) month_->addItem(toQt(document.valueFormatter().monthName(month)));
    month_->setAccessibleName(texts("IDS_MONTH"));
    year_->setRange(kFirstYear, kLastYear);
    year_->setAccessibleName(texts("IDS_YEAR"));
    // The last month that is complete.
    const auto proposed = folders::monthFrom(document.app().surroundings().clock.now(), -1).parts();
    month_->setCurrentIndex(proposed.month - 1);
    year_->setValue(proposed.year);
    auto* label = new QLabel(texts("IDS_MONTH"));
    label->setBuddy(month_);
    auto* choices = new QHBoxLayout;
    for (QWidget* choice : std::initializer_list<QWidget*>{label, month_, year_}) choices->addWidget(choice);
    choices->addStretch();
    body()->addWidget(makeHint(texts("IDS_MONTH_HINT")));
    body()->addLayout(choices);
    auto* holder = new QWidget;
    holder->setLayout(preview_);
    auto* scroll = named(new ScrollPage(holder), "preview");
    body()->addWidget(scroll, 1);
    body()->addWidget(saved_);
    connect(month_, &QComboBox::currentIndexChanged, this, [this] { read(); });
    connect(year_, &QSpinBox::valueChanged, this, [this] { read(); });
    auto* open = addSideButton("IDS_MONTH_OPEN", "open");
    auto* save = addSideButton("IDS_MONTH_SAVE", "save");
    connect(open, &QPushButton::clicked, this, [this] { openPage(); });
    connect(save, &QPushButton::clicked, this, [this] { savePage(); });
  }

  bool read() {
    return work([this] {
      const folders::FolderServices& services = document().folderServices();
      const folders::MonthFigures figures = folders::monthFigures(day(), services, document().valueFormatter());
      fill(folders::MonthTexts(figures, services, document().valueFormatter()));
    });
  }

  [[nodiscard]] const std::filesystem::path& written() const { return written_; }

 private:
  [[nodiscard]] base::DateTime day() const {
    return *base::DateTime::fromParts(year_->value(), month_->currentIndex() + 1, 1);
  }

  void fill(const folders::MonthTexts& page) {
    while (QLayoutItem* item = preview_->takeAt(0)) {
      delete item->widget();
      delete item;
    }
    preview_->addWidget(heading(toQt(page.title()), 1.4));
    preview_->addWidget(comparison(page));
    preview_->addWidget(
        chart(toQt(page.heading("IDS_MONTH_DAYS") + ": " + page.measure()), page.days(), ChartShape::Columns));
    for (const folders::MonthTexts::Dearest& dearest : page.dearest()) {
      preview_->addWidget(chart(toQt(dearest.title), dearest.bars, ChartShape::Bars));
    }
    for (const folders::MonthTexts::Sentence& sentence : page.sentences()) {
      preview_->addWidget(heading(toQt(sentence.title), 1.1));
      preview_->addWidget(makeHint(toQt(sentence.text)));
    }
    preview_->addStretch();
  }

  static QLabel* heading(const QString& text, double size) {
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * size);
    label->setFont(font);
    return label;
  }

  static QTableWidget* comparison(const folders::MonthTexts& page) {
    QStringList captions;
    for (const std::string& caption : page.comparisonHeadings()) captions << toQt(caption);
    const auto rows = page.comparison();
    QTableWidget* table = makeRecordList(captions, toQt(page.title()), "comparison");
    table->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < table->rowCount(); ++row) {
      const auto& cells = rows[static_cast<std::size_t>(row)];
      for (int column = 0; column < captions.size(); ++column) {
        auto* item = new QTableWidgetItem(toQt(cells[static_cast<std::size_t>(column)]));
        if (column > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        table->setItem(row, column, item);
      }
    }
    for (int column = 1; column < captions.size(); ++column) {
      table->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setFixedHeight(table->horizontalHeader()->sizeHint().height() +
                          table->rowCount() * table->verticalHeader()->defaultSectionSize() + 2 * table->frameWidth());
    return table;
  }

  ChartView* chart(const QString& title, const std::vector<folders::Bar>& bars, ChartShape shape) {
    std::vector<ChartView::Bar> drawn;
    for (const folders::Bar& bar : bars) drawn.push_back({toQt(bar.label), toQt(bar.valueText), bar.value});
    const auto count = static_cast<int>(drawn.size());
    auto* view = new ChartView(texts());
    view->show({title, std::move(drawn), texts()("IDS_EMPTY_CHART"), shape});
    const int line = view->fontMetrics().lineSpacing();
    view->setMinimumHeight(shape == ChartShape::Columns ? line * 12 : line * 3 + count * (line + line / 2));
    return view;
  }

  void openPage() {
    const std::filesystem::path page = reportFile(document(), "month.html");
    if (!write(page)) return;
    handOver(document(), texts(), this, page, ReportUse::Open);
  }

  void savePage() {
    const std::filesystem::path file = askFile(document().app().config(), texts(), this,
                                               {"saveMonth",
                                                "IDS_MONTH_SAVE",
                                                {"PDF (*.pdf)", "HTML (*.html)"},
                                                toQt(folders::monthTitle(day(), document().valueFormatter()))});
    if (!file.empty() && write(file)) saved_->say(file);
  }

  bool write(const std::filesystem::path& file) {
    bool done = false;
    work([&] {
      const auto write = file.extension() == ".pdf" ? folders::writeMonthPdf : folders::writeMonthPage;
      done = write(day(), document().folderServices(), document().valueFormatter(), file);
    });
    if (done) written_ = file;
    return done;
  }

  QComboBox* month_;
  QSpinBox* year_;
  QVBoxLayout* preview_;
  FileLine* saved_;
  std::filesystem::path written_;
};

}  // namespace

std::filesystem::path showMonth(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  MonthDialog dialog(document, texts, parent);
  dialog.execReading([&dialog] { return dialog.read(); });
  return dialog.written();
}

}  // namespace ui
