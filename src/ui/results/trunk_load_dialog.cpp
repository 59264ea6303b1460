#include <QComboBox>
#include <QHBoxLayout>
#include <QHash>
#include <QListWidget>
#include <QTabWidget>
#include <algorithm>

#include "analysis/trunk_load.h"
#include "analysis/trunk_verdict.h"
#include "base/printf.h"
#include "ui/chart_view.h"
#include "ui/contact_calls.h"
#include "ui/results/result_dialog.h"
#include "ui/results/result_table.h"
#include "ui/results/results.h"

namespace ui {

namespace {

using analysis::HourLoad;
using folders::CellKind;
using folders::PlainTable;

constexpr double kOfHundred = 100;
constexpr std::size_t kMostColumns = 400;  // more columns cannot be told apart
constexpr int kHoursOfDay = 24;
constexpr int kTrunkRole = Qt::UserRole;

// How many lines are busy at the same time, and how many the office needs.
class TrunkLoadDialog : public ResultDialog {
 public:
  TrunkLoadDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_TRUNK_LOAD", "trunkLoad", parent),
        trunks_(named(new QListWidget, "trunks")),
        per_(named(new QComboBox, "per")),
        verdict_(makeHint({})),
        chart_(new ChartView(texts)),
        lineChart_(new ChartView(texts)),
        hours_(new ResultTable(document, texts, "hours")),
        lines_(new ResultTable(document, texts, "lines")),
        use_(new ResultTable(document, texts, "trunkUse")),
        busy_(new ResultTable(document, texts, "allBusy")) {
    verdict_->setObjectName("verdict");
    verdict_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = verdict_->font();
    bold.setBold(true);
    verdict_->setFont(bold);
    trunks_->setAccessibleName(texts("IDS_TRUNKS"));
    trunks_->setMinimumWidth(fontMetrics().averageCharWidth() * 28);
    per_->addItems({texts("IDS_LOAD_PER_DAY"), texts("IDS_LOAD_PER_HOUR")});
    per_->setAccessibleName(texts("IDS_LOAD_HOURS"));
    auto* side = new QVBoxLayout;
    auto* label = new QLabel(texts("IDS_TRUNKS"));
    label->setBuddy(trunks_);
    side->addWidget(label);
    side->addWidget(trunks_, 1);
    side->addWidget(makeHint(texts("IDS_LOAD_TRUNKS_HINT")));
    auto* tabs = named(new QTabWidget, "tabs");
    tabs->addTab(withChart(chart_, hours_, per_), texts("IDS_LOAD_HOURS"));
    tabs->addTab(withChart(lineChart_, lines_, nullptr), texts("IDS_LOAD_LINES"));
    tabs->addTab(use_, texts("IDS_TRUNKS"));
    tabs->addTab(busy_, texts("IDS_LOAD_ALL_BUSY"));
    auto* centre = new QHBoxLayout;
    centre->addLayout(side, 1);
    centre->addWidget(tabs, 5);
    body()->addWidget(makeHint(texts("IDS_LOAD_HINT")));
    body()->addWidget(verdict_);
    body()->addLayout(centre, 1);
    connect(per_, &QComboBox::currentIndexChanged, this, [this] { showHours(); });
    connect(hours_, &ResultTable::activated, this, [this](int row) { showCallsOfHour(row); });
    connect(use_, &ResultTable::activated, this, [this](int row) { showCallsOfTrunk(row); });
  }

  bool start() {
    if (!measure()) return false;
    QHash<QString, QString> labels;
    for (const auto& trunk : document().smdr().parties().trunks) labels.insert(toQt(trunk.trunk), toQt(trunk.label));
    for (const analysis::TrunkUse& use : load_.trunks) {
      const QString number = toQt(use.trunk);
      const QString name = labels.value(number);
      auto* item =
          new QListWidgetItem(name.isEmpty() || name == "-" ? number : QString("%1 (%2)").arg(number, name), trunks_);
      item->setData(kTrunkRole, number);
      item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
      item->setCheckState(Qt::Unchecked);
    }
    connect(trunks_, &QListWidget::itemChanged, this, [this] { measure(); });
    return true;
  }

