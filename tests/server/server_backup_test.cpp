// Databases on a server: saved by its own programs, and restored into a new database.

#include <gtest/gtest.h>

#include <fstream>

#include "installation.h"
#include "server/backup.h"

namespace server {
namespace {

class ServerBackup : public testing::Test {
 protected:
  void SetUp() override {
    if (!place.files.folder.onServer()) GTEST_SKIP() << "about a server";
    std::filesystem::create_directory(place.files.folder / "backups");
    backup = makeBackup({.databases = schema::DatabasePlace::ofSetting(place.files.folder.setting()),
                         .machineStore = place.machineStore()},
                        place.files.folder / "backups", *base::DateTime::fromParts(2026, 11, 25, 2, 30, 0));
  }

  Installation place;
  Backup backup;
};

TEST_F(ServerBackup, HoldsEveryRowAndIsRestoredIntoANewDatabaseAlone) {
  EXPECT_TRUE(isOfServer(backup));
  checkBackup(backup.folder);
  EXPECT_THROW(restoreBackup(backup.folder, place.files.folder.setting()), BackupError) << "over what is there";
  EXPECT_THROW(restoreBackup(backup.folder, place.files.folder / "new"), BackupError) << "to a folder";

  const support::TestPlace& server = place.files.folder.place();
  const std::string name = server.schema("copy.mdb");
  support::OtherProgram administrator(server.address());
  administrator.run("CREATE DATABASE \"" + name + "\"");
  const std::string setting = place.files.folder.setting();
  const std::string address = setting.substr(0, setting.find('/', setting.find('@'))) + "/" + name + "/" +
                              setting.substr(setting.rfind('/') + 1);
  restoreBackup(backup.folder, address);
  {
    const auto restored = schema::DatabasePlace::ofSetting(address).open(schema::Which::Main, jet::OpenMode::ReadWrite);
    EXPECT_EQ(restored->openSnapshot("select Contact from Contacts").at(0, 0).toText(), "Maria");
    restored->execute("insert into Contacts (RecordID, Contact) values (2, 'Ion')");
    EXPECT_EQ(restored->openSnapshot("select count(*) as n from Contacts").at(0, 0).toLong(), 2);
  }
  administrator.run("DROP DATABASE \"" + name + "\" WITH (FORCE)");
}

TEST_F(ServerBackup, ADamagedOneIsRefused) {
  std::fstream file(backup.folder / "tallybook.dump", std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(5000);
  file.put('\x55').put('\x55');
  file.close();
  EXPECT_THROW(checkBackup(backup.folder), BackupError);
}

}  // namespace
}  // namespace server
