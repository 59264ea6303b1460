#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/ini_text.h"

// Any bytes are read; what is set is found again after the text was written and read once more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  foundation::IniText text(input);
  const std::string_view name = input.substr(0, input.find('\n'));
  text.set(name, name, std::string(input));
  const foundation::IniText again(text.text());
  const auto* value = again.find(name, name);
  if (value == nullptr || std::get<std::string>(*value) != input) std::abort();
  text.erase(name, name);
  text.eraseSection(name);
  return 0;
}
