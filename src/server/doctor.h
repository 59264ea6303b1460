#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/machine_store.h"
#include "platform/clock.h"

namespace server {

enum class Health {
  Good,
  Note,   // works, but somebody should know
  Wrong,  // must be mended
};

// What a check found about one part of the installation.
struct Finding {
  Health health = Health::Good;
  std::string_view part;  // "databases", "clock"
  std::string what;       // without paths, names of people or numbers of telephones: it may be sent to strangers
  std::string detail;     // paths and values, for the operator alone; may be empty
  std::string advice;     // what to do; empty while all is good
};

struct Patient {
  foundation::MachineStore& machineStore;
  std::filesystem::path programFolder;  // where the program's own files are
  std::filesystem::path lockFile;       // of the program that imports
  const platform::Clock& clock;
};

// What is said of so many free megabytes on the disk of the data folder.
[[nodiscard]] Finding freeSpaceFinding(std::uint64_t megabytes);

// Looks at everything that an installation needs, and changes nothing. Reads the databases whole. Never throws for what
// it finds.
[[nodiscard]] std::vector<Finding> examine(const Patient& patient);

}  // namespace server
