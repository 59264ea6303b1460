#pragma once

#include "desktop.h"
#include "ui/dialogs.h"
#include "ui/results/results.h"

namespace support {

inline constexpr std::size_t kDialogs = 14;

// One after the other: what holds for every window is looked at in each.
inline void openEveryDialog(Desktop& desktop) {
  server::CServerDoc& document = *desktop.document;
  const ui::Texts& texts = *desktop.texts;
  ui::editCallFilter(document, texts, nullptr);
  ui::editLogFilter(document, texts, nullptr);
  ui::editCurrencies(document, texts, nullptr);
  ui::updateStoredCalls(document, texts, nullptr);
  ui::makeBill(document, texts, nullptr, "201");
  ui::searchContacts(document, texts, nullptr);
  ui::addContact(document, texts, nullptr);
  ui::editUser(document, texts, nullptr, "");
  ui::showMissedCalls(document, texts, nullptr);
  ui::showTrunkLoad(document, texts, nullptr);
  ui::showAlarms(document, texts, nullptr, [] {});
  ui::showMonth(document, texts, nullptr);
  ui::showPersonData(document, texts, nullptr);
  ui::anonymiseCalls(document, texts, nullptr);
}

}  // namespace support
