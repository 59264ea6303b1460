#pragma once

#include <toml++/toml.h>

#include <memory>

#include "capture/format/definition.h"

namespace capture {

// The format that a table describes, every key checked. Throws FormatError.
[[nodiscard]] std::shared_ptr<const Format> loadFormat(const toml::table& table);

}  // namespace capture