 private:
  static QWidget* withChart(ChartView* chart, ResultTable* table, QWidget* choice) {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    if (choice != nullptr) layout->addWidget(choice, 0, Qt::AlignLeft);
    chart->setMinimumHeight(chart->fontMetrics().lineSpacing() * 9);
    layout->addWidget(chart, 2);
    layout->addWidget(table, 3);
    return page;
  }

  [[nodiscard]] std::string text(const char* key) const { return texts().language().Translate(key); }

  [[nodiscard]] std::vector<std::string> chosen() const {
    std::vector<std::string> chosen;
    for (int row = 0; row < trunks_->count(); ++row) {
      const QListWidgetItem* item = trunks_->item(row);
      if (item->checkState() == Qt::Checked) chosen.push_back(fromQt(item->data(kTrunkRole).toString()));
    }
    return chosen;
  }

  bool measure() {
    const bool measured = work([&] {
      load_ = analysis::trunkLoad(document().database(), analysis::activeScope(document().callFilter()),
                                  document().smdr().parties(), chosen(),
                                  analysis::lookOf(document().app().surroundings().person));
    });
    if (!measured) return false;
    sentence_ = analysis::trunkVerdict(load_, texts().language());
    verdict_->setText(toQt(sentence_));
    showHours();
    showLines();
    showUse();
    showBusy();
    return true;
  }

  [[nodiscard]] PlainTable titled(const char* key, std::vector<folders::PlainColumn> columns) const {
    return {.title = text("IDS_LOAD_TITLE") + ": " + text(key),
            .columns = std::move(columns),
            .rows = {},
            .remarks = {sentence_}};
  }

  void showHours() {
    const bool days = per_->currentIndex() == 0;
    shownHours_ = days ? analysis::busiestHours(load_) : load_.hours;
    PlainTable table =
        titled(days ? "IDS_LOAD_PER_DAY" : "IDS_LOAD_PER_HOUR", {{text("IDS_LOAD_HOUR")},
                                                                 {text("IDS_LOAD_ERLANG"), CellKind::Number, 2},
                                                                 {text("IDS_LOAD_PEAK"), CellKind::Number}});
    for (const HourLoad& hour : shownHours_) {
      table.rows.push_back({{hourText(hour), hour.erlang, static_cast<double>(hour.peak)}});
    }
    hours_->setTable(std::move(table));
    days ? drawDays() : drawHoursOfDay();
  }

  static std::string hourText(const HourLoad& hour) {
    return hour.start.format("%d.%m.%Y ") + base::format("%02d:00", hour.start.parts().hour);
  }

  void drawDays() {
    std::vector<ChartView::Bar> bars;
    const std::size_t first = shownHours_.size() > kMostColumns ? shownHours_.size() - kMostColumns : 0;
    for (std::size_t i = first; i < shownHours_.size(); ++i) {
      bars.push_back({toQt(shownHours_[i].start.format("%d.%m")), QString::number(shownHours_[i].peak),
                      static_cast<double>(shownHours_[i].peak)});
    }
    chart_->show({texts()("IDS_LOAD_CHART_DAYS"), std::move(bars), texts()("IDS_EMPTY_CHART"), ChartShape::Columns});
  }

  void drawHoursOfDay() {
    std::array<int, kHoursOfDay> most{};
    for (const HourLoad& hour : shownHours_) {
      int& peak = most[static_cast<std::size_t>(hour.start.parts().hour)];
      peak = std::max(peak, hour.peak);
    }
    std::vector<ChartView::Bar> bars;
    for (int hour = 0; hour < kHoursOfDay; ++hour) {
      const int peak = most[static_cast<std::size_t>(hour)];
      bars.push_back({QString::number(hour), QString::number(peak), static_cast<double>(peak)});
    }
    chart_->show({texts()("IDS_LOAD_CHART_HOURS"), std::move(bars), texts()("IDS_EMPTY_CHART"), ChartShape::Columns});
  }

