#pragma once

#include <QWizard>

#include "server/server_app.h"
#include "ui/first_run/first_run_plan.h"
#include "ui/texts.h"

namespace ui {

// Asks what to do at the first start, and does it when it is finished.
class FirstRunWizard : public QWizard {
  Q_OBJECT

 public:
  // `oldFolder` holds an old database that is to be converted; empty when none is known.
  FirstRunWizard(server::CServerApp& app, const QString& oldFolder, QWidget* parent = nullptr);

  enum Page { LanguagePage, TaskPage, FolderPage, PlacePage, ExchangePage, PasswordPage };
  [[nodiscard]] int nextId() const override;
  void accept() override;

  [[nodiscard]] FirstRunPlan::Task task() const;
  // What was chosen.
  [[nodiscard]] FirstRunPlan plan() const;

 private:
  void useLanguage(const QString& code);
  void buildPages();
  void focusFirstField();

  server::CServerApp& app_;
  Texts texts_;
  QString oldFolder_;
};

}  // namespace ui
