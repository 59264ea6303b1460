#include <cstdint>
#include <string_view>

#include "foundation/language_file.h"

// Any bytes are read, translated and switched between the languages that they declare.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  foundation::LanguageFile file;
  file.parse(input);
  platform::NoOperator person;
  const auto languages = file.Languages();
  for (const auto& language : languages) file.CheckCodepage(language.code, person);
  for (const auto& text : file.allTexts()) (void)file.Translate(text.key);
  (void)file.translateBracketed(std::string(input));
  return 0;
}
