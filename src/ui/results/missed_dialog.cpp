#include <QHBoxLayout>
#include <QSpinBox>
#include <QTabWidget>

#include "analysis/answer_statistic.h"
#include "analysis/missed_calls.h"
#include "base/printf.h"
#include "folders/numbers.h"
#include "folders/view_log.h"
#include "ui/contact_calls.h"
#include "ui/results/result_dialog.h"
#include "ui/results/result_table.h"
#include "ui/results/results.h"

namespace ui {

namespace {

constexpr int kMostHours = 24 * 366;
constexpr int kUsualHours = 72;
constexpr double kPercent = 100;

using folders::CellKind;
using folders::PlainCell;
using folders::PlainTable;

PlainCell momentCell(const std::optional<base::DateTime>& moment) {
  return moment ? PlainCell(*moment) : PlainCell();
}

// Incoming calls that no one answered, and how extensions and hours answer theirs.
class MissedDialog : public ResultDialog {
 public:
  MissedDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_MISSED", "missed", parent),
        within_(named(new QSpinBox, "within")),
        working_(makeCheckBox("IDS_MISSED_WORKING", "workingHours")),
        openOnly_(makeCheckBox("IDS_MISSED_OPEN_ONLY", "openOnly")),
        summary_(makeHint({})),
        tabs_(named(new QTabWidget, "tabs")),
        list_(new ResultTable(document, texts, "missedList")),
        extensions_(new ResultTable(document, texts, "byExtension")),
        hours_(new ResultTable(document, texts, "byHour")) {
    summary_->setObjectName("summary");
    within_->setRange(1, kMostHours);
    within_->setValue(kUsualHours);
    within_->setSuffix(' ' + texts("IDS_HOURS"));
    working_->setToolTip(toQt(analysis::workingHours(document.app().config()).text()));
    auto* label = new QLabel(texts("IDS_MISSED_WITHIN"));
    label->setBuddy(within_);
    auto* choices = new QHBoxLayout;
    for (QWidget* choice : std::initializer_list<QWidget*>{label, within_, working_, openOnly_}) {
      choices->addWidget(choice);
    }
    choices->addStretch();
    tabs_->addTab(list_, texts("IDS_MISSED_LIST"));
    tabs_->addTab(extensions_, texts("IDS_MISSED_BY_EXTENSION"));
    tabs_->addTab(hours_, texts("IDS_MISSED_BY_HOUR"));
    body()->addWidget(makeHint(texts("IDS_MISSED_HINT")));
    body()->addLayout(choices);
    body()->addWidget(summary_);
    body()->addWidget(tabs_, 1);
    within_->setKeyboardTracking(false);
    connect(within_, &QSpinBox::valueChanged, this, [this] { search(); });
    connect(working_, &QCheckBox::toggled, this, [this] { search(); });
    connect(openOnly_, &QCheckBox::toggled, this, [this] { showList(); });
    connect(list_, &ResultTable::activated, this, [this](int row) { showCalls(row); });
    connect(extensions_, &ResultTable::activated, this, [this](int row) { showExtension(row); });
    connect(hours_, &ResultTable::activated, this, [this](int row) { showHour(row); });
  }

  bool search() {
    const exchange::PartyDefinitions& parties = document().smdr().parties();
    const bool found = work([&] {
      std::optional<analysis::WorkingHours> during;
      if (working_->isChecked()) during = analysis::workingHours(document().app().config());
      jet::Database& main = document().database();
      const analysis::CallScope scope = analysis::activeScope(document().callFilter());
      missed_ = analysis::findMissedCalls(main, scope, {parties.countryCode, parties.areaCode},
                                          {.withinHours = within_->value(), .during = during},
                                          analysis::lookOf(document().app().surroundings().person));
      byExtension_ = analysis::answerStatistic(main, scope, analysis::AnswersBy::Extension, during);
      byHour_ = analysis::answerStatistic(main, scope, analysis::AnswersBy::Hour, during);
    });
    if (!found) return false;
    summary_->setText(texts().format("IDS_MISSED_SUMMARY", missed_.rows.size(), missed_.calledBack,
                                     missed_.answeredLater, missed_.open));
    showList();
    extensions_->setTable(statistic(byExtension_, "IDS_MISSED_BY_EXTENSION"));
    hours_->setTable(statistic(byHour_, "IDS_MISSED_BY_HOUR"));
    return true;
  }

 private:
  [[nodiscard]] std::string text(const char* key) const { return texts().language().Translate(key); }

  // As the lists of calls show it.
  std::string shown(int kind, const std::string& value) {
    return document().valueFormatter().formatCell(kind, jet::Value(value));
  }
  std::string extensionName(const std::string& extension) { return shown(folders::KindExtension, extension); }

  std::string outcome(const analysis::MissedCall& call) const {
    if (call.open()) return text("IDS_MISSED_OPEN");
    return text(call.back ? "IDS_MISSED_BACK" : "IDS_MISSED_AGAIN");
  }

