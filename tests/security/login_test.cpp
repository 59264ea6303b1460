#include "security/login_fixture.h"

namespace security {
namespace {

using Texts = std::vector<std::string>;
using Login = SecurityFixture;
using Account = SecurityFixture;

TEST_F(Login, FillsTheSessionAndTheRow) {
  ASSERT_TRUE(logIn("ANA", "one"));
  EXPECT_TRUE(session_.UserLoggedIn);
  EXPECT_EQ(session_.CurrentUserName, "ana");
  EXPECT_EQ(session_.password, "one");
  EXPECT_EQ(session_.groups, std::vector<std::int32_t>{1});
  EXPECT_EQ(directory().findUser("ana")->LastAccessDate, clock_.time);
  EXPECT_EQ(machine("LastUser"), "ANA");
  EXPECT_EQ(entries(), Texts{"1 ana: in ana"});
}

TEST_F(Login, EndsAfterThreeWrongAnswers) {
  setMachine("LastUser", "earlier");
  prompt_.logins = {{"ana", "two"}, {"nobody", "x"}, {"ana", "ONE"}, {"ana", "one"}};
  EXPECT_FALSE(login().Login());
  EXPECT_FALSE(session_.UserLoggedIn);
  EXPECT_EQ(entries(), (Texts{"1 : wrong ana/two", "1 : unknown nobody/x", "1 : wrong ana/ONE"}));
  EXPECT_EQ(person_.messages, Texts(3, "IDS_LOGININCORRECT"));
  EXPECT_EQ(prompt_.proposals, (Texts{"earlier", "ana", "nobody"}));
}

TEST_F(Login, GoesOnAfterAWrongAnswerAndEndsWhenCancelled) {
  prompt_.logins = {{"ana", "two"}, {"ana", "one"}};
  EXPECT_TRUE(login().Login());
  prompt_.logins = {{"ana", "two"}};
  EXPECT_FALSE(login().Login());
  EXPECT_FALSE(session_.UserLoggedIn);
}

TEST_F(Login, AQuotationMarkIsNoWayAroundTheName) {
  EXPECT_FALSE(logIn("x\" or \"1\"=\"1", "one"));
  EXPECT_EQ(entries().front(), "1 : unknown x\" or \"1\"=\"1/one");
}

TEST_F(Login, HappensByItselfWhenAUserIsSet) {
  setMachine("AutoLoginUser", "Ana");
  setMachine("AutoLoginPassword", "one");
  EXPECT_TRUE(login().Login());
  EXPECT_TRUE(prompt_.proposals.empty());
  EXPECT_EQ(machine("AutoLoginUser"), "ana");
  EXPECT_EQ(machine("LastUser"), "");
}

TEST_F(Login, AStaleAutomaticPasswordFallsBackToTheDialogAndFollowsIt) {
  setMachine("AutoLoginUser", "ana");
  setMachine("AutoLoginPassword", "stale");
  EXPECT_TRUE(logIn("ana", "one"));
  EXPECT_EQ(person_.messages, Texts{"IDS_LOGININCORRECT"});
  EXPECT_EQ(machine("AutoLoginPassword"), "one");
}

TEST_F(Login, CanBeToldNotToHappenByItself) {
  addUser("dan", "two", ";1;");
  setMachine("AutoLoginUser", "ana");
  setMachine("AutoLoginPassword", "one");
  prompt_.logins = {{"dan", "two"}};
  EXPECT_TRUE(login().Login(AutoLogin::Ignored));
  EXPECT_EQ(session_.CurrentUserName, "dan");
  EXPECT_EQ(machine("AutoLoginUser"), "ana");
}

TEST_F(Login, WorksOnAReadOnlyDatabase) {
  open(jet::OpenMode::ReadOnly);
  EXPECT_TRUE(logIn("ana", "one"));
  EXPECT_TRUE(entries().empty());
}

TEST_F(Login, MergesRightsAndTakesTheLongestValidity) {
  addUser("both", "p", ";1;;2;");
  ASSERT_TRUE(logIn("both", "p"));
  EXPECT_EQ(session_.rights, (std::vector<AccessRight>{{6, 1}, {9, 1}, {9, 2}}));
  EXPECT_EQ(session_.passwordValidity, 30);
  EXPECT_TRUE(HasRight(session_, ObjectCalls, RightChange, person_));
  EXPECT_FALSE(HasRight(session_, ObjectAdministration, RightChange, person_));
  EXPECT_TRUE(person_.messages.empty());
  EXPECT_FALSE(HasRight(session_, 7, RightView, person_));
  EXPECT_EQ(person_.messages, Texts{"Non-fatal: unknown securable object"});
}

TEST_F(Login, ReportsMissingGroupsAndOddRights) {
  GroupRecord odd{.Name = "Odd", .ObjectAccess = "6;1;9"};
  directory().saveGroup(odd);
  addUser("eva", "p", ";77;;3;");
  ASSERT_TRUE(logIn("eva", "p"));
  EXPECT_EQ(person_.messages, (Texts{"IDS_CANTFINDGROUPID", "Non-fatal: ObjectAccess format incorrect."}));
  EXPECT_EQ(session_.rights, (std::vector<AccessRight>{{6, 1}}));
}

TEST_F(Login, TakesARestrictionOnlyUnder128Characters) {
  const std::string start = "DialNumber <> '";
  for (const std::size_t length : {std::size_t{127}, std::size_t{128}}) {
    auto user = *directory().findUser("ana");
    session_.SQLSubquery.clear();  // of the round before
    user.SQLSubquery = start + std::string(length - start.size() - 1, '1') + "'";
    ASSERT_EQ(directory().SaveUser(user, std::nullopt), SaveResult::Saved);
    ASSERT_TRUE(logIn("ana", "one"));
    EXPECT_EQ(session_.SQLSubquery.size(), length < 128 ? length : 0);
  }
  EXPECT_EQ(person_.questions, Texts{"IDS_RESTRICTION_TOO_LONG"});
  auto user = *directory().findUser("ana");
  user.SQLSubquery += " or Hidden";
  person_.answer = false;
  session_.SQLSubquery.clear();
  EXPECT_EQ(directory().SaveUser(user, std::nullopt), SaveResult::RestrictionRejected);
}

TEST_F(Account, ChecksInOrder) {
  struct {
    const char* name;
    const char* groups;
    std::int32_t flags;
    bool passes;
    const char* message;
    const char* entry;
  } const cases[] = {
      {"fine", ";1;", 0, true, "", ""},
      {"off", "", UserDisabled | UserMustChangePassword, false, "IDS_ACCOUNTDISABLED",
       "2 off: IDS_LOG_ACCOUNTDISABLED"},
      {"alone", "", UserMustChangePassword, false, "IDS_0GROUPS", "2 alone: IDS_LOG_0GROUPS"},
      {"must", ";1;", UserMustChangePassword, false, "IDS_MUSTCHANGEPASSWORD", ""},
  };
  for (const auto& each : cases) {
    addUser(each.name, "p", each.groups, each.flags);
    person_.messages.clear();
    ASSERT_TRUE(logIn(each.name, "p"));
    const std::size_t before = entries().size();
    EXPECT_EQ(login().CheckAccount(), each.passes) << each.name;
    EXPECT_EQ(person_.messages, *each.message == '\0' ? Texts{} : Texts{each.message}) << each.name;
    const auto after = entries();
    EXPECT_EQ(after.size() > before ? after.back() : "", each.entry) << each.name;
  }
}

TEST_F(Account, ExpiresByTheLongestValidityOfItsGroups) {
  struct {
    const char* name;
    const char* groups;
    std::int64_t days;
    std::int64_t seconds;
    bool expired;
  } const cases[] = {
      {"never", ";1;", 10000, 0, false},
      {"just", ";2;", 29, 86399, false},
      {"gone", ";1;;2;", 30, 0, true},
  };
  const auto start = clock_.time;
  for (const auto& each : cases) {
    clock_.time = start;
    addUser(each.name, "p", each.groups);
    clock_.time = start.plusDays(each.days).plusSeconds(each.seconds);
    ASSERT_TRUE(logIn(each.name, "p"));
    person_.messages.clear();
    EXPECT_EQ(login().CheckAccount(), !each.expired) << each.name;
    EXPECT_EQ(person_.messages, each.expired ? Texts{"IDS_PASSWORDEXPIRED"} : Texts{}) << each.name;
  }
  EXPECT_EQ(entries().back(), "2 gone: IDS_LOG_PASSWORDEXPIRED");
}

TEST_F(Account, WithoutATerminalAChangeIsOnlyAnnounced) {
  addUser("must", "p", ";1;", UserMustChangePassword);
  prompt_.terminal = false;
  ASSERT_TRUE(logIn("must", "p"));
  EXPECT_TRUE(login().CheckAccount());
  EXPECT_EQ(person_.messages, Texts{"IDS_MUSTCHANGEPASSWORD"});
  EXPECT_EQ(directory().findUser("must")->Flags, UserMustChangePassword);
}

TEST_F(Account, AForcedChangeAsksUntilItIsRight) {
  addUser("must", "old", ";1;", UserMustChangePassword);
  ASSERT_TRUE(logIn("must", "old"));
  prompt_.changes = {{"old", "new", "nwe"}, {"odl", "new", "new"}, {"old", "new", "new"}};
  clock_.time = clock_.time.plusDays(1);
  EXPECT_TRUE(login().CheckAccount());
  EXPECT_EQ(person_.messages, (Texts{"IDS_MUSTCHANGEPASSWORD", "IDS_NOREENTER", "IDS_CURRENTPASSWORDINCORRECT"}));
  const auto user = *directory().findUser("must");
  EXPECT_EQ(user.passwordDigest, PasswordDigest("new"));
  EXPECT_EQ(user.PasswordDate, clock_.time);
  EXPECT_EQ(user.Flags, 0);
  EXPECT_EQ(session_.password, "new");
  EXPECT_EQ(entries().back(), "2 must: IDS_LOG_PASSWORD_CHANGED");
  EXPECT_TRUE(logIn("must", "new"));
}

TEST_F(Account, AUserDeletedMeanwhileCannotChange) {
  ASSERT_TRUE(logIn("ana", "one"));
  directory().deleteUser(session_.RecordID);
  prompt_.changes = {{"one", "new", "new"}};
  EXPECT_FALSE(login().ChangePassword(false));
  EXPECT_EQ(person_.messages, Texts{"IDS_CURRENTUSERDELETED"});
}

}  // namespace
}  // namespace security
