#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "jet/database.h"
#include "support/temporary_folder.h"

namespace jet {

using namespace support;

namespace {

// A process that opens the file when it is told to, adds a row and leaves. Forked before this one opens the file: a
// driver's state does not survive a fork.
class OtherProcess {
 public:
  explicit OtherProcess(const std::filesystem::path& file) {
    EXPECT_EQ(pipe(start_), 0);
    child_ = fork();
    if (child_ != 0) return;
    char sign = 0;
    static_cast<void>(!read(start_[0], &sign, 1));
    try {
      openDatabase(file, OpenMode::ReadWrite)->execute("insert into T (n) values (100)");
      _exit(0);
    } catch (const Error&) {
      _exit(1);
    }
  }
  // Its exit status.
  int run() {
    static_cast<void>(!write(start_[1], "!", 1));
    int status = -1;
    waitpid(child_, &status, 0);
    return status;
  }

 private:
  int start_[2] = {-1, -1};
  pid_t child_ = -1;
};

TEST(SharedFile, SurvivesACopyThatLeavesAfterThisOneLookedAtTheFile) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder / "shared.mdb";
  OtherProcess other(file);
  const auto database = createDatabase(file);
  database->createTable({.name = "T", .fields = {{.name = "n", .type = Type::Long}}});
  database->execute("insert into T (n) values (1)");
  // Neither may cost this process its locks on the file.
  openDatabase(file, OpenMode::ReadOnly).reset();
  database->makeDurable();

  EXPECT_EQ(other.run(), 0);
  EXPECT_TRUE(std::filesystem::exists(file.string() + "-wal")) << "the log in use was deleted";
  database->execute("insert into T (n) values (2)");
  EXPECT_EQ(openDatabase(file, OpenMode::ReadOnly)->openSnapshot("select sum(n) as s from T").at(0, 0).toLong(), 103);
}

}  // namespace
}  // namespace jet
