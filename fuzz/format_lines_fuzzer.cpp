// Any bytes as the lines of each stock format, which are in the folder "formats" beside the program: every line gets
// one outcome, and every record could be one.

#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>

#include "capture/call.h"
#include "capture/format/file_test.h"
#include "capture/format/format.h"

namespace {

std::vector<std::shared_ptr<const capture::Format>> stockFormats() {
  const auto library = capture::FormatLibrary::standard();
  std::vector<std::shared_ptr<const capture::Format>> formats;
  for (const std::string& name : library.names()) formats.push_back(library.load(name));
  if (formats.empty()) std::abort();
  return formats;
}

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto formats = stockFormats();
  if (size == 0) return 0;
  capture::SourceSettings settings;
  settings.set("trunks", "provider-a");
  settings.set("extensions", "2\\d\\d");
  std::istringstream in(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  std::vector<std::string> lines;
  const auto arrived = std::chrono::sys_seconds(std::chrono::seconds(1795504464));
  const auto results = capture::readAll(in, formats[data[0] % formats.size()], settings, arrived, &lines);
  require(results.size() == lines.size());
  for (const capture::LineResult& result : results) {
    require((result.outcome == capture::Outcome::Record) == !result.records.empty());
    for (const capture::Call& call : result.records) {
      require(call.durationSeconds >= 0 && call.ringSeconds >= 0 && call.number.size() <= 63);
      require(call.number.find_first_not_of("0123456789*#X") == std::string::npos);
      require(base::DateTime::fromStored(call.start.stored()).has_value());
      require(exchange::encodeRecord(capture::toRecord(call, 1, 1), true, 1252).size() ==
              exchange::kExtendedRecordSize);
    }
  }
  return 0;
}
