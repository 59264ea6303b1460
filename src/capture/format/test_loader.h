#pragma once

#include "capture/format/definition.h"
#include "capture/format/toml_table.h"

namespace capture {

// One [[test]] of a format file. Throws FormatError.
[[nodiscard]] FormatTest loadTest(const toml::node& node);

}  // namespace capture
