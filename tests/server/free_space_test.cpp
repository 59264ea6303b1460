#include <gtest/gtest.h>

#include "server/doctor.h"

namespace server {
namespace {

// Below 2000 MB it is a note, below 200 MB a fault; both say how much there is.
TEST(FreeSpace, IsANoteBeforeItIsAFault) {
  for (const auto& [megabytes, health] : {std::pair{0, Health::Wrong},
                                          {199, Health::Wrong},
                                          {200, Health::Note},
                                          {1999, Health::Note},
                                          {2000, Health::Good}}) {
    const Finding finding = freeSpaceFinding(static_cast<std::uint64_t>(megabytes));
    EXPECT_EQ(finding.health, health) << megabytes;
    EXPECT_EQ(finding.advice.empty(), health == Health::Good) << megabytes;
    if (health != Health::Good) {
      EXPECT_EQ(finding.detail, std::to_string(megabytes) + " MB");
    }
  }
}

}  // namespace
}  // namespace server
