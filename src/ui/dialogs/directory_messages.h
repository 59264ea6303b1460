#pragma once

#include <QWidget>
#include <string>

#include "security/users.h"
#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// Whether users and groups can be changed, not only looked at.
[[nodiscard]] bool mayChangeAdministration(server::CServerDoc& document);

// Says why a user or group was not saved, unless that was said already; true when it was not saved.
bool explainRefusal(security::SaveResult result, const std::string& name, const Texts& texts, QWidget* parent);

}  // namespace ui
