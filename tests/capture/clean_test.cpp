#include "capture/format/clean.h"

#include <gtest/gtest.h>

TEST(Clean, TakesTheNumberOutOfWhatExchangesSend) {
  const struct {
    const char* text;
    const char* number;
  } cases[] = {
      {"0755550142", "0755550142"},
      {"+40 755-550.142", "0040755550142"},
      {"\"Ana Pop\" <214>", "214"},
      {"Name<+40755550142>", "0040755550142"},
      {"ALFA SRL0744000317", "0744000317"},
      {"HOTEL 24 +40744000317", "0040744000317"},
      {"CAMERA 24", ""},
      {"anonymous", ""},
      {"anonymous@anonymous.invalid", ""},
      {"Restricted", ""},
      {"sip:0755550142@10.0.0.1;user=phone", "0755550142"},
      {"<sip:+40755550142@sbc:5060>", "0040755550142"},
      {"075555????", "075555XXXX"},
      {"0755XXXX", "0755XXXX"},
      {"*21#0755", "*21#0755"},
      {"07\"55", "0755"},
      {"s", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(capture::cleanNumber(c.text), c.number) << c.text;
  EXPECT_EQ(capture::stripAccess("90755", {"0", "9"}), "0755");
  EXPECT_EQ(capture::stripAccess("990755", {"9"}), "90755");
  EXPECT_EQ(capture::stripAccess("214", {"0", ""}), "214");
}

TEST(Clean, FitsTextsIntoTheRecord) {
  EXPECT_EQ(capture::fitText("Ștefan Țăran", 1252, 31), "Stefan Taran");
  EXPECT_EQ(capture::fitText("Ștefan Țăran", 1250, 31), "Stefan Tăran");
  EXPECT_EQ(capture::fitText("café ÉÉ", 1252, 4), "café");
  EXPECT_EQ(capture::fitText("日本", 1252, 31), "??");
  EXPECT_EQ(capture::fitText(std::string("a\0b\tc", 5), 1252, 31), "abc");
  EXPECT_EQ(capture::fitText("é", 1252, 31), "é");
  EXPECT_EQ(capture::fitText("12345678901234567890", 1252, 15), "123456789012345");
}

TEST(Clean, TrunksAndPulses) {
  EXPECT_EQ(capture::cleanTrunk("002"), "2");
  EXPECT_EQ(capture::cleanTrunk("00"), "");
  EXPECT_EQ(capture::cleanTrunk(" T010 016 "), "T010 016");
  EXPECT_EQ(capture::cleanTrunk("012a"), "012a");
  EXPECT_EQ(capture::readPulses("  00014"), 14);
  EXPECT_EQ(capture::readPulses("1,20"), 0);
  EXPECT_EQ(capture::readPulses(""), 0);
  EXPECT_FALSE(capture::readPulses("abc"));
}
