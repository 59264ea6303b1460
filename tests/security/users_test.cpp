#include "security/login_fixture.h"

namespace security {
namespace {

using Texts = std::vector<std::string>;
using Users = SecurityFixture;

TEST(PasswordDigest, StartsAtZeroAndIsNotInverted) {
  EXPECT_EQ(PasswordDigest(""), 0U);
  EXPECT_EQ(PasswordDigest("123456789"), 0x2DFD2D88U);
  EXPECT_EQ(PasswordDigest(std::string_view("\x01", 1)), 0x77073096U);  // the table's second entry
}

TEST(GroupList, IsEditedInItsOwnWay) {
  EXPECT_EQ(AddToGroupList("", 3), ";3;");
  EXPECT_EQ(AddToGroupList(";3;", 7), ";3;;7;");
  EXPECT_EQ(AddToGroupList(";3;;7;", 7), ";3;;7;");
  EXPECT_EQ(RemoveFromGroupList(";1;;2;;3;", 2), ";1;;;3;");
  EXPECT_EQ(RemoveFromGroupList(";1;;12;", 1), ";;12;");
  EXPECT_EQ(RemoveFromGroupList(";;12;", 12), ";;");
  EXPECT_EQ(RemoveFromGroupList(";12;", 1), ";12;");
  EXPECT_EQ(groupIds(";1;;;12;"), (std::vector<std::int32_t>{1, 12}));
}

TEST(ObjectAccess, IsReadByPairs) {
  const auto odd = parseObjectAccess("6;1;9");
  EXPECT_EQ(odd.rights, (std::vector<AccessRight>{{6, 1}}));
  EXPECT_FALSE(odd.wellFormed);
  EXPECT_TRUE(parseObjectAccess("").wellFormed);
  EXPECT_EQ(formatObjectAccess(parseObjectAccess("6;1;6;2;9;1").rights), "6;1;6;2;9;1");
}

TEST_F(Users, ANewOneGetsTheNextNumber) {
  addUser("b", "p", "");
  const auto c = addUser("c", "p", "");
  EXPECT_EQ(c.RecordID, 3);
  directory().deleteUser(2);
  EXPECT_EQ(addUser("d", "p", "").RecordID, 4);
  EXPECT_EQ(directory().deleteUser(2), SaveResult::Missing);
}

TEST_F(Users, ADigestWithItsTopBitSetFitsTheColumn) {
  std::string high = "1";
  while (PasswordDigest(high) < 0x80000000U) high += 'x';
  addUser("high", high.c_str(), ";1;");
  EXPECT_LT(database_->openSnapshot("select Password from Users where Name = 'high'").at(0, 0).toLong(), 0);
  EXPECT_TRUE(logIn("high", high.c_str()));
}

TEST_F(Users, KeepTheirPasswordUnlessANewOneIsGiven) {
  auto user = *directory().findUser("ana");
  const auto set = user.PasswordDate;
  clock_.time = clock_.time.plusDays(3);
  user.Fullname = "Ana Pop";
  ASSERT_EQ(directory().SaveUser(user, std::nullopt), SaveResult::Saved);
  EXPECT_EQ(directory().findUser("ana")->passwordDigest, PasswordDigest("one"));
  EXPECT_EQ(directory().findUser("ana")->PasswordDate, set);
  ASSERT_EQ(directory().SaveUser(user, "two"), SaveResult::Saved);
  EXPECT_EQ(directory().findUser("ana")->PasswordDate, clock_.time);
}

TEST_F(Users, AreNotSavedWithAnUnusableNameOrRow) {
  UserRecord twin{.Name = "ANA"};
  EXPECT_EQ(directory().SaveUser(twin, "p"), SaveResult::NameTaken);
  UserRecord quoted{.Name = "a\"b"};
  EXPECT_EQ(directory().SaveUser(quoted, "p"), SaveResult::NameUnusable);
  UserRecord blank{.Name = " "};
  EXPECT_EQ(directory().SaveUser(blank, "p"), SaveResult::NameUnusable);
  UserRecord gone{.RecordID = 50, .Name = "gone"};
  EXPECT_EQ(directory().SaveUser(gone, "p"), SaveResult::Missing);
  EXPECT_EQ(person_.messages, Texts{"IDS_SELECTEDUSERDELETED"});
}

TEST_F(Users, ARestrictionIsTriedBeforeItIsSaved) {
  struct {
    const char* restriction;
    SaveResult result;
  } const cases[] = {
      {"Extension = '201'", SaveResult::Saved},          {"Extension = '201' or Hidden", SaveResult::Saved},
      {"Extension = ", SaveResult::RestrictionRejected}, {"NoSuchColumn = 1", SaveResult::RestrictionRejected},
      {"1=1) or (1=1", SaveResult::RestrictionRejected}, {"1=1; delete from Calls", SaveResult::RestrictionRejected},
  };
  for (const auto& each : cases) {
    person_.messages.clear();
    auto user = *directory().findUser("ana");
    user.SQLSubquery = each.restriction;
    EXPECT_EQ(directory().SaveUser(user, std::nullopt), each.result) << each.restriction;
    EXPECT_EQ(person_.messages.size(), each.result == SaveResult::Saved ? 0U : 1U) << each.restriction;
  }
  EXPECT_EQ(directory().findUser("ana")->SQLSubquery, "Extension = '201' or Hidden");
}

// A condition is tried on all calls, so its fault could tell about those that the session's user may not see.
TEST_F(Users, WhoHasARestrictionGivesNoOther) {
  session_.SQLSubquery = "Extension = '201'";
  auto ana = *directory().findUser("ana");
  ana.Fullname = "Ana Pop";
  EXPECT_EQ(directory().SaveUser(ana, std::nullopt), SaveResult::Saved);
  ana.SQLSubquery = "CLng(DialNumber) = 1";
  EXPECT_EQ(directory().SaveUser(ana, std::nullopt), SaveResult::RestrictionRejected);
  EXPECT_EQ(person_.messages, Texts{"IDS_RESTRICTED_USER"});
  UserRecord sees{.Name = "sees"};
  EXPECT_EQ(directory().SaveUser(sees, "p"), SaveResult::RestrictionRejected);
  ana.SQLSubquery = session_.SQLSubquery;
  EXPECT_EQ(directory().SaveUser(ana, std::nullopt), SaveResult::Saved);
}

TEST_F(Users, TheLastWhoCanAdministerStays) {
  GroupRecord administrators{.Name = "Administrators", .ObjectAccess = "6;1;6;2"};
  ASSERT_EQ(directory().saveGroup(administrators), SaveResult::Saved);
  const auto admin = addUser("admin", "p", ";3;");
  addUser("off", "p", ";3;", UserDisabled);
  addUser("reader", "p", ";1;");

  const auto saved = [&](auto change) {
    UserRecord user = *directory().findUser("admin");
    change(user);
    return directory().SaveUser(user, std::nullopt);
  };
  EXPECT_EQ(saved([](UserRecord& user) { user.Flags = UserDisabled; }), SaveResult::LastAdministrator);
  EXPECT_EQ(saved([](UserRecord& user) { user.Groups = ";1;"; }), SaveResult::LastAdministrator);
  EXPECT_EQ(saved([](UserRecord& user) { user.Fullname = "Administrator"; }), SaveResult::Saved);
  EXPECT_EQ(directory().deleteUser(admin.RecordID), SaveResult::LastAdministrator);
  EXPECT_EQ(directory().deleteGroup(administrators.RecordID), SaveResult::LastAdministrator);
  EXPECT_FALSE(directory().removeMember(administrators.RecordID, admin.RecordID));
  EXPECT_EQ(person_.messages, Texts{"IDS_LAST_ADMINISTRATOR"});
  administrators.ObjectAccess = "6;1";
  EXPECT_EQ(directory().saveGroup(administrators), SaveResult::LastAdministrator);
  EXPECT_EQ(directory().findUser("admin")->Groups, ";3;");

  addUser("second", "p", ";3;");
  EXPECT_EQ(directory().deleteUser(admin.RecordID), SaveResult::Saved);
}

TEST_F(Users, ArePutIntoGroupsAndTakenOut) {
  const auto dan = addUser("dan", "p", ";12;");
  EXPECT_TRUE(directory().members(2).empty());
  EXPECT_TRUE(directory().addMember(2, dan.RecordID));
  ASSERT_EQ(directory().members(2).size(), 1U);
  EXPECT_EQ(directory().members(2).front().Name, "dan");

  person_.answer = false;
  EXPECT_FALSE(directory().removeMember(2, dan.RecordID));
  person_.answer = true;
  EXPECT_TRUE(directory().removeMember(2, dan.RecordID));
  EXPECT_EQ(person_.questions, Texts(2, "IDS_CONFIRMDELFROMGROUP"));
  EXPECT_EQ(directory().findUser("dan")->Groups, ";12;;");

  directory().deleteUser(dan.RecordID);
  EXPECT_FALSE(directory().addMember(2, dan.RecordID));
  EXPECT_EQ(person_.messages, Texts{"IDS_SELECTEDUSERDELETED"});
}

TEST_F(Users, LoseTheGroupThatIsDeleted) {
  EXPECT_EQ(directory().deleteGroup(1), SaveResult::Saved);
  EXPECT_EQ(directory().findUser("ana")->Groups, ";");
  EXPECT_EQ(directory().groups().size(), 1U);
  EXPECT_EQ(directory().deleteGroup(1), SaveResult::Missing);
}

TEST_F(Users, ChangesMoveTheirTag) {
  const auto other = jet::openDatabase(folder_ / schema::kMainFile, jet::OpenMode::ReadWrite);
  foundation::ChangeTags tags(person_);
  tags.LoadTouch(*other);
  addUser("x", "p", "");
  support::hearOfChanges(*other);
  EXPECT_TRUE(tags.IsTouched("Users"));
  EXPECT_FALSE(tags.IsTouched("Groups"));
}

TEST_F(Users, ValidityIsShownInDays) {
  EXPECT_EQ(directory().validityText(30), "30 days");
  EXPECT_EQ(directory().validityText(0), "IDS_PASSWORD_VALABILITY_UNDEFINED");
}

}  // namespace
}  // namespace security
