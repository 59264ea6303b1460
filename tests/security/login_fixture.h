#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "schema/schema.h"
#include "security/login.h"
#include "security/rights.h"
#include "security/users.h"
#include "support/database_folder.h"
#include "support/fixed_clock.h"
#include "support/scripted_operator.h"

namespace security {

// Answers from two lists; an empty list is a cancelled dialog.
class ScriptedPrompt : public LoginPrompt {
 public:
  std::optional<Credentials> askLogin(const std::string& proposedName) override {
    proposals.push_back(proposedName);
    return next(logins);
  }
  std::optional<PasswordChange> askPasswordChange(const std::string&, bool) override { return next(changes); }
  [[nodiscard]] bool canAskPasswordChange() const override { return terminal; }

  std::deque<Credentials> logins;
  std::deque<PasswordChange> changes;
  std::vector<std::string> proposals;
  bool terminal = true;

 private:
  template <typename Answer>
  static std::optional<Answer> next(std::deque<Answer>& answers) {
    if (answers.empty()) return std::nullopt;
    Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

// A database with the group "Office" (validity 0), the group "Strict" (30 days) and the user "ana" with password "one".
class SecurityFixture : public testing::Test {
 protected:
  SecurityFixture() {
    schema::createMainDatabase(folder_ / schema::kMainFile);
    open(jet::OpenMode::ReadWrite);
    texts_.parse(
        "LANG EN 1252 English\nSET NATIVE EN\nEN IDS_LOG_LOGININCORRECT wrong %s/%s\nEN IDS_LOG_INVALIDLOGIN unknown "
        "%s/%s\nEN IDS_LOG_LOGIN in %s\nEN IDS_DAYS_TEXT days\n");
    GroupRecord office{.Name = "Office", .ObjectAccess = "6;1;9;1"};
    GroupRecord strict{.Name = "Strict", .PasswordExpire = 30, .ObjectAccess = "9;1;9;2"};
    directory().saveGroup(office);
    directory().saveGroup(strict);
    addUser("ana", "one", ";1;");
  }

  void open(jet::OpenMode mode) {
    log_.CloseLog();
    config_.CloseConfig();
    tags_.CloseTouch();
    database_ = jet::openDatabase(folder_ / schema::kMainFile, mode);
    tags_.LoadTouch(*database_);
    config_.OpenConfig(*database_, tags_);
    log_.OpenLog(*database_);
  }

  UserDirectory directory() { return {{*database_, tags_, texts_, person_, clock_}, session_}; }
  LoginManager login() { return {{*database_, config_, texts_, log_, person_, clock_}, session_, prompt_}; }

  UserRecord addUser(const char* name, const char* password, const char* groups, std::int32_t flags = 0) {
    UserRecord user{.Name = name, .Flags = flags, .Groups = groups};
    EXPECT_EQ(directory().SaveUser(user, password), SaveResult::Saved);
    return user;
  }
  bool logIn(const char* name, const char* password) {
    prompt_.logins = {{name, password}};
    return login().Login();
  }
  void setMachine(const char* key, const char* value) {
    config_.WriteConfigString(value, key, "general", foundation::StoreMachine);
  }
  std::string machine(const char* key) {
    return config_.ReadConfigString(key, "general", foundation::StoreMachine, "");
  }
  // The log's entries as "level user: text", oldest first.
  std::vector<std::string> entries() {
    const auto rows = database_->openSnapshot("select [Level], UserName, [Desc] from Log order by RecordID");
    std::vector<std::string> all;
    for (std::size_t i = 0; i < rows.rowCount(); ++i) {
      all.push_back(rows.at(i, 0).toText() + " " + rows.at(i, 1).toText() + ": " + rows.at(i, 2).toText());
    }
    return all;
  }

  support::DatabaseFolder folder_;
  ScriptedOperator person_;
  FixedClock clock_{*base::DateTime::fromParts(2025, 3, 10, 12, 0, 0)};
  foundation::MachineStore machine_{folder_ / "store.ini"};
  foundation::ChangeTags tags_{person_};
  std::unique_ptr<jet::Database> database_;
  foundation::ConfigManager config_{machine_};
  foundation::LanguageFile texts_{[] { return 65001; }};
  CurrentUser session_;
  AuditLog log_{config_, clock_, [this] { return session_.stampName(); }};
  ScriptedPrompt prompt_;
};

}  // namespace security
