#include <gtest/gtest.h>

#include "base/codepage.h"
#include "base/csv.h"
#include "base/datetime.h"
#include "base/html_encoder.h"
#include "base/printf.h"
#include "base/text.h"

namespace base {
namespace {

TEST(Format, PrintsTheDocumentedFormats) {
  EXPECT_EQ(format("%s\\%s", "general", std::string("DbVersion")), "general\\DbVersion");
  EXPECT_EQ(format("%.2d:%.2d:%.2d", 1, 2, 3), "01:02:03");
  EXPECT_EQ(format("%02d:00 - %02d:59", 7, 7), "07:00 - 07:59");
  EXPECT_EQ(format("%-30s|", "0213"), "0213                          |");
  EXPECT_EQ(format("%6d|%10.2f|%-5s|%c", -12, 3.14159, "RON", ' '), "   -12|      3.14|RON  | ");
  EXPECT_EQ(format("width=100%% %f", 4.97), "width=100% 4.970000");
  EXPECT_EQ(format("%.3s", "abcdef"), "abc");
  EXPECT_EQ(format("%.2d %02d %.2d %.0d|%05d", -5, -5, 1234, 0, 42), "-05 -5 1234 |00042");
}

TEST(Format, SurvivesArgumentsOfTheWrongKindAndNumber) {
  EXPECT_EQ(format("%s and %s", 5), "5 and %s");
  EXPECT_EQ(format("%d", "12ab"), "12");
  EXPECT_EQ(format("%s", 2.5), "2.5");
  EXPECT_EQ(format("100% of %", 1), "100% of %") << "a percent sign that starts no conversion is text";
  EXPECT_EQ(format("%n%p", 1, 2), "%n%p") << "conversions that write or show memory are text";
  EXPECT_EQ(placeholders("%d of %-30s, 100%%"), (std::vector<std::string>{"%d", "%-30s"}));
}

struct UsDate {
  const char* text;
  const char* stored;  // null: no date
};

TEST(DateTime, ReadsMonthFirstTexts) {
  const UsDate cases[] = {
      {"1/31/2025", "2025-01-31 00:00:00"},
      {"12/31/1999 23:59:59", "1999-12-31 23:59:59"},
      {"8:05", "1899-12-30 08:05:00"},
      {"1/2/03 12:30 am", "2003-01-02 00:30:00"},
      {"1/2/30 12:30 PM", "1930-01-02 12:30:00"},
      {"31/1/2025", "2025-01-31 00:00:00"},  // impossible month, possible day
      {"2/29/2023", nullptr},
      {"13/13/2020", nullptr},
      {"1/1/2020 24:00", nullptr},
      {"-1/1/2020", nullptr},
      {"", nullptr},
      {"now", nullptr},
  };
  for (const UsDate& c : cases) {
    const auto date = DateTime::fromUsText(c.text);
    EXPECT_EQ(date ? date->stored() : "none", c.stored != nullptr ? c.stored : "none") << c.text;
  }
}

TEST(DateTime, KeepsDaysBeforeDayZeroAndTheirTimes) {
  // -1.25 is 6 in the morning of 29 December 1899: the sign belongs to the day, not to the time.
  const auto morning = DateTime::fromSerial(-1.25);
  ASSERT_TRUE(morning);
  EXPECT_EQ(morning->stored(), "1899-12-29 06:00:00");
  EXPECT_DOUBLE_EQ(morning->serial(), -1.25);
  EXPECT_EQ(DateTime::fromStored("0987-06-05 04:03:02")->stored(), "0987-06-05 04:03:02");
  EXPECT_EQ(DateTime::fromStored("1899-12-29")->weekday(), 5);
  EXPECT_EQ(DateTime::fromStored("2026-11-24 20:46:12")->weekday(), 2);
  EXPECT_EQ(DateTime::fromSerial(45000.5)->stored(), "2023-03-15 12:00:00");
  EXPECT_FALSE(DateTime::fromSerial(1e300));
  EXPECT_FALSE(DateTime::fromSerial(2958465.999999));  // would round into the year 10000
  EXPECT_FALSE(DateTime::fromParts(2024, 2, 30));
}

TEST(DateTime, FormatsWithTheDocumentedLetters) {
  const auto date = *DateTime::fromParts(2024, 2, 9, 3, 4, 5);
  EXPECT_EQ(date.format("%m/%d/%Y %H:%M:%S"), "02/09/2024 03:04:05");
  EXPECT_EQ(date.format("%d.%m.%Y 100%% %q"), "09.02.2024 100% %q");
}

TEST(Text, FoldsAllLettersAndSplits) {
  EXPECT_TRUE(equalFold("ȘTEFAN Ţîru", "ștefan ţÎRU"));
  EXPECT_FALSE(equalFold("Ș", "S"));
  EXPECT_EQ(fold("A\xFFZ"), "a\xFFz") << "bytes that are no UTF-8 stay";
  EXPECT_EQ(split("201;;Sales;", ";"), (std::vector<std::string>{"201", "Sales"}));
  EXPECT_EQ(split("a,,b", ",", true), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(leadingInteger(" -12x"), -12);
  EXPECT_EQ(leadingInteger("99999999999"), 2147483647);
  EXPECT_EQ(leadingInteger("abc"), 0);
}

TEST(Codepage, ConvertsBothWaysAndNeverFails) {
  EXPECT_EQ(decode("\xAA\xFE", 1250), "Şţ");
  EXPECT_EQ(decode("caf\xE9 \x81", 1252), "café \xEF\xBF\xBD");
  EXPECT_EQ(decode("\xE9", 99999), "é") << "an unknown page reads as 1252";
  EXPECT_EQ(encodeHtml("é ș", 1252), "\xE9 &#537;");
  EXPECT_EQ(encode("Ţș", 1250), "\xDE?");
  EXPECT_EQ(decode("a\xFF", 65001), "a\xEF\xBF\xBD");
}

TEST(HtmlEncoder, WritesWhatTheGeneralConversionWrites) {
  const HtmlEncoder encoder(1252);
  for (const char* text : {"", "plain", "a&b <c> \"d\"", "é ș Ț € ž", "Șerban&", "日本 😀", "\xC8", "x\xC8y", "\xC0\x80",
                           "\x80\x80z", "\xE2\x82", "\xFF<", "\xC2\x81", "Ѐ"}) {
    std::string page = "|";
    encoder.appendText(page, text);
    EXPECT_EQ(page, "|" + encodeHtml(escapeHtml(text), 1252)) << text;
    page.clear();
    encoder.appendMarkup(page, text);
    EXPECT_EQ(page, encodeHtml(text, 1252)) << text;
  }
}

TEST(Csv, CellsAreHarmlessInASpreadsheetAndReadBackAsTheyWere) {
  struct Case {
    const char* text;
    const char* cell;
  };
  for (const Case& c : {Case{"-5.25", "-5.25"}, Case{"-5+cmd", "'-5+cmd"}, Case{"@x", "'@x"}, Case{"'=x", "''=x"},
                        Case{"+40 21", "'+40 21"}, Case{"=a,\"b\"", "\"'=a,\"\"b\"\"\""}, Case{"it's", "it's"},
                        Case{"two\nlines", "\"two\nlines\""}, Case{"", ""}}) {
    EXPECT_EQ(csvCell(c.text), c.cell);
    EXPECT_EQ(csvRows("x," + csvCell(c.text) + "\r\n").front(), (std::vector<std::string>{"x", c.text}));
  }
  EXPECT_EQ(csvField("=a, b"), "\"=a, b\"") << "for a program it stays what it is";
}

TEST(Csv, RowsAreReadAsSpreadsheetsAndPeopleWriteThem) {
  using Rows = std::vector<std::vector<std::string>>;
  EXPECT_EQ(csvRows("a;b\r\n\r\n\"1,5\"; x \n"), (Rows{{"a", "b"}, {"1,5", " x "}}));
  EXPECT_EQ(csvRows("a,\"b;c\""), (Rows{{"a", "b;c"}}));
  EXPECT_EQ(csvRows("12\" tube,\"never closed,\n"), (Rows{{"12\" tube", "never closed,\n"}}));
  EXPECT_EQ(csvFields(" 40 , \"Mobile, all\" ,\"\"", ','), (std::vector<std::string>{"40", "Mobile, all", ""}));
}

}  // namespace
}  // namespace base
