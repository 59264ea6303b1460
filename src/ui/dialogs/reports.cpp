#include <QFileDialog>
#include <QFileInfo>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QStandardPaths>
#include <functional>

#include "filter/periods.h"
#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/pdf_pages.h"
#include "folders/summary_page.h"
#include "platform/progress.h"
#include "ui/dialogs.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/report_place.h"
#include "ui/qt_document_handler.h"
#include "ui/screen_fit.h"

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

// Rows up to which a preview is laid out while one waits.
constexpr std::int64_t kPreviewRows = 20'000;

void onLandscape(QPrinter& printer, const QString& title) {
  printer.setPageOrientation(QPageLayout::Landscape);
  printer.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
  printer.setDocName(title);
}

// The filter's period as a file is called by it: "2026-10", "2026", "2026-10-05", "2026-10-05 - 2026-10-20"; empty
// without one.
QString periodName(server::CServerDoc& document, const folders::FolderView& folder) {
  const filter::FilterSettings settings = document.callFilter().settings();
  const bool counts = folder.folder().definition().condition == folders::ConditionSource::CallFilter;
  if (!counts || settings.onFilter != 1 || settings.onPeriod == 0) return {};
  const filter::Period period = filter::periodOf(settings);
  for (const auto& [preset, format] :
       {std::pair(filter::Preset::Today, "%Y-%m-%d"), std::pair(filter::Preset::ThisMonth, "%Y-%m"),
        std::pair(filter::Preset::ThisYear, "%Y")}) {
    if (filter::periodOf(preset, period.start) == period) return toQt(period.start.format(format));
  }
  return toQt(period.start.format("%Y-%m-%d") + " - " + period.end.format("%Y-%m-%d"));
}

QString shownTitle(server::CServerDoc& document, const folders::FolderView& folder) {
  const QString period = periodName(document, folder);
  const QString caption = toQt(folder.folder().caption());
  return period.isEmpty() ? caption : caption + ' ' + period;
}

struct FileQuestion {
  const char* name;  // of the dialog
  const char* captionKey;
  QStringList kinds;  // "PDF (*.pdf)"
  const char* suffix;
};

// Asks in the folder that was used last. Empty when the operator chose none.
std::filesystem::path askFile(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                              const folders::FolderView& folder, const FileQuestion& question) {
  constexpr const char* kLastFolder = "LastExportFolder";
  auto& config = document.app().config();
  const QString last = toQt(config.ReadConfigString(kLastFolder, "general", foundation::StoreMachine, ""));
  QFileDialog dialog(
      parent, texts(question.captionKey).remove("..."),
      QFileInfo(last).isDir() ? last : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  dialog.setObjectName(question.name);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters(question.kinds);
  dialog.setDefaultSuffix(question.suffix);
  dialog.selectFile(shownTitle(document, folder).replace('/', '-'));
  // The suffix follows the kind that was chosen, unless the name has one.
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& kind) {
    dialog.setDefaultSuffix(kind.section("*.", 1).section(')', 0, 0));
  });
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  const QString name = dialog.selectedFiles().constFirst();
  config.WriteConfigString(fromQt(QFileInfo(name).absolutePath()), kLastFolder, "general", foundation::StoreMachine);
  return std::filesystem::path(fromQt(name));
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

void previewFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent, folders::FolderView& folder) {
  if (folder.rowCount() > kPreviewRows) {
    return inform(parent, texts, texts.format("IDS_PREVIEW_TOO_LONG", folder.rowCount()));
  }
  const std::filesystem::path page = reportFile(document, "list.html");
  if (!writeUnderProgress(document, texts, parent, folder, page,
                          [&] { return folders::writeListReport(folder, page); })) {
    return;
  }
  const QString html = readPage(page);
  QPrinter printer(QPrinter::HighResolution);
  onLandscape(printer, shownTitle(document, folder));
  QPrintPreviewDialog dialog(&printer, parent);
  dialog.setObjectName("preview");
  dialog.resize(QSize(1000, 700).boundedTo(availableSize(dialog)));
  QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                   [&html](QPrinter* paper) { printPage(html, *paper, [] { return true; }); });
  dialog.exec();
}

std::filesystem::path saveFolderAsPdf(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                      folders::FolderView& folder) {
  const std::filesystem::path file =
      askFile(document, texts, parent, folder, {"savePdf", "IDS_ACTION_SAVE_PDF", {"PDF (*.pdf)"}, "pdf"});
  if (file.empty()) return {};
  // A statistic with its chart, as the summary page has it.
  const bool summary = folders::canSummarise(folder.folder().definition());
  const bool written = writeUnderProgress(document, texts, parent, folder, file, [&] {
    return summary ? folders::writeSummaryPdf(folder, file) : folders::writeListPdf(folder, file);
  });
  return written ? file : std::filesystem::path();
}

std::filesystem::path exportFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                   folders::FolderView& folder) {
  const std::filesystem::path file = askFile(document, texts, parent, folder,
                                             {"export", "IDS_ACTION_EXPORT", {"CSV (*.csv)", "XLSX (*.xlsx)"}, "csv"});
  if (file.empty()) return {};
  const bool spreadsheet = QFileInfo(toQt(file.string())).suffix().compare("xlsx", Qt::CaseInsensitive) == 0;
  const bool written = writeUnderProgress(document, texts, parent, folder, file, [&] {
    return spreadsheet ? folders::exportXlsx(folder, file)
                       : folders::exportCsv(folder, file, folders::CsvMark::ByteOrder);
  });
  return written ? file : std::filesystem::path();
}

}  // namespace ui
