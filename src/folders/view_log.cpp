#include "folders/view_log.h"

#include "base/characters.h"

namespace folders {

namespace {

// An entry has 255 characters; the condition takes what the rest leaves.
constexpr std::size_t kMostOfCondition = 120;
constexpr std::size_t kMostOfFile = 60;

bool isLogged(const FolderServices& services) {
  return services.config.ReadConfigInt(foundation::keys::Log_CallViews) != 0;
}

bool showsCalls(const FolderView& view) {
  return view.folder().definition().condition == ConditionSource::CallFilter;
}

std::string shortened(const std::filesystem::path& file) {
  return std::string(base::firstCharacters(file.filename().string(), kMostOfFile));
}

std::string described(const FolderView& view) {
  return view.name() + " (" + std::string(base::firstCharacters(view.folder().condition(), kMostOfCondition)) + ")";
}

}  // namespace

void logShown(const FolderServices& services, const std::string& caption) {
  if (!isLogged(services)) return;
  services.log.WriteLog(security::LogPrint, services.texts.Translate("IDS_LOG_CALLS_SHOWN"), caption);
}

void logShown(const FolderView& view) {
  if (showsCalls(view)) logShown(view.services(), described(view));
}

void logWritten(const FolderServices& services, const std::string& caption, const std::filesystem::path& file) {
  if (!isLogged(services)) return;
  services.log.WriteLog(security::LogPrint, services.texts.Translate("IDS_LOG_CALLS_WRITTEN"), shortened(file),
                        caption);
}

void logWritten(const FolderView& view, const std::filesystem::path& file) {
  if (showsCalls(view)) logWritten(view.services(), described(view), file);
}

}  // namespace folders
