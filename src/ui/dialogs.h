#pragma once

#include <QWidget>
#include <filesystem>
#include <utility>
#include <vector>

#include "folders/folder_view.h"
#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// The modal dialogs that the main window opens. Those that change something return true when they did.

bool editCallFilter(server::CServerDoc& document, const Texts& texts, QWidget* parent);
bool editLogFilter(server::CServerDoc& document, const Texts& texts, QWidget* parent);
bool editCurrencies(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// The database-update dialog: repricing and the like over a period.
bool updateStoredCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// The bill of an extension; `extension` is proposed, may be empty. The page that was written; empty when none was.
std::filesystem::path makeBill(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                               const QString& extension);
void searchContacts(server::CServerDoc& document, const Texts& texts, QWidget* parent);
bool editContact(server::CServerDoc& document, const Texts& texts, QWidget* parent, std::int32_t recordId);
bool addContact(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// User (group) of that name; an empty name makes a new one.
bool editUser(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& name);
bool editGroup(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& name);
// Carries an old database over into a new folder, for use at the next start when the operator wants so.
bool convertOldDatabase(server::CServerDoc& document, const Texts& texts, QWidget* parent);
void showAbout(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// The keys of the commands, text and key, and those that always work.
void showKeys(const Texts& texts, QWidget* parent, const std::vector<std::pair<QString, QString>>& keys);
// How the price of a stored call comes about, with the tariffs of now. `call` is its RecordID.
void explainPrice(server::CServerDoc& document, const Texts& texts, QWidget* parent, std::int64_t call);

enum class ReportUse { Open, Print };
// The list report of an open folder, in the folder of setting "Path" or the user's documents: the page that was
// written, empty when none was.
std::filesystem::path makeListReport(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                     folders::FolderView& folder, ReportUse use);
// The page with a statistic folder's chart, likewise.
std::filesystem::path makeSummaryPage(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                      folders::FolderView& folder);
// How the list will look on paper, from where it can be printed.
void previewFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder);
// These ask for a file name, PDF, CSV or XLSX, and propose one of what is shown and the filter's period. The file that
// was written; empty when none was.
std::filesystem::path saveFolderAsPdf(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                      folders::FolderView& folder);
std::filesystem::path exportFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                   folders::FolderView& folder);

}  // namespace ui
