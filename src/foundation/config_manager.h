#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "foundation/change_tags.h"
#include "foundation/machine_store.h"
#include "foundation/setting_keys.h"
#include "jet/database.h"

namespace foundation {

// The main frame's placement as it is kept: 44 bytes, opaque here.
using WindowPlacement = std::array<unsigned char, 44>;

// The settings store: named values addressed by section and key, in the machine store or in table `Config`.
// Sections and keys compare without regard to case. In the database none holds a quotation mark: such a one is not
// found there and not written.
class ConfigManager {
 public:
  explicit ConfigManager(MachineStore& machine) : machine_(machine) {}

  // Opens the recordset over `Config`. From here on the database store can be used; both must outlive this object or be
  // let go by CloseConfig.
  void OpenConfig(jet::Database& database, ChangeTags& tags);
  void CloseConfig();

  // While it lives, changes of the database store by other copies are not looked for again: for the settings that one
  // price or one recorded call asks for.
  class View {
   public:
    explicit View(ConfigManager& config) : config_(config) {
      if (config.views_ == 0 && config.database_ != nullptr) config.refresh();
      ++config.views_;
    }
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    ~View() { --config_.views_; }

   private:
    ConfigManager& config_;
  };

  // A setting by its key (setting_keys.h). `fallback` is for a reader that does without the setting in its own way.
  std::string ReadConfigString(const TextKey& key) { return ReadConfigString(key, key.fallback); }
  std::string ReadConfigString(const TextKey& key, std::string_view fallback) {
    return ReadConfigString(key.key, key.section, key.store, fallback);
  }
  std::int32_t ReadConfigInt(const NumberKey& key) { return ReadConfigInt(key, key.number); }
  std::int32_t ReadConfigInt(const NumberKey& key, std::int32_t fallback) {
    return ReadConfigInt(key.key, key.section, key.store, fallback);
  }
  bool WriteConfigString(std::optional<std::string_view> value, const TextKey& key) {
    return WriteConfigString(value, key.key, key.section, key.store);
  }
  bool WriteConfigInt(std::int32_t value, const NumberKey& key) {
    return WriteConfigInt(value, key.key, key.section, key.store);
  }
  // Deletes the value of the machine store, or empties the text of the database store.
  bool ForgetConfig(const Setting& key) { return WriteConfigString(std::nullopt, key.key, key.section, key.store); }
  std::optional<std::int32_t> takeNumber(const NumberKey& key) { return takeNumber(key.key, key.section); }

  // A setting by its name, for names that only a user or the data know.
  // LastFound() tells afterwards whether a stored value was found; in the machine store a stored value that equals the
  // default counts as not found. Database-store calls throw jet::Error for faults of find and update.
  std::string ReadConfigString(std::string_view key, std::string_view section, int store, std::string_view fallback);
  std::int32_t ReadConfigInt(std::string_view key, std::string_view section, int store, std::int32_t fallback);
  // False when the store refuses (machine file not writable, database read-only). Without a value (nullopt) the machine
  // store deletes the value, or the section when `key` is empty; the database store writes an empty text.
  bool WriteConfigString(std::optional<std::string_view> value, std::string_view key, std::string_view section,
                         int store);
  bool WriteConfigInt(std::int32_t value, std::string_view key, std::string_view section, int store);
  // Moves whenever a setting of the database store may have another value than before, as the latest View or call saw
  // it: for code that needs the same settings for every call.
  [[nodiscard]] std::uint64_t settingsVersion() const { return settingsVersion_; }
  // Hands out the number that a setting of the database store counts, and counts it on: to one copy only, since both
  // are one transaction. Nothing when the setting is missing or -1; the number is then 0, and 1 is stored. Throws
  // jet::Error.
  std::optional<std::int32_t> takeNumber(std::string_view key, std::string_view section);
  [[nodiscard]] bool LastFound() const { return lastFound_; }

  // True while the main database could be opened read-only only.
  [[nodiscard]] bool DatabaseReadOnly() const { return database_ != nullptr && database_->readOnly(); }

  bool WriteWindowPlacement(const WindowPlacement& placement);
  std::optional<WindowPlacement> ReadWindowPlacement();

  [[nodiscard]] MachineStore& machineStore() { return machine_; }

 private:
  // A row of `Config` as it was when the table had version cacheVersion_.
  struct Row {
    bool found = false;
    std::string text;
    std::int32_t number = 0;
  };

  // Reopens the recordset when another copy changed `Config`.
  void refresh();
  void forget();
  const Row& findRow(std::string_view key, std::string_view section);
  bool writeDatabase(std::string_view key, std::string_view section, std::string_view field, const jet::Value& value);
  bool writeMachine(bool done);

  MachineStore& machine_;
  jet::Database* database_ = nullptr;
  ChangeTags* tags_ = nullptr;
  std::unique_ptr<jet::Recordset> ConfigRecordset_;
  bool lastFound_ = false;

  // Rows read since the table last changed, by folded path: settings are asked for several times a recorded call.
  std::unordered_map<std::string, Row> cache_;
  std::uint64_t cacheVersion_ = 0;
  std::uint64_t settingsVersion_ = 1;
  int views_ = 0;
  std::string lookup_;  // kept for its memory
};

}  // namespace foundation
