#include "alarms/alarm_list.h"
#include "base/printf.h"
#include "foundation/retold_text.h"
#include "security/audit_log.h"
#include "security/restriction.h"
#include "ui/dialogs/directory_messages.h"
#include "ui/results/alarm_table.h"
#include "ui/results/result_dialog.h"
#include "ui/results/result_table.h"
#include "ui/results/results.h"

namespace ui {

namespace {

constexpr std::int64_t kMostAlarms = 10'000;  // the newest

// It was written in the language of the copy that raised it.
std::string shownText(const alarms::ListedAlarm& alarm, const Texts& texts) {
  return foundation::retold(alarm.text, "IDS_ALARM_", texts.language());
}

// The alarms, the newest first, to be acknowledged.
class AlarmsDialog : public ResultDialog {
 public:
  AlarmsDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent,
               const std::function<void()>& editRules)
      : ResultDialog(document, texts, "IDS_ACTION_ALARMS", "alarms", parent),
        waitingOnly_(makeCheckBox("IDS_ALARMS_WAITING_ONLY", "waitingOnly")),
        summary_(makeHint({})),
        list_(new ResultTable(document, texts, "alarmList")),
        acknowledge_(list_->addButton("IDS_ALARMS_ACKNOWLEDGE", "acknowledge")),
        all_(list_->addButton("IDS_ALARMS_ACKNOWLEDGE_ALL", "acknowledgeAll")) {
    summary_->setObjectName("summary");
    body()->addWidget(makeHint(texts("IDS_ALARMS_HINT")));
    body()->addWidget(waitingOnly_);
    body()->addWidget(summary_);
    body()->addWidget(list_, 1);
    if (editRules) {
      auto* rules = addSideButton("IDS_ALARMS_RULES", "rules");
      connect(rules, &QPushButton::clicked, this, [editRules] { editRules(); });
    }
    connect(waitingOnly_, &QCheckBox::toggled, this, [this] { showList(); });
    connect(list_, &ResultTable::selectionChanged, this, [this] { offer(); });
    connect(list_, &ResultTable::activated, this, [this](int row) { showCall(row); });
    connect(acknowledge_, &QPushButton::clicked, this, [this] { acknowledge(chosen()); });
    connect(all_, &QPushButton::clicked, this, [this] {
      std::vector<const alarms::ListedAlarm*> all;
      for (const alarms::ListedAlarm& alarm : alarms_) all.push_back(&alarm);
      acknowledge(all);
    });
  }

  bool read() {
    const bool done = work([this] {
      security::requireAllCalls(document().user(), texts().language());
      alarms_ = alarms::listAlarms(document().database(), kMostAlarms);
    });
    if (done) showList();
    return done;
  }

 private:
  void showList() {
    shown_.clear();
    std::int64_t waiting = 0;
    for (const alarms::ListedAlarm& alarm : alarms_) {
      const bool waits = alarm.acknowledged.empty();
      if (waits) ++waiting;
      if (waits || !waitingOnly_->isChecked()) shown_.push_back(alarm);
    }
    summary_->setText(texts().format("IDS_ALARMS_SUMMARY", alarms_.size(), waiting));
    list_->setTable(alarmTable(shown_, texts(), AlarmsAre::Told));
    all_->setEnabled(waiting > 0 && mayChangeAdministration(document()));
    offer();
  }

  [[nodiscard]] std::vector<const alarms::ListedAlarm*> chosen() const {
    std::vector<const alarms::ListedAlarm*> chosen;
    for (const int row : list_->selectedRows()) chosen.push_back(&shown_[static_cast<std::size_t>(row)]);
    return chosen;
  }

  void offer() {
    const auto rows = chosen();
    const bool waits =
        std::any_of(rows.begin(), rows.end(), [](const auto* alarm) { return alarm->acknowledged.empty(); });
    acknowledge_->setEnabled(waits && mayChangeAdministration(document()));
  }

