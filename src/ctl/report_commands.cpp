#include <algorithm>
#include <filesystem>
#include <functional>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/folder_argument.h"
#include "folders/bill.h"
#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/month_page.h"
#include "folders/pdf_pages.h"
#include "folders/report_page.h"
#include "folders/summary_page.h"
#include "schedule/report_maker.h"

namespace ctl {

namespace report_commands {

namespace fs = std::filesystem;
using folders::FolderView;

// A kind of file that a folder can be written as.
struct ReportForm {
  std::string_view option;  // of --format
  std::string_view file;    // its usual name
  bool (*write)(FolderView&, const fs::path&);
};
constexpr ReportForm kForms[] = {
    {"html", "list.html", folders::writeListReport},
    {"csv", "list.csv", [](FolderView& view, const fs::path& file) { return folders::exportCsv(view, file); }},
    {"xlsx", "list.xlsx", folders::exportXlsx},
    {"pdf", "list.pdf", folders::writeListPdf},
};
constexpr ReportForm kMarkedCsv = {"csv", "list.csv", [](FolderView& view, const fs::path& file) {
                                     return folders::exportCsv(view, file, folders::CsvMark::ByteOrder);
                                   }};
constexpr ReportForm kSummaries[] = {
    {"html", "summary.html", folders::writeSummaryPage},
    {"pdf", "summary.pdf", folders::writeSummaryPdf},
};

// The form of that name; null when there is none.
const ReportForm* findForm(std::span<const ReportForm> forms, std::string_view option) {
  const auto found = std::ranges::find(forms, option, &ReportForm::option);
  return found == forms.end() ? nullptr : &*found;
}

// By --format, else by how the name of the file ends, else a page.
std::string formatOf(const Arguments& arguments) {
  if (const auto format = arguments.find("--format")) {
    if (findForm(kForms, *format) != nullptr) return *format;
    throw WrongUsage(base::format("--format takes html, csv, xlsx or pdf, not \"%s\".", *format));
  }
  const fs::path out = arguments.text("--out");
  const std::string ending = out.extension();
  if (ending.empty() || ending == ".htm" || fs::is_directory(out)) return "html";
  if (findForm(kForms, std::string_view(ending).substr(1)) != nullptr) return ending.substr(1);
  throw WrongUsage(base::format(
      "%s: no report ends in \"%s\". Name a file .html, .csv, .xlsx or .pdf, or give --format.", out.string(), ending));
}

const ReportForm& formOf(const Arguments& arguments) {
  const std::string format = formatOf(arguments);
  const ReportForm* summary = findForm(kSummaries, format);
  if (summary == nullptr && arguments.has("--print")) {
    throw WrongUsage(base::format("--print prints pages, not %s: leave the format out, or give html or pdf.", format));
  }
  if (arguments.has("--bom")) {
    if (format != "csv") throw WrongUsage("--bom is for CSV files: give --format csv.");
    return kMarkedCsv;
  }
  if (!arguments.has("--summary")) return *findForm(kForms, format);
  if (summary == nullptr) throw WrongUsage("A summary is a page: leave --format out, or give html or pdf.");
  return *summary;
}

// What --out names, a file or a folder; without it the folder of setting "Path", else the current one.
fs::path targetOf(const Invocation& call, std::string_view usualName) {
  const auto out = call.arguments.find("--out");
  if (out && !fs::is_directory(*out)) return *out;
  const fs::path folder =
      out ? fs::path(*out) : folders::listReportFile(call.context.config(), fs::current_path()).parent_path();
  return (folder / usualName).lexically_normal();
}

// How a list or a summary becomes sheets of paper.
using Sheets = std::function<bool(const fs::path&)>;

// Sheets of our own: a browser takes minutes over a long list.
bool printSheets(const fs::path& file, const Sheets& sheets, platform::DocumentHandler& documents) {
  const schedule::WorkFolder folder;
  const fs::path pdf = folder.path() / file.filename().replace_extension(".pdf");
  return sheets(pdf) && documents.print(pdf) == platform::Printed::Done;
}

// Opens or prints the file, as asked.
void handOver(const Invocation& call, const fs::path& file, const Sheets& sheets) {
  platform::DocumentHandler& documents = call.context.app().surroundings().documents;
  if (call.arguments.has("--open") && !documents.open(fs::absolute(file).string())) {
    throw Failure(base::format("%s was written, but no program opened it (xdg-open).", file.string()));
  }
  if (!call.arguments.has("--print")) return;
  const bool printed = sheets ? printSheets(file, sheets, documents) : documents.print(file) == platform::Printed::Done;
  if (!printed) {
    throw Failure(base::format("%s was written, but it could not be printed (lp).", file.string()));
  }
}

// The end of a command that was to write the file; why it was not has been said.
int finish(const Invocation& call, const fs::path& file, bool written, const Sheets& sheets = {}) {
  if (!written) throw Failure(base::format("%s was not written.", file.string()));
  call.out << file.string() << '\n';
  call.out.flush();
  handOver(call, file, sheets);
  return 0;
}

int report(const Invocation& call) {
  const folders::FolderDefinition& definition = folderOf(call);
  const ReportForm& form = formOf(call.arguments);
  if (call.arguments.has("--summary")) {
    if (!folders::canSummarise(definition)) {
      throw WrongUsage(base::format("Folder %d is a list; a summary is made of statistics.", definition.id));
    }
    if (call.arguments.has(kFolderColumns.name))
      throw WrongUsage("A summary has columns of its own: leave --columns out.");
  }
  const fs::path file = targetOf(call, form.file);
  server::CServerDoc& document = call.context.document();
  FolderView view(definition, document.folderServices(), document.valueFormatter(), sortKeyOf(call, definition));
  chooseColumns(call, view);
  const auto print = call.arguments.has("--summary") ? folders::writeSummaryPdf : folders::writeListPdf;
  return finish(call, file, form.write(view, file), [&](const fs::path& pdf) { return print(view, pdf); });
}

// The day's last second for a date without a time.
base::DateTime endOf(const Arguments& arguments, std::string_view option) {
  const base::DateTime given = *arguments.date(option);
  constexpr std::int64_t kLastSecond = 86'399;
  return arguments.text(option).find(':') == std::string::npos ? given.plusSeconds(kLastSecond) : given;
}

int bill(const Invocation& call) {
  const folders::BillRequest request{call.arguments.text("EXT"), *call.arguments.date("--from"),
                                     endOf(call.arguments, "--to")};
  if (request.to < request.from) throw WrongUsage("The period ends before it begins.");
  const std::string format = formatOf(call.arguments);
  if (findForm(kSummaries, format) == nullptr) throw WrongUsage("A bill is a page: give html or pdf.");
  const fs::path file = targetOf(call, "list." + format);
  server::CServerDoc& document = call.context.document();
  const auto write = format == "pdf" ? folders::writeBillPdf : folders::writeBill;
  return finish(call, file, write(request, document.folderServices(), document.valueFormatter(), file, nullptr));
}

// "2026-11" as its first day; without the option the month before this one, the last that is complete.
base::DateTime monthOf(const Invocation& call) {
  const auto typed = call.arguments.find("--month");
  if (!typed) return folders::monthFrom(call.context.clock().now(), -1);
  const auto first = base::DateTime::fromStored(*typed + "-01");
  if (!first || typed->size() != 7) {
    throw WrongUsage(base::format("--month takes a month such as 2026-11, not \"%s\".", *typed));
  }
  return *first;
}

int month(const Invocation& call) {
  const base::DateTime day = monthOf(call);
  const std::string format = formatOf(call.arguments);
  if (findForm(kSummaries, format) == nullptr) throw WrongUsage("The month's page is html or pdf.");
  const fs::path file = targetOf(call, "month." + format);
  server::CServerDoc& document = call.context.document();
  const auto write = format == "pdf" ? folders::writeMonthPdf : folders::writeMonthPage;
  return finish(call, file, write(day, document.folderServices(), document.valueFormatter(), file));
}

constexpr OptionSpec kOut = {.name = "--out",
                             .help = "File or folder to write to (default: the folder of setting Path)",
                             .valueName = "FILE|DIR"};
constexpr OptionSpec kOpen = {
    .name = "--open", .takes = Takes::Nothing, .help = "Open what was written with the desktop's program for it"};
constexpr OptionSpec kPrint = {.name = "--print", .takes = Takes::Nothing, .help = "Print what was written"};

constexpr OptionSpec kPageFormat = {
    .name = "--format", .help = "html or pdf (default: as the file is named, else html)", .valueName = "FORMAT"};

constexpr OptionSpec kReportOptions[] = {
    kFolderId,
    kFolderSort,
    kFolderColumns,
    kOut,
    {.name = "--format",
     .help = "html, csv, xlsx or pdf (default: as the file is named, else html)",
     .valueName = "FORMAT"},
    {.name = "--bom",
     .takes = Takes::Nothing,
     .help = "Begin a CSV file with the mark that spreadsheets need for letters"},
    {.name = "--summary", .takes = Takes::Nothing, .help = "A chart with its figures, of statistics"},
    kOpen,
    kPrint,
};
constexpr OptionSpec kBillOptions[] = {
    {.name = "EXT", .help = "The extension", .required = true, .valueName = "EXT"},
    {.name = "--from", .help = "Begin of the period", .required = true, .valueName = "DATE"},
    {.name = "--to", .help = "End of the period, that day included", .required = true, .valueName = "DATE"},
    kOut,
    kPageFormat,
    kOpen,
    kPrint,
};

constexpr OptionSpec kMonthOptions[] = {
    {.name = "--month", .help = "The month (default: the one before this)", .valueName = "YYYY-MM"},
    kOut,
    kPageFormat,
    kOpen,
    kPrint,
};

constexpr Command kCommands[] = {
    {"report", "Write the rows of a folder to a file, as the filter lets them through",
     "tallyctl report 100 --sort=401 --columns=401,400,407,404,408 --out calls.html\n"
     "tallyctl report 106 --summary --out /srv/reports\n"
     "tallyctl report 101 --out extensions.xlsx",
     kReportOptions, kViewCalls, report},
    {"bill", "Write the bill of an extension; the stored filter stays as it is",
     "tallyctl bill 204 --from 2026-11-01 --to 2026-11-30 --out bill-204.pdf", kBillOptions, kViewCalls, bill},
    {"month", "Write the page of a month: its calls beside earlier months, what was dearest, missed calls, lines",
     "tallyctl month\ntallyctl month --month 2026-11 --out november.pdf", kMonthOptions, kViewCalls, month},
};

}  // namespace report_commands

std::span<const Command> reportCommands() {
  return report_commands::kCommands;
}

}  // namespace ctl
