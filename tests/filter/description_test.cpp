#include "filter/description.h"

#include <gtest/gtest.h>

#include "filter/call_office.h"

namespace filter {
namespace {

class DescriptionTest : public testing::Test {
 protected:
  CallOffice office;
  FilterDescription description{office.filter, office.texts, office.currencies};
};

constexpr const char* kEmptyRates = "<font size=\"-1\"><b></b><ul></ul></font><hr>";

TEST_F(DescriptionTest, WithoutFilterOnlyTheRatesAreWritten) {
  office.filter.set({{"Hidden", "1"}});
  EXPECT_EQ(description.html(*office.main), kEmptyRates);
  EXPECT_EQ(description.plainText(), "IDS_FILTER_OFF\n");
}

TEST_F(DescriptionTest, EverySettingHasItsItem) {
  office.filter.set({{"OnFilter", "1"},    {"Hidden", "1"},         {"OnIncoming", "1"},   {"OnOutgoing", "1"},
                     {"OnExtension", "1"}, {"ExtensionStr", "201"}, {"OnTrunk", "1"},      {"Trunk", "4"},
                     {"OnArea", "1"},      {"OnAccount", "1"},      {"Cont", "12"},        {"OnClient", "1"},
                     {"Client", "A&B"},    {"OnFolder", "2"},       {"OnDepartment", "1"}, {"Department", "Sales"},
                     {"OnName", "1"},      {"Name", "!<Ion>"},      {"OnPeriod", "1"},     {"NumberPrefix", "021"},
                     {"Number", "022"},    {"Country", "Italy"},    {"Provider", "P"},     {"OnMinDuration", "1"},
                     {"MinDuration", "60"}});
  EXPECT_EQ(description.html(*office.main),
            std::string("<font size=\"-1\"><b>IDS_FILTER_FIELDS</b><ul><li>IDS_FILTER_EXCLUDE_HIDDEN</li>"
                        "<li>IDS_FILTER_EXCLUDE_INCOMING</li><li>IDS_FILTER_EXCLUDE_OUTGOING</li>"
                        "<li>IDS_EXTENSION: <b>201</b></li><li>IDS_TRUNK <b>4</b></li>"
                        "<li>IDS_FILTER_AREA <b>Local</b></li><li>IDS_FILTER_ACCOUNT <b>12</b></li>"
                        "<li>IDS_CLIENT: <b>A&amp;B</b></li><li>IDS_DEPARTMENT: <b>Sales</b></li>"
                        "<li>IDS_FILTER_NAME <b>!&lt;Ion&gt;</b></li>"
                        "<li>IDS_FILTER_BETWEEN <b>31.12.1999 00:00</b> IDS_AND <b>31.12.2002 23:59</b></li>"
                        "<li>IDS_FILTER_NUMBER <b>021</b></li><li>IDS_FILTER_NUMBER_EXACT <b>022</b></li>"
                        "<li>IDS_COUNTRY <b>Italy</b></li><li>IDS_PROVIDER <b>P</b></li>"
                        "<li>IDS_FILTER_DURATION <b>60</b> IDS_SECONDS</li>") +
                kEmptyRates);
}

TEST_F(DescriptionTest, ForeignCurrenciesOfTheFilteredCallsShowTheirRate) {
  office.currencies.entries.push_back({.name = "EUR", .id = 2, .ratio = 4.97, .dateModify = {}, .isDefault = false});
  office.call({{"Extension", "201"}, {"Currency", "RON"}});
  office.call({{"Extension", "201"}, {"Currency", "EUR"}});
  office.call({{"Extension", "202"}, {"Currency", "USD"}});
  office.filter.set({{"OnFilter", "1"}, {"OnExtension", "1"}, {"ExtensionStr", "201"}});
  const std::string page = description.html(*office.main);
  EXPECT_NE(page.find("<ul><li>IDS_EXCHANGE_RATE: <b>4.970000 RON/EUR</b></li></ul></font><hr>"), std::string::npos)
      << page;
}

TEST_F(DescriptionTest, AnUnsetPeriodReadsAsOneDayInThePlainText) {
  office.filter.set({{"OnFilter", "1"}, {"OnPeriod", "1"}, {"Number", "5"}});
  EXPECT_EQ(description.plainText(),
            "IDS_FILTER_ON\nIDS_FILTER_PERIOD: 31.12.1999 00:00 si\n31.12.1999 23:59\nIDS_FILTER_PHONE: 5\n");
}

TEST_F(DescriptionTest, LabelsAndValuesAreRichTextPiecesOfTheirOwn) {
  office.filter.set({{"OnFilter", "1"}, {"OnTrunk", "1"}, {"Trunk", "4"}});
  CRTFBuilder builder;
  description.writeTo(builder);
  ASSERT_EQ(builder.pieces().size(), 3u);
  EXPECT_TRUE(builder.pieces()[1].ends_with("\\plain\\f0\\fs18\\cb0\\cf0 IDS_TRUNK: "));
  EXPECT_TRUE(builder.pieces()[2].ends_with("\\plain\\b\\f0\\fs18\\cb0\\cf3 4\r\n\\par ")) << builder.pieces()[2];
}

TEST(RtfBuilder, APieceCarriesItsTables) {
  CRTFBuilder builder;
  builder << bold(true) << italic(true) << fontSize(20) << color(1) << "a";
  EXPECT_EQ(builder.text(),
            "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deftab720{\\fonttbl{\\f0 Arial;}}"
            "{\\colortbl\\red0\\green0\\blue0;\\red255\\green0\\blue0;\\red0\\green255\\blue0;\\red0\\green0\\blue255;}"
            "\\plain\\b\\i\\f0\\fs20\\cb0\\cf1 a}");
}

TEST(RtfBuilder, AFontIsAddedOnce) {
  CRTFBuilder builder;
  builder << font("Verdana") << underline(true) << strike(true);
  builder << font("verdana");
  EXPECT_EQ(builder.fontTable(), "{\\fonttbl{\\f0 Arial;}{\\f1 Verdana;}}");
  EXPECT_EQ(builder.styleGroup(), "\\plain\\ul\\strike\\f1\\fs18\\cb0\\cf0 ");
}

struct RtfText {
  const char* text;
  const char* converted;
};

TEST(RtfBuilder, TextIsEscaped) {
  constexpr RtfText kTexts[] = {
      {"one\ntwo", "one\r\n\\par two"},
      {"{\\b}", "\\{\\\\b\\}"},
      {"caf\xC3\xA9", "caf\\'e9"},
      {"\xC8\x98", "\\u536?"},
      {"\xF0\x9F\x93\x9E", "\\u-10179?\\u-8994?"},
  };
  for (const RtfText& one : kTexts) {
    CRTFBuilder builder;
    builder.append(one.text);
    EXPECT_TRUE(builder.pieces().front().ends_with(std::string("\\cf0 ") + one.converted)) << one.text;
  }
}

}  // namespace
}  // namespace filter
