// Any bytes in any pieces: the same lines as when they come at once, and every byte accounted for. The same for records
// that have their length before them.

#include <cstdlib>
#include <vector>

#include "capture/framing/length_framer.h"
#include "capture/framing/line_framer.h"
#include "input_bytes.h"

namespace {

std::vector<std::string> lines(std::string_view bytes, std::size_t step) {
  capture::LineFramer framer;
  std::vector<std::string> all;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    framer.feed(bytes.substr(at, step));
    while (auto line = framer.next()) all.push_back(std::move(line->text));
  }
  if (auto line = framer.finish()) all.push_back(std::move(line->text));
  if (framer.consumed() != bytes.size()) std::abort();
  return all;
}

std::vector<std::string> records(std::string_view bytes, std::size_t step) {
  capture::LengthFramer framer;
  std::vector<std::string> all;
  bool possible = true;
  for (std::size_t at = 0; possible && at < bytes.size(); at += step) {
    possible = framer.feed(bytes.substr(at, step), all);
    if (possible && framer.waiting() > capture::LengthFramer::kLongestRecord + 4) std::abort();
  }
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes input(data, size);
  const auto piece = static_cast<std::size_t>(input.between(1, 64));
  const std::string bytes = input.rest();
  if (lines(bytes, piece) != lines(bytes, bytes.size() + 1)) std::abort();
  if (records(bytes, piece) != records(bytes, bytes.size() + 1)) std::abort();
  return 0;
}
