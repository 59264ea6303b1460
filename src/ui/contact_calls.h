#pragma once

#include <optional>
#include <string>

#include "folders/folder_view.h"
#include "server/server_doc.h"

namespace ui {

// The calls of a contact: those recorded under its name, and those to and from its numbers.
[[nodiscard]] folders::Narrowing callsOf(const contacts::Contact& contact);

// A contact that has the number, in whichever form; nothing when there is none. Throws jet::Error.
[[nodiscard]] std::optional<contacts::Contact> contactWithNumber(server::CServerDoc& document,
                                                                 const std::string& number);

}  // namespace ui
