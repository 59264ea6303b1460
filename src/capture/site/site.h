#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "capture/deliver/record_encoder.h"
#include "capture/format/source_settings.h"
#include "capture/transport/settings.h"
#include "capture/watch/notifier.h"
#include "capture/watch/source_watch.h"

namespace capture {

// A fault in the site file; the text names file, line and column.
class SiteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One [[source]]: an exchange.
struct SourceSite {
  std::string id;
  std::string format;
  SourceSettings settings;
  RecordRules rules;
  TransportSettings transport;
  std::optional<QuietRule> quiet;
  std::string text;  // the table as it is: a source whose text is unchanged goes on over a reload
};

// The site file.
struct Site {
  std::filesystem::path folder;      // where Tallybook takes monitor.data
  std::filesystem::path poke;        // its live channel; empty: not told
  std::filesystem::path dataFolder;  // journals and state
  int keepDays = 90;
  NotifySettings notify;
  int spoolMinutes = 10;  // a ready file that waits longer is an alarm
  int freeMegabytes = 200;
  std::vector<SourceSite> sources;
};

// The place of the site file when none is named.
inline constexpr const char* kStandardSiteFile = "/etc/tallymon/tallymon.toml";

// Reads and checks a site file, formats and addresses included. Throws SiteError.
[[nodiscard]] Site readSite(const std::filesystem::path& file);
// The same of a text, which messages call `file`.
[[nodiscard]] Site readSiteText(std::string_view text, const std::string& file);
// The text of a site file. Throws SiteError.
[[nodiscard]] std::string siteFileText(const std::filesystem::path& file);

}  // namespace capture
