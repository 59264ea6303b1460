#pragma once

#include <QWidget>
#include <vector>

#include "alarms/alarm_list.h"
#include "folders/plain_table.h"
#include "server/server_doc.h"
#include "ui/texts.h"

namespace ui {

// Told ones can be acknowledged; what a trial found was never told.
enum class AlarmsAre { Told, Tried };
[[nodiscard]] folders::PlainTable alarmTable(const std::vector<alarms::ListedAlarm>& alarms, const Texts& texts,
                                             AlarmsAre which);

// What a rule would have told, under a sentence that says of when.
void showAlarmTrial(server::CServerDoc& document, const Texts& texts, QWidget* parent, const QString& sentence,
                    const std::vector<alarms::ListedAlarm>& alarms);

}  // namespace ui
