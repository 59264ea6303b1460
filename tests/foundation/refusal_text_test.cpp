#include "foundation/refusal_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/scripted_operator.h"

namespace foundation {
namespace {

using Wrong = base::Refused<std::invalid_argument>;

TEST(RefusalText, IsInTheLanguageInUse) {
  LanguageFile texts;
  ScriptedOperator person;
  texts.parse(
      "LANG EN 1252 English\nLANG RO 1250 Romana\nSET NATIVE EN\n"
      "EN IDS_FULL %s has more than %d rows\nRO IDS_FULL %s are peste %d randuri\n");
  const Wrong wrong(base::Refusal("IDS_FULL", "%s has more than %d rows", std::string("list.csv"), 5));
  EXPECT_STREQ(wrong.what(), "list.csv has more than 5 rows");
  texts.CheckCodepage("RO", person);
  EXPECT_EQ(errorText(wrong, texts), "list.csv are peste 5 randuri");
  EXPECT_EQ(refusalText(wrong, texts), "list.csv are peste 5 randuri");
}

TEST(RefusalText, IsEnglishWhereThereIsNoText) {
  const LanguageFile none;
  EXPECT_EQ(errorText(Wrong(base::Refusal("IDS_FULL", "at %d%%", 7)), none), "at 7%");
  EXPECT_EQ(errorText(Wrong(base::Refusal("", "%s", "100%d")), none), "100%d");
  EXPECT_EQ(errorText(std::runtime_error("plain"), none), "plain");
}

}  // namespace
}  // namespace foundation
