#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "foundation/language_file.h"

namespace ui {

inline QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string fromQt(const QString& text) {
  return text.toUtf8().toStdString();
}

// The window's view of the language file.
class Texts {
 public:
  explicit Texts(const foundation::LanguageFile& language) : language_(language) {}

  [[nodiscard]] QString operator()(std::string_view key) const { return toQt(language_.Translate(key)); }
  template <typename... Arguments>
  [[nodiscard]] QString format(std::string_view key, const Arguments&... arguments) const {
    return toQt(language_.TranslateFormat(key, arguments...));
  }
  [[nodiscard]] const foundation::LanguageFile& language() const { return language_; }

 private:
  const foundation::LanguageFile& language_;
};

}  // namespace ui
