#include <limits>

#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/folder_argument.h"
#include "ctl/folder_json.h"
#include "folders/call_totals.h"
#include "folders/folder_view.h"
#include "folders/view_log.h"

namespace ctl {

namespace folder_commands {

using folders::CellValue;
using folders::FolderDefinition;
using folders::FolderView;

int list(const Invocation& call) {
  Table table({"ID", "Caption", "Kind"});
  for (const FolderDefinition& folder : folders::standardFolders()) {
    table.add({std::int64_t{folder.id}, folders::folderCaption(folder, call.context.language()),
               std::string(folders::isStatistic(folder) ? "statistics" : "list")});
  }
  call.print(table);
  return 0;
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

// What is to be shown of a view.
struct Shown {
  FolderView& view;
  std::int64_t limit;  // rows
  bool totals;         // of all rows, whatever the limit
};

void showText(std::ostream& out, const Shown& shown) {
  FolderView& view = shown.view;
  std::vector<bool> right;
  for (const folders::ViewColumn& column : view.columns()) {
    right.push_back(column.alignment == folders::Alignment::Right);
  }
  const std::vector<std::string> totals = shown.totals ? view.totals() : std::vector<std::string>();
  TextColumns columns(captionsOf(view), right);
  forEachRow(view, shown.limit, [&](const std::vector<std::string>& row) { columns.widen(row); });
  if (shown.totals) columns.widen(totals);
  columns.printHead(out);
  forEachRow(view, shown.limit, [&](const std::vector<std::string>& row) { columns.printRow(out, row); });
  if (!shown.totals) return;
  columns.printRow(out, totals);
  out << folders::recordCountText(view.rowCount(), 0, view.services().texts) << '\n';
  if (view.folder().definition().condition == folders::ConditionSource::CallFilter) {
    out << folders::totalCostText(folders::filteredTotals(view.services()), view.services(), view.formatter()) << '\n';
  }
}

void showCsv(std::ostream& out, const Shown& shown) {
  printCsvLine(out, captionsOf(shown.view));
  forEachRow(shown.view, shown.limit, [&](const std::vector<std::string>& row) { printCsvLine(out, row); });
  if (shown.totals) printCsvLine(out, shown.view.totals());
}

void showJson(std::ostream& out, const Shown& shown) {
  FolderView& view = shown.view;
  FolderJson json(out, view.folder().id(), view.folder().caption());
  for (const folders::ViewColumn& column : view.columns()) json.addColumn(column.definition->kind, column.caption);
  forEachRow(view, shown.limit, [&](const std::vector<std::string>& row) { json.addRow(row); });
  if (shown.totals) json.addTotals(view.totals());
  json.finish();
}

int show(const Invocation& call) {
  const FolderDefinition& definition = folderOf(call);
  server::CServerDoc& document = call.context.document();
  FolderView view(definition, document.folderServices(), document.valueFormatter(), sortKeyOf(call, definition));
  chooseColumns(call, view);
  folders::logShown(view);
  constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();
  const Shown shown{view, call.arguments.integer("--limit", kAll, 0, kAll), call.arguments.has("--totals")};
  switch (call.global.format) {
    case TableFormat::Text:
      showText(call.out, shown);
      break;
    case TableFormat::Csv:
      showCsv(call.out, shown);
      break;
    case TableFormat::Json:
      showJson(call.out, shown);
      break;
  }
  return 0;
}

int sql(const Invocation& call) {
  const FolderDefinition& definition = folderOf(call);
  folders::CDbFolder folder(definition, call.context.document().folderServices());
  folder.setSortKey(typedSortKey(call));
  // Any sort key makes a query; one that sorts by nothing is most likely not what was meant.
  if (folder.sortKey() != 0 && folder.BuildOrderClause().empty()) {
    call.context.person().messageBox(unsortableText(definition, folder.sortKey()));
  }
  call.out << folder.BuildQuery() << '\n';
  return 0;
}

constexpr OptionSpec kSqlOptions[] = {kFolderId, kFolderSort};
constexpr OptionSpec kShowOptions[] = {
    kFolderId,
    kFolderSort,
    kFolderColumns,
    {.name = "--limit", .help = "Rows to show (default all)", .valueName = "N"},
    {.name = "--totals", .takes = Takes::Nothing, .help = "The sums of all rows, too"}};

constexpr Command kCommands[] = {
    {"folder list", "List the folders", "tallyctl folder list", {}, kViewCalls, list},
    {"folder show", "Show the rows of a folder, as the filter lets them through",
     "tallyctl folder show 100 --sort=-401 --limit 20\n"
     "tallyctl folder show 103 --format csv --totals\n"
     "tallyctl folder show 112 --json",
     kShowOptions, kViewCalls, show},
    {"folder sql", "Print the query that a folder runs", "tallyctl folder sql 103 --sort=-422", kSqlOptions, kViewCalls,
     sql},
};

}  // namespace folder_commands

std::span<const Command> folderCommands() {
  return folder_commands::kCommands;
}

}  // namespace ctl
