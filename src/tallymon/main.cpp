#include <exception>
#include <iostream>

#include "tallymon/command_table.h"

int main(int count, char** words) {
  int status = 0;
  const auto program = tallymon::makeProgram(status);
  try {
    program->parse(count, words);
  } catch (const CLI::ParseError& error) {
    return program->exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& error) {
    std::cerr << "tallymon: " << error.what() << '\n';
    return 1;
  }
  return status;
}
