#include "folders/report_page.h"

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "base/version.h"

namespace folders {

namespace {

std::string label(const FolderServices& services, std::string_view key) {
  return base::escapeHtml(services.texts.Translate(key));
}

std::string organization(const FolderServices& services, std::string_view key) {
  return base::escapeHtml(services.config.ReadConfigString(key, "general", foundation::StoreDatabase, ""));
}

// Street and town, whichever are known.
std::string addressLine(const FolderServices& services) {
  const std::string street = organization(services, "OrganizationAddress");
  const std::string town = organization(services, "OrganizationOras");
  return street.empty() || town.empty() ? street + town : street + ", " + town;
}

}  // namespace

std::string reportHeader(std::string_view title, std::string_view name, const FolderServices& services) {
  return base::format(
      "<table width=100%% style='font-size:14.0pt; font-family: Verdana;'><tr><td "
      "align=center><b>%s</b></td></tr></table><table width=100%% style='font-size:8.0pt; font-family: "
      "Verdana;'><tr><td align=left nowrap width=100%%>%s %s<br>%s %s</td><td align=right "
      "nowrap>%s<br>%s</td></tr></table><br>",
      base::escapeHtml(title), label(services, "IDS_NAME"), base::escapeHtml(name),
      label(services, "IDS_DATE_GENERATED"), services.clock.now().format(kDateTimeFormat), addressLine(services),
      organization(services, "OrganizationCF"));
}

std::string reportFooter(const FolderServices& services) {
  return base::format(
      "<hr><table width=100%% style='font-size:8.0pt; font-family: Verdana;'><tr><td align=left nowrap width=100%%>%s "
      "%s<br>%s %s</td><td align=right nowrap>%s<br>%s</td></tr></table>",
      label(services, "IDS_GENERATED_BY"), base::kProgramName, label(services, "IDS_VERSION"), base::kProgramVersion,
      label(services, "IDS_URL"), base::kProgramUrl);
}

std::string tableOpening(foundation::ConfigManager& config) {
  const bool grid = config.ReadConfigInt("iface_grid", "General", foundation::StoreMachine, 0) == 1;
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
  const std::string folder = config.ReadConfigString("Path", "general", foundation::StoreMachine, "");
  return folder.empty() ? fallbackFolder / "list.html" : base::systemPath(folder + "\\list.html");
}

}  // namespace folders
