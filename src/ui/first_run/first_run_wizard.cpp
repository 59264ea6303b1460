#include "ui/first_run/first_run_wizard.h"
#include "ui/screen_fit.h"

#include <QAbstractButton>

#include "base/version.h"
#include "ui/dialogs/conversion.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/mnemonics.h"
#include "ui/first_run/first_run_pages.h"
#include "ui/icons.h"
#include "ui/manual.h"

namespace ui {

FirstRunWizard::FirstRunWizard(server::CServerApp& app, const QString& oldFolder, QWidget* parent)
    : QWizard(parent), app_(app), texts_(app.language()), oldFolder_(oldFolder) {
  setObjectName("firstRun");
  setWizardStyle(QWizard::ModernStyle);
  setWindowTitle(base::kProgramName);
  setPixmap(QWizard::LogoPixmap, icon(Icon::Program).pixmap(48));
  setOption(QWizard::NoBackButtonOnStartPage);
  setOption(QWizard::HaveHelpButton);
  connect(this, &QWizard::helpRequested, this, [this] { askForManual(*this); });
  connect(this, &QWizard::currentIdChanged, this, [this] { focusFirstField(); });
  auto* language = new FirstRunLanguagePage(texts_);
  setPage(LanguagePage, language);
  connect(language, &FirstRunLanguagePage::languageChosen, this, [this, language](const QString& code) {
    useLanguage(code);
    language->retranslate();
  });
  buildPages();
  resize(fontMetrics().averageCharWidth() * 100, fontMetrics().lineSpacing() * 36);
  fitToScreen(*this);
}

void FirstRunWizard::useLanguage(const QString& code) {
  platform::NoOperator nobody;
  app_.language().CheckCodepage(fromQt(code), nobody);
  app_.config().WriteConfigString(fromQt(code), foundation::keys::Lang);
  buildPages();
}

// The pages are made in the language in use, so a change of it makes them again.
void FirstRunWizard::buildPages() {
  for (const int id : {TaskPage, FolderPage, PlacePage, ExchangePage, PasswordPage}) {
    QWizardPage* old = page(id);
    if (old == nullptr) continue;
    removePage(id);
    delete old;
  }
  setPage(TaskPage, new FirstRunTaskPage(texts_, !oldFolder_.isEmpty()));
  setPage(FolderPage, new FirstRunFolderPage(texts_, oldFolder_));
  setPage(PlacePage, new FirstRunPlacePage(texts_));
  setPage(ExchangePage, new FirstRunExchangePage(app_.config(), app_.surroundings().person, texts_));
  setPage(PasswordPage, new FirstRunPasswordPage(texts_));
  for (const int id : pageIds()) assignMnemonics(*page(id));
  setButtonText(QWizard::NextButton, texts_("IDS_NEXT") + " >");
  setButtonText(QWizard::BackButton, "< " + texts_("IDS_BACK"));
  setButtonText(QWizard::CancelButton, texts_("IDS_CANCEL"));
  setButtonText(QWizard::FinishButton, texts_("IDS_FINISH"));
  setButtonText(QWizard::HelpButton, texts_("IDS_HELP"));
}

// Else the focus stays on the button Next: what is typed is lost, and Enter goes on.
void FirstRunWizard::focusFirstField() {
  const QWizardPage* shown = currentPage();
  if (shown == nullptr) return;
  for (QWidget* field = shown->nextInFocusChain(); field != shown; field = field->nextInFocusChain()) {
    if (!shown->isAncestorOf(field) || !field->isVisibleTo(shown) || !field->isEnabled()) continue;
    if ((field->focusPolicy() & Qt::TabFocus) == 0) continue;
    field->setFocus();
    return;
  }
}

FirstRunPlan::Task FirstRunWizard::task() const {
  if (field("open").toBool()) return FirstRunPlan::Task::Open;
  return field("convert").toBool() ? FirstRunPlan::Task::Convert : FirstRunPlan::Task::Make;
}

int FirstRunWizard::nextId() const {
  switch (currentId()) {
    case LanguagePage:
      return TaskPage;
    case TaskPage:
      return FolderPage;
    case FolderPage:
      return PlacePage;
    case PlacePage:
      return ExchangePage;
    case ExchangePage:
      return task() == FirstRunPlan::Task::Make ? static_cast<int>(PasswordPage) : -1;
    default:
      return -1;
  }
}

FirstRunPlan FirstRunWizard::plan() const {
  const auto text = [this](const char* name) { return fromQt(field(name).toString().trimmed()); };
  FirstRunPlan plan;
  plan.task = task();
  plan.folder = text("folder");
  plan.oldFolder = text("oldFolder");
  plan.withSample = plan.task == FirstRunPlan::Task::Make && field("sample").toBool();
  plan.countryCode = text("country");
  plan.areaCode = text("area");
  plan.monitorFolder = text("monitor");
  plan.password = fromQt(field("password").toString());
  return plan;
}

void FirstRunWizard::accept() {
  FirstRunPlan chosen = plan();
  const bool done = tryConversion(this, texts_, chosen.salvage, [&](bool salvage) {
    chosen.salvage = salvage;
    return carryOut(chosen, app_);
  });
  if (!done) return;
  // What cannot be written can be set up later; the data folder is there.
  attempt(this, texts_, [this] { static_cast<FirstRunExchangePage*>(page(ExchangePage))->save(); });
  QWizard::accept();
}

}  // namespace ui
