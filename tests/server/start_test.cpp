#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "installation.h"
#include "support/program_run.h"

namespace server {
namespace {

namespace fs = std::filesystem;
using Start = CServerApp::Start;
using OneCopy = CServerApp::OneCopy;

TEST(ApplicationStart, AProfilesFoldersBecomeTheFoldersInUse) {
  const Installation place;
  foundation::MachineStore machine(place.machineStore());
  machine.writeString("general", "PathDatabase_night", "/srv/night/");
  machine.writeString("general", "PathMonitor_night", "/srv/monitor/");
  Copy copy(place);
  EXPECT_EQ(copy.app.InitInstance("\"night\"", OneCopy::Shared), Start::Ready);
  EXPECT_EQ(machine.readString("general", "PathDatabase"), "/srv/night/");
  EXPECT_EQ(machine.readString("general", "PathMonitor"), "/srv/monitor/");
  EXPECT_EQ(copy.person.messages, Messages());
}

TEST(ApplicationStart, AnUnknownProfileIsSaidAndPassedOver) {
  const Installation place;
  Copy copy(place);
  EXPECT_EQ(copy.app.InitInstance("day", OneCopy::Shared), Start::Ready);
  EXPECT_EQ(copy.person.messages, Messages{"Profile day does not exist!"});
  EXPECT_TRUE(copy.document.OnNewDocument({}));
  Copy unnamed(place);
  EXPECT_EQ(unnamed.app.InitInstance("\"\"", OneCopy::Shared), Start::Ready);
  EXPECT_EQ(unnamed.person.messages, Messages());
}

TEST(ApplicationStart, WithoutItsTextsTheProgramDoesNotRun) {
  const Installation place;
  fs::remove(place.programFolder() / "Tallybook.lng");
  Copy copy(place);
  EXPECT_EQ(copy.app.InitInstance("", OneCopy::Shared), Start::Failed);
  EXPECT_EQ(copy.person.messages, Messages{"Error loading language file: Tallybook.lng"});
}

TEST(ApplicationStart, TheLanguageInUseIsKept) {
  const Installation place;
  foundation::MachineStore machine(place.machineStore());
  machine.writeString("general", "Language", "en");
  Copy copy(place);
  EXPECT_EQ(copy.app.InitInstance("", OneCopy::Shared), Start::Ready);
  EXPECT_EQ(machine.readString("general", "Lang"), "en");
}

TEST(ApplicationStart, ASecondCopyEndsAtOnceAndWithoutAWord) {
  const Installation place;
  Copy first(place);
  ASSERT_TRUE(first.start());
  Copy second(place);
  EXPECT_EQ(second.app.InitInstance("", OneCopy::Enforced), Start::Failed);
  EXPECT_TRUE(second.app.anotherCopyRuns());
  EXPECT_EQ(second.person.messages, Messages());
  EXPECT_EQ(second.app.InitInstance("", OneCopy::Shared), Start::Ready);
}

TEST(ApplicationStart, TheVersionSwitchWritesTheVersionAndEnds) {
  const Installation place;
  const fs::path before = fs::current_path();
  fs::current_path(place.programFolder());
  Copy copy(place);
  EXPECT_EQ(copy.app.InitInstance("/v", OneCopy::Enforced), Start::Ended);
  fs::current_path(before);
  std::ifstream file(place.programFolder() / "server.ver");
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_TRUE(line.starts_with("Tallybook ")) << line;
  EXPECT_FALSE(std::getline(file, line));
  EXPECT_EQ(copy.person.messages, Messages());
}

TEST(ApplicationStart, AVersionThatFindsNoRoomIsToldAndTheOldFileStays) {
  const Installation place;
  const fs::path file = place.programFolder() / "server.ver";
  std::ofstream(file) << "before";
  const auto entries = std::distance(fs::directory_iterator(place.programFolder()), {});
  const fs::path before = fs::current_path();
  fs::current_path(place.programFolder());
  Copy copy(place);
  {
    const support::DiskLimit disk(0);
    EXPECT_EQ(copy.app.InitInstance("/v", OneCopy::Shared), Start::Failed);
  }
  fs::current_path(before);
  EXPECT_EQ(copy.person.messages, Messages{"IDS_CANTWRITEFILE"});
  EXPECT_EQ(support::readFile(file), "before");
  EXPECT_EQ(std::distance(fs::directory_iterator(place.programFolder()), {}), entries) << "a temporary file is left";
}

// Why a start ended: what was wrong, and the messages that tell it.
struct Failure {
  const char* name;
  void (*arrange)(Installation&, Copy&);
  Messages messages;
  StartEnd end;
};

class FailingStart : public ::testing::TestWithParam<Failure> {};

TEST_P(FailingStart, SaysWhyAndEnds) {
  Installation place;
  Copy copy(place);
  GetParam().arrange(place, copy);
  EXPECT_FALSE(copy.start());
  EXPECT_EQ(copy.person.messages, GetParam().messages);
  EXPECT_EQ(copy.document.startEnd(), GetParam().end);
}

const Failure kFailures[] = {
    {"NoDataFolder",
     [](Installation& place, Copy&) {
       foundation::MachineStore(place.machineStore()).erase("general", "PathDatabase");
     },
     {"IDS_CANTREADREGISTRY"},
     StartEnd::NotConfigured},
    {"WrongPassword",
     [](Installation&, Copy& copy) { copy.login.password = "guess"; },
     {"IDS_LOGININCORRECT", "IDS_LOGININCORRECT", "IDS_LOGININCORRECT"},
     StartEnd::NobodyLoggedIn},
    {"DisabledAccount",
     [](Installation& place, Copy&) { place.execute("update Users set Flags = 2"); },
     {"IDS_ACCOUNTDISABLED"},
     StartEnd::AccountRefused},
    {"NoGroups",
     [](Installation& place, Copy&) { place.execute("update Users set Groups = ''"); },
     {"IDS_0GROUPS"},
     StartEnd::AccountRefused},
    {"ExpiredPasswordNotChanged",
     [](Installation& place, Copy&) {
       place.execute("update Groups set PasswordExpire = 30");
       place.execute("update Users set PasswordDate = #1/1/2024#");
     },
     {"IDS_PASSWORDEXPIRED"},
     StartEnd::AccountRefused},
};

INSTANTIATE_TEST_SUITE_P(Reasons, FailingStart, ::testing::ValuesIn(kFailures),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(DocumentStart, AMissingDatabaseIsNamed) {
  const Installation place;
  place.files.folder.removeDatabase(schema::kMainFile);
  Copy copy(place);
  EXPECT_FALSE(copy.start());
  ASSERT_EQ(copy.person.messages.size(), 1U);
  EXPECT_NE(copy.person.messages[0].find(place.files.folder.onServer() ? "_tallybook" : "tallybook.mdb"),
            std::string::npos)
      << copy.person.messages[0];
}

// The monitor's file waits for somebody who may import it, and old calls for somebody who may delete them.
TEST(DocumentStart, WhoMayNotChangeCallsLeavesThemAsTheyAre) {
  const Installation place;
  place.files.writeMonitorFile(support::sampleRecords(3));
  place.execute("insert into Config (Path, Int_Value) values ('Calls\\Sterge', 1)");
  place.execute("insert into Calls (DialNumber, [DateTime]) values ('old', #1/1/2001#)");
  place.execute("update Groups set ObjectAccess = '9;1'");
  {
    Copy viewer(place);
    ASSERT_TRUE(viewer.start());
  }
  EXPECT_TRUE(fs::exists(place.files.monitorFile()));
  EXPECT_EQ(place.value("select DialNumber from Calls"), "old");
  place.execute("update Groups set ObjectAccess = '9;1;9;2'");
  Copy operating(place);
  ASSERT_TRUE(operating.start());
  EXPECT_EQ(place.value("select count(*) as n from Calls"), "3");
}

TEST(DocumentStart, CallsThatCannotBeOpenedEndTheStart) {
  const Installation place;
  place.remakeMainWithout("DialNumber");
  place.execute("insert into Config (Path, Int_Value) values ('general\\DbVersion', 1)");
  Copy copy(place);
  EXPECT_FALSE(copy.start());
  ASSERT_FALSE(copy.person.messages.empty());
  EXPECT_EQ(copy.person.messages.back(), "IDS_SMDR_CANTSTART");
}

TEST(DocumentStart, WithoutThePhonebookCallsGoOn) {
  const Installation place;
  place.files.folder.removeDatabase(schema::kPhonebookFile);
  Copy copy(place);
  EXPECT_TRUE(copy.start());
  EXPECT_EQ(copy.person.messages, Messages{"IDS_SMDR_CANTOPENPBDB"});
}

TEST(DocumentStart, AnOldDatabaseGetsItsColumnOnce) {
  const Installation place;
  place.remakeMainWithout("Folder");
  for (int start = 1; start <= 2; ++start) {
    Copy copy(place);
    EXPECT_TRUE(copy.start());
    EXPECT_EQ(copy.person.messages, Messages()) << "start " << start;
  }
  EXPECT_NE(place.openMain()->tableDef("Calls").find("Folder"), nullptr);
  EXPECT_EQ(place.value("select Int_Value from Config where Path = 'general\\DbVersion'"), "1");
}

TEST(DocumentStart, AFailedUpgradeIsShownAndTriedAgain) {
  const Installation place;
  place.execute("update Config set Int_Value = 0 where Path = 'general\\DbVersion'");  // but the column is there
  for (int start = 1; start <= 2; ++start) {
    Copy copy(place);
    EXPECT_TRUE(copy.start());
    EXPECT_EQ(copy.person.messages.size(), 1U) << "start " << start;
    EXPECT_EQ(place.value("select Int_Value from Config where Path = 'general\\DbVersion'"), "0");
  }
}

TEST(DocumentStart, RetentionRunsBeforeTheFirstImport) {
  const Installation place;
  place.execute("insert into Config (Path, Int_Value) values ('Calls\\Sterge', 1)");
  place.execute("insert into Calls (DateTime, DialNumber, Pulses) values (#3/3/2024 10:00:00#, '1', 77)");
  place.execute("insert into Calls (DateTime, DialNumber, Pulses) values (#3/4/2024 0:00:01#, '1', 78)");
  exchange::CallRecord old = support::sampleCall();
  old.year = 2023;
  old.pulses = 79;
  place.files.writeMonitorFile(exchange::encodeRecord(old, false, 1252));
  Copy copy(place);
  EXPECT_TRUE(copy.start());
  EXPECT_EQ(place.value("select count(*) as n from Calls where Pulses = 77"), "0");
  EXPECT_EQ(place.value("select count(*) as n from Calls where Pulses = 78"), "1");
  EXPECT_EQ(place.value("select count(*) as n from Calls where Pulses = 79"), "1");
}

TEST(DocumentStart, TheLeuIsRedenominatedOnce) {
  const Installation place;
  place.execute("update Currency set Name = 'ROL' where [Default] <> 0");
  place.execute("insert into Calls (DateTime, Price, Price_Ref, [Currency]) values (#3/4/2024#, 50000, 50000, 'ROL')");
  Copy copy(place);
  EXPECT_TRUE(copy.start());
  EXPECT_EQ(copy.person.messages,
            Messages{"Aplicatia a fost actualizata cu valuta RON (leu greu).\nConvorbirile costul exprimat in ROL al "
                     "convorbirilor si tarifelor existente a fost convertit in RON."});
  copy.document.OnCloseDocument();
  EXPECT_EQ(place.value("select Price from Calls"), "5");
  EXPECT_EQ(place.value("select [Currency] from Calls"), "RON");
  EXPECT_TRUE(copy.document.OnNewDocument({}));
  EXPECT_EQ(copy.person.messages.size(), 1U);
  EXPECT_EQ(place.value("select Price from Calls"), "5");
}

// Rights do not bind root: the start is made by a user who has none on the files.
TEST(DocumentStart, AReadOnlyDatabaseIsShownAndLeftAlone) {
  const Installation place;
  if (place.files.folder.onServer()) GTEST_SKIP() << "about files";
  place.files.writeMonitorFile(support::sampleRecords(3));
  place.execute("update Config set Int_Value = 0 where Path = 'general\\DbVersion'");
  const fs::path folder = place.programFolder();
  for (const char* file : {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile}) {
    fs::permissions(folder / file, fs::perms::owner_read | fs::perms::others_read);
  }
  fs::permissions(place.machineStore(), fs::perms::owner_all | fs::perms::others_all);
  fs::permissions(folder,
                  fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec);
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(77);
    Copy copy(place);
    if (copy.app.InitInstance("", OneCopy::Shared) != Start::Ready) _exit(1);
    if (!copy.document.OnNewDocument({})) _exit(2);
    if (!copy.document.DatabaseReadOnly()) _exit(3);
    copy.document.OnCloseDocument();
    _exit(copy.person.messages.empty() ? 0 : 4);
  }
  int status = 0;
  waitpid(child, &status, 0);
  fs::permissions(folder, fs::perms::owner_all);
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "cannot step down from root here";
  EXPECT_EQ(WEXITSTATUS(status), 0);
  fs::permissions(place.mainFile(), fs::perms::owner_all);
  EXPECT_TRUE(fs::exists(place.files.monitorFile()));
  EXPECT_EQ(place.value("select count(*) as n from Log"), "0");
}

TEST(DocumentClose, KeepsThePanesAndSaysGoodbye) {
  const Installation place;
  fs::path preview;
  {
    Copy copy(place);
    ASSERT_TRUE(copy.start());
    copy.document.setUpperPane(55);
    preview = copy.document.previewFile();
    EXPECT_TRUE(fs::exists(preview));
  }
  EXPECT_FALSE(fs::exists(preview));
  EXPECT_EQ(foundation::MachineStore(place.machineStore()).readInt("general", "Upper pane %"), 55);
  EXPECT_EQ(place.value("select count(*) as n from Log where [Desc] = 'IDS_LOG_LOGOUT' and UserName = 'ana'"), "1");
}

TEST(OperatorsCommands, DeleteOnlyWhenConfirmed) {
  struct Case {
    const char* question;
    bool (CServerDoc::*command)();
    const char* left;  // what is still there after a Yes
  };
  const Installation place;
  Copy copy(place);
  ASSERT_TRUE(copy.start());
  for (const Case& c : {Case{"IDS_CONFIRMRESET_CONTACTS", &CServerDoc::resetContacts, "3 calls, 0 contacts"},
                        Case{"IDS_DELETE_ZERO_LENGTH_CALLS", &CServerDoc::deleteZeroLengthCalls, "2 calls, 1 contacts"},
                        Case{"IDS_CONFIRMRESET", &CServerDoc::resetCalls, "0 calls, 1 contacts"}}) {
    place.execute("delete from Calls");
    place.execute("delete from Contacts");
    place.execute("insert into Contacts (RecordID, Contact) values (1, 'Maria')");
    place.execute("insert into Calls (DialNumber, TotalTime, Incoming) values ('outgoing', 0, 0)");
    place.execute("insert into Calls (DialNumber, TotalTime, Incoming) values ('missed', 0, 1)");
    place.execute("insert into Calls (DialNumber, TotalTime, Incoming) values ('talk', 9, 0)");
    const auto rows = [&] {
      return place.value("select count(*) as n from Calls") + " calls, " +
             place.value("select count(*) as n from Contacts") + " contacts";
    };
    copy.person.answer = false;
    EXPECT_FALSE((copy.document.*c.command)());
    EXPECT_EQ(copy.person.questions.back(), std::string("IDS_NO_BACKUP\n") + c.question);
    EXPECT_EQ(rows(), "3 calls, 1 contacts");
    copy.person.answer = true;
    EXPECT_TRUE((copy.document.*c.command)());
    EXPECT_EQ(rows(), c.left);
  }
}

}  // namespace
}  // namespace server
