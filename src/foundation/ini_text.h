#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "base/text.h"

namespace foundation {

// The text of a machine store file:
//
//   ; a comment
//   [general]
//   PathDatabase=str:/srv/tallybook/
//   iface_Grid=int:1
//   Window Placement=hex:2c0000000100
//
// A line is `key=type:value`. The string "5" and the integer 5 are different values. "%" and two hexadecimal digits
// stand for one byte: so are written control characters, blanks at an end, "=" in a key, a key's first ";", "#" or "[",
// and a "%" that two such digits follow. Lines before the first section belong to the section without a name.
//
// Any bytes are accepted: a line that is none of these is not a value, and stays where it is when values change. Of two
// lines for one value the later one holds; the next change of that value leaves one.
class IniText {
 public:
  using Binary = std::vector<unsigned char>;
  using Value = std::variant<std::int32_t, std::string, Binary>;

  IniText() = default;
  explicit IniText(std::string_view content);

  [[nodiscard]] std::string text() const;

  // The value, or nullptr; valid until the next change.
  [[nodiscard]] const Value* find(std::string_view section, std::string_view key) const;

  void set(std::string_view section, std::string_view key, Value value);
  void erase(std::string_view section, std::string_view key);
  // Takes the section's header and values out, with the comments and odd lines in it.
  void eraseSection(std::string_view section);

 private:
  enum class Kind { Other, Header, Entry };
  struct Line {
    Kind kind = Kind::Other;
    std::string raw;
    std::string section;  // folded; the one that the line opens or is in
    std::string key;      // folded; entries only
  };

  [[nodiscard]] static std::string name(std::string_view section, std::string_view key);
  void addLine(std::string_view raw, std::string& section);
  [[nodiscard]] std::size_t placeForNewEntry(std::string_view foldedSection, std::string_view section);

  std::vector<Line> lines_;
  std::unordered_map<std::string, Value, base::TextHash, std::equal_to<>> values_;  // by name()
};

}  // namespace foundation
