#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"
#include "schema/schema.h"
#include "support/database_folder.h"

namespace support {

// Keeps what the operator would have seen and heard.
class ListeningOperator : public platform::NoOperator {
 public:
  void messageBox(std::string_view text) override { messages.emplace_back(text); }
  void beep(int, int) override { beeps += 't'; }
  void beep(Sound sound) override { beeps += sound == Sound::Hand ? 'h' : 'a'; }

  std::vector<std::string> messages;
  std::string beeps;  // one letter each: tone, hand, asterisk
};

class StoppedClock : public platform::Clock {
 public:
  [[nodiscard]] base::DateTime now() const override { return time; }

  base::DateTime time = *base::DateTime::fromParts(2024, 3, 4, 12, 0, 0);
};

// A new main and tariff database in a temporary folder, with the settings opened over them.
struct TestOffice {
  TestOffice() {
    std::ofstream(folder / "texts.lng") << "LANG en 1252 English\nSET NATIVE en\n"
                                           "en IDS_NO_TARIF_RULE No tariff rule for %s on trunk %s\n"
                                           "en IDS_CANTGETNEXTRECID No next number\n";
    language.LoadLanguageFile(folder / "texts.lng");
    tags.LoadTouch(*main);
    config.OpenConfig(*main, tags);
    config.WriteConfigString("40", "CountryCode", "general", foundation::StoreMachine);
    config.WriteConfigString("21", "AreaCode", "general", foundation::StoreMachine);
  }

  DatabaseFolder folder;
  ListeningOperator person;
  StoppedClock clock;
  foundation::LanguageFile language;
  foundation::MachineStore machine{folder / "machine.ini"};
  std::unique_ptr<jet::Database> main = schema::createMainDatabase(folder / schema::kMainFile);
  std::unique_ptr<jet::Database> tariffs = schema::createTariffDatabase(folder / schema::kTariffFile);
  foundation::ChangeTags tags{person};
  foundation::ConfigManager config{machine};
};

}  // namespace support
