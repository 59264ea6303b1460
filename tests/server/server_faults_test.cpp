// Faults of a server that leave the connection standing. What ends it is tried in the runs of `soak server-faults`.

#include <gtest/gtest.h>

#include "running_service.h"

namespace server {
namespace {

// As PostgreSQL reports a full disk, whenever a call is to be stored.
class FullDisk {
 public:
  explicit FullDisk(const Installation& place)
      : program_(place.files.folder.place().address()), schema_(place.files.folder.place().schema("tallybook.mdb")) {
    program_.run("CREATE FUNCTION \"" + schema_ +
                 "\".full_disk() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION USING ERRCODE = "
                 "'disk_full', MESSAGE = 'could not extend file: No space left on device'; END $$");
    program_.run("CREATE TRIGGER full_disk BEFORE INSERT ON \"" + schema_ +
                 "\".\"Calls\" FOR EACH STATEMENT EXECUTE FUNCTION \"" + schema_ + "\".full_disk()");
  }
  void makeRoom() { program_.run("DROP TRIGGER full_disk ON \"" + schema_ + "\".\"Calls\""); }

 private:
  support::OtherProgram program_;
  std::string schema_;
};

TEST(ServerFaults, AFullDiskKeepsTheFileAndRefusesLiveCallsUntilThereIsRoom) {
  const Installation place;
  if (!place.files.folder.onServer()) GTEST_SKIP() << "about a server";
  {
    RunningService service(place);
    ASSERT_EQ(service.send(support::sampleRecords(1)), 1);
    FullDisk disk(place);
    EXPECT_EQ(service.send(support::sampleRecords(1, 1)), 0);
    EXPECT_TRUE(service.waitFor("A live call was refused: The disk that holds "));
    place.files.writeMonitorFile(support::sampleRecords(200, 100));
    EXPECT_TRUE(service.waitFor("Free some space and try again."));
    EXPECT_TRUE(service.waitFor("0 of its records were dealt with before that, the others wait in the file."));
    EXPECT_TRUE(std::filesystem::exists(place.files.monitorFile("monitor.data.bk")));
    EXPECT_EQ(place.value("select count(*) as n from Calls"), "1");
    disk.makeRoom();
    EXPECT_TRUE(service.waitFor("Imported 200 calls"));
    EXPECT_TRUE(service.waitFor("Mended: "));
    EXPECT_EQ(service.send(support::sampleRecords(1, 1)), 1);
  }
  EXPECT_EQ(place.value("select count(*) as n from Calls"), "202");
  EXPECT_EQ(place.openMain()->openSnapshot("select Pulses from Calls group by Pulses").rowCount(), 202U);
  EXPECT_FALSE(std::filesystem::exists(place.files.monitorFile("monitor.data.bk")));
}

}  // namespace
}  // namespace server
