#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/operator.h"
#include "security/audit_log.h"
#include "security/session.h"

namespace security {

struct Credentials {
  std::string name;
  std::string password;
};

struct PasswordChange {
  std::string current;
  std::string wanted;
  std::string repeated;
};

// The login and password dialogs: terminal, desktop and tests have one each. Nothing = cancelled.
class LoginPrompt {
 public:
  virtual ~LoginPrompt() = default;
  virtual std::optional<Credentials> askLogin(const std::string& proposedName) = 0;
  // Asked again after every refusal, whose reason was shown as a message.
  virtual std::optional<PasswordChange> askPasswordChange(const std::string& userName, bool forced) = 0;
  // False where no one can type a new password (a command without a terminal): "must change at next login" is then
  // only announced.
  [[nodiscard]] virtual bool canAskPasswordChange() const { return true; }
};

enum class AutoLogin {
  Allowed,  // `AutoLoginUser`, when it is set, answers the first question
  Ignored,  // the prompt is asked, and the auto-login settings stay as they are
};

// Login, account checks and change of password over the session's user. Every call may throw jet::Error.
class LoginManager {
 public:
  // All must outlive the object.
  struct Services {
    jet::Database& database;
    foundation::ConfigManager& config;
    const foundation::LanguageFile& texts;
    AuditLog& log;
    platform::Operator& person;
    const platform::Clock& clock;
  };
  LoginManager(const Services& services, CurrentUser& session, LoginPrompt& prompt)
      : services_(services), session_(session), prompt_(prompt) {}

  // At most three wrong answers. On success the session is filled, its masks hold for what is read from the database
  // from then on, `LastAccessDate` is written and the login logged.
  bool Login(AutoLogin automatic = AutoLogin::Allowed);
  // Disabled account, no groups, password to be changed or expired; run right after Login.
  bool CheckAccount();
  // False when cancelled or when the session's user was deleted.
  bool ChangePassword(bool forced);
  // Whether ChangePassword, forced or not, stored a new password.
  [[nodiscard]] bool passwordChanged() const { return passwordChanged_; }
  // Fills the session from the row that is current in `users`.
  bool LoadUser(jet::Recordset& users, bool withGroups);

 private:
  enum class Attempt { Accepted, Refused, NotLoaded };

  void show(const char* key);
  void log(LogLevel level, const char* key);
  std::optional<Credentials> ask();
  Attempt tryLogin(const Credentials& answer);
  void loadGroups(const std::string& membership);
  void loadMask();
  [[nodiscard]] bool passwordExpired() const;
  bool storePassword(const std::string& password);

  Services services_;
  CurrentUser& session_;
  LoginPrompt& prompt_;
  bool passwordChanged_ = false;
};

}  // namespace security
