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

// A file of ten million rows ends here before it takes the memory, and one that cannot be read says in what it is.
TEST(PriceList, FilesThatAreTooLargeOrInAnotherFormAreRefusedInWords) {
  std::string rows = "prefix;name;price\n";
  for (int i = 0; i < 1001; ++i) rows += "40" + std::to_string(1000 + i) + ";x;0.1\n";
  const auto refusal = [](const std::string& text, std::int64_t mostRows) -> std::string {
    try {
      (void)read(text, {.mostRows = mostRows});
      return {};
    } catch (const tariff::PriceListError& error) {
      return error.what();
    }
  };
  EXPECT_EQ(refusal(rows, 1001), "");
  EXPECT_EQ(refusal(rows, 1000), "The file has more than 1000 rows. Split it.");
  EXPECT_EQ(refusal(std::string("p\0r\0", 4), 1000),
            "The file is no plain text, or UTF-16. Save it as CSV in UTF-8 and import that.");
  // In a wrong code page the names alone are wrong, and the file's form is told.
  const PriceList list = read("prefix;name;price\n40;Bra\xBAov;0.1\n", {.codepage = 1252});
  EXPECT_EQ(list.entries.at(0).prefix, "0040");
  EXPECT_EQ(list.notes.at(0).what.english(), "no UTF-8: read in code page 1252");
  EXPECT_EQ(read("prefix;name;price\n40;Bra\xBAov;0.1\n", {.codepage = 1250}).entries.at(0).name, "Braşov");
}

}  // namespace
