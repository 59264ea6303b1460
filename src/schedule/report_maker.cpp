#include "schedule/report_maker.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "base/characters.h"
#include "base/printf.h"
#include "base/refusal.h"
#include "base/text.h"
#include "filter/call_filter.h"
#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/month_page.h"
#include "folders/pdf_pages.h"
#include "security/masks.h"
#include "security/rights.h"

namespace schedule {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargestFile = 20 << 20;  // bytes; mail servers refuse much more

template <typename... Arguments>
[[noreturn]] void refuse(std::string_view key, std::string_view why, const Arguments&... arguments) {
  throw base::Refused<std::invalid_argument>(base::Refusal(key, why, arguments...));
}

struct Form {
  std::string_view format;
  const char* type;
  bool (*write)(folders::FolderView&, const fs::path&);
};
constexpr Form kForms[] = {
    {"html", "text/html", folders::writeListReport},
    {"pdf", "application/pdf", folders::writeListPdf},
    {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", folders::exportXlsx},
    {"csv", "text/csv; charset=utf-8",
     [](folders::FolderView& view, const fs::path& file) {
       return folders::exportCsv(view, file, folders::CsvMark::ByteOrder);
     }},
};

const Form& formOf(const Schedule& schedule) {
  return *std::ranges::find(kForms, schedule.format, &Form::format);
}

filter::FilterSettings filterOf(const Schedule& schedule, base::DateTime due) {
  filter::FilterSettings settings;
  for (const std::string& line : base::split(schedule.filter, "\n")) {
    const std::size_t sign = line.find('=');
    if (sign == std::string::npos) refuse("IDS_REPORT_FILTER", "Write the filter as KEY=VALUE, not \"%s\".", line);
    filter::setValue(settings, line.substr(0, sign), line.substr(sign + 1));
    settings.onFilter = 1;
  }
  if (const auto period = periodOf(schedule.period, due)) {
    settings.onFilter = 1;
    settings.onPeriod = 1;
    settings.intervalStart = period->from.format(filter::kPeriodFormat);
    settings.intervalEnd = period->to.format(filter::kPeriodFormat);
  }
  return settings;
}

const folders::FolderDefinition& folderOf(const Schedule& schedule) {
  const folders::FolderDefinition* folder = folders::findFolder(schedule.folder);
  if (folder == nullptr || folder->condition != folders::ConditionSource::CallFilter) {
    refuse("IDS_REPORT_FOLDER", "Folder %d shows no calls. See tallyctl folder list.", schedule.folder);
  }
  return *folder;
}

const folders::ColumnDefinition& columnOf(const folders::FolderDefinition& folder, std::string_view kind) {
  for (const folders::ColumnDefinition& column : folder.columns) {
    if (std::to_string(column.kind) == kind && (column.flags & folders::ColumnKey) == 0) return column;
  }
  refuse("IDS_REPORT_COLUMN",
         "Folder %d has no column \"%s\". Columns are named by their kinds, which tallyctl folder show --json shows.",
         folder.id, kind);
}

std::vector<int> columnsOf(const Schedule& schedule, const folders::FolderDefinition& folder) {
  std::vector<int> kinds;
  for (const std::string& kind : base::split(schedule.columns, ", ")) {
    kinds.push_back(columnOf(folder, kind).kind);
  }
  if (schedule.sortKey != 0 && columnOf(folder, std::to_string(std::abs(schedule.sortKey))).sort == nullptr) {
    refuse("IDS_REPORT_SORT", "Folder %d cannot be sorted by %d.", folder.id, schedule.sortKey);
  }
  return kinds;
}

// A file of this run's own settings: the workstation's filter is not that of the report.
class OwnSettings {
 public:
  OwnSettings(const fs::path& folder, jet::Database& main)
      : store_(folder / "settings.ini"), tags_(nobody_), config_(store_) {
    tags_.LoadTouch(main);
    config_.OpenConfig(main, tags_);
  }
  OwnSettings(const OwnSettings&) = delete;
  OwnSettings& operator=(const OwnSettings&) = delete;
  ~OwnSettings() {
    config_.CloseConfig();
    tags_.CloseTouch();
  }
  [[nodiscard]] foundation::ConfigManager& config() { return config_; }

 private:
  platform::NoOperator nobody_;
  foundation::MachineStore store_;
  foundation::ChangeTags tags_;
  foundation::ConfigManager config_;
};

// Keeps what would have been shown to an operator.
class Listener : public platform::NoOperator {
 public:
  void messageBox(std::string_view text) override { said = text; }
  std::string said;
};

security::CurrentUser userOf(const std::string& name, security::UserDirectory& users) {
  const auto record = users.findUser(name);
  if (!record) refuse("IDS_REPORT_NO_USER", "There is no user %s.", name);
  if ((record->Flags & security::UserDisabled) != 0)
    refuse("IDS_REPORT_USER_DISABLED", "The user %s is disabled.", name);
  // A login leaves such a restriction out; no one is there now who would see it.
  if (base::characterCount(record->SQLSubquery) >= security::kRestrictionLimit) {
    refuse("IDS_REPORT_RESTRICTION", "The restriction of user %s is too long to be applied: no report is made for him.",
           name);
  }
  security::CurrentUser user;
  user.RecordID = record->RecordID;
  user.CurrentUserName = record->Name;
  user.Fullname = record->Fullname;
  user.Flags = record->Flags;
  user.SQLSubquery = record->SQLSubquery;
  user.mask = record->mask;
  user.groups = security::groupIds(record->Groups);
  for (const std::int32_t id : user.groups) {
    const auto group = users.findGroup(id);
    if (!group) continue;
    user.mask = security::stricter(user.mask, group->mask);
    for (const security::AccessRight& right : security::parseObjectAccess(group->ObjectAccess).rights) {
      user.rights.push_back(right);
    }
  }
  const security::AccessRight wanted{security::ObjectCalls, security::RightView};
  if (std::ranges::find(user.rights, wanted) == user.rights.end()) {
    refuse("IDS_REPORT_NO_RIGHT", "The user %s may not look at calls.", name);
  }
  return user;
}

foundation::LanguageFile languageOf(const Schedule& schedule, const foundation::LanguageFile& texts) {
  foundation::LanguageFile own = texts;
  if (schedule.language.empty()) return own;
  const auto& known = texts.Languages();
  if (std::ranges::find(known, schedule.language, &foundation::Language::code) == known.end()) {
    std::string codes;
    for (const foundation::Language& language : known) codes += (codes.empty() ? "" : ", ") + language.code;
    refuse("IDS_REPORT_LANGUAGE", "There is no language %s: give %s.", schedule.language, codes);
  }
  platform::NoOperator nobody;
  own.CheckCodepage(schedule.language, nobody);
  return own;
}

// The month's page is of the month that its period ends in; "yesterday" on the first is that of the day before.
base::DateTime monthOf(std::string_view period, base::DateTime due) {
  const auto chosen = periodOf(period, due);
  return chosen ? chosen->to : due;
}

std::string fileText(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// "Calls: 24.11.2026"; both ends where the period has several days.
std::string subjectOf(const Schedule& schedule, const std::string& caption, base::DateTime due) {
  const auto period = periodOf(schedule.period, due);
  if (!period) return caption;
  const std::string from = period->from.format(folders::kDateFormat);
  const std::string to = period->to.format(folders::kDateFormat);
  return caption + ": " + (from == to ? from : from + " - " + to);
}

}  // namespace

WorkFolder::WorkFolder() {
  std::string name = (fs::temp_directory_path() / "tallybook-report-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
  path_ = name;
}

WorkFolder::~WorkFolder() {
  std::error_code ignored;  // the system empties its folder of temporary files
  fs::remove_all(path_, ignored);
}

void ReportMaker::requirePossible(const Schedule& schedule) {
  if (schedule.folder != kMonthPage) (void)columnsOf(schedule, folderOf(schedule));
  (void)languageOf(schedule, parts_.texts);
  (void)userOf(schedule.user, parts_.users);
  (void)filterOf(schedule, parts_.clock.now());
}

MadeReport ReportMaker::make(const Schedule& schedule, base::DateTime due) {
  const auto folder = std::make_shared<const WorkFolder>();
  const security::CurrentUser user = userOf(schedule.user, parts_.users);
  const foundation::LanguageFile texts = languageOf(schedule, parts_.texts);
  const security::MaskScope masked(parts_.main, user.mask);
  OwnSettings own(folder->path(), parts_.main);
  if (!filter::writeSettings(own.config(), filterOf(schedule, due))) {
    throw std::runtime_error(base::format("%s cannot be written.", folder->path().string()));
  }
  filter::CallFilter filter(own.config(), parts_.definitions, user, parts_.clock, texts);
  Listener person;
  const folders::FolderServices services{
      parts_.main, own.config(), texts,  parts_.definitions, parts_.currencies, filter,
      parts_.log,  user,         person, parts_.clock};
  const folders::ValueFormatter formatter(own.config(), texts, parts_.definitions);

  MadeReport made;
  made.folder = folder;
  const Form& form = formOf(schedule);
  const fs::path file = folder->path() / ("report." + schedule.format);
  bool written = false;
  if (schedule.folder == kMonthPage) {
    const base::DateTime month = monthOf(schedule.period, due);
    written =
        (schedule.format == "pdf" ? folders::writeMonthPdf : folders::writeMonthPage)(month, services, formatter, file);
    made.message.subject = folders::monthTitle(month, formatter);
  } else {
    const folders::FolderDefinition& definition = folderOf(schedule);
    folders::FolderView view(definition, services, formatter, schedule.sortKey);
    if (const std::vector<int> kinds = columnsOf(schedule, definition); !kinds.empty()) view.setLayout({kinds, {}});
    written = form.write(view, file);
    made.message.subject = subjectOf(schedule, view.folder().caption(), due);
  }
  if (!written) throw std::runtime_error(base::format("%s: %s", file.string(), person.said));
  if (const auto size = fs::file_size(file); size > kLargestFile) {
    throw std::runtime_error(
        base::format("The report has %d MB, too much for a mail: narrow its filter or its period.", size >> 20));
  }
  if (schedule.format == "html") {
    made.message.html = fileText(file);
    made.message.htmlCharset = schedule.folder == kMonthPage ? "utf-8" : "windows-1252";
  } else {
    made.message.text = (schedule.note.empty() ? made.message.subject : schedule.note) + "\n";
    const std::string what = schedule.folder == kMonthPage ? "month" : std::to_string(schedule.folder);
    const std::string name = base::format("tallybook-%s-%s.%s", what, due.format("%Y-%m-%d"), form.format);
    made.message.attachment = mail::Attachment{file, name, form.type};
  }
  return made;
}

}  // namespace schedule
