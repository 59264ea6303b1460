#include "ingest/live_recorder.h"

#include <gtest/gtest.h>

#include "support/exchange.h"

namespace ingest {
namespace {

class LiveRecorderTest : public ::testing::Test {
 protected:
  std::int32_t record(const std::string& bytes) {
    return live.record({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
  }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
  LiveRecorder live{copy.recorder};
};

TEST_F(LiveRecorderTest, BothSizesAreRecordedAndOtherCopiesSeeTheCall) {
  support::RunningCopy other(files);
  EXPECT_FALSE(other.tags.IsTouched("Calls"));
  EXPECT_EQ(record(support::sampleRecords(1)), 1);
  EXPECT_TRUE(other.tags.IsTouched("Calls"));
  EXPECT_TRUE(copy.tags.IsTouched("Calls"));
  EXPECT_EQ(record(support::sampleRecords(1, 1, true)), 1);
  EXPECT_EQ(other.callCount(), 2);
}

TEST_F(LiveRecorderTest, OtherSizesAreRefused) {
  const std::string bytes = support::sampleRecords(2);
  for (const std::size_t size : {0u, 1u, 155u, 157u, 219u, 221u, 312u}) {
    EXPECT_EQ(record(bytes.substr(0, size)), 0) << size;
  }
  EXPECT_EQ(copy.callCount(), 0);
}

TEST_F(LiveRecorderTest, AFaultIsLoggedWithTheNumber) {
  EXPECT_EQ(record(exchange::encodeRecord(support::sampleCall("34\"5678"), false, 1252)), 0);
  EXPECT_EQ(copy.logged(), "9 Exception while adding call (34\"5678)\n");
  EXPECT_EQ(copy.callCount(), 0);
}

TEST_F(LiveRecorderTest, DefinitionsThatAnotherCopyChangedCountForTheNextCall) {
  support::RunningCopy other(files);
  other.parties.extensions[0].department = "Research";
  other.parties.save(*other.main);
  record(support::sampleRecords(1));
  EXPECT_EQ(copy.value("SELECT Department FROM Calls"), "Research");
}

}  // namespace
}  // namespace ingest
