#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

#include "desktop.h"
#include "security/rights.h"
#include "ui/dialogs.h"

namespace {

using namespace support;

class DirectoryDialogsTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages); }
  security::UserDirectory& users() { return desktop.document->users(); }
  bool edit(const char* user) { return ui::editUser(*desktop.document, *desktop.texts, nullptr, user); }
  bool editGroup(const char* group) { return ui::editGroup(*desktop.document, *desktop.texts, nullptr, group); }

  Desktop desktop;
};

void enter(QDialog& dialog, const char* name, const char* text) {
  child<QLineEdit>(dialog, name).setText(text);
}
// A click that opens a further window: the script goes on meanwhile.
void clickLater(QDialog& dialog, const char* name) {
  QTimer::singleShot(0, &dialog, [&dialog, name] { click(dialog, name); });
}

TEST_F(DirectoryDialogsTest, ANewUserIsStoredWithPasswordFlagsAndGroups) {
  const Script script({[](QDialog& dialog) {
    enter(dialog, "userName", "ana");
    enter(dialog, "fullName", "Ana Pop");
    enter(dialog, "password", "secret");
    enter(dialog, "repeated", "secret");
    child<QCheckBox>(dialog, "mustChange").setChecked(true);
    child<QListWidget>(dialog, "groups").item(0)->setCheckState(Qt::Checked);
    click(dialog, "ok");
  }});
  EXPECT_TRUE(edit(""));
  const auto ana = users().findUser("ana");
  ASSERT_TRUE(ana);
  EXPECT_EQ(ana->Fullname, "Ana Pop");
  EXPECT_EQ(ana->passwordDigest, security::PasswordDigest("secret"));
  EXPECT_EQ(ana->Flags, security::UserMustChangePassword);
  EXPECT_EQ(ana->Groups, ";1;");
}

