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

// Answers the login with --user and TALLYBOOK_PASSWORD, and asks at the terminal for what they do not give.
class TerminalPrompt : public security::LoginPrompt {
 public:
  explicit TerminalPrompt(std::optional<std::string> user) : user_(std::move(user)) {}

  std::optional<security::Credentials> askLogin(const std::string& proposedName) override;
  std::optional<security::PasswordChange> askPasswordChange(const std::string& userName, bool forced) override;
  [[nodiscard]] bool canAskPasswordChange() const override;

 private:
  std::optional<std::string> user_;
  bool environmentTried_ = false;  // a password that was refused once is not tried again
};

}  // namespace ctl
