#include "foundation/language_file.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

#include "base/printf.h"
#include "base/text.h"
#include "support/scripted_operator.h"
#include "support/temporary_folder.h"

namespace foundation {

using namespace support;

namespace {

LanguageFile parsed(const std::string& content) {
  LanguageFile file([] { return 65001; });
  file.parse(content);
  return file;
}

const std::string kTwoLanguages =
    "LANG EN 1252 English\nLANG RO 1250 Limba rom\xE2n\xE3\nSET NATIVE EN\n"
    "EN IDS_CANCEL Cancel\nEN IDS_SAVE Save\nRO IDS_CANCEL Anulare\nRO IDS_HOUR Or\xE3\n";

TEST(LanguageFile, ReadsLanguagesInFileOrder) {
  const LanguageFile file = parsed(kTwoLanguages);
  ASSERT_EQ(file.Languages().size(), 2U);
  EXPECT_EQ(file.Languages()[1].code, "RO");
  EXPECT_EQ(file.Languages()[1].codepage, 1250);
  EXPECT_EQ(file.Languages()[1].name, "Limba română");
  EXPECT_EQ(file.NativeLanguage(), "EN");
  EXPECT_EQ(file.allTexts().size(), 4U);
}

struct Case {
  const char* what;
  const char* content;
  const char* key;
  const char* text;
};

TEST(LanguageFile, TakesTheLinesItsRulesAllow) {
  const Case cases[] = {
      {"an ordinary line", "LANG EN 1252 E\nSET NATIVE EN\nEN K some text\n", "K", "some text"},
      {"a key without text", "LANG EN 1252 E\nSET NATIVE EN\nEN K t\n", "OTHER", "OTHER"},
      {"a line before its language", "EN K t\nLANG EN 1252 E\nSET NATIVE EN\n", "K", "K"},
      {"a line before SET NATIVE", "LANG EN 1252 E\nEN K t\nSET NATIVE EN\n", "K", "K"},
      {"a line of another language", "LANG EN 1252 E\nLANG RO 1250 R\nSET NATIVE EN\nRO K t\n", "K", "K"},
      {"first words in any case", "lang en 1252 E\nset Native EN\neN K t\n", "K", "t"},
      {"two words only", "LANG EN 1252 E\nSET NATIVE EN\nEN K\n", "K", "K"},
      {"comments", "LANG EN 1252 E\nSET NATIVE EN\n;EN K t\n#EN K t\n", "K", "K"},
      {"escapes", "LANG EN 1252 E\nSET NATIVE EN\nEN K Line one\\nLine two\\t\\r\\x\\\n", "K",
       "Line one\nLine two\t\r\\x\\"},
      {"lines ended as on other systems", "LANG EN 1252 E\r\nSET NATIVE EN\r\nEN K t\r\n", "K", "t"},
      {"no end of the last line", "LANG EN 1252 E\nSET NATIVE EN\nEN K t", "K", "t"},
      {"letters of the code page", "LANG PL 1250 P\nSET NATIVE PL\nPL K \xB9\xEA\n", "K", "ąę"},
      {"letters with a comma, which the page lacks", "LANG RO 1250 R\nSET NATIVE RO\nRO K \xBA\xAA\xFE\xDE\xE3\n", "K",
       "șȘțȚă"},
      {"letters with a cedilla of another page", "LANG TR 1254 T\nSET NATIVE TR\nTR K \xFE\xDE\n", "K", "şŞ"},
      {"the last of two lines", "LANG EN 1252 E\nSET NATIVE EN\nEN K a\nEN K b\n", "K", "b"},
  };
  for (const Case& each : cases) EXPECT_EQ(parsed(each.content).Translate(each.key), each.text) << each.what;
}

TEST(LanguageFile, TheTailOfALongLineIsALineOfItsOwn) {
  const std::string head = "LANG EN 1252 E\nSET NATIVE EN\n";
  const std::string start = "EN K ";
  const std::string fill(1022 - start.size(), 'x');
  EXPECT_EQ(parsed(head + start + fill + "\n").Translate("K"), fill);
  const LanguageFile file = parsed(head + start + fill + "EN TAIL found\n");
  EXPECT_EQ(file.Translate("K"), fill);
  EXPECT_EQ(file.Translate("TAIL"), "found");
}

TEST(LanguageFile, TranslatesWindows) {
  const LanguageFile file = parsed(kTwoLanguages);
  const std::pair<const char*, const char*> texts[] = {{"<IDS_CANCEL>", "Cancel"}, {"Save <IDS_SAVE> now", "Save"},
                                                       {"<IDS_NONE>", "IDS_NONE"}, {"no brackets", "no brackets"},
                                                       {"> <IDS_SAVE>", "Save"},   {"<open", "<open"}};
  for (const auto& [text, shown] : texts) EXPECT_EQ(file.translateBracketed(text), shown);

  WindowTexts window{.caption = "<IDS_SAVE>",
                     .children = {{"Static", "<IDS_SAVE>", {}},
                                  {"button", "<IDS_CANCEL>", {}},
                                  {"EDIT", "<IDS_CANCEL>", {}},
                                  {"SysTabControl32", "", {"<IDS_SAVE>", "plain"}}}};
  file.TranslateWindow(window);
  EXPECT_EQ(window.caption, "Save");
  EXPECT_EQ(window.children[0].text, "Save");
  EXPECT_EQ(window.children[1].text, "Cancel");
  EXPECT_EQ(window.children[2].text, "<IDS_CANCEL>");
  EXPECT_EQ(window.children[3].tabs, (std::vector<std::string>{"Save", "plain"}));
}

TEST(LanguageFile, TheChosenLanguageReplacesTheTexts) {
  LanguageFile file = parsed(kTwoLanguages);
  ScriptedOperator person;
  file.CheckCodepage("ro", person);
  EXPECT_EQ(file.NativeLanguage(), "RO");
  EXPECT_EQ(file.codepage(), 1250);
  EXPECT_EQ(file.Translate("IDS_CANCEL"), "Anulare");
  EXPECT_EQ(file.Translate("IDS_SAVE"), "IDS_SAVE");
  file.CheckCodepage("FR", person);
  EXPECT_EQ(file.NativeLanguage(), "RO");
  file.CheckCodepage("", person);
  EXPECT_EQ(file.NativeLanguage(), "RO");
  EXPECT_TRUE(person.messages.empty());
}

TEST(LanguageFile, TellsOfTheCodepage) {
  struct {
    const char* language;
    int (*current)();
    std::vector<std::string> messages;
  } const cases[] = {
      {"LANG EN 1252 E\n", [] { return 1252; }, {}},
      {"LANG EN 1252 E\n", [] { return 65001; }, {}},
      {"LANG EN 1252 E\n", [] { return 0; }, {}},
      {"LANG EN 1250 E\n",
       [] { return 28592; },
       {"Current codepage (28592) is compatible with application language codepage (1250). You may have difficuties in "
        "runinng application"}},
      {"LANG EN 9999 E\n", [] { return 1252; }, {"Codepage not supported by your OS"}},
      {"", [] { return 1252; }, {}},
  };
  for (const auto& each : cases) {
    LanguageFile file(each.current);
    file.parse(each.language);
    ScriptedOperator person;
    file.CheckCodepage("EN", person);
    EXPECT_EQ(person.messages, each.messages) << each.language;
  }
}

// Of the locales that every Debian system has.
TEST(SystemCodepage, IsTheLocales) {
  const char* const before = std::getenv("LC_ALL");
  const std::string kept = before == nullptr ? "" : before;
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(systemCodepage(), 65001);
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(systemCodepage(), 0);
  setenv("LC_ALL", "none such", 1);
  EXPECT_EQ(systemCodepage(), 0);
  setenv("LC_ALL", kept.c_str(), 1);  // empty counts as not set
}

TEST(LanguageFile, AMissingFileLeavesTheKeys) {
  LanguageFile file = parsed(kTwoLanguages);
  const TemporaryFolder folder;
  EXPECT_FALSE(file.LoadLanguageFile(folder / "none.lng"));
  EXPECT_EQ(file.Translate("IDS_CANCEL"), "IDS_CANCEL");
  EXPECT_EQ(file.codepage(), 1252);
}

TEST(LanguageFile, IsNamedAfterTheFolderAsItStands) {
  EXPECT_EQ(languageFileName(""), "Tallybook.lng");
  EXPECT_EQ(languageFileName("/opt/tally\\"), "/opt/tally/Tallybook.lng");
}

// The file that the build makes, found beside the test program.
class BuiltLanguageFile : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(file_.LoadLanguageFile("Tallybook.lng"));
    for (const TRANSLATE_ITEM& line : file_.allTexts()) {
      EXPECT_TRUE(texts_[line.language].emplace(line.key, line.text).second) << line.language << " " << line.key;
    }
  }

