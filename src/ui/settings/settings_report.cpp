#include "ui/settings/settings_report.h"

#include <QSaveFile>
#include <initializer_list>

#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"

namespace ui {

namespace {

constexpr int kPageCodepage = 1252;

std::string cell(const char* tag, std::string_view text) {
  return base::format("<%s align=left nowrap>%s&nbsp;</%s>", tag, base::escapeHtml(text), tag);
}

class Page {
 public:
  explicit Page(const Texts& texts) : texts_(texts) {
    html_ =
        "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"></head>"
        "<body style='font-family: Verdana; font-size:8.0pt;'>\n";
  }

  void beginTable(const char* titleKey, std::initializer_list<const char*> columnKeys) {
    html_ += base::format("<h3>%s</h3>\n<table border=1 cellspacing=2 cellpadding=0 style='font-size:8.0pt;'><tr>",
                          base::escapeHtml(fromQt(texts_(titleKey))));
    for (const char* key : columnKeys) html_ += cell("th", fromQt(texts_(key)));
    html_ += "</tr>\n";
  }
  void row(std::initializer_list<std::string> cells) {
    html_ += "<tr>";
    for (const std::string& text : cells) html_ += cell("td", text);
    html_ += "</tr>\n";
  }
  void endTable() { html_ += "</table>\n"; }

  [[nodiscard]] std::string finished() const { return base::encodeHtml(html_ + "</body></html>\n", kPageCodepage); }

 private:
  const Texts& texts_;
  std::string html_;
};

}  // namespace

bool writeSettingsReport(const std::filesystem::path& file, const EditedParties& parties, const Texts& texts) {
  Page page(texts);
  page.beginTable("IDS_EXTENSIONS", {"IDS_EXTENSION", "IDS_DESCRIPTION", "IDS_DEPARTMENT"});
  for (const auto& e : parties.extensions) page.row({e.extension, e.description, e.department});
  page.endTable();
  page.beginTable("IDS_ACCOUNTS", {"IDS_ACCOUNT", "IDS_DESCRIPTION", "IDS_DEPARTMENT"});
  for (const auto& a : parties.accounts) page.row({a.account, a.description, a.department});
  page.endTable();
  page.beginTable("IDS_CLIENTS", {"IDS_CLIENT", "IDS_ACCOUNT", "IDS_FOLDER"});
  for (const auto& c : parties.clients) page.row({c.name, c.account, c.folder});
  page.endTable();
  page.beginTable("IDS_TRUNKS", {"IDS_TRUNK", "IDS_LABEL", "IDS_PROVIDER_ID", "IDS_PROFILE"});
  for (const auto& t : parties.trunks) {
    if (t.providerId > 0) page.row({t.trunk, t.label, std::to_string(t.providerId), t.profile});
  }
  page.endTable();
  QSaveFile out(toQt(file.string()));
  if (!out.open(QIODevice::WriteOnly)) return false;
  const std::string bytes = page.finished();
  out.write(bytes.data(), static_cast<qint64>(bytes.size()));
  return out.commit();
}

}  // namespace ui
