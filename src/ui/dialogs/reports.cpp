#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>
#include <functional>

#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/summary_page.h"
#include "platform/progress.h"
#include "ui/dialogs.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/report_place.h"

namespace ui {

namespace {

struct Stopped {};

// Writes a file from the folder's rows under a progress window; true when it is there. A stop or a fault leaves the
// file as it was.
bool writeUnderProgress(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder,
                        const std::filesystem::path& file, const std::function<bool()>& write) {
  platform::Operator& person = document.app().surroundings().person;
  bool written = false;
  attempt(parent, texts, [&] {
    const platform::Progress progress(person, texts.language().Translate("IDS_CALLS_REPORT"),
                                      texts.language().TranslateFormat("IDS_WRITING_FILE", file.string()),
                                      folder.rowCount());
    struct Watch {
      folders::FolderView& folder;
      ~Watch() { folder.watchRows({}); }
    };
    const Watch watch{folder};
    folder.watchRows([&person](std::int64_t rows) {
      if (!person.progressStep(rows)) throw Stopped{};
    });
    try {
      written = write();
    } catch (const Stopped&) {
    }
  });
  return written;
}

}  // namespace

void makeListReport(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder,
                    ReportUse use) {
  const std::filesystem::path page = reportFile(document, "list.html");
  if (writeUnderProgress(document, texts, parent, folder, page,
                         [&] { return folders::writeListReport(folder, page); })) {
    handOver(document, texts, parent, page, use);
  }
}

void makeSummaryPage(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder) {
  if (!folders::canSummarise(folder.folder().definition())) {
    return inform(parent, texts, texts("IDS_SUMMARY_WHICH"));
  }
  const std::filesystem::path page = reportFile(document, "summary.html");
  if (writeUnderProgress(document, texts, parent, folder, page,
                         [&] { return folders::writeSummaryPage(folder, page); })) {
    handOver(document, texts, parent, page, ReportUse::Open);
  }
}

void exportFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder) {
  QFileDialog dialog(parent, texts("IDS_ACTION_EXPORT").remove("..."),
                     QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  dialog.setObjectName("export");
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters({"CSV (*.csv)", "XLSX (*.xlsx)"});
  dialog.setDefaultSuffix("csv");
  // The suffix follows the kind that was chosen, unless the name has one.
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& kind) {
    dialog.setDefaultSuffix(kind.startsWith("XLSX") ? "xlsx" : "csv");
  });
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
  const QString name = dialog.selectedFiles().constFirst();
  const bool spreadsheet = QFileInfo(name).suffix().compare("xlsx", Qt::CaseInsensitive) == 0;
  const std::filesystem::path file(fromQt(name));
  writeUnderProgress(document, texts, parent, folder, file, [&] {
    return spreadsheet ? folders::exportXlsx(folder, file)
                       : folders::exportCsv(folder, file, folders::CsvMark::ByteOrder);
  });
}

}  // namespace ui