  LanguageFile file_;
  std::map<std::string, std::map<std::string, std::string>> texts_;
};

std::string contentOf(const std::filesystem::path& folder) {
  std::string content;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) content += readFile(entry.path());
  }
  return content;
}

std::set<std::string> keysUsedIn(const std::filesystem::path& folder) {
  std::set<std::string> keys;
  const std::regex key("\"(IDS_[A-Z0-9_]*[A-Z0-9])\"");  // what ends with _ begins several keys
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string content = readFile(entry.path());
    for (std::sregex_iterator it(content.begin(), content.end(), key), end; it != end; ++it) keys.insert((*it)[1]);
  }
  return keys;
}

TEST_F(BuiltLanguageFile, HasEveryKeyInBothLanguages) {
  ASSERT_EQ(file_.NativeLanguage(), "EN");
  EXPECT_EQ(texts_["EN"].size(), texts_["RO"].size());
  const auto keys = keysUsedIn(std::filesystem::path(TALLYBOOK_SOURCE_DIR) / "src");
  EXPECT_FALSE(keys.empty());
  for (const std::string& key : keys) {
    EXPECT_TRUE(texts_["EN"].contains(key)) << key;
    EXPECT_TRUE(texts_["RO"].contains(key)) << key;
  }
}

TEST_F(BuiltLanguageFile, PlaceholdersAgreeBetweenLanguages) {
  for (const auto& [key, text] : texts_["EN"]) {
    if (key.starts_with("IDS_QT_")) continue;  // placeholders of the window library: %1
    EXPECT_EQ(base::placeholders(text), base::placeholders(texts_["RO"][key])) << key;
  }
  EXPECT_EQ(base::placeholders(texts_["EN"]["IDS_NO_TARIF_RULE"]).size(), 2U);
  EXPECT_EQ(base::placeholders(texts_["EN"]["IDS_LOG_INVALIDLOGIN"]).size(), 2U);
}

