#include <QPushButton>

#include "base/text.h"
#include "folders/catalogue.h"
#include "mail/address.h"
#include "platform/progress.h"
#include "schedule/runner.h"
#include "security/audit_log.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/record_form.h"
#include "ui/settings/table_columns.h"
#include "ui/settings/watch_pages.h"

namespace ui {

namespace {

using schedule::Schedule;
using Schedules = std::shared_ptr<EditedTable<Schedule>>;

constexpr WordText<const char*> kSchedulePeriods[] = {
    {"yesterday", "yesterday", "IDS_PERIOD_YESTERDAY"},
    {"last-week", "last-week", "IDS_PERIOD_LAST_WEEK"},
    {"last-month", "last-month", "IDS_PERIOD_LAST_MONTH"},
    {"month-so-far", "month-so-far", "IDS_SCHEDULE_MONTH_SO_FAR"},
    {"all", "all", "IDS_SCHEDULE_ALL"},
};

RecordColumn withChoices(RecordColumn column, const QStringList& choices, bool typeable, const QString& hint) {
  column.choices = [choices](int) { return choices; };
  column.typeable = typeable;
  column.hint = hint;
  return column;
}

// The folder that is reported, by its caption.
RecordColumn reportColumn(const EditedList<Schedule>& schedules, const Texts& texts) {
  std::vector<std::pair<std::int32_t, QString>> reports{
      {schedule::kMonthPage, texts("IDS_ACTION_MONTH").remove("...")}};
  for (const folders::FolderDefinition& folder : folders::standardFolders()) {
    if (folder.condition != folders::ConditionSource::CallFilter) continue;
    reports.emplace_back(folder.id, toQt(folders::folderCaption(folder, texts.language())));
  }
  RecordColumn column = memberColumn<Schedule, std::int32_t>(
      texts("IDS_SCHEDULE_REPORT"), schedules, &Schedule::folder,
      [reports](const std::int32_t& id) {
        for (const auto& [folder, caption] : reports) {
          if (folder == id) return caption;
        }
        return QString::number(id);
      },
      [reports](const QString& text, std::int32_t& id) {
        for (const auto& [folder, caption] : reports) {
          if (caption.compare(text, Qt::CaseInsensitive) != 0 && text != QString::number(folder)) continue;
          id = folder;
          return true;
        }
        return false;
      });
  QStringList captions;
  for (const auto& [folder, caption] : reports) captions << caption;
  return withChoices(column, captions, false, texts("IDS_HINT_SCHEDULE_REPORT"));
}

RecordColumn timeColumn(const EditedList<Schedule>& schedules, const Texts& texts) {
  RecordColumn column = memberColumn<Schedule, std::int32_t>(
      texts("IDS_SCHEDULE_AT"), schedules, &Schedule::minuteOfDay,
      [](const std::int32_t& minute) { return toQt(schedule::timeText(minute)); },
      [](const QString& text, std::int32_t& minute) {
        const auto given = schedule::parseTime(fromQt(text));
        if (given) minute = *given;
        return given.has_value();
      });
  column.hint = texts("IDS_HINT_MINUTE").section('.', 0, 0) + '.';
  return column;
}

RecordColumn recipientsColumn(const EditedList<Schedule>& schedules, const Texts& texts) {
  RecordColumn column = textColumn(texts("IDS_SCHEDULE_TO"), schedules, &Schedule::recipients);
  column.write = [schedules](int row, const QString& text) {
    std::string list;
    try {
      for (const std::string& one : mail::parseAddresses(fromQt(text))) list += (list.empty() ? "" : ", ") + one;
    } catch (const std::invalid_argument&) {
      return false;
    }
    schedules.at(row).recipients = list;
    return true;
  };
  column.hint = texts("IDS_HINT_SCHEDULE_TO");
  return column;
}

// Kept with line ends, shown and typed with semicolons.
RecordColumn scheduleFilterColumn(const EditedList<Schedule>& schedules, const Texts& texts) {
  RecordColumn column = memberColumn<Schedule, std::string>(
      texts("IDS_FILTER_FIELDS"), schedules, &Schedule::filter,
      [](const std::string& filter) { return toQt(filter).replace('\n', ';'); },
      [](const QString& text, std::string& filter) {
        filter = fromQt(QString(text).replace(';', '\n'));
        return true;
      });
  column.hint = texts("IDS_HINT_SCHEDULE_FILTER");
  return column;
}

RecordColumn readOnlyColumn(const QString& caption, std::function<QString(int)> read) {
  RecordColumn column;
  column.caption = caption;
  column.read = std::move(read);
  return column;
}

QString momentText(const base::DateTime& moment) {
  return moment == base::DateTime() ? QString() : toQt(moment.format("%d.%m.%Y %H:%M"));
}

RecordTableModel* makeSchedulesModel(const EditedList<Schedule>& schedules, server::CServerDoc& document,
                                     const Texts& texts) {
  QStringList users;
  for (const security::UserRecord& user : document.users().users()) users << toQt(user.Name);
  QStringList languages{QString()};
  for (const auto& language : texts.language().Languages()) languages << toQt(language.code);
  const auto text = [&](const char* key, std::string Schedule::*member) {
    return textColumn(texts(key), schedules, member);
  };
  const std::string self = document.user().CurrentUserName;
  return new RecordTableModel(
      {text("IDS_NAME", &Schedule::name), switchColumn(texts("IDS_RULE_ENABLED"), schedules, &Schedule::enabled),
       reportColumn(schedules, texts),
       wordColumn<Schedule, std::string, const char*>(texts("IDS_FILTER_PERIOD"), schedules, &Schedule::period,
                                                      kSchedulePeriods, texts),
       withChoices(text("IDS_DAYS", &Schedule::days), {"daily", "workdays", "mon", "1", "last"}, true,
                   texts("IDS_HINT_SCHEDULE_DAYS")),
       timeColumn(schedules, texts), recipientsColumn(schedules, texts),
       withChoices(text("IDS_SCHEDULE_FORMAT", &Schedule::format), {"pdf", "html", "xlsx", "csv"}, false,
                   texts("IDS_HINT_SCHEDULE_FORMAT")),
       withChoices(text("IDS_SCHEDULE_USER", &Schedule::user), users, false, texts("IDS_HINT_SCHEDULE_USER")),
       withChoices(text("IDS_LANGUAGE", &Schedule::language), languages, false, texts("IDS_HINT_SCHEDULE_LANGUAGE")),
       scheduleFilterColumn(schedules, texts),
       withChoices(textColumn(texts("IDS_ACTION_COLUMNS").remove("..."), schedules, &Schedule::columns), {QString()},
                   true, texts("IDS_HINT_SCHEDULE_COLUMNS")),
       text("IDS_NOTE", &Schedule::note),
       readOnlyColumn(texts("IDS_SCHEDULE_NEXT"),
                      [schedules](int row) { return momentText(schedules.at(row).nextRun); }),
       readOnlyColumn(texts("IDS_SCHEDULE_SENT"),
                      [schedules](int row) {
                        const auto& sent = schedules.at(row).lastSent;
                        return sent ? momentText(*sent) : QString();
                      }),
       readOnlyColumn(texts("IDS_SCHEDULE_ERROR"), [schedules](int row) { return toQt(schedules.at(row).lastError); })},
      editableRows<Schedule>(schedules, [self] { return Schedule{.user = self}; }));
}

// A sentence about the first schedule that cannot be sent.
QString faultOfSchedules(server::CServerDoc& document, const std::vector<Schedule>& schedules, const Texts& texts) {
  schedule::ReportMaker maker(document.reportParts());
  for (std::size_t i = 0; i < schedules.size(); ++i) {
    for (std::size_t other = 0; other < i; ++other) {
      if (base::equalFold(schedules[i].name, schedules[other].name)) {
        return texts.format("IDS_NAME_TAKEN", schedules[i].name);
      }
    }
    try {
      schedule::requireSound(schedules[i]);
      maker.requirePossible(schedules[i]);
    } catch (const std::exception& fault) {
      return texts.format("IDS_SCHEDULE_FAULT", schedules[i].name, fault.what());
    }
  }
  return {};
}

const Schedule* findSchedule(const std::vector<Schedule>& schedules, std::int32_t id) {
  const auto found = std::ranges::find(schedules, id, &Schedule::id);
  return found == schedules.end() ? nullptr : &*found;
}

void storeSchedules(server::CServerDoc& document, EditedTable<Schedule>& schedules) {
  if (!schedules.changed()) return;
  schedule::ScheduleTable table(document.database());
  security::AuditLog& log = document.log();
  for (const Schedule& gone : schedules.stored) {
    if (findSchedule(schedules.records, gone.id) != nullptr) continue;
    table.remove(gone.id);
    log.WriteLog(security::LogDelete, "Schedule %s", gone.name);
  }
  const base::DateTime now = document.app().surroundings().clock.now();
  for (Schedule& edited : schedules.records) {
    const Schedule* before = edited.id == 0 ? nullptr : findSchedule(schedules.stored, edited.id);
    if (before != nullptr && *before == edited) continue;
    schedule::beginAnew(edited, now);
    table.save(edited);
    log.WriteLog(security::LogEdit, "Schedule %s: %s to %s", edited.name, edited.days, edited.recipients);
  }
  schedules.records = table.all();
  schedules.stored = schedules.records;
}

// Makes and mails the report now.
void sendNow(server::CServerDoc& document, const Texts& texts, QWidget* parent, const Schedule& schedule) {
  std::string said;
  bool sent = false;
  const bool done = attempt(parent, texts, [&] {
    platform::Operator& person = document.app().surroundings().person;
    const platform::Progress progress(person, schedule.name, fromQt(texts("IDS_SCHEDULE_SENDING")));
    schedule::Runner runner(
        document.reportParts(), document.app().config(),
        [&said](base::Priority, const std::string& line) { said += (said.empty() ? "" : "\n") + line; });
    sent = runner.runNow(schedule, [&person] { person.progressPulse(); });
  });
  if (!done) return;
  if (sent) return inform(parent, texts, texts.format("IDS_SCHEDULE_DONE", schedule.name, schedule.recipients));
  warn(parent, texts, texts.format("IDS_SCHEDULE_NOT_SENT", schedule.name) + '\n' + toQt(said));
}

}  // namespace

SettingsPage schedulesPage(server::CServerDoc& document, const Texts& texts) {
  auto schedules = std::make_shared<EditedTable<Schedule>>();
  schedules->stored = schedule::ScheduleTable(document.database()).all();
  schedules->records = schedules->stored;
  SettingsPage page = tablePage(texts("IDS_PAGE_SCHEDULES"), makeSchedulesModel(listOf(schedules), document, texts),
                                "schedulesTable", texts("IDS_HINT_SCHEDULES"), texts);
  constexpr int kNextColumn = 13;
  page.widget->layout()->addWidget(new RecordForm(*page.table, {0, 1, 2, 3, 4, 5, kNextColumn}, {}));
  auto* run = named(new QPushButton(texts("IDS_SCHEDULE_RUN")), "runSchedule");
  static_cast<QVBoxLayout*>(page.widget->layout())->addWidget(run, 0, Qt::AlignLeft);
  const RecordTable* table = page.table;
  const auto offer = [run, table] { run->setEnabled(table->currentRow() >= 0); };
  offer();
  QObject::connect(table, &RecordTable::currentRowChanged, run, offer);
  const auto readAgain = [schedules, &document, table] {
    table->model()->beginBulkChange();
    schedules->stored = schedule::ScheduleTable(document.database()).all();
    schedules->records = schedules->stored;
    table->model()->endBulkChange();
  };
  QObject::connect(run, &QPushButton::clicked, page.widget, [=, &document, &texts, widget = page.widget] {
    if (schedules->changed()) return inform(widget, texts, texts("IDS_APPLY_FIRST"));
    if (table->currentRow() < 0) return;
    sendNow(document, texts, widget, schedules->records[static_cast<std::size_t>(table->currentRow())]);
    readAgain();
  });
  page.changed = [schedules] { return schedules->changed(); };
  page.check = [schedules, &document, &texts] {
    return schedules->changed() ? faultOfSchedules(document, schedules->records, texts) : QString();
  };
  page.save = [schedules, &document, table] {
    table->model()->beginBulkChange();
    const auto shown = [&] { table->model()->endBulkChange(); };
    try {
      storeSchedules(document, *schedules);
    } catch (...) {
      shown();
      throw;
    }
    shown();
  };
  return page;
}

}  // namespace ui
