#include "capture/transport/line_reading.h"

namespace capture {

void LineReading::add(std::vector<TakenLine>& lines, std::optional<FramedLine> line) {
  if (line->cutOff > 0) sink_.lost(line->cutOff);
  lines.push_back({std::move(line->text), {}});
}

std::vector<TakenLine> LineReading::feed(std::string_view bytes) {
  std::vector<TakenLine> lines;
  fed_ += bytes.size();
  framer_.feed(bytes);
  while (auto line = framer_.next()) add(lines, std::move(line));
  return lines;
}

std::vector<TakenLine> LineReading::end(bool inGoodOrder) {
  std::vector<TakenLine> lines;
  const std::uint64_t half = fed_ - framer_.consumed();
  if (auto line = framer_.finish(); line && inGoodOrder) {
    add(lines, std::move(line));
  } else if (half > 0 && !inGoodOrder) {
    sink_.lost(half);
  }
  return lines;
}

std::vector<TakenLine> LengthReading::feed(std::string_view bytes) {
  hasRead_ = hasRead_ || !bytes.empty();
  if (!possible_) return {};
  std::vector<std::string> texts;
  possible_ = framer_.feed(bytes, texts);
  if (!possible_) sink_.lost(framer_.waiting());
  std::vector<TakenLine> lines;
  for (std::string& text : texts) lines.push_back({std::move(text), {}});
  return lines;
}

std::vector<TakenLine> LengthReading::end(bool) {
  // A record that is not complete is none, however the connection ended.
  if (framer_.waiting() > 0) sink_.lost(framer_.waiting());
  return {};
}

}  // namespace capture
