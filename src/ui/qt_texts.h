#pragma once

#include <QTranslator>

#include "foundation/language_file.h"

namespace ui {

// The texts of Qt's own dialogs and menus in the program's language. Their keys are made of the English texts:
// "&Next >" is IDS_QT_NEXT_MORE. A text without a key stays English.
class QtTexts : public QTranslator {
 public:
  explicit QtTexts(const foundation::LanguageFile& language, QObject* parent = nullptr)
      : QTranslator(parent), language_(language) {}

  [[nodiscard]] bool isEmpty() const override { return false; }
  [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                  int count) const override;
  [[nodiscard]] static std::string keyOf(const char* source);

 private:
  const foundation::LanguageFile& language_;
};

}  // namespace ui
