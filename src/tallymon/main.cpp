#include <exception>
#include <iostream>

#include "base/version.h"
#include "tallymon/commands.h"

int main(int count, char** words) {
  CLI::App program("Takes the call lines of telephone exchanges and hands them to Tallybook.", "tallymon");
  program.set_version_flag("--version", base::kProgramVersion);
  program.require_subcommand(1);
  int status = 0;
  tallymon::addRun(program, status);
  tallymon::addListen(program, status);
  tallymon::addReplay(program, status);
  tallymon::addStatus(program, status);
  tallymon::addTrunks(program, status);
  tallymon::addForget(program, status);
  tallymon::addTest(program, status);
  tallymon::addGuess(program, status);
  tallymon::addFormats(program, status);
  tallymon::addCheck(program, status);
  try {
    program.parse(count, words);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& error) {
    std::cerr << "tallymon: " << error.what() << '\n';
    return 1;
  }
  return status;
}
