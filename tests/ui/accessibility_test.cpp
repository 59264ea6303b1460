// What a screen reader is told, walked over the tree that it reads.

#include <QAccessible>
#include <QCheckBox>
#include <QPointer>
#include <QRadioButton>
#include <QStyle>

#include "frame.h"
#include "ui/chart_view.h"
#include "ui/readable_palette.h"
#include "windows.h"

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
  void SetUp() override {
    MainFrameTest::SetUp();
    QApplication::setCursorFlashTime(0);
  }

  static void showActive(QWidget& window) {
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window)) << window.objectName().toStdString();
  }
  // Editors, buttons and lists that Tab leads to, and that look the same whether they have the focus or not.
  static std::set<std::string> focusUnseenIn(QWidget& window) {
    std::set<std::string> unseen;
    showActive(window);
    QTest::keyClick(&window, Qt::Key_Tab);  // styles show the focus to those who use keys
    QList<QPointer<QWidget>> widgets;
    for (auto* widget : window.findChildren<QWidget*>()) widgets << widget;
    for (const QPointer<QWidget>& widget : widgets) {
      if (widget == nullptr) continue;  // an outline that went
      const bool reached = widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0 &&
                           widget->focusProxy() == nullptr;
      if (!reached) continue;
      if (auto* focused = window.focusWidget()) focused->clearFocus();
      QApplication::processEvents();
      const QImage before = window.grab().toImage();
      widget->setFocus(Qt::TabFocusReason);
      QApplication::processEvents();
      if (widget->hasFocus() && window.grab().toImage() == before) {
        unseen.insert(widget->objectName().toStdString() + " " + widget->metaObject()->className());
      }
    }
    return unseen;
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
  forEachWindow(
      desktop, [](QDialog& dialog) { EXPECT_EQ(namelessIn(dialog), std::set<std::string>()); }, Windows::Own);
}

TEST_F(Accessibility, APaintedChartIsKnownAsOneAndTellsItsMarkedBar) {
  frame->selectFolder(kExtensions);
  frame->show();
  auto& chart = child<ui::ChartView>("chart");
  chart.grab();  // bars have their places when they were drawn
  QTest::keyClick(&chart, Qt::Key_Down);
  const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&chart);
  ASSERT_NE(told, nullptr);
  EXPECT_EQ(told->role(), QAccessible::Chart);
  EXPECT_TRUE(told->text(QAccessible::Name).startsWith("Extensions: "));
  EXPECT_TRUE(told->text(QAccessible::Value).startsWith("201")) << told->text(QAccessible::Value).toStdString();
}

TEST_F(Accessibility, TheFocusIsSeen) {
  frame->selectFolder(kExtensions);
  EXPECT_EQ(focusUnseenIn(*frame), std::set<std::string>());
  forEachWindow(
      desktop, [](QDialog& dialog) { EXPECT_EQ(focusUnseenIn(dialog), std::set<std::string>()); }, Windows::Own);
}

// A palette of few colours, in the others' places what the style makes of them.
QPalette darkPalette() {
  QPalette palette(QColor(0x2b, 0x2d, 0x30), QColor(0x2b, 0x2d, 0x30));
  palette.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
  palette.setColor(QPalette::PlaceholderText, QColor(0x60, 0x62, 0x66));
  palette.setColor(QPalette::Highlight, QColor(0x6b, 0x9b, 0xfa));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

TEST(Contrast, TextsAreReadableInLightAndDark) {
  const std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
      {QPalette::WindowText, QPalette::Window},
      {QPalette::Text, QPalette::Base},
      {QPalette::Text, QPalette::AlternateBase},
      {QPalette::ButtonText, QPalette::Button},
      {QPalette::HighlightedText, QPalette::Highlight},
      {QPalette::PlaceholderText, QPalette::Base},
      {QPalette::Link, QPalette::Base},
      {QPalette::Link, QPalette::Window},
      {QPalette::ToolTipText, QPalette::ToolTipBase},
  };
  for (const QPalette& desktops : {QApplication::style()->standardPalette(), darkPalette()}) {
    const QPalette palette = ui::readablePalette(desktops);
    for (const auto& [text, ground] : texts) {
      EXPECT_GE(ui::contrastOf(palette.color(text), palette.color(ground)), ui::kReadable)
          << text << " on " << ground << ", window " << palette.color(QPalette::Window).name().toStdString();
    }
    EXPECT_EQ(ui::readablePalette(palette), palette);  // nothing is left to change
    // Cells of the week, from the palest to the darkest.
    for (int part = 0; part <= 100; ++part) {
      const QColor ground = ui::mixed(palette.color(QPalette::Base), palette.color(QPalette::Highlight), part / 100.0);
      EXPECT_GE(std::max(ui::contrastOf(Qt::black, ground), ui::contrastOf(Qt::white, ground)), ui::kReadable);
    }
  }
}

// The greatest contrast with the ground along a row of pixels.
double seenOn(const QImage& picture, int row, const QColor& ground) {
  double most = 1;
  for (int x = 0; x < picture.width(); ++x) most = std::max(most, ui::contrastOf(picture.pixelColor(x, row), ground));
  return most;
}

TEST(Contrast, BoxesThatAreNotTickedAreSeen) {
  constexpr double kVisible = 3;  // of what is no text
  for (const QPalette& desktops : {QApplication::style()->standardPalette(), darkPalette()}) {
    const QPalette palette = ui::readablePalette(desktops);
    QCheckBox box;
    QRadioButton round;
    for (QAbstractButton* button : {static_cast<QAbstractButton*>(&box), static_cast<QAbstractButton*>(&round)}) {
      button->setPalette(palette);
      button->resize(button->sizeHint());
      const QImage picture = button->grab().toImage();
      EXPECT_GE(seenOn(picture, picture.height() / 2, palette.color(QPalette::Window)), kVisible)
          << button->metaObject()->className() << " on " << palette.color(QPalette::Window).name().toStdString();
    }
  }
}

TEST(Contrast, IsCountedAsTheGuidelinesDo) {
  EXPECT_NEAR(ui::contrastOf(Qt::black, Qt::white), 21, 0.01);
  EXPECT_NEAR(ui::contrastOf(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
  EXPECT_NEAR(ui::contrastOf(QColor(0, 0, 0, 128), Qt::white), ui::contrastOf(QColor(127, 127, 127), Qt::white), 0.1);
}

}  // namespace
