#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

// The tables of a site file's text; messages name it as `file`. Throws SiteError when it is no TOML.
[[nodiscard]] toml::table parseSite(std::string_view text, const std::string& file);

// A table of the site file that is read key by key. Every fault names the place; a key that nothing has read is one.
class Section {
 public:
  // `file` is for messages, `name` tells which table ("serial").
  Section(const toml::table& table, std::string file, std::string name)
      : table_(table), file_(std::move(file)), name_(std::move(name)) {}

  [[nodiscard]] bool has(const char* key) const { return table_.contains(key); }
  [[nodiscard]] std::string text(const char* key, const std::string& absent = {});
  [[nodiscard]] std::string neededText(const char* key);
  [[nodiscard]] std::int64_t number(const char* key, std::int64_t absent, std::int64_t least, std::int64_t most);
  [[nodiscard]] std::int64_t neededNumber(const char* key, std::int64_t least, std::int64_t most);
  [[nodiscard]] bool yes(const char* key, bool absent);
  [[nodiscard]] std::vector<std::string> texts(const char* key);
  [[nodiscard]] Section table(const char* key);
  [[nodiscard]] std::vector<Section> tables(const char* key);
  // The value of a key of any simple kind as text; a list with commas between.
  [[nodiscard]] std::string anyText(const std::string& key);
  // The keys that no call has asked for.
  [[nodiscard]] std::vector<std::string> unreadKeys() const;
  [[nodiscard]] const toml::table& raw() const { return table_; }

  // Throws SiteError at the place of a key, or of the table when it has no such key.
  [[noreturn]] void fail(std::string_view key, const std::string& what) const;
  // To be called when everything is read.
  void refuseUnread() const;

 private:
  const toml::node* find(std::string_view key);
  [[nodiscard]] std::string place(const toml::source_region& region) const;

  const toml::table& table_;
  std::string file_;
  std::string name_;
  std::set<std::string, std::less<>> read_;
};

}  // namespace capture
