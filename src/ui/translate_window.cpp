#include "ui/translate_window.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QTabWidget>

#include "ui/texts.h"

namespace ui {

namespace {

// What a child shows: its window class in the terms of the language file's rule, and how to read and write its text.
template <typename Widget, typename Read, typename Write>
void translateChildren(QWidget& window, const foundation::LanguageFile& language, const char* windowClass, Read read,
                       Write write) {
  for (Widget* child : window.findChildren<Widget*>()) {
    foundation::WindowTexts texts;
    texts.children.push_back({windowClass, fromQt((child->*read)()), {}});
    language.TranslateWindow(texts);
    (child->*write)(toQt(texts.children.front().text));
  }
}

void translateTabs(QTabWidget& tabs, const foundation::LanguageFile& language) {
  foundation::WindowTexts texts;
  texts.children.push_back({"SysTabControl32", "", {}});
  for (int i = 0; i < tabs.count(); ++i) texts.children.front().tabs.push_back(fromQt(tabs.tabText(i)));
  language.TranslateWindow(texts);
  for (int i = 0; i < tabs.count(); ++i) {
    tabs.setTabText(i, toQt(texts.children.front().tabs[static_cast<std::size_t>(i)]));
  }
}

}  // namespace

void translateWindow(QWidget& window, const foundation::LanguageFile& language) {
  foundation::WindowTexts caption;
  caption.caption = fromQt(window.windowTitle());
  language.TranslateWindow(caption);
  window.setWindowTitle(toQt(caption.caption));
  translateChildren<QLabel>(window, language, "STATIC", &QLabel::text, &QLabel::setText);
  translateChildren<QAbstractButton>(window, language, "BUTTON", &QAbstractButton::text, &QAbstractButton::setText);
  translateChildren<QGroupBox>(window, language, "BUTTON", &QGroupBox::title, &QGroupBox::setTitle);
  for (QTabWidget* tabs : window.findChildren<QTabWidget*>()) translateTabs(*tabs, language);
}

}  // namespace ui
