#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

// A key that does not exist or a value that is none of the key's.
class SettingError : public std::runtime_error {
  using runtime_error::runtime_error;
};

// The keys of a source that change how its lines are read; each overrides what the format says. An empty text means:
// as the format says. Set by the site file's [[source]] table and by `--set KEY=VALUE`.
struct SourceSettings {
  std::string dateOrder;                 // date_order: "dmy" or "mdy"
  std::string clock;                     // clock: "12" or "24"
  std::string time;                      // time: "start" or "end", what the line's time is
  std::string zone;                      // zone: name of the time zone ("Europe/Bucharest"); empty: the machine's
  std::string utc;                       // utc: "true" when the line's times are UTC, or "false"
  std::vector<std::string> stripAccess;  // strip_access: codes dialled to get a line
  std::string encoding;                  // encoding: code page of lines that are no UTF-8 and of the record ("cp1252")
  std::vector<std::string> trunks;       // trunks: channel names that are trunks
  std::string extensions;                // extensions: a pattern; a number that fits it whole is one of ours
  std::string window;                    // window: how long lines of one call are waited for ("10 min")
  std::string mode;                      // mode: "legs" (default) or "merge"

  // True when `key` is one of the above; the site file has further keys of its own (transport, quiet hours ...).
  [[nodiscard]] static bool knows(std::string_view key);
  // Sets one key from its text; lists have commas between. Throws SettingError with a text for the operator.
  void set(std::string_view key, std::string_view value);
};

// "90 s", "10 min" or "1 h". Throws SettingError.
[[nodiscard]] std::chrono::seconds parseWindow(std::string_view text);

}  // namespace capture