  void showList() {
    PlainTable table{.title = text("IDS_MONTH_MISSED"),
                     .columns = {{text("IDS_DATE_HOUR"), CellKind::DateTime},
                                 {text("IDS_NUMBER")},
                                 {text("IDS_NAME")},
                                 {text("IDS_EXTENSION")},
                                 {text("IDS_MISSED_OUTCOME")},
                                 {text("IDS_MISSED_BACK_AT"), CellKind::DateTime},
                                 {text("IDS_MISSED_BACK_BY")},
                                 {text("IDS_MISSED_BACK_AFTER"), CellKind::Duration},
                                 {text("IDS_MISSED_AGAIN_AT"), CellKind::DateTime},
                                 {text("IDS_RING"), CellKind::Number, 0, " s"}},
                     .rows = {},
                     .remarks = {fromQt(summary_->text())}};
    listed_.clear();
    for (std::size_t i = 0; i < missed_.rows.size(); ++i) {
      const analysis::MissedCall& call = missed_.rows[i];
      if (openOnly_->isChecked() && !call.open()) continue;
      listed_.push_back(i);
      table.rows.push_back({{momentCell(call.at), shown(folders::KindNumber, call.number),
                             shown(folders::KindName, call.name), extensionName(call.extension), outcome(call),
                             momentCell(call.back ? std::optional(call.back->at) : std::nullopt),
                             call.back ? PlainCell(extensionName(call.back->extension)) : PlainCell(),
                             call.back ? PlainCell(static_cast<double>(call.back->after)) : PlainCell(),
                             momentCell(call.again), static_cast<double>(call.ring)},
                            call.open()});
    }
    const bool first = list_->table().columns.empty();
    list_->setTable(std::move(table));
    if (first) list_->view()->sortByColumn(0, Qt::DescendingOrder);  // the newest are to be called back first
  }

  PlainTable statistic(const std::vector<analysis::AnswerGroup>& groups, const char* titleKey) {
    const bool hours = &groups == &byHour_;
    PlainTable table{.title = text("IDS_MONTH_MISSED") + ": " + text(titleKey),
                     .columns = {{text(hours ? "IDS_HOUR" : "IDS_EXTENSION")},
                                 {text("IDS_INCOMING"), CellKind::Number},
                                 {text("IDS_MISSED_MISSED"), CellKind::Number},
                                 {text("IDS_MISSED_ANSWERED"), CellKind::Number, 1, "%"},
                                 {text("IDS_RING_AVG"), CellKind::Number, 1, " s"},
                                 {text("IDS_MISSED_RING_90"), CellKind::Number, 0, " s"}},
                     .rows = {}};
    for (const analysis::AnswerGroup& group : groups) {
      table.rows.push_back(
          {{hours ? base::format("%02d:00 - %02d:59", group.hour, group.hour) : extensionName(group.extension),
            static_cast<double>(group.incoming), static_cast<double>(group.missed), group.answeredShare() * kPercent,
            group.ringAverage, static_cast<double>(group.ring90)}});
    }
    return table;
  }

  void showCalls(int row) {
    const analysis::MissedCall& call = missed_.rows[listed_[static_cast<std::size_t>(row)]];
    folders::Narrowing calls;
    if (work([&] { calls = callsWithNumberOf(document(), call.id, shown(folders::KindNumber, call.number)); }))
      leadTo(std::move(calls));
  }

  void showExtension(int row) {
    const std::string& extension = byExtension_[static_cast<std::size_t>(row)].extension;
    leadTo({"Incoming <> 0 And TotalTime = 0 And Extension = " + textLiteral(extension),
            texts().language().TranslateFormat("IDS_MISSED_OF", extensionName(extension))});
  }

  void showHour(int row) {
    const int hour = byHour_[static_cast<std::size_t>(row)].hour;
    leadTo({base::format("Incoming <> 0 And TotalTime = 0 And Hour([DateTime]) = %d", hour),
            texts().language().TranslateFormat("IDS_MISSED_OF", base::format("%02d:00 - %02d:59", hour, hour))});
  }

  QSpinBox* within_;
  QCheckBox* working_;
  QCheckBox* openOnly_;
  QLabel* summary_;
  QTabWidget* tabs_;
  ResultTable* list_;
  ResultTable* extensions_;
  ResultTable* hours_;
  analysis::MissedCalls missed_;
  std::vector<analysis::AnswerGroup> byExtension_;
  std::vector<analysis::AnswerGroup> byHour_;
  std::vector<std::size_t> listed_;  // the missed calls that the list's rows are
};

}  // namespace

std::optional<folders::Narrowing> showMissedCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  MissedDialog dialog(document, texts, parent);
  const int result = dialog.execReading([&] {
    if (!dialog.search()) return false;
    folders::logShown(document.folderServices(), texts.language().Translate("IDS_MONTH_MISSED"));
    return true;
  });
  return result == QDialog::Accepted ? dialog.calls() : std::nullopt;
}

}  // namespace ui
