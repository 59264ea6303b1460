#include <QFileInfo>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <functional>

#include "filter/periods.h"
#include "folders/exports.h"
#include "folders/list_report.h"
#include "folders/pdf_pages.h"
#include "folders/summary_page.h"
#include "platform/progress.h"
#include "ui/dialogs.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/report_place.h"
#include "ui/page_setup.h"
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

}  // namespace

std::filesystem::path makeListReport(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                     folders::FolderView& folder, ReportUse use) {
  const std::filesystem::path page = reportFile(document, "list.html");
  if (!writeUnderProgress(document, texts, parent, folder, page,
                          [&] { return folders::writeListReport(folder, page); })) {
    return {};
  }
  return handOver(document, texts, parent, page, use) ? page : std::filesystem::path();
}

std::filesystem::path makeSummaryPage(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                      folders::FolderView& folder) {
  if (!folders::canSummarise(folder.folder().definition())) {
    inform(parent, texts, texts("IDS_SUMMARY_WHICH"));
    return {};
  }
  const std::filesystem::path page = reportFile(document, "summary.html");
  if (!writeUnderProgress(document, texts, parent, folder, page,
                          [&] { return folders::writeSummaryPage(folder, page); })) {
    return {};
  }
  handOver(document, texts, parent, page, ReportUse::Open);
  return page;
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
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(shownTitle(document, folder));
  usePageSetup(printer, document.app().config());
  PreviewedPage sheets;
  if (!sheets.layOut(readPage(page), printer, texts.language().TranslateFormat("IDS_PREVIEW_PAGE", folder.rowCount()),
                     document.app().surroundings().person)) {
    return;
  }
  QPrintPreviewDialog dialog(&printer, parent);
  dialog.setObjectName("preview");
  dialog.resize(QSize(1000, 700).boundedTo(availableSize(dialog)));
  QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                   [&sheets](QPrinter* paper) { sheets.print(*paper); });
  dialog.exec();
  keepPageSetup(printer, document.app().config());
}

std::filesystem::path saveFolderAsPdf(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                      folders::FolderView& folder) {
  const std::filesystem::path file =
      askFile(document.app().config(), texts, parent,
              {"savePdf", "IDS_ACTION_SAVE_PDF", {"PDF (*.pdf)"}, shownTitle(document, folder)});
  if (file.empty()) return {};
  // A statistic with its chart, as the summary page has it.
  const auto sheet = keptSheet(document.app().config());
  const bool summary = folders::canSummarise(folder.folder().definition());
  const bool written = writeUnderProgress(document, texts, parent, folder, file, [&] {
    return summary ? folders::writeSummarySheets(folder, file, sheet) : folders::writeListSheets(folder, file, sheet);
  });
  return written ? file : std::filesystem::path();
}

std::filesystem::path exportFolder(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                   folders::FolderView& folder) {
  const std::filesystem::path file =
      askFile(document.app().config(), texts, parent,
              {"export", "IDS_ACTION_EXPORT", {"XLSX (*.xlsx)", "CSV (*.csv)"}, shownTitle(document, folder)});
  if (file.empty()) return {};
  const bool spreadsheet = QFileInfo(toQt(file.string())).suffix().compare("xlsx", Qt::CaseInsensitive) == 0;
  const bool written = writeUnderProgress(document, texts, parent, folder, file, [&] {
    return spreadsheet ? folders::exportXlsx(folder, file)
                       : folders::exportCsv(folder, file, folders::CsvMark::ByteOrder);
  });
  return written ? file : std::filesystem::path();
}

}  // namespace ui
