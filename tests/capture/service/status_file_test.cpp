#include "capture/service/status_file.h"

#include <gtest/gtest.h>

#include "support/program_run.h"

namespace {

using namespace support;

// Who reads the file sees the last that was written, not a part of it.
TEST(StatusFile, WithoutRoomTheOneBeforeStays) {
  TemporaryFolder monitor;
  const capture::Spool spool(monitor / "");
  ASSERT_TRUE(capture::writeStatusFile(spool, "before"));
  {
    const DiskLimit disk(10);
    EXPECT_FALSE(capture::writeStatusFile(spool, std::string(100, 'x')));
  }
  EXPECT_EQ(readFile(spool.ownFolder() / "status.json"), "before");
  EXPECT_FALSE(std::filesystem::exists(spool.ownFolder() / "status.json.new"));
  EXPECT_TRUE(capture::writeStatusFile(spool, "after"));
  EXPECT_EQ(readFile(spool.ownFolder() / "status.json"), "after");
}

}  // namespace