// What the capture program says is known by its words: they are looked for where it says them, between values and
// quotes. Those of the system and of the libraries of patterns and of TOML are not in the sources.
TEST_F(BuiltLanguageFile, HasWhatTheCaptureProgramSaysAsItSaysIt) {
  std::string sources;
  for (const char* folder : {"capture", "tallymon"})
    sources += contentOf(std::filesystem::path(TALLYBOOK_SOURCE_DIR) / "src" / folder);
  // Long texts are in several literals.
  sources = std::regex_replace(sources, std::regex("\"\\s*\n\\s*\""), "");
  sources = base::replaceAll(std::move(sources), "\\\"", "\"");
  std::size_t known = 0;
  for (const auto& [key, text] : texts_["EN"]) {
    const auto isOf = [&key = key](const char* begin) { return key.starts_with(begin); };
    if (!isOf("IDS_SAID_") || isOf("IDS_SAID_OS_") || isOf("IDS_SAID_RE_") || isOf("IDS_SAID_TOML_")) continue;
    ++known;
    const std::string values = base::replaceAll(base::replaceAll(text, "\"%s\"", "'"), "%s", "'");
    for (const std::string& piece : base::split(base::replaceAll(values, "%%", "%"), "':")) {
      const std::string words(base::trim(piece));
      EXPECT_TRUE(words.size() < 3 || sources.find(words) != std::string::npos) << key << ": " << words;
    }
  }
  EXPECT_GT(known, 40U);
}

TEST_F(BuiltLanguageFile, ShowsRomanianLetters) {
  ScriptedOperator person;
  file_.CheckCodepage("RO", person);
  EXPECT_EQ(file_.Translate("IDS_COUNTRY"), "Țară");
}

}  // namespace
}  // namespace foundation
