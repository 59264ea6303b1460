#include "foundation/settings_catalogue.h"

#include <gtest/gtest.h>

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
  for (const Setting& setting : knownSettings()) {
    if (setting.key.find('%') != std::string_view::npos || setting.section.find('%') != std::string_view::npos)
      continue;
    EXPECT_EQ(findSetting(setting.section, setting.key), &setting) << setting.key;
  }
}

}  // namespace
}  // namespace foundation
