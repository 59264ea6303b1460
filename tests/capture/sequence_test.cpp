#include <gtest/gtest.h>

#include "capture/format/format.h"
#include "capture/format/parser.h"

namespace {

// The count goes from 0 to 127; a repeat of the same number counts all others as missing, as the exchange would.
TEST(Sequence, TellsHowManyLinesNeverCame) {
  capture::Parser parser(capture::FormatLibrary::standard().load(TALLYBOOK_SOURCE_DIR "/formats/nortel.toml"), {});
  const std::chrono::sys_seconds now{std::chrono::seconds(1'795'504'631)};
  std::uint64_t position = 0;
  const auto missing = [&](const char* number) {
    const std::string line = std::string("N ") + number + " 00 2343 T010 011 11/24 09:14 00:02:31 A 0755550142";
    return parser.line(++position, line, now).front().missing;
  };
  EXPECT_EQ(0, missing("125")) << "the first line tells nothing";
  EXPECT_EQ(0, missing("126"));
  EXPECT_EQ(0, missing("127"));
  EXPECT_EQ(0, missing("000"));
  EXPECT_EQ(2, missing("003"));
  EXPECT_EQ(0, missing("004"));
}

// Whatever became of the block that had it.
TEST(Block, AFaultCountsForItsOwnBlock) {
  capture::SourceSettings settings;
  settings.extensions = "2\\d\\d";
  settings.zone = "UTC";
  capture::Parser parser(capture::FormatLibrary::standard().load(TALLYBOOK_SOURCE_DIR "/formats/radius.toml"),
                         settings);
  const std::chrono::sys_seconds now{std::chrono::seconds(1'795'504'631)};
  std::uint64_t position = 0;
  std::vector<capture::Outcome> outcomes;
  for (const char* line :
       {"Tue Nov 24 11:17:02 2026", "Acct-Status-Type = Start", "damaged", "", "Tue Nov 24 11:17:02 2026",
        "Acct-Status-Type = Stop", "Acct-Session-Id = s2", "Acct-Session-Time = 151", "Calling-Station-Id = 214",
        "Called-Station-Id = 0755550142", "", "Tue Nov 24 11:17:02 2026", "damaged", "Acct-Status-Type = Stop", ""}) {
    const auto results = parser.line(++position, line, now);
    if (*line == '\0') outcomes.push_back(results.front().outcome);
  }
  using capture::Outcome;
  EXPECT_EQ(outcomes, (std::vector{Outcome::Skipped, Outcome::Record, Outcome::Unknown}));
}

}  // namespace