  void acknowledge(const std::vector<const alarms::ListedAlarm*>& alarms) {
    server::CServerDoc& data = document();
    const base::DateTime now = data.app().surroundings().clock.now();
    work([&] {
      for (const alarms::ListedAlarm* alarm : alarms) {
        if (!alarm->acknowledged.empty()) continue;
        // Another workstation may have been faster.
        if (!alarms::acknowledge(data.database(), alarm->id, data.user().CurrentUserName, now)) continue;
        data.log().WriteLog(security::LogEdit, texts().language().Translate("IDS_LOG_ALARM_ACKNOWLEDGED"), alarm->id);
      }
    });
    read();
  }

  void showCall(int row) {
    const alarms::ListedAlarm& alarm = shown_[static_cast<std::size_t>(row)];
    if (alarm.callId == 0) return inform(this, texts(), texts()("IDS_ALARMS_NO_CALL"));
    leadTo({base::format("RecordID = %d", alarm.callId), shownText(alarm, texts())});
  }

  QCheckBox* waitingOnly_;
  QLabel* summary_;
  ResultTable* list_;
  QPushButton* acknowledge_;
  QPushButton* all_;
  std::vector<alarms::ListedAlarm> alarms_;
  std::vector<alarms::ListedAlarm> shown_;  // of these, in the order of the list's rows
};

// What a rule would have told.
class TrialDialog : public ResultDialog {
 public:
  TrialDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& sentence,
              const std::vector<alarms::ListedAlarm>& alarms)
      : ResultDialog(document, texts, "IDS_ALARMS_TRY", "alarmTrial", parent) {
    auto* list = new ResultTable(document, texts, "trialList");
    list->setTable(alarmTable(alarms, texts, AlarmsAre::Tried));
    body()->addWidget(named(makeHint(sentence), "summary"));
    body()->addWidget(list, 1);
  }
};

}  // namespace

folders::PlainTable alarmTable(const std::vector<alarms::ListedAlarm>& alarms, const Texts& texts, AlarmsAre which) {
  using folders::CellKind;
  const auto text = [&texts](const char* key) { return texts.language().Translate(key); };
  const bool told = which == AlarmsAre::Told;
  folders::PlainTable table{
      .title = text("IDS_PAGE_ALARMS"),
      .columns = {{text("IDS_DATE_HOUR"), CellKind::DateTime}, {text("IDS_ALARMS_STEP")}, {text("IDS_ALARMS_ALARM")}},
      .rows = {},
      .remarks = {},
      .overCalls = false};
  if (told) {
    table.columns.insert(
        table.columns.end(),
        {{text("IDS_ALARMS_STATE")}, {text("IDS_ALARMS_BY")}, {text("IDS_ALARMS_WHEN"), CellKind::DateTime}});
  }
  for (const alarms::ListedAlarm& alarm : alarms) {
    const bool waits = told && alarm.acknowledged.empty();
    folders::PlainRow row{
        {alarm.at ? folders::PlainCell(*alarm.at) : folders::PlainCell(),
         alarm.step == 0 ? text("IDS_ALARMS_CLEAR") : base::format("%d%%", alarm.step), shownText(alarm, texts)},
        waits};
    if (told) {
      row.cells.emplace_back(text(waits ? "IDS_ALARMS_WAITING" : "IDS_ALARMS_SEEN"));
      row.cells.emplace_back(alarm.acknowledged);
      row.cells.push_back(alarm.acknowledgedAt ? folders::PlainCell(*alarm.acknowledgedAt) : folders::PlainCell());
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

std::optional<folders::Narrowing> showAlarms(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                             const std::function<void()>& editRules) {
  AlarmsDialog dialog(document, texts, parent, editRules);
  if (!dialog.read() || dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.calls();
}

void showAlarmTrial(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& sentence,
                    const std::vector<alarms::ListedAlarm>& alarms) {
  TrialDialog(document, texts, parent, sentence, alarms).exec();
}

}  // namespace ui
