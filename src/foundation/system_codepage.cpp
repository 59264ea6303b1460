#include <langinfo.h>
#include <locale.h>

#include <string>

#include "base/text.h"
#include "foundation/language_file.h"

namespace foundation {

namespace {

// Character sets of locales whose Windows number is not part of their name.
constexpr struct {
  std::string_view charset;
  int codepage;
} kCharsets[] = {
    {"UTF-8", 65001}, {"KOI8-R", 20866}, {"KOI8-U", 21866}, {"EUC-JP", 51932},  {"EUC-KR", 51949},
    {"GB2312", 936},  {"GBK", 936},      {"BIG5", 950},     {"GB18030", 54936}, {"TIS-620", 874},
};

int charsetNumber(std::string_view charset) {
  for (const auto& known : kCharsets) {
    if (base::equalFoldAscii(charset, known.charset)) return known.codepage;
  }
  constexpr std::string_view kIso = "ISO-8859-";
  if (base::equalFoldAscii(charset.substr(0, kIso.size()), kIso)) {
    return 28590 + base::leadingInteger(charset.substr(kIso.size()));
  }
  for (const std::string_view prefix : {"WINDOWS-", "CP"}) {
    if (base::equalFoldAscii(charset.substr(0, prefix.size()), prefix)) {
      return base::leadingInteger(charset.substr(prefix.size()));
    }
  }
  return 0;  // the plain "C" locale among them
}

}  // namespace

int systemCodepage() {
  // The environment's locale, whether or not the program made it its own.
  const locale_t environment = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (environment == nullptr) return 0;
  const int number = charsetNumber(nl_langinfo_l(CODESET, environment));
  freelocale(environment);
  return number;
}

}  // namespace foundation
