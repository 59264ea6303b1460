#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "ingest/record_reader.h"
#include "ingest/recorder.h"

// Arbitrary bytes as the monitor's file: every record that is found must be usable, and reading must end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  ingest::RecordReader reader(stream, 1252);
  exchange::CallRecord record;
  std::int64_t before = 0;
  while (reader.next(record)) {
    if (reader.position().bytes <= before || reader.position().bytes > static_cast<std::int64_t>(size)) std::abort();
    before = reader.position().bytes;
    static_cast<void>(record.start());
    if (ingest::forwardingLine(record, 0, "RON", 0, 19).empty()) std::abort();
  }
  return 0;
}
