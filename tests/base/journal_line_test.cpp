#include "base/journal_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace base {
namespace {

TEST(JournalLine, IsOneLineWithItsPriorityForTheJournalAlone) {
  EXPECT_EQ(journalLine(Priority::Error, "a\nb\r\n", true), "<3>a b  ");
  EXPECT_EQ(journalLine(Priority::Information, "a", true), "<6>a");
  EXPECT_EQ(journalLine(Priority::Error, "a\nb", false), "a b");
}

TEST(JournalLine, TheJournalIsToldFromAnotherReader) {
  int journal[2];
  int other[2];
  ASSERT_EQ(::pipe2(journal, O_CLOEXEC), 0);
  ASSERT_EQ(::pipe2(other, O_CLOEXEC), 0);
  struct stat status {};
  ASSERT_EQ(::fstat(journal[1], &status), 0);
  unsetenv("JOURNAL_STREAM");
  EXPECT_FALSE(isJournal(journal[1]));
  setenv("JOURNAL_STREAM", (std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino)).c_str(), 1);
  EXPECT_TRUE(isJournal(journal[1]));
  EXPECT_FALSE(isJournal(other[1])) << "what a service starts inherits the mark, and may write elsewhere";
  EXPECT_FALSE(isJournal(-1));
  unsetenv("JOURNAL_STREAM");
  for (const int descriptor : {journal[0], journal[1], other[0], other[1]}) ::close(descriptor);
}

}  // namespace
}  // namespace base
