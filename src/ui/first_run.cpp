#include "ui/first_run.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "base/path.h"
#include "base/version.h"
#include "convert/converter.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "ui/first_run/first_run_wizard.h"

namespace ui {

bool firstRun(server::CServerApp& app, std::optional<security::Credentials>& chosen) {
  const std::string folder = app.config().ReadConfigString("PathDatabase", "general", foundation::StoreMachine, "---");
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

bool chooseDatabaseFolder(foundation::ConfigManager& config, const std::string& reason, const Texts& texts) {
  QMessageBox box(QMessageBox::Warning, base::kProgramName, toQt(reason));
  box.setObjectName("chooseDatabase");
  auto* choose = box.addButton(texts("IDS_CHOOSE_FOLDER"), QMessageBox::AcceptRole);
  box.addButton(texts("IDS_CANCEL"), QMessageBox::RejectRole);
  box.exec();
  if (box.clickedButton() != choose) return false;
  const QString chosen = QFileDialog::getExistingDirectory(nullptr, texts("IDS_CHOOSE_FOLDER"));
  return !chosen.isEmpty() && config.WriteConfigString(server::folderSetting(fromQt(chosen)), "PathDatabase", "general",
                                                       foundation::StoreMachine);
}

}  // namespace ui
