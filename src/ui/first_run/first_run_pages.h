#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QWizardPage>

#include "schema/database_place.h"
#include "ui/exchange/exchange_page.h"
#include "ui/first_run/first_run_plan.h"
#include "ui/texts.h"

namespace ui {

// The pages of the first start. Their fields (QWizard::field): "language", "make", "open", "convert", "sample",
// "folder", "oldFolder", "country", "area", "monitor", "password".

class FirstRunLanguagePage : public QWizardPage {
  Q_OBJECT

 public:
  explicit FirstRunLanguagePage(const Texts& texts);
  void retranslate();

 signals:
  void languageChosen(const QString& code);

 private:
  const Texts& texts_;
  QComboBox* languages_;
  QLabel* label_;
};

class FirstRunTaskPage : public QWizardPage {
 public:
  FirstRunTaskPage(const Texts& texts, bool proposeConversion);
};

class FirstRunFolderPage : public QWizardPage {
 public:
  FirstRunFolderPage(const Texts& texts, QString oldFolder);
  void initializePage() override;
  bool validatePage() override;

 private:
  QLineEdit* addFolder(QVBoxLayout& column, QLabel* label, const char* name);
  [[nodiscard]] QString proposal(bool opening, bool converting) const;
  [[nodiscard]] QString faultOfFolders() const;

  const Texts& texts_;
  QString proposedOld_;
  QString proposed_;
  QLabel* oldLabel_;
  QLineEdit* oldFolder_;
  QLabel* folderLabel_;
  QLineEdit* folder_;
  QCheckBox* sample_;
};

class FirstRunPlacePage : public QWizardPage {
 public:
  explicit FirstRunPlacePage(const Texts& texts);
  void initializePage() override;

 private:
  QLineEdit* country_;
  QLineEdit* area_;
  QLineEdit* monitor_;
};

// Optional: without a kind of exchange nothing is written.
class FirstRunExchangePage : public QWizardPage {
 public:
  FirstRunExchangePage(foundation::ConfigManager& config, platform::Operator& person, const Texts& texts);
  bool validatePage() override;
  // Throws std::runtime_error.
  void save();

 private:
  const Texts& texts_;
  ExchangePage* page_;
};

class FirstRunPasswordPage : public QWizardPage {
 public:
  explicit FirstRunPasswordPage(const Texts& texts);
  void initializePage() override;
  bool validatePage() override;

 private:
  const Texts& texts_;
  QLineEdit* password_;
  QLineEdit* repeated_;
  QLabel* finish_;
};

}  // namespace ui
