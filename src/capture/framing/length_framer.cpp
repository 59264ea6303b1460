#include "capture/framing/length_framer.h"

#include <cstdint>

#include "base/little_endian.h"
#include "capture/framing/line_framer.h"

namespace capture {

namespace {

void addLines(std::string_view record, std::vector<std::string>& lines) {
  const auto add = [&lines](FramedLine line) {
    if (!line.text.empty()) lines.push_back(std::move(line.text));
  };
  LineFramer framer;
  framer.feed(record);
  while (auto line = framer.next()) add(std::move(*line));
  if (auto line = framer.finish()) add(std::move(*line));
}

}  // namespace

bool LengthFramer::feed(std::string_view bytes, std::vector<std::string>& lines) {
  waiting_ += bytes;
  std::size_t at = 0;
  bool possible = true;
  while (possible && waiting_.size() - at >= base::kWordSize) {
    const std::size_t length = base::wordAt(reinterpret_cast<const unsigned char*>(waiting_.data() + at));
    possible = length <= kLongestRecord;
    if (!possible || waiting_.size() - at - base::kWordSize < length) break;
    addLines(std::string_view(waiting_).substr(at + base::kWordSize, length), lines);
    at += base::kWordSize + length;
  }
  waiting_.erase(0, at);
  return possible;
}

std::string withLength(std::string_view record) {
  unsigned char length[base::kWordSize];
  base::putWord(length, static_cast<std::uint32_t>(record.size()));
  return std::string(reinterpret_cast<const char*>(length), base::kWordSize).append(record);
}

}  // namespace capture
