#include "tariff/price_report.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/operator.h"
#include "test_exchange.h"

namespace tariff {
namespace {

std::string reportOf(TestExchange& office, const exchange::CallRecord& record,
                     const foundation::LanguageFile& language = foundation::LanguageFile()) {
  PriceTrace trace;
  const PricedCall call = office.price(record, &trace);
  std::string text;
  for (const std::string& line : priceReport(trace, record, call.output, call.outcome, language)) text += line + "\n";
  return text;
}

TEST(PriceReportTest, ExplainsEachStep) {
  TestExchange office;
  office.parties.providers[0].freeSeconds = 5;
  office.prefix("07", 2);
  office.prefix("0744", 1);
  office.charge({.from = "8:00", .to = "19:59", .days = 2310, .minimum = 60, .value = 0.10, .fixedAmount = 0.05});
  office.charge({.from = "20:00", .to = "23:59", .days = 2310, .unit = 3000, .value = 0.02});
  EXPECT_EQ(reportOf(office, TestExchange::call("0744123456", 4, 19, 58, 210)),
            "Call to \"0744123456\" on trunk 5, start 2024-03-04 19:58:00.\n"
            "Trunk 5: \"L5\", provider id 1, profile \"Normal\".\n"
            "Provider 1: \"Telco\", 5 free seconds, local prefixes \"\".\n"
            "International form: 0040210744123456\n"
            "Profile 1: \"Normal\", in force since 2020-01-01, 0 free seconds.\n"
            "Charged time: 210 s - 5 free = 205 s.\n"
            "Not a local call.\n"
            "Destination 1: prefix \"0744\" of the number as dialled.\n"
            "Charged from 2024-03-04 19:58:05 to 2024-03-04 20:01:30, 1 calendar day(s).\n"
            "Band 08:00-19:59 on Monday, Tuesday, Wednesday, Thursday, Friday, unit 60.00 s at 0.1000 EUR:\n"
            "    minimum of 60 s: 0.1000\n"
            "    fixed amount: 0.0500\n"
            "    Monday: 55 s = 1 units x 0.1000 = 0.1000\n"
            "Band 20:00-23:59 on Monday, Tuesday, Wednesday, Thursday, Friday, unit 30.00 s at 0.0200 EUR:\n"
            "    Monday: 90 s = 3 units x 0.0200 = 0.0600\n"
            "Price: 0.3100 EUR\n");
}

TEST(PriceReportTest, NothingIsLeftOfACallThatIsShorterThanTheMinimum) {
  TestExchange office;
  office.prefix("0744", 1);
  office.charge({.minimum = 60, .value = 0.10});
  const std::string report = reportOf(office, TestExchange::call("0744123456", 4, 10, 0, 27));
  EXPECT_NE(report.find("    minimum of 60 s: 0.1000\n    Monday: 0 s left, no unit\nPrice: 0.1000 EUR\n"),
            std::string::npos)
      << report;
}

TEST(PriceReportTest, TellsWhyThereIsNoPriceAndLeavesNoMark) {
  TestExchange office;
  const std::string report = reportOf(office, TestExchange::call("0744123456", 4, 10, 0, 90));
  EXPECT_NE(report.find("Result: no prefix of the provider matches the number.\nPrice: 0.0000\n"), std::string::npos)
      << report;
  EXPECT_EQ(office.logged(), "");
  EXPECT_EQ(office.office.person.beeps, "");
}

TEST(PriceReportTest, ExplainsPulses) {
  TestExchange office;
  office.trunk({.label = "L6", .trunk = "6", .providerId = 1, .profile = "Normal", .pulses = 1});
  office.prefix("004021", 1);
  office.charge({.value = 0.07});
  auto record = TestExchange::call("3456789", 4, 10, 0, 90);
  record.trunk = 6;
  record.pulses = 3;
  const std::string report = reportOf(office, record);
  EXPECT_NE(report.find("Destination 1: prefix \"004021\" of the number in international form.\n"
                        "Pulses: 3 x 0.0700 = 0.2100\nPrice: 0.2100 EUR\n"),
            std::string::npos)
      << report;
}

// The language file that the build makes, in a language.
foundation::LanguageFile builtTexts(const char* code) {
  foundation::LanguageFile language;
  EXPECT_TRUE(language.LoadLanguageFile(std::filesystem::path(TALLYBOOK_BINARY_DIR) / "Tallybook.lng"));
  platform::NoOperator nobody;
  language.CheckCodepage(code, nobody);
  return language;
}

TEST(PriceReportTest, SpeaksTheLanguageOfTheOperator) {
  TestExchange office;
  office.prefix("0744", 1);
  office.charge({.from = "8:00", .to = "19:59", .days = 2310, .value = 0.10, .fixedAmount = 0.05});
  const auto call = TestExchange::call("0744123456", 4, 10, 0, 90);
  // Whatever the file says in English is what a program without the file says.
  EXPECT_EQ(reportOf(office, call, builtTexts("EN")), reportOf(office, call));
  const std::string romanian = reportOf(office, call, builtTexts("RO"));
  EXPECT_NE(romanian.find("Destinația 1: prefixul \"0744\" al numărului format.\n"), std::string::npos) << romanian;
  EXPECT_NE(romanian.find("    luni: 90 s = 2 unități x 0.1000 = 0.2000\n"), std::string::npos) << romanian;
  EXPECT_NE(romanian.find("Preț: 0.2500 EUR\n"), std::string::npos) << romanian;
}

TEST(PriceReportTest, EnglishIsTheSameWithAndWithoutTheLanguageFile) {
  const foundation::LanguageFile file = builtTexts("EN");
  const foundation::LanguageFile none;
  // Every way that a price can end, with every remark that a step can bear.
  for (int outcome = 0; outcome <= static_cast<int>(PriceOutcome::UnusableCharge); ++outcome) {
    for (const bool known : {false, true}) {
      PriceTrace trace;
      trace.start = base::DateTime();
      trace.ignoredUpTo = 5;
      trace.trunk = PriceTrace::Trunk{known, 1, {"", "1", 1, "", 1, 1}};
      trace.provider = PriceTrace::Provider{known, 1, {}};
      trace.normalisedNumber = "0040";
      trace.profile.emplace();
      trace.time.emplace();
      trace.time->takenOffRecord = true;
      trace.local = known;
      trace.destination.emplace();
      trace.destination->match = known ? PriceTrace::Match::Normalised : PriceTrace::Match::LocalCatchAll;
      trace.pulses.emplace();
      trace.interval.emplace();
      trace.bands.resize(2);
      if (known) trace.bands[1].charged.resize(1);
      const auto said = [&](const foundation::LanguageFile& language) {
        return priceReport(trace, {}, {}, static_cast<PriceOutcome>(outcome), language);
      };
      EXPECT_EQ(said(file), said(none));
      for (const std::string& line : said(file)) EXPECT_EQ(line.find("IDS_"), std::string::npos) << line;
    }
  }
}

}  // namespace
}  // namespace tariff
