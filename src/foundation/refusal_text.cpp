#include "foundation/refusal_text.h"

namespace foundation {

std::string refusalText(const base::Refusal& refusal, const LanguageFile& texts) {
  const std::string pattern = texts.Translate(refusal.key());
  // Without a language file the key stands for the text.
  return pattern == refusal.key() ? refusal.english() : refusal.in(pattern);
}

std::string errorText(const std::exception& error, const LanguageFile& texts) {
  const auto* refusal = dynamic_cast<const base::Refusal*>(&error);
  return refusal == nullptr ? std::string(error.what()) : refusalText(*refusal, texts);
}

}  // namespace foundation
