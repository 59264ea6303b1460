#pragma once

#include <filesystem>
#include <string>

#include "foundation/language_file.h"

namespace server {

// What the capture program says of itself in the status file beside its ready files, for people: "last call 09:14, 3
// unknown lines". Empty when no capture program of ours uses the monitor's folder; when the file is old, the text says
// that the program does not run.
[[nodiscard]] std::string readMonitorStatus(const std::filesystem::path& monitorFolder,
                                            const foundation::LanguageFile& texts);

}  // namespace server
