#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/printf.h"
#include "base/text.h"
#include "platform/operator.h"

namespace foundation {

struct Language {
  std::string code;
  int codepage = 1252;
  std::string name;
};

// One line of the file: a text of a language.
struct TRANSLATE_ITEM {
  std::string language;
  std::string key;
  std::string text;  // escapes as they are in the file
};

// A window's texts, as the window system gives them, for TranslateWindow.
struct WindowTexts {
  struct Child {
    std::string windowClass;  // "STATIC", "BUTTON", "SysTabControl32", ...
    std::string text;
    std::vector<std::string> tabs;
  };
  std::string caption;
  std::vector<Child> children;
};

// The number of the code page that the system's locale shows, 65001 for UTF-8; 0 when the locale names none.
int systemCodepage();

// The documented file name, "%s%s.lng" from the folder of setting `path` and "Tallybook".
std::filesystem::path languageFileName(std::string_view folder);

// The texts shown to the operator, by key, from `Tallybook.lng`. Results are UTF-8; those of code page 1250 have the
// Romanian letters with a comma below, which that page lacks.
class LanguageFile {
 public:
  // `currentCodepage` answers the code-page check; a test puts its own in its place.
  explicit LanguageFile(int (*currentCodepage)() = systemCodepage) : currentCodepage_(currentCodepage) {}

  // Clears the tables and reads the file; false when it cannot be opened. A name without a folder is looked for in the
  // folder of the program's executable, then in ../share/tallybook beside it.
  bool LoadLanguageFile(const std::filesystem::path& file);

  // The key's text in the language in use with \t \r \n replaced; a key without text is its own text.
  [[nodiscard]] std::string Translate(std::string_view key) const;

  // Translate, then format with the text's placeholders.
  template <typename... Arguments>
  [[nodiscard]] std::string TranslateFormat(std::string_view key, const Arguments&... arguments) const {
    return base::format(Translate(key), arguments...);
  }

  // Replaces every text between "<" and ">" by the text of that key, in the caption, the STATIC and BUTTON children and
  // the tabs of SysTabControl32 children.
  void TranslateWindow(WindowTexts& window) const;
  // One text by the same rule: the whole text is replaced; without brackets it stays.
  [[nodiscard]] std::string translateBracketed(const std::string& text) const;

  // Makes the language the one in use when the file declares it (empty: keeps the native one) and tells the operator
  // when its code page is not supported or is not the system's.
  void CheckCodepage(std::string_view code, platform::Operator& person);

  [[nodiscard]] const std::vector<Language>& Languages() const { return languages_; }
  [[nodiscard]] const std::string& NativeLanguage() const { return native_; }
  // Code page of the language in use, 1252 when it declares none: that of the monitor's records too.
  [[nodiscard]] int codepage() const;
  [[nodiscard]] const std::vector<TRANSLATE_ITEM>& allTexts() const { return all_; }

  // Takes the content of a language file in place of what was read before.
  void parse(std::string_view content);

 private:
  void parseLine(std::string_view line);
  void declareLanguage(std::string_view code, std::string_view rest);
  [[nodiscard]] const Language* findLanguage(std::string_view code) const;

  int (*currentCodepage_)();
  std::vector<Language> languages_;
  std::string native_;
  std::unordered_map<std::string, std::string, base::TextHash, std::equal_to<>> TextMap_;
  std::vector<TRANSLATE_ITEM> all_;
};

}  // namespace foundation
