#pragma once

#include <QWidget>
#include <filesystem>
#include <vector>

#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// Asks for a file and writes the contacts of those numbers there as vCards; of none, the whole book. The file; empty
// when none was written.
std::filesystem::path exportVCards(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                   const std::vector<std::int32_t>& recordIds);
// Asks for a file and adds its cards to the book. True when contacts were added.
bool importVCards(server::CServerDoc& document, const Texts& texts, QWidget* parent);

}  // namespace ui
