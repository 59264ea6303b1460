#pragma once

#include "ctl/context.h"
#include "folders/folder_view.h"

namespace ctl {

inline constexpr OptionSpec kFolderId = {
    .name = "ID", .help = "Number of the folder, see folder list", .required = true, .valueName = "ID"};
inline constexpr OptionSpec kFolderSort = {
    .name = "--sort", .help = "Column to sort by, by its kind; a minus sorts downwards", .valueName = "KIND|-KIND"};
inline constexpr OptionSpec kFolderColumns = {
    .name = "--columns", .help = "Columns to show, by their kinds (default all)", .valueName = "KIND,KIND..."};

// The folder that kFolderId names. Throws Failure when there is none; folders that are not about calls need the
// administrators' right, too.
[[nodiscard]] const folders::FolderDefinition& folderOf(const Invocation& call);

// What kFolderSort asks for, 0 without it.
[[nodiscard]] int typedSortKey(const Invocation& call);
// Why a folder is not sorted so, and what to do.
[[nodiscard]] std::string unsortableText(const folders::FolderDefinition& definition, int sortKey);
// The typed sort key. Throws WrongUsage when the folder cannot be sorted so.
[[nodiscard]] int sortKeyOf(const Invocation& call, const folders::FolderDefinition& definition);

// Shows only the columns that kFolderColumns asks for, in its order. Throws WrongUsage when the folder lacks one.
void chooseColumns(const Invocation& call, folders::FolderView& view);

}  // namespace ctl
