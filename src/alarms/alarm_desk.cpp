#include "alarms/alarm_desk.h"

#include <algorithm>
#include <set>

#include "alarms/run_command.h"
#include "base/printf.h"
#include "base/text.h"

namespace alarms {

namespace {

constexpr std::int64_t kNewsSeconds = 2 * 86'400;
constexpr const char* kCallFields =
    "RecordID, [DateTime], DialNumber, Extension, Trunk, AccountCode, Department, Owner, Provider, Country, TotalTime, "
    "Incoming, Price_Ref";

const char* columnOf(Subject subject) {
  switch (subject) {
    case Subject::Extension:
      return "Extension";
    case Subject::Department:
      return "Department";
    case Subject::Client:
      return "Owner";
    case Subject::Account:
      return "AccountCode";
    case Subject::Provider:
      return "Provider";
    case Subject::All:
      break;
  }
  return nullptr;
}

// A row of kCallFields; nothing without a date.
std::optional<ingest::RecordedCall> callOf(const std::vector<jet::Value>& row) {
  const auto at = row[1].toDateTime();
  if (!at) return std::nullopt;
  return ingest::RecordedCall{.recordId = row[0].toLong(),
                              .at = *at,
                              .number = row[2].toText(),
                              .extension = row[3].toText(),
                              .trunk = row[4].toText(),
                              .account = row[5].toText(),
                              .department = row[6].toText(),
                              .owner = row[7].toText(),
                              .provider = row[8].toText(),
                              .country = row[9].toText(),
                              .seconds = row[10].toLong(),
                              .incoming = row[11].toLong() != 0,
                              .cost = row[12].toDouble()};
}

Environment environmentOf(const ListedAlarm& alarm, const std::optional<ingest::RecordedCall>& call) {
  Environment values = {{"TALLYBOOK_ALARM", alarm.text},
                        {"TALLYBOOK_RULE", alarm.rule},
                        {"TALLYBOOK_SUBJECT", alarm.subject},
                        {"TALLYBOOK_STEP", std::to_string(alarm.step)},
                        {"TALLYBOOK_AMOUNT", base::format("%.6f", alarm.amount)},
                        {"TALLYBOOK_LIMIT", base::format("%.6f", alarm.limit)}};
  if (!call) return values;
  values.insert(values.end(), {{"TALLYBOOK_AT", call->at.stored()},
                               {"TALLYBOOK_NUMBER", call->number},
                               {"TALLYBOOK_EXTENSION", call->extension},
                               {"TALLYBOOK_TRUNK", call->trunk},
                               {"TALLYBOOK_ACCOUNT", call->account},
                               {"TALLYBOOK_SECONDS", std::to_string(call->seconds)},
                               {"TALLYBOOK_COST", base::format("%.6f", call->cost)}});
  return values;
}

// Collects alarms instead of keeping them.
class ReplaySink : public AlarmSink {
 public:
  explicit ReplaySink(const DeskServices& services) : services_(services) {}

  void raise(const Alarm& alarm) override {
    if (!told_.insert({alarm.subject, alarm.period, alarm.step}).second) return;
    alarms.push_back({.at = alarm.at,
                      .rule = alarm.rule->name,
                      .subject = alarm.subject,
                      .step = alarm.step,
                      .amount = alarm.amount,
                      .limit = alarm.rule->limit,
                      .text = alarmText(alarm, services_.currencies.Default().name, services_.texts),
                      .callId = alarm.call != nullptr ? alarm.call->recordId : 0,
                      .acknowledged = {},
                      .acknowledgedAt = {}});
  }
  std::optional<std::unordered_map<std::string, Amounts>> sums(Subject, base::DateTime, base::DateTime) override {
    return std::nullopt;
  }

  std::vector<ListedAlarm> alarms;

