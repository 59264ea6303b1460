#include "ui/first_run/first_run_plan.h"

#include "base/printf.h"
#include "convert/converter.h"
#include "sample/call_file.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/conversion.h"

namespace ui {

namespace {

// Enough to fill the lists and charts of the sample, quickly imported.
constexpr std::int64_t kSampleCalls = 3000;
constexpr int kSampleDays = 60;

void storeSettings(const FirstRunPlan& plan, server::CServerApp& app) {
  foundation::ConfigManager& config = app.config();
  bool written = server::useDataFolder(plan.folder, config, plan.monitorFolder) &&
                 config.WriteConfigString(plan.countryCode, foundation::keys::CountryCode) &&
                 config.WriteConfigString(plan.areaCode, foundation::keys::AreaCode);
  if (!written) {
    throw server::DataFolderError(
        app.language().TranslateFormat("IDS_CANTWRITEFILE", config.machineStore().file().string()));
  }
}

void make(const FirstRunPlan& plan, server::CServerApp& app) {
  const server::Surroundings& around = app.surroundings();
  server::makeDataFolder({.folder = plan.folder,
                          .password = plan.password,
                          .withSample = plan.withSample,
                          .passwordIsDue = false,
                          .monitor = plan.monitorFolder},
                         {app.config(), around.person, around.clock, &app.language()},
                         [&] { storeSettings(plan, app); });
  if (!plan.withSample) return;
  // Imported at the start that follows. Without them the sample is only emptier.
  sample::CallPlan calls;
  calls.count = kSampleCalls;
  calls.days = kSampleDays;
  calls.lastDay = around.clock.now();
  const std::filesystem::path monitor = app.config().ReadConfigString(foundation::keys::PathMonitor);
  // A file that a capture program left holds real calls.
  if (exists(monitor / "monitor.data")) return;
  create_directories(monitor);
  sample::writeCalls(monitor / "monitor.data", calls, false, around.person);
}

void open(const FirstRunPlan& plan, server::CServerApp& app) {
  const auto place = schema::DatabasePlace::ofTyped(plan.folder);
  const auto file = place.file(schema::Which::Main);
  if (convert::isOldDatabase(file)) {
    throw server::DataFolderError(app.language().TranslateFormat("IDS_FIRST_IS_OLD", file.string()));
  }
  static_cast<void>(place.open(schema::Which::Main, jet::OpenMode::ReadOnly));
  storeSettings(plan, app);
}

convert::ConversionReport convertOld(const FirstRunPlan& plan, server::CServerApp& app) {
  auto report = convertFolder(
      {.oldFolder = plan.oldFolder, .newFolder = plan.folder, .salvage = plan.salvage, .password = plan.password}, app);
  storeSettings(plan, app);
  return report;
}

}  // namespace

std::optional<convert::ConversionReport> carryOut(const FirstRunPlan& plan, server::CServerApp& app) {
  switch (plan.task) {
    case FirstRunPlan::Task::Make:
      make(plan, app);
      break;
    case FirstRunPlan::Task::Open:
      open(plan, app);
      break;
    case FirstRunPlan::Task::Convert:
      return convertOld(plan, app);
  }
  return std::nullopt;
}

}  // namespace ui
