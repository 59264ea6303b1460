#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "security/login.h"

namespace ctl {

// Reads a line from the terminal without showing it; nothing at its end or without a terminal.
[[nodiscard]] std::optional<std::string> askPassword(std::string_view question);

// The password in TALLYBOOK_PASSWORD; nothing when the variable is not set.
[[nodiscard]] std::optional<std::string> passwordFromEnvironment();
// The one in TALLYBOOK_NEW_PASSWORD, for a user who gets another.
[[nodiscard]] std::optional<std::string> newPasswordFromEnvironment();

// Answers the login with --user and TALLYBOOK_PASSWORD, and asks at the terminal for what they do not give.
class TerminalPrompt : public security::LoginPrompt {
 public:
  explicit TerminalPrompt(std::optional<std::string> user) : user_(std::move(user)) {}

  std::optional<security::Credentials> askLogin(const std::string& proposedName) override;
  std::optional<security::PasswordChange> askPasswordChange(const std::string& userName, bool forced) override;
  [[nodiscard]] bool canAskPasswordChange() const override;
  // The next change of password takes the new one from TALLYBOOK_NEW_PASSWORD, when that is set, and the current one
  // from TALLYBOOK_PASSWORD (not set: the empty one).
  void changeFromEnvironment() { changesFromEnvironment_ = true; }

 private:
  std::optional<std::string> user_;
  bool environmentTried_ = false;  // a password that was refused once is not tried again
  bool changesFromEnvironment_ = false;
};

}  // namespace ctl
