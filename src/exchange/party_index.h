#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"

namespace exchange {

// Positions in a list by text.
using TextIndex = std::unordered_map<std::string, std::size_t, base::TextHash, std::equal_to<>>;

// "?" in the definition stands for any one character; same length, case counts.
bool accountMatches(std::string_view definition, std::string_view account);

// Finds the first of a list of account definitions that matches an account code, as a scan in list order would.
class AccountIndex {
 public:
  void clear();
  // Positions are given in ascending order.
  void add(std::string_view definition, std::size_t position);
  [[nodiscard]] std::optional<std::size_t> find(std::string_view account) const;

 private:
  struct Pattern {
    std::string definition;
    std::size_t position;
  };
  TextIndex exact_;
  std::vector<Pattern> patterns_;  // definitions with "?", in list order
};

// Finds the first of a list of prefixes that is the start of a number, as a scan in list order would, with one look-up
// for each length of prefix that occurs.
class PrefixIndex {
 public:
  void clear();
  // Positions are given in ascending order.
  void add(std::string_view prefix, std::size_t position);
  [[nodiscard]] std::optional<std::size_t> find(std::string_view number) const;

 private:
  TextIndex first_;
  std::vector<std::size_t> lengths_;  // ascending, each once
};

}  // namespace exchange
