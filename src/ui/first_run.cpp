#include "ui/first_run.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "base/path.h"
#include "base/version.h"
#include "convert/converter.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/dialogs/server_address.h"
#include "ui/first_run/first_run_wizard.h"

namespace ui {

bool firstRun(server::CServerApp& app, std::optional<security::Credentials>& chosen) {
  const std::string folder = app.config().ReadConfigString(foundation::keys::PathDatabase);
  const bool configured = !folder.empty() && folder != "---";
  const bool old =
      configured && convert::isOldDatabase(schema::DatabasePlace::ofSetting(folder).file(schema::Which::Main));
  if (configured && !old) return true;
  QString oldFolder;
  if (old) oldFolder = toQt((base::systemPath(folder) / "").parent_path().string());
  FirstRunWizard wizard(app, oldFolder);
  if (wizard.exec() != QDialog::Accepted) return false;
  const FirstRunPlan plan = wizard.plan();
  if (plan.task == FirstRunPlan::Task::Make) chosen = security::Credentials{server::kAdministrator, plan.password};
  return true;
}

bool chooseDatabase(foundation::ConfigManager& config, const std::string& reason, const Texts& texts) {
  constexpr const foundation::TextKey& kKey = foundation::keys::PathDatabase;
  const auto store = [&](const std::string& setting) { return config.WriteConfigString(setting, kKey); };
  QMessageBox box(QMessageBox::Warning, base::kProgramName, toQt(reason));
  box.setObjectName("chooseDatabase");
  auto* folder = box.addButton(texts("IDS_CHOOSE_FOLDER"), QMessageBox::AcceptRole);
  folder->setObjectName("chooseFolder");
  auto* address = box.addButton(texts("IDS_CHOOSE_ADDRESS"), QMessageBox::ActionRole);
  address->setObjectName("chooseAddress");
  box.addButton(texts("IDS_CANCEL"), QMessageBox::RejectRole)->setObjectName("cancel");
  box.exec();
  if (box.clickedButton() == folder) {
    const QString chosen = QFileDialog::getExistingDirectory(nullptr, texts("IDS_CHOOSE_FOLDER"));
    return !chosen.isEmpty() && store(server::folderSetting(fromQt(chosen)));
  }
  if (box.clickedButton() != address) return false;
  const auto given = askServerAddress(config.ReadConfigString(kKey, ""), texts);
  return given && store(*given);
}

}  // namespace ui
