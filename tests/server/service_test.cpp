#include "server/service.h"

#include <gtest/gtest.h>

#include <thread>

#include "running_service.h"

namespace server {
namespace {

TEST(ServiceTest, TakesLiveCallsAndTheMonitorsFile) {
  const Installation place;
  {
    RunningService service(place);
    EXPECT_EQ(service.send(support::sampleRecords(1, 5)), 1);
    EXPECT_EQ(service.send(support::sampleRecords(1, 6, true)), 1);
    EXPECT_EQ(service.send("no record"), 0);
    EXPECT_EQ(service.send(exchange::encodeRecord(support::sampleCall("34\"5678"), false, 1252)), 0);
    EXPECT_EQ(service.send("no record"), 0);
    place.files.writeMonitorFile(support::sampleRecords(12, 100));
    EXPECT_TRUE(service.waitFor("Imported 12 calls"));
    EXPECT_TRUE(service.waitFor("live calls."));
    service.stop();
    EXPECT_EQ(service.said("<5>Closing."), 1);
    // The reason itself, which the audit log's entry does not tell.
    EXPECT_GT(service.said("<3>A live call was refused: a message of 9 bytes is no call record\n"), 0);
    EXPECT_GT(service.said("<3>A live call was refused: "), service.said("refused: a message of 9 bytes"));
  }
  EXPECT_EQ(place.value("select count(*) as n from Calls"), "14");
  EXPECT_EQ(place.value("select count(*) as n from Log where [Desc] = 'IDS_LOG_LOGOUT'"), "1");
  EXPECT_FALSE(std::filesystem::exists(place.files.folder / "live.sock"));
}

TEST(ServiceTest, ImportsWhenASenderAsksForIt) {
  const Installation place;
  RunningService service(place, {.import = std::chrono::hours(1), .refresh = std::chrono::hours(1)});
  place.files.writeMonitorFile(support::sampleRecords(4));
  platform::LiveChannelClient client(place.files.folder / "live.sock");
  EXPECT_EQ(client.requestImport(), 1);
  EXPECT_TRUE(service.waitFor("Imported 4 calls"));
}

TEST(ServiceTest, SaysALostFolderOnceAndCatchesUp) {
  const Installation place;
  RunningService service(place);
  std::filesystem::rename(place.files.folder / "monitor", place.files.folder / "away");
  EXPECT_TRUE(service.waitFor("cannot read"));
  EXPECT_TRUE(
      RunningService::within([&] { return place.value("select count(*) as n from Log where [Level] = 9") == "1"; }));
  std::this_thread::sleep_for(kQuick.import * 5);
  EXPECT_EQ(service.said("cannot read"), 1);
  std::filesystem::rename(place.files.folder / "away", place.files.folder / "monitor");
  EXPECT_TRUE(service.waitFor("Mended: cannot read"));
  place.files.writeMonitorFile(support::sampleRecords(3));
  EXPECT_TRUE(service.waitFor("Imported 3 calls"));
  EXPECT_EQ(place.value("select count(*) as n from Log where [Level] = 9"), "1");
}

// A desk that jumps in the list then finds places to start from.
TEST(ServiceTest, LooksForThePlacesOfLongListsOnAServer) {
  const Installation place;
  if (!place.files.folder.onServer()) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
  support::OtherProgram other(place.files.folder.place().address());
  const std::string in = "\"" + place.files.folder.place().schema(schema::kMainFile) + "\".";
  other.run("INSERT INTO " + in +
            "\"Calls\" (\"DateTime\") SELECT '2026-01-01'::timestamp + i * interval '1 s' FROM "
            "generate_series(1, 17000) AS i");
  const RunningService service(place);
  EXPECT_TRUE(RunningService::within(
      [&] { return other.run("SELECT count(*) FROM " + in + "\"jet ladders\" WHERE cardinality(keys) > 4") != "0"; }));
}

TEST(ServiceTest, TwoServicesDoNotShareASocket) {
  const Installation place;
  const RunningService service(place);
  Copy other(place);
  ASSERT_EQ(other.app.InitInstance("", CServerApp::OneCopy::Shared), CServerApp::Start::Ready);
  ASSERT_TRUE(other.document.OnNewDocument({.firstImport = false}));
  EXPECT_THROW(Service(other.document, [](base::Priority, const std::string&) {}).run(), std::runtime_error);
}

}  // namespace
}  // namespace server
