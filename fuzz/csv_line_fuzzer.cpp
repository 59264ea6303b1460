// Any text as a line of values: written again with quotes around each, it gives the same values.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/text.h"
#include "capture/format/layout.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  for (char separator : {',', '|', ';'}) {
    const auto values = capture::splitCsv(line, separator);
    if (!values) continue;
    std::string again;
    for (const std::string& value : *values) {
      if (!again.empty()) again += separator;
      again += '"' + base::replaceAll(value, "\"", "\"\"") + '"';
    }
    if (capture::splitCsv(again, separator) != values) std::abort();
  }
  return 0;
}
