#pragma once

#include <exception>
#include <string>

#include "base/refusal.h"
#include "foundation/language_file.h"

namespace foundation {

// The refusal in the language in use.
[[nodiscard]] std::string refusalText(const base::Refusal& refusal, const LanguageFile& texts);
// The same of an exception that may be one; what() of every other.
[[nodiscard]] std::string errorText(const std::exception& error, const LanguageFile& texts);

}  // namespace foundation