TEST_F(DirectoryDialogsTest, WithoutANewPasswordTheOldOneStays) {
  const auto before = users().findUser("admin");
  const Script script({[](QDialog& dialog) {
    enter(dialog, "fullName", "The Boss");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(edit("admin"));
  EXPECT_EQ(users().findUser("admin")->passwordDigest, before->passwordDigest);
  EXPECT_EQ(users().findUser("admin")->Fullname, "The Boss");
}

TEST_F(DirectoryDialogsTest, ARestrictionThatFailsItsTrialIsNotSaved) {
  const Script script({[](QDialog& dialog) {
    child<QPlainTextEdit>(dialog, "restriction").setPlainText("Nonsense = 1");
    click(dialog, "ok");
    EXPECT_TRUE(dialog.isVisible());
    child<QPlainTextEdit>(dialog, "restriction").setPlainText("Extension = '201'");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(edit("admin"));
  EXPECT_EQ(desktop.person.messages.size(), 1U);
  EXPECT_EQ(users().findUser("admin")->SQLSubquery, "Extension = '201'");
}

void tick(QDialog& dialog, const char* list, const QString& text, bool on = true) {
  const auto found = child<QListWidget>(dialog, list).findItems(text, Qt::MatchStartsWith);
  ASSERT_FALSE(found.isEmpty()) << text.toStdString();
  for (QListWidgetItem* item : found) item->setCheckState(on ? Qt::Checked : Qt::Unchecked);
}

TEST_F(DirectoryDialogsTest, ARestrictionIsChosenFromLists) {
  const Script script({[](QDialog& dialog) {
    const auto& text = child<QPlainTextEdit>(dialog, "restriction");
    tick(dialog, "restrictDepartments", "Sales");
    tick(dialog, "restrictTrunks", "5");
    EXPECT_EQ(text.toPlainText(), "Department='Sales' Or Trunk='5'");
    tick(dialog, "restrictTrunks", "5", false);
    click(dialog, "ok");
  }});
  EXPECT_TRUE(edit("admin"));
  EXPECT_EQ(users().findUser("admin")->SQLSubquery, "Department='Sales'");
}

TEST_F(DirectoryDialogsTest, AConditionWrittenByHandTicksWhatItSaysOrShutsTheLists) {
  const Script script({[](QDialog& dialog) {
    auto& text = child<QPlainTextEdit>(dialog, "restriction");
    auto& extensions = child<QListWidget>(dialog, "restrictExtensions");
    text.setPlainText("Extension In ('201', '999')");
    EXPECT_EQ(extensions.count(), 2) << "one that is not defined is shown, too";
    EXPECT_EQ(extensions.item(0)->checkState(), Qt::Checked);
    text.setPlainText("TotalTime > 60");
    EXPECT_FALSE(extensions.isEnabled());
    text.clear();
    EXPECT_TRUE(extensions.isEnabled());
    EXPECT_EQ(extensions.item(0)->checkState(), Qt::Unchecked);
    click(dialog, "cancel");
  }});
  EXPECT_FALSE(edit("admin"));
}

TEST_F(DirectoryDialogsTest, AChoiceThatIsTooLongIsSaidBeforeItIsSaved) {
  auto& extensions = desktop.document->smdr().parties().extensions;
  for (int number = 300; number < 330; ++number) extensions.push_back({std::to_string(number), "Desk", "Sales"});
  const Script script({[](QDialog& dialog) {
    tick(dialog, "restrictExtensions", "3");
    EXPECT_TRUE(child<QLabel>(dialog, "restrictionState").text().contains("127"));
    tick(dialog, "restrictExtensions", "201");  // now all of the department
    click(dialog, "useDepartments");
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "restriction").toPlainText(), "Department='Sales'");
    EXPECT_TRUE(child<QLabel>(dialog, "restrictionState").text().isEmpty());
    click(dialog, "ok");
  }});
  EXPECT_TRUE(edit("admin"));
}

TEST_F(DirectoryDialogsTest, RefusalsAreExplainedAndTheDialogStaysOpen) {
  QDialog* user = nullptr;
  const Script script({[&user](QDialog& dialog) {
                         user = &dialog;
                         enter(dialog, "userName", "admin");
                         enter(dialog, "password", "a");
                         enter(dialog, "repeated", "b");
                         child<QListWidget>(dialog, "groups").item(0)->setCheckState(Qt::Checked);
                         clickLater(dialog, "ok");
                       },
                       [&user](QDialog& message) {
                         acknowledge("differ")(message);
                         enter(*user, "repeated", "a");
                         clickLater(*user, "ok");
                       },
                       [&user](QDialog& message) {
                         acknowledge("already in use")(message);
                         clickLater(*user, "cancel");
                       }});
  EXPECT_FALSE(edit(""));
}

TEST_F(DirectoryDialogsTest, ANewGroupGetsValidityRightsAndMembers) {
  const Script script({[](QDialog& dialog) {
    enter(dialog, "groupName", "Readers");
    auto& validity = child<QSpinBox>(dialog, "validity");
    EXPECT_EQ(validity.text(), "unlimited");
    validity.setValue(30);
    EXPECT_EQ(validity.text(), "30 days");
    child<QTreeWidget>(dialog, "rights").topLevelItem(1)->child(0)->setCheckState(0, Qt::Checked);
    child<QListWidget>(dialog, "others").item(0)->setSelected(true);
    click(dialog, "addMember");
    click(dialog, "ok");
  }});
  EXPECT_TRUE(editGroup(""));
  const auto readers = users().findGroup("Readers");
  ASSERT_TRUE(readers);
  EXPECT_EQ(readers->PasswordExpire, 30);
  EXPECT_EQ(readers->ObjectAccess, "9;1");
  ASSERT_EQ(users().members(readers->RecordID).size(), 1U);
}

TEST_F(DirectoryDialogsTest, AUserWithoutGroupsIsSavedOnPurposeOnly) {
  QDialog* user = nullptr;
  const Script script({[&user](QDialog& dialog) {
                         user = &dialog;
                         enter(dialog, "userName", "ana");
                         clickLater(dialog, "ok");
                       },
                       [&user](QDialog& question) {
                         EXPECT_TRUE(question.property("text").toString().contains("no group"));
                         click(question, "no");
                         clickLater(*user, "ok");
                       },
                       [](QDialog& question) { click(question, "yes"); }});
  EXPECT_TRUE(edit(""));
  EXPECT_EQ(users().findUser("ana")->Groups, "");
}

TEST_F(DirectoryDialogsTest, SomebodyKeepsTheRightToAdminister) {
  const auto refused = acknowledge("nobody could change users");
  {
    const Script script({[](QDialog& dialog) {
                           child<QCheckBox>(dialog, "disabled").setChecked(true);
                           click(dialog, "ok");
                           click(dialog, "cancel");
                         },
                         refused});
    EXPECT_FALSE(edit("admin"));
  }
  {
    const Script script({[](QDialog& dialog) {
                           child<QTreeWidget>(dialog, "rights").topLevelItem(0)->setCheckState(0, Qt::Unchecked);
                           click(dialog, "ok");
                           child<QListWidget>(dialog, "members").item(0)->setSelected(true);
                           click(dialog, "removeMember");
                           click(dialog, "cancel");
                         },
                         refused, refused});
    EXPECT_FALSE(editGroup("Administrators"));
  }
  EXPECT_EQ(users().members(1).size(), 1U);
}

TEST_F(DirectoryDialogsTest, ALongerRestrictionThanIsAppliedIsRefused) {
  const Script script({[](QDialog& dialog) {
                         const QString longer = "Extension = '201' and " + QString(120, '1') + " = 1";
                         child<QPlainTextEdit>(dialog, "restriction").setPlainText(longer);
                         click(dialog, "ok");
                         click(dialog, "cancel");
                       },
                       acknowledge("127 characters")});
  EXPECT_FALSE(edit("admin"));
  EXPECT_EQ(users().findUser("admin")->SQLSubquery, "");
}

TEST_F(DirectoryDialogsTest, WithoutTheRightToChangeUsersAndGroupsAreOnlyLookedAt) {
  desktop.document->user().rights = {{security::ObjectAdministration, security::RightView}};
  const auto look = [](QDialog& dialog) {
    EXPECT_FALSE(child<QAbstractButton>(dialog, "ok").isEnabled());
    for (const auto* line : dialog.findChildren<QLineEdit*>()) EXPECT_TRUE(line->isReadOnly() || !line->isEnabled());
    click(dialog, "cancel");
  };
  const Script script({look, look});
  EXPECT_FALSE(edit("admin"));
  EXPECT_FALSE(editGroup("Administrators"));
}

TEST_F(DirectoryDialogsTest, AMemberLeavesAGroupOnlyAfterTheQuestion) {
  security::UserRecord second;
  second.Name = "zoe";
  second.Groups = ";1;";
  ASSERT_EQ(users().SaveUser(second, ""), security::SaveResult::Saved);
  const auto remove = [](QDialog& dialog) {
    child<QListWidget>(dialog, "members").item(0)->setSelected(true);
    click(dialog, "removeMember");
    click(dialog, "cancel");
  };
  desktop.person.answer = false;
  {
    const Script script({remove});
    EXPECT_FALSE(editGroup("Administrators"));
  }
  EXPECT_EQ(users().members(1).size(), 2U);
  desktop.person.answer = true;
  {
    const Script script({remove});
    EXPECT_TRUE(editGroup("Administrators"));
  }
  EXPECT_EQ(users().members(1).size(), 1U);
}

}  // namespace
