#include "foundation/language_file.h"

#include <algorithm>

#include "base/codepage.h"
#include "base/path.h"
#include "platform/regular_file.h"

namespace foundation {

namespace {

// Longer lines are read in pieces of this many bytes, each taken as a line of its own.
constexpr std::size_t kLineLimit = 1022;
constexpr int kDefaultCodepage = 1252;
constexpr int kUtf8Codepage = 65001;
constexpr int kCentralEuropeanCodepage = 1250;

std::filesystem::path besideProgram(const std::filesystem::path& name) {
  std::error_code fault;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", fault).parent_path();
  const auto installed = folder / ".." / "share" / "tallybook" / name;
  if (!std::filesystem::exists(folder / name, fault) && std::filesystem::exists(installed, fault)) return installed;
  return folder / name;
}

// The word up to the next blank, taken off the line with that blank.
std::string_view takeWord(std::string_view& line) {
  const std::size_t blank = line.find(' ');
  const std::string_view word = line.substr(0, blank);
  line.remove_prefix(blank == std::string_view::npos ? line.size() : blank + 1);
  return word;
}

std::string replaceEscapes(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
    const char meant = next == 't' ? '\t' : next == 'r' ? '\r' : next == 'n' ? '\n' : '\0';
    out += meant == '\0' ? text[i] : meant;
    if (meant != '\0') ++i;
  }
  return out;
}

// Code page 1250 has the Romanian s and t with a cedilla only; in it they stand for the letters with a comma below. No
// other language of that page has them.
std::string withCommaLetters(const std::string& text) {
  struct Letter {
    std::string_view cedilla, comma;
  };
  static constexpr Letter kLetters[] = {{"ş", "ș"}, {"Ş", "Ș"}, {"ţ", "ț"}, {"Ţ", "Ț"}};
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto* found = std::find_if(std::begin(kLetters), std::end(kLetters), [&](const Letter& letter) {
      return text.compare(i, letter.cedilla.size(), letter.cedilla) == 0;
    });
    if (found == std::end(kLetters)) {
      out += text[i++];
    } else {
      out += found->comma;
      i += found->cedilla.size();
    }
  }
  return out;
}

std::string decodeText(std::string_view bytes, int codepage) {
  std::string text = base::decode(bytes, codepage);
  return codepage == kCentralEuropeanCodepage ? withCommaLetters(text) : text;
}

}  // namespace

std::filesystem::path languageFileName(std::string_view folder) {
  return base::systemPath(base::format("%s%s.lng", base::withSeparator(folder), "Tallybook"));
}

bool LanguageFile::LoadLanguageFile(const std::filesystem::path& file) {
  parse({});
  const auto content = platform::readRegularFile(file.has_parent_path() ? file : besideProgram(file));
  if (!content) return false;
  parse(*content);
  return true;
}

void LanguageFile::parse(std::string_view content) {
  languages_.clear();
  native_.clear();
  TextMap_.clear();
  all_.clear();
  while (!content.empty()) {
    const std::size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    for (; line.size() > kLineLimit; line.remove_prefix(kLineLimit)) parseLine(line.substr(0, kLineLimit));
    parseLine(line);
  }
}

// Lines of fewer than three words hold nothing: `rest` is empty for them.
void LanguageFile::parseLine(std::string_view line) {
  if (line.empty() || line.front() == ';' || line.front() == '#') return;
  std::string_view rest = line;
  const std::string_view first = takeWord(rest);
  const std::string_view second = takeWord(rest);
  if (rest.empty()) return;

  if (base::equalFoldAscii(first, "LANG")) {
    declareLanguage(second, rest);
    return;
  }
  if (base::equalFoldAscii(first, "SET")) {
    if (base::equalFoldAscii(second, "NATIVE")) native_ = std::string(takeWord(rest));
    return;
  }
  const Language* language = findLanguage(first);
  if (language == nullptr) return;
  std::string text = decodeText(rest, language->codepage);
  // Only what is read while its language is the one in use goes into the map.
  if (base::equalFoldAscii(language->code, native_)) TextMap_.insert_or_assign(std::string(second), text);
  all_.push_back({language->code, std::string(second), std::move(text)});
}

void LanguageFile::declareLanguage(std::string_view code, std::string_view rest) {
  if (findLanguage(code) != nullptr) return;
  Language language;
  language.code = std::string(code);
  language.codepage = base::leadingInteger(takeWord(rest));
  language.name = decodeText(rest, language.codepage);
  languages_.push_back(std::move(language));
}

const Language* LanguageFile::findLanguage(std::string_view code) const {
  for (const Language& language : languages_) {
    if (base::equalFoldAscii(language.code, code)) return &language;
  }
  return nullptr;
}

int LanguageFile::codepage() const {
  const Language* language = findLanguage(native_);
  return language == nullptr ? kDefaultCodepage : language->codepage;
}

std::string LanguageFile::Translate(std::string_view key) const {
  const auto found = TextMap_.find(key);
  return found == TextMap_.end() ? std::string(key) : replaceEscapes(found->second);
}

std::string LanguageFile::translateBracketed(const std::string& text) const {
  const std::size_t open = text.find('<');
  const std::size_t close = open == std::string::npos ? open : text.find('>', open);
  if (close == std::string::npos) return text;
  return Translate(std::string_view(text).substr(open + 1, close - open - 1));
}

void LanguageFile::TranslateWindow(WindowTexts& window) const {
  window.caption = translateBracketed(window.caption);
  for (WindowTexts::Child& child : window.children) {
    if (base::equalFoldAscii(child.windowClass, "STATIC") || base::equalFoldAscii(child.windowClass, "BUTTON")) {
      child.text = translateBracketed(child.text);
    } else if (base::equalFoldAscii(child.windowClass, "SysTabControl32")) {
      for (std::string& tab : child.tabs) tab = translateBracketed(tab);
    }
  }
}

void LanguageFile::CheckCodepage(std::string_view code, platform::Operator& person) {
  const Language* chosen = findLanguage(code);
  if (chosen != nullptr) {
    native_ = chosen->code;
    TextMap_.clear();
    for (const TRANSLATE_ITEM& line : all_) {
      if (line.language == native_) TextMap_.insert_or_assign(line.key, line.text);
    }
  }
  const Language* used = findLanguage(native_);
  if (used == nullptr) return;
  if (!base::codepageSupported(used->codepage)) {
    person.messageBox("Codepage not supported by your OS");
    return;
  }
  const int current = currentCodepage_();
  // A system that shows UTF-8 shows every page; one that names no page is not known to lack any.
  if (current == 0 || current == kUtf8Codepage || current == used->codepage) return;
  person.messageBox(
      base::format("Current codepage (%d) is compatible with application language codepage (%d). You may have "
                   "difficuties in runinng application",
                   current, used->codepage));
}

}  // namespace foundation
