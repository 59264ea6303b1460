#include "security/login.h"

#include <algorithm>

#include "base/characters.h"
#include "base/printf.h"
#include "security/masks.h"
#include "security/rights.h"
#include "security/users.h"

namespace security {

namespace {

constexpr int kTries = 3;
constexpr std::int64_t kSecondsOfDay = 86400;

std::uint32_t storedDigest(jet::Recordset& users) {
  return static_cast<std::uint32_t>(users.get("Password").toLong());
}

}  // namespace

void LoginManager::show(const char* key) {
  services_.person.messageBox(services_.texts.Translate(key));
}

void LoginManager::log(LogLevel level, const char* key) {
  services_.log.WriteLog(level, services_.texts.Translate(key), session_.CurrentUserName);
}

std::optional<Credentials> LoginManager::ask() {
  auto answer = prompt_.askLogin(services_.config.ReadConfigString(foundation::keys::LastUser));
  if (answer) services_.config.WriteConfigString(answer->name, foundation::keys::LastUser);
  return answer;
}

bool LoginManager::Login(AutoLogin automatic) {
  session_ = CurrentUser();
  services_.database.setMasks(nullptr);
  const std::string autoUser = automatic == AutoLogin::Allowed
                                   ? services_.config.ReadConfigString(foundation::keys::AutoLoginUser)
                                   : std::string();
  auto answer = autoUser.empty()
                    ? ask()
                    : std::optional(Credentials{
                          autoUser, services_.config.ReadConfigString(foundation::keys::AutoLoginPassword)});
  for (int failures = 0; answer; answer = ask()) {
    switch (tryLogin(*answer)) {
      case Attempt::Accepted:
        if (!autoUser.empty()) {
          services_.config.WriteConfigString(session_.CurrentUserName, foundation::keys::AutoLoginUser);
          services_.config.WriteConfigString(session_.password, foundation::keys::AutoLoginPassword);
        }
        session_.UserLoggedIn = true;
        services_.database.setMasks(databaseMasks(session_.mask));
        log(LogLogin, "IDS_LOG_LOGIN");
        return true;
      case Attempt::NotLoaded:
        return false;
      case Attempt::Refused:
        show("IDS_LOGININCORRECT");
        if (++failures == kTries) return false;
    }
  }
  return false;
}

LoginManager::Attempt LoginManager::tryLogin(const Credentials& answer) {
  const auto users = services_.database.openRecordset("SELECT * FROM Users");
  // A quotation mark would end the text of the condition: no user's name holds one.
  bool found = answer.name.find('"') == std::string::npos;
  if (found) {
    users->findFirst(base::format("Name = \"%s\"", answer.name));
    found = !users->noMatch();
  }
  if (!found || storedDigest(*users) != PasswordDigest(answer.password)) {
    const std::string text = services_.texts.Translate(found ? "IDS_LOG_LOGININCORRECT" : "IDS_LOG_INVALIDLOGIN");
    services_.log.WriteLog(LogLogin, text, answer.name, answer.password);
    return Attempt::Refused;
  }
  if (!LoadUser(*users, true)) return Attempt::NotLoaded;
  session_.password = answer.password;
  if (!services_.database.readOnly()) {
    users->edit();
    users->set("LastAccessDate", services_.clock.now());
    users->update();
  }
  return Attempt::Accepted;
}

bool LoginManager::LoadUser(jet::Recordset& users, bool withGroups) {
  if (users.bof() || users.eof()) return false;
  session_.RecordID = static_cast<std::int32_t>(users.get("RecordID").toLong());
  session_.Flags = static_cast<std::int32_t>(users.get("Flags").toLong());
  session_.passwordDigest = storedDigest(users);
  session_.LastAccessDate = users.get("LastAccessDate").toDateTime();
  session_.PasswordDate = users.get("PasswordDate").toDateTime();
  session_.SQLSubquery = users.get("SQLSubquery").toText();
  if (base::characterCount(session_.SQLSubquery) >= kRestrictionLimit) session_.SQLSubquery.clear();
  session_.CurrentUserName = base::firstCharacters(users.get("Name").toText(), kMaxUserName);
  session_.Fullname = users.get("Fullname").toText();
  if (withGroups) {
    loadGroups(users.get("Groups").toText());
    loadMask();
  }
  return true;
}

void LoginManager::loadMask() {
  session_.mask = masksOf(services_.database, MaskOwner::User)[session_.RecordID];
  auto masks = masksOf(services_.database, MaskOwner::Group);
  for (const std::int32_t id : session_.groups) session_.mask = stricter(session_.mask, masks[id]);
}

void LoginManager::loadGroups(const std::string& membership) {
  session_.groups = groupIds(membership);
  session_.rights.clear();
  session_.passwordValidity = 0;
  const auto groups = services_.database.openRecordset("SELECT * FROM Groups");
  for (const std::int32_t id : session_.groups) {
    groups->findFirst(base::format("RecordID = %d", id));
    if (groups->noMatch()) {
      show("IDS_CANTFINDGROUPID");
      continue;
    }
    const ObjectAccess access = parseObjectAccess(groups->get("ObjectAccess").toText());
    if (!access.wellFormed) services_.person.messageBox("Non-fatal: ObjectAccess format incorrect.");
    for (const AccessRight& right : access.rights) {
      auto& rights = session_.rights;
      if (std::find(rights.begin(), rights.end(), right) == rights.end()) rights.push_back(right);
    }
    const auto expire = static_cast<std::int32_t>(groups->get("PasswordExpire").toLong());
    session_.passwordValidity = std::max(session_.passwordValidity, expire);
  }
}

bool LoginManager::CheckAccount() {
  if ((session_.Flags & UserDisabled) != 0) {
    show("IDS_ACCOUNTDISABLED");
    log(LogSecurity, "IDS_LOG_ACCOUNTDISABLED");
    return false;
  }
  if (session_.groups.empty()) {
    show("IDS_0GROUPS");
    log(LogSecurity, "IDS_LOG_0GROUPS");
    return false;
  }
  if ((session_.Flags & UserMustChangePassword) != 0) {
    show("IDS_MUSTCHANGEPASSWORD");
    return !prompt_.canAskPasswordChange() || ChangePassword(true);
  }
  if (!passwordExpired()) return true;
  show("IDS_PASSWORDEXPIRED");
  log(LogSecurity, "IDS_LOG_PASSWORDEXPIRED");
  return ChangePassword(true);
}

// A password without a date counts from day zero.
bool LoginManager::passwordExpired() const {
  if (session_.passwordValidity == 0) return false;
  const base::DateTime set = session_.PasswordDate.value_or(base::DateTime());
  const std::int64_t age = (services_.clock.now().secondsSinceDayZero() - set.secondsSinceDayZero()) / kSecondsOfDay;
  return age >= session_.passwordValidity;
}

bool LoginManager::ChangePassword(bool forced) {
  while (const auto answer = prompt_.askPasswordChange(session_.CurrentUserName, forced)) {
    if (answer->wanted != answer->repeated) {
      show("IDS_NOREENTER");
    } else if (PasswordDigest(answer->current) != session_.passwordDigest) {
      show("IDS_CURRENTPASSWORDINCORRECT");
    } else {
      return storePassword(answer->wanted);
    }
  }
  return false;
}

bool LoginManager::storePassword(const std::string& password) {
  const auto users = services_.database.openRecordset("SELECT * FROM Users");
  users->findFirst(base::format("RecordID = %d", session_.RecordID));
  if (users->noMatch()) {
    show("IDS_CURRENTUSERDELETED");
    return false;
  }
  const base::DateTime now = services_.clock.now();
  const std::uint32_t digest = PasswordDigest(password);
  const auto flags = static_cast<std::int32_t>(users->get("Flags").toLong() & ~std::int64_t{UserMustChangePassword});
  users->edit();
  users->set("Password", static_cast<std::int32_t>(digest));
  users->set("PasswordDate", now);
  users->set("Flags", flags);
  users->update();
  session_.passwordDigest = digest;
  session_.password = password;
  session_.PasswordDate = now;
  session_.Flags = flags;
  passwordChanged_ = true;
  log(LogSecurity, "IDS_LOG_PASSWORD_CHANGED");
  return true;
}

}  // namespace security
