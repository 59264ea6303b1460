// What a screen reader is told, walked over the tree that it reads.

#include <QAccessible>

#include "every_dialog.h"
#include "frame.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

// Things to press, choose or read, which need a name; the rest are frames around them.
bool needsName(QAccessible::Role role) {
  switch (role) {
    case QAccessible::PushButton:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::EditableText:
    case QAccessible::SpinBox:
    case QAccessible::Table:
    case QAccessible::Tree:
    case QAccessible::List:
    case QAccessible::MenuItem:
    case QAccessible::ButtonMenu:
      return true;
    default:
      return false;
  }
}

std::string placeOf(const QAccessibleInterface& item) {
  std::string place;
  for (const QObject* object = item.object(); object != nullptr; object = object->parent()) {
    if (!object->objectName().isEmpty()) place = object->objectName().toStdString() + "/" + place;
  }
  return place + (item.object() != nullptr ? item.object()->metaObject()->className() : "item");
}

// Parts of a composed editor speak for it.
bool isInnerPart(const QAccessibleInterface& item) {
  const QObject* object = item.object();
  if (object == nullptr) return true;
  if (object->objectName().startsWith("qt_")) return true;
  const QObject* parent = object->parent();
  return parent != nullptr && (parent->inherits("QComboBox") || parent->inherits("QAbstractSpinBox") ||
                               parent->inherits("QLineEdit") || parent->inherits("QComboBoxPrivateContainer"));
}

void collectNameless(QAccessibleInterface* item, std::set<std::string>& nameless) {
  if (item == nullptr || !item->isValid() || item->state().invisible) return;
  if (needsName(item->role()) && !isInnerPart(*item) && item->text(QAccessible::Name).isEmpty()) {
    nameless.insert(placeOf(*item));
  }
  // Cells are texts; there may be a million of them.
  if (item->role() == QAccessible::Table || item->role() == QAccessible::Tree || item->role() == QAccessible::List) {
    return;
  }
  for (int i = 0; i < item->childCount(); ++i) collectNameless(item->child(i), nameless);
}

std::set<std::string> namelessIn(QWidget& window) {
  QApplication::processEvents();
  std::set<std::string> nameless;
  collectNameless(QAccessible::queryAccessibleInterface(&window), nameless);
  return nameless;
}

class Accessibility : public MainFrameTest {
 protected:
  static Script::Step named() {
    return [](QDialog& dialog) {
      EXPECT_EQ(namelessIn(dialog), std::set<std::string>()) << dialog.objectName().toStdString();
      dialog.done(QDialog::Rejected);
    };
  }
};

TEST_F(Accessibility, WhatIsPressedChosenOrFilledHasAName) {
  frame->show();
  for (const int folder : {kCalls, kExtensions, kUsers}) {
    frame->selectFolder(folder);
    EXPECT_EQ(namelessIn(*frame), std::set<std::string>()) << folder;
  }
  ui::SettingsSheet sheet(*desktop.document, *desktop.texts);
  sheet.show();
  for (const ui::SettingsPage& page : sheet.pages()) {
    sheet.showPage(page.caption);
    EXPECT_EQ(namelessIn(sheet), std::set<std::string>()) << page.caption.toStdString();
  }
  sheet.close();
  const Script script(std::vector<Script::Step>(kDialogs, named()));
  openEveryDialog(desktop);
}

}  // namespace
