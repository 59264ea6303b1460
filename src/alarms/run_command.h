#pragma once

#include <string>
#include <utility>
#include <vector>

namespace alarms {

using Environment = std::vector<std::pair<std::string, std::string>>;

// Runs a command of the shell with these values added to the environment; data never become part of the command's text.
// It has ten seconds, then it is ended. Empty when it went well, else what became of it ("ended with status 1").
[[nodiscard]] std::string runCommand(const std::string& command, const Environment& values);

// Gives a text to a program's standard input. As above.
[[nodiscard]] std::string runProgram(const std::vector<std::string>& words, const std::string& input);

}  // namespace alarms
