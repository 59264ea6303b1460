#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "folders/folder_view.h"
#include "server/server_doc.h"

namespace ui {

// The calls of a contact: those recorded under its name, and those to and from its numbers.
[[nodiscard]] folders::Narrowing callsOf(const contacts::CONTACTENTRYDESC& contact);

// A contact that has the number, in whichever form; nothing when there is none. Throws jet::Error.
[[nodiscard]] std::optional<contacts::CONTACTENTRYDESC> contactWithNumber(server::CServerDoc& document,
                                                                          const std::string& number);

// The calls to and from the subscriber of a call, in whatever form the exchange gave the number; the call alone where
// it has no number. `shown` is the number as it is shown. Throws jet::Error.
folders::Narrowing callsWithNumberOf(server::CServerDoc& document, std::int64_t recordId, const std::string& shown);

// A text of the dialect, between apostrophes.
[[nodiscard]] std::string textLiteral(std::string_view text);

}  // namespace ui
