#include "ui/settings/settings_report.h"

#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"
#include "ui/dialogs/file_question.h"

namespace ui {

namespace {

constexpr int kPageCodepage = 1252;

std::string cell(const char* tag, const QString& text) {
  return base::format("<%s align=left nowrap>%s&nbsp;</%s>", tag, base::escapeHtml(fromQt(text)), tag);
}

QString shown(const RecordColumn& column, int row, const Texts& texts) {
  const QString text = column.read(row);
  if (!column.checkbox) return text;
  return text == "1" ? texts("IDS_YES") : QString();
}

// A free trunk entry has its number only.
bool holdsSomething(const RecordTableModel& model, int row) {
  for (int c = 1; c < model.columnCount(); ++c) {
    const QString text = model.column(c).read(row);
    if (!text.isEmpty() && text != "-" && text != "0") return true;
  }
  return false;
}

std::string tableOf(const SettingsPage& page, const Texts& texts) {
  const RecordTableModel& model = *page.table->model();
  std::string html =
      base::format("<h3>%s</h3>\n<table border=1 cellspacing=2 cellpadding=0 style='font-size:8.0pt;'><tr>",
                   base::escapeHtml(fromQt(page.caption)));
  for (int c = 0; c < model.columnCount(); ++c) html += cell("th", model.column(c).caption);
  html += "</tr>\n";
  for (int row = 0; row < model.rowCount(); ++row) {
    if (!holdsSomething(model, row)) continue;
    html += "<tr>";
    for (int c = 0; c < model.columnCount(); ++c) html += cell("td", shown(model.column(c), row, texts));
    html += "</tr>\n";
  }
  return html + "</table>\n";
}

}  // namespace

bool writeSettingsReport(const std::filesystem::path& file, const std::vector<SettingsPage>& pages,
                         const Texts& texts) {
  std::string html = base::format(
      "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"><title>%s"
      "</title></head><body style='font-family: Verdana; font-size:8.0pt;'>\n",
      base::escapeHtml(fromQt(texts("IDS_SETTINGS"))));
  for (const SettingsPage& page : pages) {
    if (page.reported) html += tableOf(page, texts);
  }
  const std::string bytes = base::encodeHtml(html + "</body></html>\n", kPageCodepage);
  return replaceFile(toQt(file.string()), QByteArray::fromStdString(bytes));
}

}  // namespace ui
