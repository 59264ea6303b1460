#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace ctl {

// The words of an option's list, "a, b" or "a;b"; "none" and an empty text are an empty list.
inline std::vector<std::string> listWords(std::string_view text) {
  std::vector<std::string> words;
  for (const std::string& piece : base::split(base::replaceAll(std::string(text), ";", ","), ",")) {
    const std::string_view word = base::trim(piece);
    if (!word.empty()) words.emplace_back(word);
  }
  if (words.size() == 1 && words.front() == "none") words.clear();
  return words;
}

}  // namespace ctl
