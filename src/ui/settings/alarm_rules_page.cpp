#include <QPushButton>

#include "alarms/alarm_desk.h"
#include "platform/progress.h"
#include "security/audit_log.h"
#include "security/restriction.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/record_form.h"
#include "ui/results/alarm_table.h"
#include "ui/settings/table_columns.h"
#include "ui/settings/watch_pages.h"

namespace ui {

namespace {

using alarms::Rule;
using Rules = std::shared_ptr<EditedTable<Rule>>;

constexpr int kMostWhole = 1'000'000;
constexpr int kUsualLimit = 50;

constexpr WordText<alarms::Kind> kRuleKinds[] = {
    {alarms::Kind::Budget, "budget", "IDS_RULE_BUDGET"},
    {alarms::Kind::Call, "call", "IDS_RULE_CALL"},
    {alarms::Kind::Destination, "destination", "IDS_RULE_DESTINATION"},
    {alarms::Kind::Short, "short", "IDS_RULE_SHORT"},
    {alarms::Kind::Parallel, "parallel", "IDS_RULE_PARALLEL"},
    {alarms::Kind::Silence, "silence", "IDS_RULE_SILENCE"},
};
constexpr WordText<alarms::Subject> kRuleSubjects[] = {
    {alarms::Subject::All, "all", "IDS_RULE_ALL"},
    {alarms::Subject::Extension, "extension", "IDS_EXTENSION"},
    {alarms::Subject::Department, "department", "IDS_DEPARTMENT"},
    {alarms::Subject::Client, "client", "IDS_CLIENT"},
    {alarms::Subject::Account, "account", "IDS_ACCOUNT"},
    {alarms::Subject::Provider, "provider", "IDS_PROVIDER"},
};
constexpr WordText<alarms::Measure> kRuleMeasures[] = {
    {alarms::Measure::Cost, "cost", "IDS_COST"},
    {alarms::Measure::Duration, "duration", "IDS_DURATION"},
    {alarms::Measure::Calls, "calls", "IDS_CALLS"},
};
constexpr WordText<alarms::Period> kPeriodWords[] = {
    {alarms::Period::Day, "day", "IDS_RULE_DAY"},
    {alarms::Period::Week, "week", "IDS_RULE_WEEK"},
    {alarms::Period::Month, "month", "IDS_MONTH"},
};

RecordColumn hinted(RecordColumn column, const QString& hint) {
  column.hint = hint;
  return column;
}

RecordColumn limitColumn(const EditedList<Rule>& rules, const Texts& texts) {
  RecordColumn column = memberColumn<Rule, double>(
      texts("IDS_RULE_LIMIT"), rules, &Rule::limit, [](const double& value) { return QString::number(value, 'g', 12); },
      [](const QString& text, double& value) {
        bool valid = false;
        const double number = QString(text).replace(',', '.').toDouble(&valid);
        if (valid && number >= 0) value = number;
        return valid && number >= 0;
      });
  column.rightAligned = true;
  column.hint = texts("IDS_HINT_RULE_LIMIT");
  return column;
}

RecordColumn wholeColumn(const QString& caption, const EditedList<Rule>& rules, int Rule::*member,
                         const QString& hint) {
  RecordColumn column = numberColumn<Rule>(caption, rules, member, hint);
  column.write = [write = column.write](int row, const QString& text) {
    return text.toInt() <= kMostWhole && write(row, text);
  };
  return column;
}

RecordTableModel* makeRulesModel(const EditedList<Rule>& rules, const Texts& texts) {
  return new RecordTableModel(
      {textColumn(texts("IDS_NAME"), rules, &Rule::name),
       hinted(
           wordColumn<Rule, alarms::Kind, alarms::Kind>(texts("IDS_RULE_KIND"), rules, &Rule::kind, kRuleKinds, texts),
           texts("IDS_HINT_RULE_KIND")),
       wordColumn<Rule, alarms::Subject, alarms::Subject>(texts("IDS_RULE_SUBJECT"), rules, &Rule::subject,
                                                          kRuleSubjects, texts),
       hinted(textColumn(texts("IDS_RULE_OF"), rules, &Rule::of), texts("IDS_HINT_RULE_OF")),
       wordColumn<Rule, alarms::Measure, alarms::Measure>(texts("IDS_RULE_MEASURE"), rules, &Rule::measure,
                                                          kRuleMeasures, texts),
       wordColumn<Rule, alarms::Period, alarms::Period>(texts("IDS_RULE_PER"), rules, &Rule::period, kPeriodWords,
                                                        texts),
       limitColumn(rules, texts),
       wholeColumn(texts("IDS_RULE_SECONDS"), rules, &Rule::seconds, texts("IDS_HINT_RULE_SECONDS")),
       wholeColumn(texts("IDS_RULE_MINUTES"), rules, &Rule::minutes, texts("IDS_HINT_RULE_MINUTES")),
       hinted(textColumn(texts("IDS_PREFIX"), rules, &Rule::prefixes), texts("IDS_HINT_RULE_PREFIX")),
       hinted(textColumn(texts("IDS_COUNTRY"), rules, &Rule::countries), texts("IDS_HINT_RULE_COUNTRY")),
       hinted(switchColumn(texts("IDS_RULE_OUTSIDE"), rules, &Rule::outsideHours), texts("IDS_HINT_RULE_OUTSIDE")),
       switchColumn(texts("IDS_RULE_ENABLED"), rules, &Rule::enabled),
       hinted(textColumn(texts("IDS_RULE_MAIL"), rules, &Rule::mail), texts("IDS_HINT_RULE_MAIL")),
       hinted(textColumn(texts("IDS_RULE_COMMAND"), rules, &Rule::command), texts("IDS_HINT_RULE_COMMAND"))},
      editableRows<Rule>(rules, [] { return Rule{.subject = alarms::Subject::Extension, .limit = kUsualLimit}; }));
}

// The columns in their order, as far as the form asks for them.
enum RuleColumn {
  RuleMeasure = 4,
  RulePeriod,
  RuleLimit,
  RuleSeconds,
  RuleMinutes,
  RulePrefixes,
  RuleCountries,
  RuleOutside,
  RuleEnabled
};

// Whether a field says anything for that kind of rule.
bool saysAnything(alarms::Kind kind, int column) {
  using alarms::Kind;
  switch (column) {
    case RuleMeasure:
      return kind == Kind::Budget || kind == Kind::Call;
    case RulePeriod:
      return kind == Kind::Budget;
    case RuleLimit:
      return kind != Kind::Destination && kind != Kind::Silence;
    case RuleSeconds:
      return kind == Kind::Short;
    case RuleMinutes:
      return kind == Kind::Short || kind == Kind::Silence;
    case RulePrefixes:
    case RuleCountries:
    case RuleOutside:
      return kind == Kind::Destination;
    default:
      return true;
  }
}

// A sentence about the first rule that cannot be judged.
QString faultOfRules(const std::vector<Rule>& rules, const Texts& texts) {
  for (const Rule& rule : rules) {
    if (alarms::findRule(rules, rule.name) != &rule) return texts.format("IDS_NAME_TAKEN", rule.name);
    try {
      alarms::check(rule);
    } catch (const alarms::RuleError& fault) {
      return texts.format("IDS_RULE_FAULT", rule.name, fault.what());
    }
  }
  return {};
}

void storeRules(server::CServerDoc& document, EditedTable<Rule>& rules, const Texts& texts) {
  if (!rules.changed()) return;
  jet::Database& main = document.database();
  jet::Transaction transaction(main);
  const auto log = [&](security::LogLevel level, const char* key, const std::string& name) {
    document.log().WriteLog(level, texts.language().Translate(key), name);
  };
  for (const Rule& rule : rules.stored) {
    if (alarms::findRule(rules.records, rule.name) != nullptr) continue;
    alarms::removeRule(main, rule.name);
    log(security::LogDelete, "IDS_LOG_ALARM_RULE_DELETED", rule.name);
  }
  for (const Rule& rule : rules.records) {
    const Rule* before = alarms::findRule(rules.stored, rule.name);
    if (before != nullptr && *before == rule) continue;
    alarms::saveRule(main, rule);
    log(security::LogEdit, "IDS_LOG_ALARM_RULE", rule.name);
  }
  transaction.commit();
  rules.stored = rules.records;
}

// What the rule would have told of the last whole month.
void tryRule(server::CServerDoc& document, const Texts& texts, QWidget* parent, const Rule& rule) {
  if (const QString fault = faultOfRules({rule}, texts); !fault.isEmpty()) return warn(parent, texts, fault);
  const base::DateTime now = document.app().surroundings().clock.now();
  const base::DateTime from = alarms::startOf(alarms::Period::Month, now.plusDays(-now.parts().day));
  std::vector<alarms::ListedAlarm> told;
  const bool done = attempt(parent, texts, [&] {
    security::requireAllCalls(document.user(), texts.language());
    const platform::Progress progress(document.app().surroundings().person, fromQt(texts("IDS_ALARMS_TRY")),
                                      fromQt(texts("IDS_READING_CALLS")));
    told = alarms::replay(document.alarmServices(), rule, from, alarms::endOf(alarms::Period::Month, from));
  });
  if (!done) return;
  showAlarmTrial(document, texts, parent,
                 texts.format("IDS_ALARMS_TRIED", rule.name, from.format("%m.%Y"), told.size()), told);
}

}  // namespace

SettingsPage alarmRulesPage(server::CServerDoc& document, const Texts& texts) {
  auto rules = std::make_shared<EditedTable<Rule>>();
  rules->stored = alarms::loadRules(document.database());
  rules->records = rules->stored;
  SettingsPage page = tablePage(texts("IDS_PAGE_ALARMS"), makeRulesModel(listOf(rules), texts), "alarmRulesTable",
                                texts("IDS_HINT_ALARM_RULES"), texts);
  auto* form = new RecordForm(*page.table, {0, 1, 2, 3, RuleLimit, RuleEnabled}, [rules](int row, int column) {
    return saysAnything(rules->records[static_cast<std::size_t>(row)].kind, column);
  });
  page.widget->layout()->addWidget(form);
  auto* tryIt = named(new QPushButton(texts("IDS_ALARMS_TRY")), "tryRule");
  static_cast<QVBoxLayout*>(page.widget->layout())->addWidget(tryIt, 0, Qt::AlignLeft);
  const RecordTable* table = page.table;
  const auto offer = [tryIt, table] { tryIt->setEnabled(table->currentRow() >= 0); };
  offer();
  QObject::connect(table, &RecordTable::currentRowChanged, tryIt, offer);
  QObject::connect(tryIt, &QPushButton::clicked, page.widget, [=, &document, &texts, widget = page.widget] {
    if (table->currentRow() >= 0) {
      tryRule(document, texts, widget, rules->records[static_cast<std::size_t>(table->currentRow())]);
    }
  });
  page.changed = [rules] { return rules->changed(); };
  page.check = [rules, &texts] { return rules->changed() ? faultOfRules(rules->records, texts) : QString(); };
  page.save = [rules, &document, &texts] { storeRules(document, *rules, texts); };
  return page;
}

}  // namespace ui
