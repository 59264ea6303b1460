#include "foundation/config_manager.h"

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"

namespace foundation {

namespace {

// Rows of `Config` are found by a criterion with the name between quotation marks.
bool canName(std::string_view key, std::string_view section) {
  return key.find('"') == std::string_view::npos && section.find('"') == std::string_view::npos;
}

}  // namespace

void ConfigManager::OpenConfig(jet::Database& database, ChangeTags& tags) {
  CloseConfig();
  ConfigRecordset_ = database.openRecordset("SELECT * FROM Config");
  database_ = &database;
  tags_ = &tags;
}

void ConfigManager::CloseConfig() {
  ConfigRecordset_.reset();
  database_ = nullptr;
  tags_ = nullptr;
  forget();
}

void ConfigManager::forget() {
  cache_.clear();
  ++settingsVersion_;
}

void ConfigManager::refresh() {
  const jet::ReadView view(*database_);  // one look at the file for both tables
  // The tag is asked on every access, also when the rows in memory are known to be good: it reports a missing tag.
  if (tags_->IsTouched("Config")) {
    forget();
    try {
      ConfigRecordset_ = database_->openRecordset("SELECT * FROM Config");
    } catch (const jet::Error&) {
      // By rule: the operation works on what the recordset holds.
    }
  }
  const std::uint64_t version = database_->tableVersion("Config");
  if (version != cacheVersion_) {
    forget();
    cacheVersion_ = version;
  }
}

const ConfigManager::Row& ConfigManager::findRow(std::string_view key, std::string_view section) {
  lookup_.clear();
  for (const std::string_view part : {section, std::string_view("\\"), key}) lookup_ += part;
  for (char& c : lookup_) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const auto known = cache_.find(lookup_);
  if (known != cache_.end()) return known->second;

  ConfigRecordset_->findFirst(base::format("Path = \"%s\\%s\"", section, key));
  Row row;
  row.found = !ConfigRecordset_->noMatch();
  if (row.found) {
    row.text = ConfigRecordset_->get("String_Value").toText();
    row.number = static_cast<std::int32_t>(ConfigRecordset_->get("Int_Value").toLong());
  }
  return cache_.insert_or_assign(lookup_, std::move(row)).first->second;
}

std::string ConfigManager::ReadConfigString(std::string_view key, std::string_view section, int store,
                                            std::string_view fallback) {
  if (store == StoreMachine) {
    auto value = machine_.readString(section, key).value_or(std::string(fallback));
    // By rule: a stored value that equals the default counts as not found.
    lastFound_ = value != fallback;
    return value;
  }
  lastFound_ = false;
  if (database_ == nullptr || !canName(key, section)) return std::string(fallback);
  if (views_ == 0) refresh();
  const Row& row = findRow(key, section);
  lastFound_ = row.found;
  return row.found ? row.text : std::string(fallback);
}

std::int32_t ConfigManager::ReadConfigInt(std::string_view key, std::string_view section, int store,
                                          std::int32_t fallback) {
  if (store == StoreMachine) {
    const std::int32_t value = machine_.readInt(section, key).value_or(fallback);
    lastFound_ = value != fallback;
    return value;
  }
  lastFound_ = false;
  if (database_ == nullptr || !canName(key, section)) return fallback;
  if (views_ == 0) refresh();
  const Row& row = findRow(key, section);
  lastFound_ = row.found;
  return row.found ? row.number : fallback;
}

bool ConfigManager::writeMachine(bool done) {
  lastFound_ = done;
  return done;
}

bool ConfigManager::writeDatabase(std::string_view key, std::string_view section, std::string_view field,
                                  const jet::Value& value) {
  if (database_ == nullptr || database_->readOnly() || !canName(key, section)) return false;
  refresh();
  // One transaction, so that two copies that store a new setting do not make two rows of it.
  jet::Transaction transaction(*database_);
  const std::string path = base::format("%s\\%s", section, key);
  ConfigRecordset_->findFirst("Path = \"" + path + "\"");
  if (ConfigRecordset_->noMatch()) {
    ConfigRecordset_->addNew();
  } else {
    ConfigRecordset_->edit();
  }
  ConfigRecordset_->set(field, value);
  ConfigRecordset_->set("Path", path);
  ConfigRecordset_->update();
  tags_->Touch("Config");
  transaction.commit();
  forget();
  lastFound_ = true;
  return true;
}

bool ConfigManager::WriteConfigString(std::optional<std::string_view> value, std::string_view key,
                                      std::string_view section, int store) {
  if (store != StoreMachine) return writeDatabase(key, section, "String_Value", value.value_or(""));
  if (value) return writeMachine(machine_.writeString(section, key, *value));
  return writeMachine(key.empty() ? machine_.eraseSection(section) : machine_.erase(section, key));
}

bool ConfigManager::WriteConfigInt(std::int32_t value, std::string_view key, std::string_view section, int store) {
  if (store != StoreMachine) return writeDatabase(key, section, "Int_Value", value);
  return writeMachine(machine_.writeInt(section, key, value));
}

std::optional<std::int32_t> ConfigManager::takeNumber(std::string_view key, std::string_view section) {
  if (database_ == nullptr) return std::nullopt;
  jet::Transaction transaction(*database_);
  const std::int32_t next = ReadConfigInt(key, section, StoreDatabase, -1);
  WriteConfigInt(next == -1 ? 1 : next + 1, key, section, StoreDatabase);
  transaction.commit();
  return next == -1 ? std::nullopt : std::optional(next);
}

bool ConfigManager::WriteWindowPlacement(const WindowPlacement& placement) {
  return machine_.writeBinary(keys::WindowPlacement.section, keys::WindowPlacement.key,
                              {placement.begin(), placement.end()});
}

std::optional<WindowPlacement> ConfigManager::ReadWindowPlacement() {
  const auto bytes = machine_.readBinary(keys::WindowPlacement.section, keys::WindowPlacement.key);
  WindowPlacement placement{};
  if (!bytes || bytes->size() != placement.size()) return std::nullopt;
  std::copy(bytes->begin(), bytes->end(), placement.begin());
  return placement;
}

}  // namespace foundation