 private:
  const DeskServices& services_;
  std::set<std::tuple<std::string, base::DateTime, int>> told_;
};

}  // namespace

bool AlarmDesk::listens() noexcept {
  try {
    refresh();
  } catch (const std::exception& error) {
    note(error.what());
    return false;
  }
  return judge_ != nullptr;
}

void AlarmDesk::refresh() {
  const std::uint64_t version = services_.main.tableVersion("AlarmRules");
  if (loaded_ && version == rulesVersion_) return;
  loaded_ = true;
  rulesVersion_ = version;
  judge_.reset();
  const std::vector<Rule> rules = loadRules(services_.main);
  if (std::ranges::none_of(rules, &Rule::enabled)) return;
  judge_ = std::make_unique<Judge>(rules, services_.definitions.countryCode, services_.definitions.areaCode,
                                   analysis::workingHours(services_.config), *this);
}

void AlarmDesk::recorded(const ingest::RecordedCall& call) noexcept {
  try {
    if (judge_ != nullptr) judge_->judge(call);
  } catch (const std::exception& error) {
    // The call is worth more than an alarm about it. Sums are read anew.
    loaded_ = false;
    note(error.what());
  }
}

void AlarmDesk::note(std::string_view what) noexcept {
  try {
    services_.log.WriteLog(security::LogError, "Alarms: %s", what);
  } catch (const std::exception&) {
    // The fault is one of the database: the recording itself meets and reports it.
  }
}

void AlarmDesk::raise(const Alarm& alarm) {
  const std::string text = alarmText(alarm, services_.currencies.Default().name, services_.texts);
  if (addAlarm(services_.main, alarm, text)) services_.log.WriteLog(security::LogSecurity, "%s", text);
}

std::optional<std::unordered_map<std::string, Amounts>> AlarmDesk::sums(Subject subject, base::DateTime from,
                                                                        base::DateTime to) {
  std::unordered_map<std::string, Amounts> result;
  const char* column = columnOf(subject);
  const std::string period = base::format("Incoming = 0 and [DateTime] >= %s and [DateTime] < %s",
                                          from.format(jet::kDateTimeLiteral), to.format(jet::kDateTimeLiteral));
  const std::string sql =
      column == nullptr
          ? base::format("select sum(Price_Ref), sum(TotalTime), count(*) from Calls where %s", period)
          : base::format("select sum(Price_Ref), sum(TotalTime), count(*), %s from Calls where %s group by %s", column,
                         period, column);
  services_.main.forEachRow(sql, [&](const std::vector<jet::Value>& row) {
    Amounts& sum = result[column == nullptr ? std::string() : row[3].toText()];
    for (std::size_t measure = 0; measure < sum.size(); ++measure) sum[measure] += row[measure].toDouble();
    return true;
  });
  return result;
}

// An alarm that is gone could be told again: those of a month's budget stay as long as their month can last.
void AlarmDesk::deleteOld(base::DateTime now) {
  constexpr std::int32_t kLongestPeriod = 32;  // days
  const base::DateTime today = now.midnight();
  if (cleared_ == today) return;
  cleared_ = today;
  const std::int32_t days = services_.config.ReadConfigInt(foundation::keys::Alarm_DeleteAfter);
  if (days <= 0) return;
  services_.main.execute(base::format("delete from Alarms where [DateTime] < %s",
                                      today.plusDays(-std::max(days, kLongestPeriod)).format(jet::kDateTimeLiteral)));
}

void AlarmDesk::step(const SendMail& mail) {
  if (services_.main.readOnly()) return;
  refresh();
  const base::DateTime now = services_.clock.now();
  deleteOld(now);
  if (judge_ != nullptr) {
    jet::Transaction transaction(services_.main);
    const jet::Snapshot last = services_.main.openSnapshot("select max([DateTime]) from Calls");
    judge_->step(now, last.empty() ? std::nullopt : last.at(0, 0).toDateTime());
    transaction.commit();
  }
  const jet::AsStored stored(services_.main);
  const std::vector<ListedAlarm> pending = pendingAlarms(services_.main);
  if (pending.empty()) return;
  const std::vector<Rule> rules = loadRules(services_.main);
  for (const ListedAlarm& alarm : pending) {
    const Rule* rule = findRule(rules, alarm.rule);
    const bool news = rule != nullptr && alarm.at && *alarm.at >= now.plusSeconds(-kNewsSeconds);
    const std::vector<std::string> recipients = news ? recipientsOf(alarm, *rule) : std::vector<std::string>();
    const bool due = std::ranges::any_of(recipients, [&](const std::string& to) { return mayMail(to, now); });
    if (alarm.mailWaits && news && !due) continue;
    if (!takeAlarm(services_.main, alarm)) continue;
    if (!news) {
      if (alarm.mailWaits) note(base::format("the mail was given up: %s", alarm.text));
      continue;
    }
    if (!alarm.mailWaits) command(alarm, *rule);
    tell(alarm, recipients, mail, now);
  }
}

std::vector<std::string> AlarmDesk::recipientsOf(const ListedAlarm& alarm, const Rule& rule) const {
  if (const auto waiting = unsent_.find(alarm.id); waiting != unsent_.end()) return waiting->second;
  std::vector<std::string> recipients;
  for (const std::string& address : base::split(rule.mail, ",")) {
    if (const std::string_view to = base::trim(address); !to.empty()) recipients.emplace_back(to);
  }
  return recipients;
}

bool AlarmDesk::mayMail(const std::string& address, base::DateTime now) const {
  const auto pause = pauses_.find(address);
  return pause == pauses_.end() || now >= pause->second.end;
}

// An address that a mail did not reach is tried again after pauses that grow; until then no mail to it is tried.
void AlarmDesk::tell(const ListedAlarm& alarm, const std::vector<std::string>& recipients, const SendMail& mail,
                     base::DateTime now) {
  constexpr std::int64_t kFirstPause = 300;  // seconds
  constexpr std::int64_t kLongestPause = 3600;
  std::vector<std::string> waiting;
  for (const std::string& to : recipients) {
    if (!mayMail(to, now)) {
      waiting.push_back(to);
      continue;
    }
    const std::string fault = mail(to, alarm.text, alarm.text + "\n");
    if (fault.empty()) {
      pauses_.erase(to);
      continue;
    }
    note(base::format("the mail to %s could not be sent (%s): %s", to, fault, alarm.text));
    const auto [pause, first] = pauses_.try_emplace(to, MailPause{now, kFirstPause});
    if (!first) pause->second.seconds = std::min(2 * pause->second.seconds, kLongestPause);
    pause->second.end = now.plusSeconds(pause->second.seconds);
    waiting.push_back(to);
  }
  unsent_.erase(alarm.id);
  if (waiting.empty()) return;
  unsent_.emplace(alarm.id, std::move(waiting));
  leaveMail(services_.main, alarm);
}

void AlarmDesk::command(const ListedAlarm& alarm, const Rule& rule) {
  if (rule.command.empty()) return;
  std::optional<ingest::RecordedCall> call;
  if (alarm.callId > 0) {
    services_.main.forEachRow(base::format("select %s from Calls where RecordID = %d", kCallFields, alarm.callId),
                              [&](const std::vector<jet::Value>& row) {
                                call = callOf(row);
                                return false;
                              });
  }
  if (const std::string fault = runCommand(rule.command, environmentOf(alarm, call)); !fault.empty()) {
    note(base::format("the command of %s %s", rule.name, fault));
  }
}

std::vector<ListedAlarm> replay(const DeskServices& services, const Rule& rule, base::DateTime from,
                                base::DateTime to) {
  constexpr std::int64_t kStep = 60;  // seconds, as the service asks
  ReplaySink sink(services);
  Rule tried = rule;
  tried.enabled = true;
  Judge judge({tried}, services.definitions.countryCode, services.definitions.areaCode,
              analysis::workingHours(services.config), sink);
  std::optional<base::DateTime> last;
  const auto passTime = [&](base::DateTime until) {
    if (rule.kind != Kind::Silence || !last) return;
    // A first alarm of a silence is all that the steps of it tell.
    for (base::DateTime now = *last; now < until; now = now.plusSeconds(kStep)) judge.step(now, last);
  };
  services.main.forEachRow(
      base::format("select %s from Calls where [DateTime] >= %s and [DateTime] < %s order by [DateTime], RecordID",
                   kCallFields, from.format(jet::kDateTimeLiteral), to.format(jet::kDateTimeLiteral)),
      [&](const std::vector<jet::Value>& row) {
        const auto call = callOf(row);
        if (!call) return true;
        passTime(call->at);
        judge.judge(*call);
        last = call->at;
        return true;
      });
  passTime(to);
  return std::move(sink.alarms);
}

}  // namespace alarms