  void showLines() {
    const folders::Separators separators = folders::separatorsOf(texts().language());
    const folders::PlainColumn shortShare{{}, CellKind::Number, 1, "%"};
    double all = 0;
    for (const std::int64_t seconds : load_.secondsAt) all += static_cast<double>(seconds);
    PlainTable table = titled("IDS_LOAD_LINES", {{text("IDS_LOAD_PEAK"), CellKind::Number},
                                                 {text("IDS_LOAD_TIME"), CellKind::Duration},
                                                 {text("IDS_LOAD_SHARE"), CellKind::Number, 3, "%"}});
    std::vector<ChartView::Bar> bars;
    for (std::size_t lines = 0; lines < load_.secondsAt.size(); ++lines) {
      const auto seconds = static_cast<double>(load_.secondsAt[lines]);
      const double share = all > 0 ? seconds / all * kOfHundred : 0;
      table.rows.push_back({{static_cast<double>(lines), seconds, share}});
      bars.push_back({QString::number(lines), toQt(folders::textOf(shortShare, share, separators)), share});
    }
    lines_->setTable(std::move(table));
    lineChart_->show(
        {texts()("IDS_LOAD_CHART_LINES"), std::move(bars), texts()("IDS_EMPTY_CHART"), ChartShape::Columns});
  }

  void showUse() {
    PlainTable table = titled("IDS_TRUNKS", {{text("IDS_TRUNK")},
                                             {text("IDS_CALLS"), CellKind::Number},
                                             {text("IDS_LOAD_TIME"), CellKind::Duration},
                                             {text("IDS_LOAD_PEAK"), CellKind::Number}});
    for (const analysis::TrunkUse& use : load_.trunks) {
      table.rows.push_back({{use.trunk, static_cast<double>(use.calls), static_cast<double>(use.seconds),
                             static_cast<double>(use.peak)}});
    }
    use_->setTable(std::move(table));
  }

  void showBusy() {
    PlainTable table = titled("IDS_LOAD_ALL_BUSY", {{text("IDS_FROM"), CellKind::DateTime},
                                                    {text("IDS_TO"), CellKind::DateTime},
                                                    {text("IDS_DURATION"), CellKind::Duration}});
    for (const analysis::LineUse& time : load_.allBusy) {
      table.rows.push_back({{time.start, time.end,
                             static_cast<double>(time.end.secondsSinceDayZero() - time.start.secondsSinceDayZero())}});
    }
    busy_->setTable(std::move(table));
  }

  // Those of the shown trunks that began then.
  void showCallsOfHour(int row) {
    constexpr std::int64_t kHour = 3600;
    const HourLoad& hour = shownHours_[static_cast<std::size_t>(row)];
    std::string criteria =
        base::format("TotalTime > 0 And [DateTime] >= %s And [DateTime] < %s", hour.start.format(jet::kDateTimeLiteral),
                     hour.start.plusSeconds(kHour).format(jet::kDateTimeLiteral));
    std::string trunks;
    for (const std::string& trunk : chosen()) trunks += (trunks.empty() ? "" : " Or ") + trunkIs(trunk);
    if (!trunks.empty()) criteria += " And (" + trunks + ")";
    leadTo({criteria, hourText(hour)});
  }

  void showCallsOfTrunk(int row) {
    const std::string& trunk = load_.trunks[static_cast<std::size_t>(row)].trunk;
    leadTo({trunkIs(trunk), text("IDS_TRUNK") + ": " + trunk});
  }

  static std::string trunkIs(const std::string& trunk) { return "Trunk = " + textLiteral(trunk); }

  QListWidget* trunks_;
  QComboBox* per_;
  QLabel* verdict_;
  ChartView* chart_;
  ChartView* lineChart_;
  ResultTable* hours_;
  ResultTable* lines_;
  ResultTable* use_;
  ResultTable* busy_;
  analysis::TrunkLoad load_;
  std::string sentence_;
  std::vector<HourLoad> shownHours_;
};

}  // namespace

std::optional<folders::Narrowing> showTrunkLoad(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  TrunkLoadDialog dialog(document, texts, parent);
  return dialog.execReading([&dialog] { return dialog.start(); }) == QDialog::Accepted ? dialog.calls() : std::nullopt;
}

}  // namespace ui
