#include "tariff/price_list.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tariff/price_list_prefix.h"

namespace {

using tariff::PriceList;

PriceList read(const std::string& text, tariff::PriceListOptions options = {}) {
  options.countryCode = "40";
  options.currency = "RON";
  std::istringstream in(text);
  return tariff::readPriceList(in, options);
}

TEST(PriceList, PrefixesInEveryUsualForm) {
  using List = std::vector<std::string>;
  const struct {
    const char* cell;
    List prefixes;
  } cases[] = {{"+40", {"0040"}},
               {"0040", {"0040"}},
               {"40", {"0040"}},
               {"0721", {"0040721"}},
               {"1-242", {"001242"}},
               {"+49 (89)", {"004989"}},
               {"40721-40723", {"0040721", "0040722", "0040723"}},
               {"40729-30", {"0040729", "0040730"}},
               {"44/ 33", {"0044", "0033"}}};
  for (const auto& [cell, prefixes] : cases) EXPECT_EQ(tariff::internationalPrefixes(cell, "40"), prefixes) << cell;
  for (const char* wrong : {"", "abc", "0", "00", "40-39", "4000000-4999999", "0721;x"}) {
    EXPECT_THROW((void)tariff::internationalPrefixes(wrong, "40"), tariff::PriceListError) << wrong;
  }
  EXPECT_THROW((void)tariff::internationalPrefixes("0721", ""), tariff::PriceListError);
}

TEST(PriceList, ColumnsAreFoundByTheirHeadings) {
  const PriceList list = read(
      "\xEF\xBB\xBFValid;Destination;Dial code;Currency;Rate per min;Connection fee;Increment\r\n"
      "x;\"Romania; mobile\";407;EUR;1.234,5;0,05;60/1\r\n"
      "\r\n"
      "x;Germany;+49;;0.02;;\r\n");
  ASSERT_EQ(list.entries.size(), 2U);
  EXPECT_EQ(list.entries[0].name, "Romania; mobile");
  EXPECT_EQ(list.entries[0].terms, (tariff::PriceTerms{1234.5, 0.05, 60, 1, "EUR"}));
  EXPECT_EQ(list.entries[1].terms, (tariff::PriceTerms{0.02, 0, 1, 1, "RON"}));
  EXPECT_EQ(list.entries[1].line, 4);
  EXPECT_EQ(list.rows, 2);
  const PriceList named = read("A,B,C\n40,x,0.5\n", {.columns = {{"prefix", "a"}, {"price", "C"}}});
  EXPECT_EQ(named.entries.at(0).terms.perMinute, 0.5);
  EXPECT_THROW(read("A,B\n40,0.5\n", {.columns = {{"prefix", "Z"}}}), tariff::PriceListError);
}

TEST(PriceList, WhatIsWrongInARowIsToldAndTheOthersAreRead) {
  const PriceList list = read(
      "40;Romania;0,10\n"
      "49;Germany;free\n"
      ";Nowhere;1\n"
      "40;Romania;0,10\n"
      "40;Romania;0,20\n"
      "33;Fran\xE7"
      "a;0,1;;x\n"
      "34;Espa\xF1"
      "a;0,1\n");
  ASSERT_EQ(list.entries.size(), 2U);
  EXPECT_EQ(list.entries[1].terms.perMinute, 0.20);
  EXPECT_EQ(list.entries[0].name, "España");
  std::vector<std::int64_t> lines;
  for (const auto& note : list.notes) lines.push_back(note.line);
  EXPECT_EQ(lines, (std::vector<std::int64_t>{2, 3, 4, 5, 6, 6}));
  EXPECT_EQ(list.notesInAll, 6);
  for (const char* wrong : {"", "\n\n", "PK\3\4", "hello\n", "prefix;name\n40;x\n"}) {
    EXPECT_THROW(read(wrong), tariff::PriceListError) << wrong;
  }
  EXPECT_THROW(read(std::string("4\0"
                                "0\0"
                                ";\0",
                                6)),
               tariff::PriceListError);
}

}  // namespace
