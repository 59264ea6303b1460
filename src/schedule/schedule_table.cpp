#include "schedule/schedule_table.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"

namespace schedule {

namespace {

// How a member is kept: its column, and its type by the kind of pointer.
struct TextColumn {
  const char* name;
  std::string Schedule::*member;
};
constexpr TextColumn kTextColumns[] = {
    {"Name", &Schedule::name},     {"Filter", &Schedule::filter},         {"Columns", &Schedule::columns},
    {"Format", &Schedule::format}, {"Period", &Schedule::period},         {"Days", &Schedule::days},
    {"Lang", &Schedule::language}, {"Recipients", &Schedule::recipients}, {"UserName", &Schedule::user},
    {"Note", &Schedule::note},     {"Waiting", &Schedule::waiting},       {"LastError", &Schedule::lastError},
};
struct NumberColumn {
  const char* name;
  std::int32_t Schedule::*member;
};
constexpr NumberColumn kNumbers[] = {
    {"Folder", &Schedule::folder},
    {"SortKey", &Schedule::sortKey},
    {"MinuteOfDay", &Schedule::minuteOfDay},
    {"Attempts", &Schedule::attempts},
};
struct DateColumn {
  const char* name;
  std::optional<base::DateTime> Schedule::*member;
};
constexpr DateColumn kDates[] = {
    {"RunFor", &Schedule::runFor},
    {"TryAfter", &Schedule::tryAfter},
    {"LastSent", &Schedule::lastSent},
};

Schedule readRow(jet::Recordset& row) {
  Schedule schedule;
  schedule.id = static_cast<std::int32_t>(row.get("RecordID").toLong());
  schedule.enabled = row.get("Enabled").toBool();
  schedule.version = static_cast<std::int32_t>(row.get("Version").toLong());
  schedule.nextRun = row.get("NextRun").toDateTime().value_or(base::DateTime());
  for (const TextColumn& column : kTextColumns) schedule.*column.member = row.get(column.name).toText();
  for (const NumberColumn& column : kNumbers) {
    schedule.*column.member = static_cast<std::int32_t>(row.get(column.name).toLong());
  }
  for (const DateColumn& column : kDates) schedule.*column.member = row.get(column.name).toDateTime();
  return schedule;
}

void setRow(jet::Recordset& row, const Schedule& schedule) {
  row.set("Enabled", schedule.enabled);
  row.set("NextRun", schedule.nextRun);
  for (const TextColumn& column : kTextColumns) row.set(column.name, schedule.*column.member);
  for (const NumberColumn& column : kNumbers) row.set(column.name, schedule.*column.member);
  for (const DateColumn& column : kDates) {
    const auto& date = schedule.*column.member;
    row.set(column.name, date ? jet::Value(*date) : jet::Value());
  }
}

}  // namespace

std::vector<Schedule> ScheduleTable::all() const {
  std::vector<Schedule> schedules;
  const auto rows = main_.openRecordset("SELECT * FROM Schedules");
  for (; !rows->eof(); rows->moveNext()) schedules.push_back(readRow(*rows));
  std::ranges::sort(schedules, {}, [](const Schedule& one) { return base::foldAscii(one.name); });
  return schedules;
}

std::optional<Schedule> ScheduleTable::find(std::string_view name) const {
  for (Schedule& schedule : all()) {
    if (base::equalFoldAscii(schedule.name, name)) return std::move(schedule);
  }
  return std::nullopt;
}

void ScheduleTable::write(const Schedule& schedule) {
  const auto rows = main_.openRecordset("SELECT * FROM Schedules");
  rows->findFirst(base::format("RecordID = %d", schedule.id));
  if (rows->noMatch()) return;
  rows->edit();
  setRow(*rows, schedule);
  rows->update();
}

void ScheduleTable::save(Schedule& schedule) {
  jet::Transaction transaction(main_);
  if (schedule.id == 0) {
    const auto rows = main_.openRecordset("SELECT * FROM Schedules");
    rows->addNew();
    setRow(*rows, schedule);
    rows->set("Version", 1);
    rows->update();
    schedule.id = static_cast<std::int32_t>(rows->lastAddedKey());
    schedule.version = 1;
  } else {
    main_.execute(base::format("UPDATE Schedules SET Version = Version + 1 WHERE RecordID = %d", schedule.id));
    write(schedule);
  }
  transaction.commit();
}

bool ScheduleTable::saveIfUnchanged(Schedule& schedule) {
  jet::Transaction transaction(main_);
  // The first statement takes the database's write lock, so that of two copies one finds the version moved.
  const std::int64_t changed =
      main_.execute(base::format("UPDATE Schedules SET Version = Version + 1 WHERE RecordID = %d AND Version = %d",
                                 schedule.id, schedule.version));
  if (changed == 0) return false;
  write(schedule);
  transaction.commit();
  ++schedule.version;
  return true;
}

bool ScheduleTable::remove(std::int32_t id) {
  return main_.execute(base::format("DELETE FROM Schedules WHERE RecordID = %d", id)) > 0;
}

}  // namespace schedule
