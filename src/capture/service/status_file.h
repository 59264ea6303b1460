#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "capture/deliver/spool.h"
#include "capture/service/capture_source.h"
#include "capture/watch/alarms.h"

namespace capture {

// The status file beside the ready files, "status.json": what `tallymon status` and Tallybook show. Times are UTC but
// for "last_call", which is local as in the call's record.
[[nodiscard]] std::string statusText(const std::vector<std::shared_ptr<CaptureSource>>& sources, const Spool& spool,
                                     const std::vector<Alarm>& alarms, std::int64_t now);

// What the status file says of a source's connection; nothing when there is no such file or source.
struct ConnectionStatus {
  bool connected = false;
  std::string text;
};
[[nodiscard]] std::optional<ConnectionStatus> connectionOf(const std::filesystem::path& monitorFolder,
                                                           const std::string& source);

// Written beside and renamed, so that a reader never sees half of it. False when the disk refuses: the old one is left.
bool writeStatusFile(const Spool& spool, const std::string& text);

}  // namespace capture
