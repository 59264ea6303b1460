#include "capture/transport/sql_preset.h"

namespace capture {

bool applySqlPreset(SqlSettings& settings, const std::string& name) {
  if (name != "freepbx") return false;
  settings.table = "cdr";
  settings.time = "calldate";
  settings.id = {"uniqueid", "sequence"};
  // The table has no times of answer and end; both follow from the durations.
  settings.columns = {"accountcode",
                      "src",
                      "dst",
                      "dcontext",
                      "clid",
                      "channel",
                      "dstchannel",
                      "lastapp",
                      "lastdata",
                      "calldate",
                      "CASE WHEN disposition = 'ANSWERED' THEN calldate + INTERVAL (duration - billsec) SECOND END",
                      "calldate + INTERVAL duration SECOND",
                      "duration",
                      "billsec",
                      "disposition",
                      "amaflags",
                      "uniqueid",
                      "userfield",
                      "peeraccount",
                      "linkedid",
                      "sequence"};
  return true;
}

}  // namespace capture
