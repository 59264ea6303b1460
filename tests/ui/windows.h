#pragma once

#include "desktop.h"
#include "ui/dialogs.h"
#include "ui/heat_map.h"
#include "ui/login_dialogs.h"
#include "ui/settings/settings_sheet.h"

namespace support {

// A modal window of the program: what holds for all of them is tested on each.
struct Window {
  const char* name;
  std::function<void(Desktop& desktop)> open;
};

inline std::int32_t someContact(Desktop& desktop) {
  contacts::Contact contact;
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
      {"about", [](Desktop& d) { ui::showAbout(*d.document, *d.texts, nullptr); }},
      {"price", [](Desktop& d) { ui::explainPrice(*d.document, *d.texts, nullptr, 1); }},
      {"login", [login](Desktop& d) { login(d).askLogin("admin"); }},
      {"password", [login](Desktop& d) { login(d).askPasswordChange("admin", false); }},
      {"settings",
       [](Desktop& d) {
         ui::SettingsSheet sheet(*d.document, *d.texts);
         sheet.exec();
       }},
  };
}

// Opens each, looks at it and closes it.
inline void forEachWindow(Desktop& desktop, const std::function<void(QDialog&)>& look) {
  for (const Window& window : windows()) {
    SCOPED_TRACE(window.name);
    const Script script({[&look](QDialog& dialog) {
      look(dialog);
      dialog.done(QDialog::Rejected);
    }});
    window.open(desktop);
  }
}

}  // namespace support
