#include "capture/framing/line_framer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using capture::LineFramer;

namespace {

std::vector<std::string> linesOf(LineFramer& framer, bool end) {
  std::vector<std::string> lines;
  while (auto line = framer.next()) lines.push_back(line->text);
  if (end) {
    if (auto line = framer.finish()) lines.push_back(line->text);
  }
  return lines;
}

}  // namespace

TEST(LineFramer, ReadsTheSameLinesHoweverTheStreamIsCut) {
  using namespace std::string_literals;
  const std::string bytes =
      "\xEF\xBB\xBF"
      "one\r\ntwo\rthree\n\r\n\0\0four\f\r\nf\0ive"s;
  const std::vector<std::string> expected = {"one", "two", "three", "", "four", "f\0ive"s};
  for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
    LineFramer framer;
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      framer.feed(std::string_view(bytes).substr(at, piece));
      for (std::string& line : linesOf(framer, false)) lines.push_back(std::move(line));
    }
    for (std::string& line : linesOf(framer, true)) lines.push_back(std::move(line));
    EXPECT_EQ(lines, expected) << piece;
    EXPECT_EQ(framer.consumed(), bytes.size()) << piece;
  }
}

TEST(LineFramer, CutsAnEndlessLineAndReadsOn) {
  LineFramer framer;
  const std::string megabyte(std::size_t{1} << 20, 'x');
  for (int i = 0; i < 5; ++i) {
    framer.feed(megabyte);
    EXPECT_FALSE(framer.next());
  }
  framer.feed("tail\nnext\n");
  const auto cut = framer.next();
  ASSERT_TRUE(cut);
  EXPECT_EQ(cut->text.size(), capture::kLongestLine);
  EXPECT_EQ(cut->cutOff, 4 * megabyte.size() + 4);
  EXPECT_EQ(framer.next()->text, "next");
  EXPECT_EQ(framer.consumed(), 5 * megabyte.size() + 10);
}
