#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace tallymon {

// The program with all its commands. Their callbacks leave the exit status in `status`.
[[nodiscard]] std::unique_ptr<CLI::App> makeProgram(int& status);

}  // namespace tallymon
