// What a lost connection to the databases' server must not do: lose a call, or store one twice.

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <random>

#include "ingest/live_recorder.h"
#include "installation.h"
#include "server/reconnection.h"
#include "support/program_run.h"
#include "support/server_proxy.h"

namespace server {
namespace {

using support::sampleCall;

// A workstation that reaches the server through a proxy.
class LostConnection : public testing::Test {
 protected:
  void SetUp() override {
    if (!place.files.folder.onServer()) GTEST_SKIP() << "about a server";
    proxy.emplace(place.files.folder / "", place.files.folder.setting());
    foundation::MachineStore machine(place.machineStore());
    machine.writeString("general", "PathDatabase", proxy->setting());
    copy = std::make_unique<Copy>(place);
    ASSERT_TRUE(copy->start());
  }
  void TearDown() override {
    copy.reset();
    proxy.reset();
  }

  // A live call, told from others by its pulses.
  static std::string recordOf(int pulses) {
    exchange::CallRecord call = sampleCall();
    call.pulses = pulses;
    return exchange::encodeRecord(call, true, 1252);
  }
  std::int32_t send(int pulses) {
    const std::string record = recordOf(pulses);
    return copy->document.smdr().liveRecorder().record(
        {reinterpret_cast<const unsigned char*>(record.data()), record.size()});
  }
  void restart() {
    copy.reset();
    (*proxy)->heal();
    copy = std::make_unique<Copy>(place);
    ASSERT_TRUE(copy->start());
  }
  void reconnect() {
    (*proxy)->heal();
    while (!copy->document.reconnect()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

  void expectEachOnce(int calls) const {
    EXPECT_EQ(place.value("select count(*) as n from Calls"), std::to_string(calls));
    const auto main = place.openMain();
    EXPECT_EQ(main->openSnapshot("select Pulses, count(*) as n from Calls group by Pulses").rowCount(),
              static_cast<std::size_t>(calls));
  }

  Installation place;
  std::optional<support::ServerProxy> proxy;
  std::unique_ptr<Copy> copy;
};

TEST_F(LostConnection, NoLiveCallIsLostOrStoredTwice) {
  constexpr int kCalls = 40;
  std::mt19937 random(20261125);
  // A call takes about eight kilobytes on the way.
  std::uniform_int_distribution<long> bytes(1, 9000);
  int losses = 0;
  for (int i = 0; i < kCalls; ++i) {
    (*proxy)->cutAfter(bytes(random));
    while (send(i) == 0) {
      ASSERT_TRUE((*proxy)->isCut()) << copy->document.smdr().liveRecorder().refusal();
      ++losses;
      EXPECT_EQ(send(i), 0) << "while the connection is lost";
      reconnect();
      // The second attempt is cut as well, now and then.
      if (losses % 3 == 0) (*proxy)->cutAfter(bytes(random));
    }
    reconnect();
  }
  EXPECT_GT(losses, kCalls / 4);
  expectEachOnce(kCalls);
}

// The connection is lost before the server's answer to a commit, and the program ends before it can ask.
TEST_F(LostConnection, TheNextProgramAsksWhatBecameOfACall) {
  constexpr long kPlenty = 1'000'000;
  constexpr long kEndOfTheAnswer = 3;
  constexpr int kMostTries = 20;
  int calls = 0;
  bool met = false;
  for (int i = 0; i < kMostTries && !met; ++i) {
    EXPECT_EQ(send(++calls), 1);
    (*proxy)->cutAfter(kPlenty);
    EXPECT_EQ(send(++calls), 1);
    // The next one takes as much, give or take a digit.
    (*proxy)->cutAfter(kPlenty - (*proxy)->left() - kEndOfTheAnswer);
    const std::int32_t answer = send(++calls);
    restart();
    met = answer == 0 && place.value("select count(*) as n from Calls") == std::to_string(calls);
    EXPECT_EQ(answer == 0 ? send(calls) : answer, 1);
  }
  EXPECT_TRUE(met);
  expectEachOnce(calls);
}

// A server that crashed before a commit reached its disk gives the number of that transaction, and the key of its row,
// to others.
TEST_F(LostConnection, ATransactionOfTheSameNumberIsNoProofOfACall) {
  constexpr struct {
    const char* description;
    const char* key;  // of the row that the killed program noted, by a select
    bool stored;
  } kCases[] = {{"the call itself", "select max(RecordID) from Calls", true},
                {"a row of another call", "select min(RecordID) from Calls", false},
                {"no row", "select max(RecordID) + 1000 from Calls", false}};
  support::OtherProgram program(place.files.folder.setting().substr(0, place.files.folder.setting().rfind('/')));
  int calls = 0;
  EXPECT_EQ(send(++calls), 1);
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.description);
    EXPECT_EQ(send(++calls), 1);
    std::string noted;
    for (const unsigned char byte : recordOf(each.stored ? calls : calls + 1)) noted += base::format("%02x", byte);
    std::ofstream(place.files.folder / "UnconfirmedCalls")
        << copy->document.database().path().string() << '\n'
        << program.run("SELECT pg_current_xact_id()") << " row " << place.value(each.key) << ' ' << noted << '\n';
    restart();
    EXPECT_EQ(send(each.stored ? calls : ++calls), 1);
    expectEachOnce(calls);
  }
}

TEST_F(LostConnection, AFullDiskOfTheWorkstationRefusesNoCall) {
  {
    const support::DiskLimit disk(0);
    EXPECT_EQ(send(1), 1);
  }
  EXPECT_EQ(send(2), 1);
  expectEachOnce(2);
}

TEST_F(LostConnection, AnImportGoesOnWhereItWas) {
  constexpr int kCalls = 600;
  place.files.writeMonitorFile(support::sampleRecords(kCalls));
  std::mt19937 random(7);
  std::uniform_int_distribution<long> bytes(1, 50000);
  int losses = 0;
  ingest::ImportResult result;
  do {
    // A copy that comes back reads its definitions again: it must get that far, too.
    constexpr long kMoreEachTime = 30000;
    (*proxy)->cutAfter(bytes(random) + losses * kMoreEachTime);
    result = copy->document.smdr().catchUp({.recordsPerBatch = 20});
    losses += (*proxy)->isCut() ? 1 : 0;
    reconnect();
  } while (result.outcome == ingest::ImportResult::Outcome::Failed);
  EXPECT_GT(losses, 0);
  expectEachOnce(kCalls);
}

TEST_F(LostConnection, IsSaidOnceAndMended) {
  Messages said;
  Reconnection reconnection(copy->document, [&](base::Priority, const std::string& text) { said.push_back(text); });
  EXPECT_TRUE(reconnection.ready());
  (*proxy)->cutAfter(0);
  EXPECT_THROW(copy->document.database().execute("update Config set Int_Value = 1 where Path = 'x'"), jet::Error);
  EXPECT_FALSE(reconnection.ready());
  EXPECT_FALSE(reconnection.ready());
  EXPECT_EQ(said, Messages{"IDS_CONNECTION_LOST"});
  (*proxy)->heal();
  while (!reconnection.ready()) std::this_thread::sleep_until(reconnection.nextTry());
  EXPECT_EQ(said, (Messages{"IDS_CONNECTION_LOST", "IDS_CONNECTION_BACK"}));
  EXPECT_TRUE(reconnection.takeBack());
  EXPECT_FALSE(reconnection.takeBack());
  // What was prepared before serves again.
  copy->document.database().execute("update Config set Int_Value = 1 where Path = 'x'");
}

}  // namespace
}  // namespace server
