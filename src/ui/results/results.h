#pragma once

#include <QWidget>
#include <functional>
#include <optional>

#include "folders/folder_view.h"
#include "server/server_doc.h"
#include "ui/heat_map.h"
#include "ui/texts.h"

namespace ui {

// The windows of what calls say together, modal. Those that give a narrowing were closed by a double click on a row:
// its calls are to be shown. Faults are told; nothing is thrown.

std::optional<folders::Narrowing> showMissedCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent);
std::optional<folders::Narrowing> showTrunkLoad(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// `editRules` opens the settings of the alarms; null: they are not offered.
std::optional<folders::Narrowing> showAlarms(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                             const std::function<void()>& editRules);
// The filtered calls by weekday and hour; the chosen cell, or nothing.
std::optional<WeekHour> showWeek(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// The page of a month. The file that was written last; empty when none was.
std::filesystem::path showMonth(server::CServerDoc& document, const Texts& texts, QWidget* parent);

// What is stored about a person. True when something was erased.
bool showPersonData(server::CServerDoc& document, const Texts& texts, QWidget* parent);
// Old calls without names. True when calls were changed.
bool anonymiseCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent);

}  // namespace ui
