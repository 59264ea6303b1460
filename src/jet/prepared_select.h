#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/printf.h"
#include "jet/database.h"

namespace jet {

// What the memory that answers a prepared select keeps with it from run to run.
struct PreparedPlace {
  const void* owner = nullptr;  // the memory; null when it is gone
};

// A select that is run again and again with other values, as for every call that is priced. The values are handed over
// as they are, and not written into a text that is then cut into tokens; rows and errors are those of the text, which
// is made when an error, or the database itself, needs it. Belongs to one thread at a time.
class PreparedSelect {
 public:
  // The statement in the terms of base::format(), each value within a literal: %d for a whole number, #%d:%d# for a
  // time of day, %s anywhere in a quoted text, once. What has no placeholder stays as it is. Throws std::logic_error
  // for a placeholder elsewhere, Error 3075 for a text that cannot be cut into tokens.
  explicit PreparedSelect(std::string_view pattern);

  // One value for each literal with a placeholder; a time of day is its minute. Errors are those of openSnapshot().
  template <typename... Values>
  Snapshot open(Database& database, const Values&... values) {
    const base::FormatArgument list[] = {base::detail::toArgument(values)...};
    return openWith(database, list);
  }
  Snapshot openWith(Database& database, std::span<const base::FormatArgument> values) {
    return database.openSnapshot(*this, values);
  }

  // The statement with these values.
  [[nodiscard]] std::string text(std::span<const base::FormatArgument> values) const;

  // For the engine. The literals of the text with these values, in its order, until the next call; nothing when
  // the text must be cut into tokens to know what it means (a quotation mark in a value, a negative number).
  std::optional<std::span<const Value>> literals(std::span<const base::FormatArgument> values);
  [[nodiscard]] const std::shared_ptr<PreparedPlace>& place() const { return place_; }
  void keepPlace(std::shared_ptr<PreparedPlace> place) { place_ = std::move(place); }

 private:
  enum class Kind : std::uint8_t { Number, TimeOfDay, Text };
  struct Slot {
    Kind kind = Kind::Number;
    std::size_t literal = 0;  // its place among all literals
    char quote = '\0';        // of a text
    std::string before = {};  // what is around the value within its quotes
    std::string after = {};
  };

  std::size_t takePart(std::string_view rest, std::string& sample, std::vector<std::size_t>& starts);
  void findLiterals(std::string_view sample, const std::vector<std::size_t>& starts);
  bool put(const Slot& slot, const base::FormatArgument& value);

  std::string pattern_;
  std::vector<Slot> slots_;
  std::vector<Value> literals_;
  std::string joined_;  // kept for its memory
  std::shared_ptr<PreparedPlace> place_;
};

}  // namespace jet
