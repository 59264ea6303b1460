#include "tallymon/commands.h"

namespace tallymon {

void addTest(CLI::App& program, int& status) {
  program.add_subcommand("test", "How each line of a file is read: the record it gives, or why not.")
      ->callback([&status] { status = 1; });
}

}  // namespace tallymon
