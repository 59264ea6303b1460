#include <cstdlib>
#include <limits>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/folder_json.h"
#include "folders/folder_view.h"

namespace ctl {

namespace {

using folders::CellValue;
using folders::FolderDefinition;
using folders::FolderView;

int list(const Invocation& call) {
  Table table({"ID", "Caption", "Kind"});
  for (const FolderDefinition& folder : folders::standardFolders()) {
    table.add({std::int64_t{folder.id}, call.context.language().Translate(folder.caption),
               std::string(folders::isStatistic(folder) ? "statistics" : "list")});
  }
  call.print(table);
  return 0;
}

const FolderDefinition& definitionOf(const Invocation& call) {
  const auto id = static_cast<int>(call.arguments.integer("ID", 0, 0, std::numeric_limits<std::int32_t>::max()));
  const FolderDefinition* definition = folders::findFolder(id);
  if (definition == nullptr) throw Failure(base::format("There is no folder %d. See tallyctl folder list.", id));
  // The audit log is the administrators' matter.
  if (definition->condition == folders::ConditionSource::LogFilter) {
    call.context.require(kViewSettings);
  }
  return *definition;
}

int sortKeyOf(const Invocation& call, const FolderDefinition& definition) {
  constexpr std::int64_t kMostKind = 100'000;
  const auto key = static_cast<int>(call.arguments.integer("--sort", 0, -kMostKind, kMostKind));
  if (key == 0) return 0;
  for (const folders::ColumnDefinition& column : definition.columns) {
    if (column.kind == std::abs(key) && column.sort != nullptr) return key;
  }
  throw WrongUsage(
      base::format("Folder %d cannot be sorted by %d. Columns are named by their kinds, which --json "
                   "shows; a minus sorts downwards (--sort=-404).",
                   definition.id, std::abs(key)));
}

// The rows' texts one after the other, at most `limit`.
template <typename Row>
void forEachRow(FolderView& view, std::int64_t limit, const Row& row) {
  if (limit <= 0) return;
  view.forEachRow([&](std::span<const CellValue> cells) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < cells.size(); ++i) texts.push_back(view.text(i, cells[i]));
    row(texts);
    return --limit > 0;
  });
}

std::vector<std::string> captionsOf(const FolderView& view) {
  std::vector<std::string> captions;
  for (const folders::ViewColumn& column : view.columns()) captions.push_back(column.caption);
  return captions;
}

void showText(std::ostream& out, FolderView& view, std::int64_t limit) {
  std::vector<bool> right;
  for (const folders::ViewColumn& column : view.columns()) {
    right.push_back(column.alignment == folders::Alignment::Right);
  }
  TextColumns columns(captionsOf(view), right);
  forEachRow(view, limit, [&](const std::vector<std::string>& row) { columns.widen(row); });
  columns.printHead(out);
  forEachRow(view, limit, [&](const std::vector<std::string>& row) { columns.printRow(out, row); });
}

void showCsv(std::ostream& out, FolderView& view, std::int64_t limit) {
  printCsvLine(out, captionsOf(view));
  forEachRow(view, limit, [&](const std::vector<std::string>& row) { printCsvLine(out, row); });
}

void showJson(std::ostream& out, FolderView& view, std::int64_t limit) {
  FolderJson json(out, view.folder().id(), view.folder().caption());
  for (const folders::ViewColumn& column : view.columns()) json.addColumn(column.definition->kind, column.caption);
  forEachRow(view, limit, [&](const std::vector<std::string>& row) { json.addRow(row); });
  json.finish();
}

int show(const Invocation& call) {
  const FolderDefinition& definition = definitionOf(call);
  const folders::FolderServices& services = call.context.document().folderServices();
  const folders::ValueFormatter formatter(services.config, services.texts, services.definitions);
  FolderView view(definition, services, formatter, sortKeyOf(call, definition));
  constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();
  const std::int64_t limit = call.arguments.integer("--limit", kAll, 0, kAll);
  switch (call.global.format) {
    case TableFormat::Text:
      showText(call.out, view, limit);
      break;
    case TableFormat::Csv:
      showCsv(call.out, view, limit);
      break;
    case TableFormat::Json:
      showJson(call.out, view, limit);
      break;
  }
  return 0;
}

int sql(const Invocation& call) {
  const FolderDefinition& definition = definitionOf(call);
  folders::CDbFolder folder(definition, call.context.document().folderServices());
  folder.setSortKey(sortKeyOf(call, definition));
  call.out << folder.BuildQuery() << '\n';
  return 0;
}

constexpr OptionSpec kId = {.name = "ID", .help = "Number of the folder", .required = true};
constexpr OptionSpec kSort = {
    .name = "--sort", .help = "Column to sort by, by its kind; a minus sorts downwards", .valueName = "KIND|-KIND"};
constexpr OptionSpec kSqlOptions[] = {kId, kSort};
constexpr OptionSpec kShowOptions[] = {
    kId, kSort, {.name = "--limit", .help = "Rows to show (default all)", .valueName = "N"}};

constexpr Command kCommands[] = {
    {"folder list", "List the folders", "tallyctl folder list", {}, kViewCalls, list},
    {"folder show", "Show the rows of a folder, as the filter lets them through",
     "tallyctl folder show 100 --sort=-401 --limit 20\n"
     "tallyctl folder show 103 --format csv\n"
     "tallyctl folder show 112 --json",
     kShowOptions, kViewCalls, show},
    {"folder sql", "Print the query that a folder runs", "tallyctl folder sql 103 --sort=-422", kSqlOptions, kViewCalls,
     sql},
};

}  // namespace

std::span<const Command> folderCommands() {
  return kCommands;
}

}  // namespace ctl
