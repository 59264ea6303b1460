#pragma once

#include "desktop.h"
#include "ui/dialogs.h"
#include "ui/dialogs/columns_dialog.h"
#include "ui/first_run/first_run_wizard.h"
#include "ui/login_dialogs.h"
#include "ui/page_setup.h"
#include "ui/results/results.h"
#include "ui/settings/settings_sheet.h"

namespace support {

// A modal window of the program: what holds for all of them is tested on each.
struct Window {
  const char* name;
  std::function<void(Desktop& desktop)> open;
  bool ofQt = false;  // its parts and their names are those of Qt
};

inline std::int32_t someContact(Desktop& desktop) {
  contacts::CONTACTENTRYDESC contact;
  contact.name = contact.contact = "Ana";
  contact.telView = contact.tel = "0213456789";
  return desktop.document->contactBook().add(contact);
}

// The desktop has recorded a call by then.
inline std::vector<Window> windows() {
  const auto login = [](Desktop& desktop) {
    return ui::QtLoginPrompt(desktop.app->config(),
                             [&desktop]() -> const foundation::LanguageFile& { return desktop.app->language(); });
  };
  return {
      {"filter", [](Desktop& d) { ui::editCallFilter(*d.document, *d.texts, nullptr); }},
      {"logFilter", [](Desktop& d) { ui::editLogFilter(*d.document, *d.texts, nullptr); }},
      {"currencies", [](Desktop& d) { ui::editCurrencies(*d.document, *d.texts, nullptr); }},
      {"recalc", [](Desktop& d) { ui::updateStoredCalls(*d.document, *d.texts, nullptr); }},
      {"bill", [](Desktop& d) { ui::makeBill(*d.document, *d.texts, nullptr, "201"); }},
      {"searchContacts", [](Desktop& d) { ui::searchContacts(*d.document, *d.texts, nullptr); }},
      {"contact", [](Desktop& d) { ui::editContact(*d.document, *d.texts, nullptr, someContact(d)); }},
      {"user", [](Desktop& d) { ui::editUser(*d.document, *d.texts, nullptr, "admin"); }},
      {"newUser", [](Desktop& d) { ui::editUser(*d.document, *d.texts, nullptr, ""); }},
      {"group", [](Desktop& d) { ui::editGroup(*d.document, *d.texts, nullptr, "Administrators"); }},
      {"convert", [](Desktop& d) { ui::convertOldDatabase(*d.document, *d.texts, nullptr); }},
      {"week", [](Desktop& d) { ui::showWeek(*d.document, *d.texts, nullptr); }},
      {"keys",
       [](Desktop& d) {
         ui::showKeys(*d.texts, nullptr, {{"Copy", "Ctrl+C"}});
       }},
      {"missed", [](Desktop& d) { ui::showMissedCalls(*d.document, *d.texts, nullptr); }},
      {"trunkLoad", [](Desktop& d) { ui::showTrunkLoad(*d.document, *d.texts, nullptr); }},
      {"alarms", [](Desktop& d) { ui::showAlarms(*d.document, *d.texts, nullptr, [] {}); }},
      {"month", [](Desktop& d) { ui::showMonth(*d.document, *d.texts, nullptr); }},
      {"personData", [](Desktop& d) { ui::showPersonData(*d.document, *d.texts, nullptr); }},
      {"anonymise", [](Desktop& d) { ui::anonymiseCalls(*d.document, *d.texts, nullptr); }},
      {"about", [](Desktop& d) { ui::showAbout(*d.document, *d.texts, nullptr); }},
      {"price", [](Desktop& d) { ui::explainPrice(*d.document, *d.texts, nullptr, 1); }},
      {"login", [login](Desktop& d) { login(d).askLogin("admin"); }},
      {"password", [login](Desktop& d) { login(d).askPasswordChange("admin", false); }},
      {"settings",
       [](Desktop& d) {
         ui::SettingsSheet sheet(*d.document, *d.texts);
         sheet.exec();
       }},
      {"columns",
       [](Desktop& d) {
         const folders::FolderDefinition& calls = *folders::findFolder(100);
         const folders::ColumnLayout layout = folders::defaultLayout(calls.columns, calls.flags);
         ui::ColumnsDialog(*d.texts, calls, layout, layout, nullptr).exec();
       }},
      {"firstRun", [](Desktop& d) { ui::FirstRunWizard(*d.app, {}).exec(); }},
      {"pageSetup", [](Desktop& d) { ui::editPageSetup(nullptr, d.app->config()); }, true},
      {"preview",
       [](Desktop& d) {
         folders::FolderView extensions(*folders::findFolder(101), d.document->folderServices(),
                                        d.document->valueFormatter());
         ui::previewFolder(*d.document, *d.texts, nullptr, extensions);
       },
       true},
  };
}

// Opens each, looks at it and closes it.
enum class Windows { All, Own };
inline void forEachWindow(Desktop& desktop, const std::function<void(QDialog&)>& look, Windows which = Windows::All) {
  for (const Window& window : windows()) {
    if (window.ofQt && which == Windows::Own) continue;
    SCOPED_TRACE(window.name);
    const Script script({[&look](QDialog& dialog) {
      look(dialog);
      dialog.done(QDialog::Rejected);
    }});
    window.open(desktop);
  }
}

}  // namespace support
