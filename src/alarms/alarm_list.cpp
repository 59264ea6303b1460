#include "alarms/alarm_list.h"

#include "base/printf.h"

namespace alarms {

namespace {

// Column `Sent`.
constexpr int kNew = 0;
constexpr int kDone = 1;
constexpr int kMailWaits = 2;

constexpr const char* kDateFormat = "%d.%m.%Y %H:%M:%S";

std::string amountText(const Rule& rule, double amount, std::string_view currency) {
  const auto seconds = static_cast<std::int64_t>(amount);
  switch (rule.measure) {
    case Measure::Cost:
      return base::format("%.2f %s", amount, currency);
    case Measure::Duration:
      return base::format("%.2d:%.2d:%.2d", seconds / 3600, seconds / 60 % 60, seconds % 60);
    case Measure::Calls:
      break;
  }
  return base::format("%d", seconds);
}

// Texts are in statements between quotation marks; a subject can hold any letter that an exchange sends.
std::string literal(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

ListedAlarm readAlarm(jet::Recordset& row) {
  return {.id = row.get("AlarmID").toLong(),
          .at = row.get("DateTime").toDateTime(),
          .rule = row.get("RuleName").toText(),
          .subject = row.get("Subject").toText(),
          .step = static_cast<int>(row.get("Step").toLong()),
          .amount = row.get("Amount").toDouble(),
          .limit = row.get("LimitValue").toDouble(),
          .text = row.get("Desc").toText(),
          .callId = row.get("CallID").toLong(),
          .acknowledged = row.get("AckUser").toText(),
          .acknowledgedAt = row.get("AckTime").toDateTime(),
          .mailWaits = row.get("Sent").toLong() == kMailWaits};
}

std::vector<ListedAlarm> readAlarms(jet::Database& main, const std::string& sql, std::int64_t limit) {
  std::vector<ListedAlarm> alarms;
  const auto rows = main.openRecordset(sql);
  for (; limit > 0 && !rows->eof(); rows->moveNext(), --limit) alarms.push_back(readAlarm(*rows));
  return alarms;
}

}  // namespace

std::string alarmText(const Alarm& alarm, std::string_view currency, const foundation::LanguageFile& texts) {
  const Rule& rule = *alarm.rule;
  const std::string who = alarm.subject.empty() ? texts.Translate("IDS_ALARM_ALL") : alarm.subject;
  if (alarm.step == 0) return base::format(texts.Translate("IDS_ALARM_CLEAR"), rule.name, who);
  const std::string number = alarm.call != nullptr ? alarm.call->number : std::string();
  switch (rule.kind) {
    case Kind::Budget:
      return base::format(texts.Translate("IDS_ALARM_BUDGET"), rule.name, who, amountText(rule, alarm.amount, currency),
                          alarm.step, amountText(rule, rule.limit, currency));
    case Kind::Call:
      return base::format(texts.Translate("IDS_ALARM_CALL"), rule.name, who, number,
                          amountText(rule, alarm.amount, currency));
    case Kind::Destination:
      return base::format(texts.Translate("IDS_ALARM_DESTINATION"), rule.name, who, number,
                          alarm.at.format(kDateFormat));
    case Kind::Short:
      return base::format(texts.Translate("IDS_ALARM_SHORT"), rule.name, who, static_cast<std::int64_t>(alarm.amount));
    case Kind::Parallel:
      return base::format(texts.Translate("IDS_ALARM_PARALLEL"), rule.name, static_cast<std::int64_t>(alarm.amount));
    case Kind::Silence:
      break;
  }
  return base::format(texts.Translate("IDS_ALARM_SILENCE"), rule.name, alarm.period.format(kDateFormat));
}

bool addAlarm(jet::Database& main, const Alarm& alarm, const std::string& text) {
  const auto rows = main.openRecordset("SELECT * FROM Alarms");
  rows->findFirst(base::format("RuleName = %s and Subject = %s and PeriodStart = %s and Step = %d",
                               literal(alarm.rule->name), literal(alarm.subject),
                               alarm.period.format(jet::kDateTimeLiteral), alarm.step));
  if (!rows->noMatch()) return false;
  rows->addNew();
  rows->set("DateTime", alarm.at);
  rows->set("RuleName", alarm.rule->name);
  rows->set("Subject", alarm.subject);
  rows->set("PeriodStart", alarm.period);
  rows->set("Step", alarm.step);
  rows->set("Amount", alarm.amount);
  rows->set("LimitValue", alarm.rule->limit);
  rows->set("Desc", text);
  rows->set("CallID", alarm.call != nullptr ? alarm.call->recordId : std::int64_t{0});
  rows->set("Sent", kNew);
  rows->update();
  return true;
}

std::vector<ListedAlarm> listAlarms(jet::Database& main, std::int64_t limit) {
  return readAlarms(main, "SELECT * FROM Alarms ORDER BY AlarmID DESC", limit);
}

std::int64_t waitingAlarms(jet::Database& main) {
  return main.openSnapshot("select count(*) from Alarms where AckUser = '' or AckUser is null").at(0, 0).toLong();
}

bool acknowledge(jet::Database& main, std::int64_t id, std::string_view user, base::DateTime now) {
  jet::Transaction transaction(main);
  const auto rows = main.openRecordset(base::format("SELECT * FROM Alarms WHERE AlarmID = %d", id));
  if (rows->eof() || !rows->get("AckUser").toText().empty()) return false;
  rows->edit();
  rows->set("AckUser", user.empty() ? std::string_view("-") : user);
  rows->set("AckTime", now);
  rows->update();
  transaction.commit();
  return true;
}

std::vector<ListedAlarm> pendingAlarms(jet::Database& main) {
  constexpr std::int64_t kMostAtOnce = 500;
  return readAlarms(
      main, base::format("SELECT * FROM Alarms WHERE Sent = %d OR Sent = %d ORDER BY Sent, AlarmID", kNew, kMailWaits),
      kMostAtOnce);
}

bool takeAlarm(jet::Database& main, const ListedAlarm& alarm) {
  return main.execute(base::format("update Alarms set Sent = %d where AlarmID = %d and Sent = %d", kDone, alarm.id,
                                   alarm.mailWaits ? kMailWaits : kNew)) == 1;
}

void leaveMail(jet::Database& main, const ListedAlarm& alarm) {
  main.execute(base::format("update Alarms set Sent = %d where AlarmID = %d", kMailWaits, alarm.id));
}

}  // namespace alarms
