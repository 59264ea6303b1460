#pragma once

#include <QString>
#include <filesystem>
#include <optional>
#include <string>

#include "convert/conversion_report.h"
#include "server/server_app.h"

namespace ui {

// What the operator wants at the first start.
struct FirstRunPlan {
  enum class Task { Make, Open, Convert };
  Task task = Task::Make;
  std::filesystem::path folder;     // of the databases
  std::filesystem::path oldFolder;  // to convert from
  bool withSample = false;          // only when a new folder is made
  std::string countryCode;
  std::string areaCode;
  std::string monitorFolder;  // empty: the folder "monitor" in the data folder
  std::string password;       // of the administrator of a new folder; may be empty
  bool salvage = false;       // convert what can be read when something cannot
};

// Does it and stores the workstation's settings. The report of a conversion, when there was one. Throws jet::Error,
// convert::ConversionError or server::DataFolderError; nothing is stored then.
std::optional<convert::ConversionReport> carryOut(const FirstRunPlan& plan, server::CServerApp& app);

}  // namespace ui
