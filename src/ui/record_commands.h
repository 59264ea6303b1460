#pragma once

#include <optional>

#include "server/server_doc.h"
#include "ui/details_view.h"
#include "ui/folder_view.h"
#include "ui/texts.h"
#include "ui/undo_stack.h"

namespace ui {

// Users, groups and contacts, as the lists of them are worked on. The changing calls return true when something
// changed; they throw jet::Error.

struct RecordRights {
  bool view = false;
  bool change = false;
};
// What the session may do with the records of that list; nothing where its rows are no such records.
[[nodiscard]] RecordRights recordRights(int folder, server::CServerDoc& document);

bool newRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, int folder);
// The record of the current row.
bool editRecord(server::CServerDoc& document, const Texts& texts, QWidget* parent, const CFolderView& list);
// The current row's record field by field: what the list shows of it, and all of a contact.
[[nodiscard]] DetailsView::Fields currentDetails(server::CServerDoc& document, const Texts& texts,
                                                 const CFolderView& list);
// The selected records, after a question; `undo` can bring them back.
bool deleteRecords(server::CServerDoc& document, const Texts& texts, const CFolderView& list, UndoStack& undo);
// RecordID of the current row; nothing when there is none.
[[nodiscard]] std::optional<std::int64_t> currentRecord(const CFolderView& list);

}  // namespace ui
