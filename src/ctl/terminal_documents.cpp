#include "ctl/terminal_documents.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ctl {

namespace {

// Runs a program without a shell, so that no character of the argument means anything. True when it ended well.
bool run(const char* program, std::string argument) {
  std::string name = program;
  char* const words[] = {name.data(), argument.data(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, program, nullptr, nullptr, words, environ) != 0) return false;
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

bool TerminalDocuments::open(const std::string& pathOrUrl) {
  return run("xdg-open", pathOrUrl);
}

bool TerminalDocuments::print(const std::filesystem::path& document) {
  return run("lp", std::filesystem::absolute(document).string());
}

}  // namespace ctl
