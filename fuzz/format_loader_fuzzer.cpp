// Any text as a format file: a format, which reads a few lines, or a FormatError.

#include <cstdint>
#include <sstream>
#include <string_view>

#include "capture/format/file_test.h"
#include "capture/format/format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const auto format = capture::FormatLibrary::parse(text);
    std::istringstream lines("24.11.2026,09:14,214,0755550142,151\n{\"a\": 1}\nA: b\n\n");
    const auto arrived = std::chrono::sys_seconds(std::chrono::seconds(1795504464));
    static_cast<void>(capture::readAll(lines, format, {}, arrived, nullptr));
    std::size_t count = 0;
    static_cast<void>(capture::checkFormat(format, count));
  } catch (const capture::FormatError&) {
  } catch (const capture::SettingError&) {
  }
  return 0;
}
