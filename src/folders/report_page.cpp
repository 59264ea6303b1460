#include "folders/report_page.h"

#include <array>

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "base/version.h"
#include "filter/description.h"
#include "folders/numbers.h"

namespace folders {

namespace {

// Street and town, whichever are known.
std::string addressLine(const FolderServices& services) {
  const std::string street = organization(services, foundation::keys::OrganizationAddress);
  const std::string town = organization(services, foundation::keys::OrganizationOras);
  return street.empty() || town.empty() ? street + town : street + ", " + town;
}

// Parties whose columns take the captions that the user gave them.
struct PartyCaption {
  int kind;
  const foundation::TextKey& caption;
};
constexpr std::array kPartyCaptions = {
    PartyCaption{KindExtension, foundation::keys::captions::Interior},
    PartyCaption{KindDepartment, foundation::keys::captions::Depart},
    PartyCaption{KindClient, foundation::keys::captions::Client},
    PartyCaption{KindFile, foundation::keys::captions::Folder},
};

}  // namespace

std::string organization(const FolderServices& services, const foundation::TextKey& key) {
  return services.config.ReadConfigString(key);
}

std::string printedHeading(const ViewColumn& column, foundation::ConfigManager& config) {
  for (const PartyCaption& party : kPartyCaptions) {
    if (party.kind != column.definition->kind) continue;
    return config.ReadConfigString(party.caption, column.caption);
  }
  return column.caption;
}

HeaderTexts headerTexts(std::string_view name, const FolderServices& services) {
  const foundation::LanguageFile& texts = services.texts;
  return {.name = base::format("%s %s", texts.Translate("IDS_NAME"), name),
          .date = base::format("%s %s", texts.Translate("IDS_DATE_GENERATED"),
                               services.clock.now().format(kDateTimeFormat)),
          .address = addressLine(services),
          .fiscalCode = organization(services, foundation::keys::OrganizationCF)};
}

std::string reportHeader(std::string_view title, std::string_view name, const FolderServices& services) {
  const HeaderTexts texts = headerTexts(name, services);
  return base::format(
      "<table width=100%% style='font-size:14.0pt; font-family: Verdana;'><tr><td "
      "align=center><b>%s</b></td></tr></table><table width=100%% style='font-size:8.0pt; font-family: "
      "Verdana;'><tr><td align=left nowrap width=100%%>%s<br>%s</td><td align=right "
      "nowrap>%s<br>%s</td></tr></table><br>",
      base::escapeHtml(title), base::escapeHtml(texts.name), base::escapeHtml(texts.date),
      base::escapeHtml(texts.address), base::escapeHtml(texts.fiscalCode));
}

FooterTexts footerTexts(const FolderServices& services) {
  const foundation::LanguageFile& texts = services.texts;
  return {.program = base::format("%s %s", texts.Translate("IDS_GENERATED_BY"), base::kProgramName),
          .version = base::format("%s %s", texts.Translate("IDS_VERSION"), base::kProgramVersion),
          .urlLabel = texts.Translate("IDS_URL"),
          .url = base::kProgramUrl};
}

std::string reportFooter(const FolderServices& services) {
  const FooterTexts texts = footerTexts(services);
  return base::format(
      "<hr><table width=100%% style='font-size:8.0pt; font-family: Verdana;'><tr><td align=left nowrap "
      "width=100%%>%s<br>%s</td><td align=right nowrap>%s<br>%s</td></tr></table>",
      base::escapeHtml(texts.program), base::escapeHtml(texts.version), base::escapeHtml(texts.urlLabel),
      base::escapeHtml(texts.url));
}

std::string filterTable(const FolderServices& services, bool overCalls) {
  std::string table = tableOpening(services.config);
  if (overCalls && services.filter.active()) {
    table += filter::FilterDescription(services.filter, services.texts, services.currencies).html(services.main);
  }
  return table + "</TABLE>\n";
}

std::string tableOpening(foundation::ConfigManager& config) {
  const bool grid = config.ReadConfigInt(foundation::keys::iface_Grid) == 1;
  return base::format(
      grid ? "<table border=1 cellspacing=2 cellpadding=0 width=100%%  style='font-size:8.0pt; font-family: Verdana;' "
             "> <TR>"
           : "<table border=0 cellspacing=2 cellpadding=0 width=100%%  style='font-size:8.0pt; font-family: Verdana;' "
             "> <TR>");
}

std::string_view alignmentName(Alignment alignment) {
  switch (alignment) {
    case Alignment::Right:
      return "right";
    case Alignment::Center:
      return "center";
    case Alignment::Left:
      break;
  }
  return "left";
}

std::filesystem::path listReportFile(foundation::ConfigManager& config, const std::filesystem::path& fallbackFolder) {
  const std::string folder = config.ReadConfigString(foundation::keys::Path);
  return folder.empty() ? fallbackFolder / "list.html" : base::systemPath(folder + "\\list.html");
}

}  // namespace folders
