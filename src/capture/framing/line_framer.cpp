#include "capture/framing/line_framer.h"

#include <algorithm>

namespace capture {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isControl(char c) {
  return c == '\0' || c == '\f';
}

}  // namespace

std::string_view trimControl(std::string_view text) {
  while (!text.empty() && isControl(text.front())) text.remove_prefix(1);
  while (!text.empty() && isControl(text.back())) text.remove_suffix(1);
  return text;
}

void LineFramer::feed(std::string_view bytes) {
  if (afterCr_ && !bytes.empty()) {
    afterCr_ = false;
    if (bytes.front() == '\n') {
      bytes.remove_prefix(1);
      ++consumed_;
    }
  }
  waiting_ += bytes;
}

std::optional<FramedLine> LineFramer::next() {
  const std::size_t end = waiting_.find_first_of("\r\n", searched_);
  if (end == std::string::npos) {
    // Only the front of an endless line is kept.
    if (waiting_.size() > kLongestLine) {
      cutOff_ += waiting_.size() - kLongestLine;
      waiting_.resize(kLongestLine);
    }
    searched_ = waiting_.size();
    return std::nullopt;
  }
  std::size_t used = end + 1;
  if (waiting_[end] == '\r') {
    if (used == waiting_.size()) {
      afterCr_ = true;
    } else if (waiting_[used] == '\n') {
      ++used;
    }
  }
  FramedLine line = take(std::string_view(waiting_).substr(0, end));
  consumed_ += used - end;
  waiting_.erase(0, used);
  searched_ = 0;
  return line;
}

std::optional<FramedLine> LineFramer::finish() {
  std::optional<FramedLine> line;
  if (!waiting_.empty()) line = take(waiting_);
  waiting_.clear();
  searched_ = 0;
  atStart_ = true;
  afterCr_ = false;
  return line;
}

FramedLine LineFramer::take(std::string_view rest) {
  FramedLine line;
  consumed_ += rest.size() + cutOff_;
  if (rest.size() > kLongestLine) {
    cutOff_ += rest.size() - kLongestLine;
    rest = rest.substr(0, kLongestLine);
  }
  line.cutOff = cutOff_;
  cutOff_ = 0;
  if (atStart_ && rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
  atStart_ = false;
  line.text = trimControl(rest);
  return line;
}

}  // namespace capture
