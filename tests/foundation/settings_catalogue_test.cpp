#include "foundation/settings_catalogue.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace foundation {
namespace {

TEST(SettingsCatalogue, KnowsTheStoreOfEveryKey) {
  struct {
    const char* section;
    const char* key;
    std::optional<Store> store;
  } const cases[] = {
      {"general", "PathDatabase", StoreMachine},
      {"General", "pathmonitor_branch", StoreMachine},
      {"general", "PathDatabase_", std::nullopt},
      {"general", "DBVERSION", StoreDatabase},
      {"general", "OrganizationTAXE", StoreDatabase},
      {"general", "Log_DeleteAfter", StoreDatabase},
      {"general", "Log_Del", StoreMachine},
      {"Calls", "Sterge", StoreDatabase},
      {"Calls", "ContName", StoreMachine},
      {"general", "ContName", std::nullopt},
      {"Provider_12", "SecNetax", StoreDatabase},
      {"Provider_x", "SecNetax", std::nullopt},
      {"Tariffs\\Trunks", "LiniiDef255", StoreDatabase},
      {"Folder100", "VisibleColumns0", StoreMachine},
      {"general", "nothing", std::nullopt},
  };
  for (const auto& each : cases) EXPECT_EQ(storeOf(each.section, each.key), each.store) << each.key;
}

TEST(SettingsCatalogue, EverySettingIsFoundUnderItsOwnName) {
  for (const Setting* each : knownSettings()) {
    const Setting& setting = *each;
    if (setting.key.find('%') != std::string_view::npos || setting.section.find('%') != std::string_view::npos)
      continue;
    EXPECT_EQ(findSetting(setting.section, setting.key), each) << setting.key;
  }
}

TEST(SettingsCatalogue, ValuesAreStoredInTheFormThatReadersExpect) {
  struct {
    const char* section;
    const char* key;
    const char* typed;
    const char* stored;  // null: refused
  } const cases[] = {
      {"Calls", "Sterge", " 007 ", "7"},
      {"Calls", "Sterge", "-1", "-1"},
      {"Calls", "Sterge", "-2", nullptr},
      {"Calls", "Sterge", "1e3", nullptr},
      {"Calls", "Sterge", "", nullptr},
      {"Calls", "Trunk", "2147483648", nullptr},
      {"general", "iface_Grid", "2", nullptr},
      {"general", "OrganizationTAXE", " 7.5", "7.5"},
      {"general", "OrganizationTAXE", "-3", "-3"},
      {"general", "OrganizationTAXE", "", ""},
      {"general", "OrganizationTAXE", "7,5", nullptr},
      {"general", "OrganizationTAXE", "7.", nullptr},
      {"general", "OrganizationTAXE", "- 7", nullptr},
      {"general", "Path", "/srv/reports", "/srv/reports/"},
      {"general", "PathMonitor_branch", "C:\\in\\", "C:\\in\\"},
      {"general", "PathDatabase", "---", "---"},
      {"general", "Path", "", ""},
      {"general", "OrganizationAddress", " a ", " a "},
      {"Mail", "Password", " a ", " a "},
      {"Mail", "Port", "0", nullptr},
      {"general", "Window Placement", "x", nullptr},
  };
  for (const auto& each : cases) {
    const Setting* setting = findSetting(each.section, each.key);
    ASSERT_NE(setting, nullptr) << each.key;
    try {
      const std::string stored = storableValue(*setting, each.typed);
      EXPECT_TRUE(each.stored != nullptr && stored == each.stored) << each.key << ' ' << each.typed << ": " << stored;
    } catch (const std::invalid_argument& refusal) {
      EXPECT_EQ(each.stored, nullptr) << refusal.what();
      EXPECT_NE(std::string(refusal.what()).find(setting->key), std::string::npos);
    }
  }
}

TEST(SettingsCatalogue, DefaultsCanBeStored) {
  for (const Setting* setting : knownSettings()) {
    const std::string held = defaultText(*setting);
    if (held.empty()) continue;
    EXPECT_EQ(storableValue(*setting, held), held) << setting->key;
  }
}

}  // namespace
}  // namespace foundation
