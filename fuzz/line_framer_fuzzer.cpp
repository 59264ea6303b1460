// Any bytes in any pieces: the same lines as when they come at once, and every byte accounted for.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <vector>

#include "capture/framing/line_framer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::size_t piece = input.ConsumeIntegralInRange<std::size_t>(1, 64);
  const std::string bytes = input.ConsumeRemainingBytesAsString();
  const auto lines = [&](std::size_t step) {
    capture::LineFramer framer;
    std::vector<std::string> all;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
      framer.feed(std::string_view(bytes).substr(at, step));
      while (auto line = framer.next()) all.push_back(std::move(line->text));
    }
    if (auto line = framer.finish()) all.push_back(std::move(line->text));
    if (framer.consumed() != bytes.size()) std::abort();
    return all;
  };
  if (lines(piece) != lines(bytes.size() + 1)) std::abort();
  return 0;
}
