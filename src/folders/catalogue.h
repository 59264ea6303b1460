#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "folders/numbers.h"
#include "folders/services.h"

namespace folders {

enum ColumnFlag : unsigned {
  ColumnShown = 0x2,   // by default
  ColumnKey = 0x8,     // the row's key, never shown
  ColumnIf100 = 0x10,  // shown only while the folder has FolderShow100
  ColumnIf200 = 0x20,  // shown only while the folder has FolderShow200
};

enum FolderFlag : unsigned {
  FolderStandard = 0x80,
  FolderShow100 = 0x100,
  FolderShow200 = 0x200,
  FolderConditional = 0x400,
};

// One column of a folder.
struct ColumnDefinition {
  int kind;                            // a ColumnKind
  const char* caption;                 // IDS_ key; IDS_NULL for the key column
  std::array<const char*, 2> selects;  // select expressions; unused ones null
  const char* sort;                    // sort expression; null: cannot be sorted
  unsigned flags = ColumnShown;
};

// Where a folder's condition comes from.
enum class ConditionSource { None, LogFilter, CallFilter };

struct FolderDefinition {
  int id;               // a FolderNumber
  const char* caption;  // IDS_ key
  const char* table;
  const char* grouping;  // empty for a plain list
  std::span<const ColumnDefinition> columns;
  unsigned flags;
  ConditionSource condition;
};

// The folders of the tree, in order.
[[nodiscard]] std::span<const FolderDefinition> standardFolders();
// Null when there is none with that number.
[[nodiscard]] const FolderDefinition* findFolder(int id);
// The contacts list: a list of the same form, but none of the folders above.
[[nodiscard]] const FolderDefinition& contactsList();

// The folder's caption as it shows in the tree: translated, up to 31 characters.
[[nodiscard]] std::string folderCaption(const FolderDefinition& definition, const foundation::LanguageFile& texts);

// True for the folders that group calls.
[[nodiscard]] inline bool isStatistic(const FolderDefinition& definition) {
  return definition.grouping[0] != '\0';
}

// The condition that the folder's rows must meet now; empty for folders without one. It may be one that does not parse.
// Throws filter::FilterError when it would lift the user's restriction.
[[nodiscard]] std::string currentCondition(const FolderDefinition& definition, const FolderServices& services);

}  // namespace folders
