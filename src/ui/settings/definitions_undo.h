#pragma once

#include <functional>
#include <optional>

#include "server/server_doc.h"
#include "tariff/tariff_tables.h"
#include "ui/settings/edited_parties.h"

namespace ui {

// The definitions of parties and the tariffs as they are stored at a moment.
struct StoredDefinitions {
  EditedParties::Lists parties;
  std::optional<tariff::TariffTables> tariffs;  // nothing where they were not edited
};

// As they are stored now. Throws jet::Error.
[[nodiscard]] StoredDefinitions storedDefinitions(server::CServerDoc& document, bool withTariffs);

// What brings `before` back in place of `after`: nothing but a message when somebody changed them again since. A trunk
// that was met meanwhile stays. The document must outlive it; it may throw jet::Error.
[[nodiscard]] std::function<void()> bringBackDefinitions(server::CServerDoc& document, StoredDefinitions before,
                                                         StoredDefinitions after);

}  // namespace ui
