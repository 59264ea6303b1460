#pragma once

#include <string_view>

namespace folders {

// The page "template.html" that a new data folder gets: windows-1252, with the placeholders of the bill.
[[nodiscard]] std::string_view defaultBillTemplate();

}  // namespace folders
