#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/text.h"
#include "jet/engine/driver.h"

namespace jet::engine {

// Numbers that move when the rows of a table may have changed: own changes are counted by table, those of other
// connections as the driver tells them.
class Versions final : private ChangeListener {
 public:
  explicit Versions(Driver& driver) : driver_(driver) {}

  std::uint64_t of(std::string_view table);
  // The counters of a table's changes; valid as long as this object.
  struct Own {
    std::uint64_t changes = 0;
    std::uint64_t rewrites = 0;  // without those that only put a row after all others
  };
  const Own& own(std::string_view table) { return ownOf(table); }
  void noteChange(std::string_view table);
  void noteAppended(std::string_view table) { ++ownOf(table).changes; }
  void touchAll() { ++everything_; }
  // The part of every table's number that touchAll() moves.
  [[nodiscard]] const std::uint64_t& everything() const { return everything_; }

  // Looks for changes by other connections, unless held still.
  void refresh(bool closely = false) {
    if (held_ == 0) driver_.lookForChanges(*this, closely);
  }
  // While held, nothing is looked for: no one else can have written, or what was current at the start serves.
  void hold() { ++held_; }
  void release() { --held_; }

 private:
  void tableChanged(std::string_view table) override { noteChange(table); }
  void tableAppended(std::string_view table) override { noteAppended(table); }
  void everythingChanged() override { touchAll(); }
  void definitionsChanged() override { touchAll(); }

  Own& ownOf(std::string_view table) { return own_.try_emplace(base::foldAscii(table)).first->second; }

  Driver& driver_;
  std::uint64_t everything_ = 1;
  int held_ = 0;
  std::unordered_map<std::string, Own, base::TextHash, std::equal_to<>> own_;  // by folded name
};

}  // namespace jet::engine
