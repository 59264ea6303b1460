#include "ctl/terminal_prompt.h"

#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "base/printf.h"

namespace ctl {

namespace {

// Hides what is typed for as long as it lives.
class HiddenInput {
 public:
  HiddenInput() {
    if (tcgetattr(STDIN_FILENO, &before_) != 0) return;
    termios hidden = before_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    changed_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  ~HiddenInput() {
    if (changed_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }

 private:
  termios before_{};
  bool changed_ = false;
};

bool hasTerminal() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

std::optional<std::string> fromEnvironment(const char* name) {
  const char* password = std::getenv(name);
  if (password == nullptr) return std::nullopt;
  return password;
}

}  // namespace

std::optional<std::string> askPassword(std::string_view question) {
  if (!hasTerminal()) return std::nullopt;
  std::cerr << question << ": " << std::flush;
  std::string password;
  const HiddenInput hidden;
  const bool read = static_cast<bool>(std::getline(std::cin, password));
  std::cerr << '\n';
  if (!read) return std::nullopt;
  return password;
}

std::optional<std::string> passwordFromEnvironment() {
  return fromEnvironment("TALLYBOOK_PASSWORD");
}

std::optional<std::string> newPasswordFromEnvironment() {
  return fromEnvironment("TALLYBOOK_NEW_PASSWORD");
}

std::optional<security::Credentials> TerminalPrompt::askLogin(const std::string& proposedName) {
  std::string name = user_.value_or(proposedName);
  if (const auto password = passwordFromEnvironment(); password && !name.empty() && !environmentTried_) {
    environmentTried_ = true;
    return security::Credentials{name, *password};
  }
  if (!hasTerminal()) return std::nullopt;
  if (!user_) {
    std::cerr << base::format("User [%s]: ", name) << std::flush;
    std::string typed;
    if (!std::getline(std::cin, typed)) return std::nullopt;
    if (!typed.empty()) name = typed;
  }
  const auto password = askPassword(base::format("Password of %s", name));
  if (!password) return std::nullopt;
  return security::Credentials{name, *password};
}

std::optional<security::PasswordChange> TerminalPrompt::askPasswordChange(const std::string& userName,
                                                                          bool /*forced*/) {
  if (const auto given = newPasswordFromEnvironment(); given && changesFromEnvironment_) {
    changesFromEnvironment_ = false;
    return security::PasswordChange{passwordFromEnvironment().value_or(""), *given, *given};
  }
  const auto current = askPassword(base::format("Current password of %s", userName));
  if (!current) return std::nullopt;
  const auto wanted = askPassword("New password");
  if (!wanted) return std::nullopt;
  const auto repeated = askPassword("New password again");
  if (!repeated) return std::nullopt;
  return security::PasswordChange{*current, *wanted, *repeated};
}

bool TerminalPrompt::canAskPasswordChange() const {
  return hasTerminal() || (changesFromEnvironment_ && newPasswordFromEnvironment());
}

}  // namespace ctl
