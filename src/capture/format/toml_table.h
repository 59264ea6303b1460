#pragma once

#include <toml++/toml.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "capture/format/format.h"

namespace capture {

// Throws FormatError with the file, line and column of a node.
[[noreturn]] void failAt(const toml::node& node, const std::string& message);

// A table of a format file whose keys are all checked: done() complains about those that were not asked for.
class TomlTable {
 public:
  explicit TomlTable(const toml::table& table) : table_(table) {}
  // The node must be a table.
  explicit TomlTable(const toml::node& node);

  // Nothing when the key is missing.
  [[nodiscard]] const toml::node* find(std::string_view key);
  [[nodiscard]] std::optional<std::string> text(std::string_view key);
  [[nodiscard]] std::string text(std::string_view key, std::string_view fallback);
  [[nodiscard]] std::string needText(std::string_view key);
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key);
  [[nodiscard]] bool flag(std::string_view key, bool fallback);
  // A text or a list of texts; empty when the key is missing.
  [[nodiscard]] std::vector<std::string> texts(std::string_view key);

  // Throws FormatError at the first key that was never asked for.
  void done() const;

  [[nodiscard]] const toml::table& node() const { return table_; }
  // Keys in the order of the file; they count as asked for.
  [[nodiscard]] std::vector<std::pair<std::string, const toml::node*>> all();

 private:
  const toml::table& table_;
  std::set<std::string, std::less<>> asked_;
};

[[nodiscard]] std::string textOf(const toml::node& node);
// A text, or a list of them.
[[nodiscard]] std::vector<std::string> textsOf(const toml::node& node);
// A table, or a list of them, each given to `take`.
void eachTable(const toml::node& node, const std::function<void(const toml::node&)>& take);

}  // namespace capture
