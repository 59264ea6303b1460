#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/language_file.h"

namespace foundation {

// Says texts that were made in another language than the one in use in this one: those that were made from a text whose
// key begins with the given letters. What was filled in for placeholders stays, unless it is such a text itself. Any
// other text, and one in the language in use, stays as it is.
class Retelling {
 public:
  // `texts` must outlive this.
  Retelling(std::string_view keys, const LanguageFile& texts);
  [[nodiscard]] std::string operator()(std::string_view said) const;
  // The texts of other languages that are said with the word in them, whatever its letters' case: of each what is
  // before, between and after its placeholders.
  [[nodiscard]] std::vector<std::vector<std::string>> saidWith(std::string_view word) const;

 private:
  struct Known {
    std::string key;
    std::vector<std::string> pieces;  // what is between the placeholders
  };
  const LanguageFile& texts_;
  std::vector<Known> known_;  // in every language, those of most letters first
};

// The same for one text.
[[nodiscard]] std::string retold(std::string_view said, std::string_view keys, const LanguageFile& texts);

}  // namespace foundation
