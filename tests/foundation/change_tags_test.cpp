#include "foundation/change_tags.h"

#include <gtest/gtest.h>

#include <thread>

#include "schema/schema.h"
#include "support/database_folder.h"
#include "support/scripted_operator.h"

namespace foundation {

using namespace support;

namespace {

// Two copies of the program on one database file.
class TwoCopies : public testing::Test {
 protected:
  TwoCopies() : tagsA_(personA_), tagsB_(personB_) {
    schema::createMainDatabase(file());
    a_ = jet::openDatabase(file(), jet::OpenMode::ReadWrite);
    b_ = jet::openDatabase(file(), jet::OpenMode::ReadWrite);
    tagsA_.LoadTouch(*a_);
    tagsB_.LoadTouch(*b_);
  }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / schema::kMainFile; }
  std::int64_t stored(const std::string& tag) {
    return a_->openSnapshot("select [Value] from Touch where Tag = '" + tag + "'").at(0, 0).toLong();
  }

  DatabaseFolder folder_;
  ScriptedOperator personA_;
  ScriptedOperator personB_;
  std::unique_ptr<jet::Database> a_;
  std::unique_ptr<jet::Database> b_;
  ChangeTags tagsA_;
  ChangeTags tagsB_;
};

TEST_F(TwoCopies, TheOtherCopySeesAChangeOnce) {
  EXPECT_FALSE(tagsB_.IsTouched("Config"));
  tagsA_.Touch("Config");
  hearOfChanges(*b_);
  EXPECT_TRUE(tagsB_.IsTouched("Config"));
  EXPECT_FALSE(tagsB_.IsTouched("Config"));
  EXPECT_FALSE(tagsA_.IsTouched("Config"));
  EXPECT_FALSE(tagsB_.IsTouched("Calls"));
  EXPECT_EQ(stored("Config"), 1);
}

TEST_F(TwoCopies, TouchCallsIsSeenByItsOwnCopyToo) {
  tagsA_.TouchCalls();
  EXPECT_TRUE(tagsA_.IsTouched("Calls"));
  EXPECT_FALSE(tagsA_.IsTouched("Calls"));
  hearOfChanges(*b_);
  EXPECT_TRUE(tagsB_.IsTouched("Calls"));
}

TEST_F(TwoCopies, AMissingTagAlwaysCountsAsChanged) {
  EXPECT_TRUE(tagsA_.IsTouched("Nothing"));
  EXPECT_TRUE(tagsA_.IsTouched("Nothing"));
  tagsA_.Touch("Nothing");
  EXPECT_EQ(personA_.messages, std::vector<std::string>(3, "Non-fatal: Invalid touch tag."));

  b_->execute("delete from Touch where Tag = 'Log'");
  hearOfChanges(*a_);
  EXPECT_TRUE(tagsA_.IsTouched("Log"));
}

TEST_F(TwoCopies, ATagThatAppearsLaterCountsFromZero) {
  a_->execute("insert into Touch (Tag, [Value]) values ('Later', 0)");
  EXPECT_FALSE(tagsA_.IsTouched("Later"));
  tagsB_.Touch("Later");
  hearOfChanges(*a_);
  EXPECT_TRUE(tagsA_.IsTouched("Later"));
}

TEST_F(TwoCopies, NoIncrementIsLost) {
  const auto touch = [this] {
    const auto database = jet::openDatabase(file(), jet::OpenMode::ReadWrite);
    platform::NoOperator person;
    ChangeTags tags(person);
    tags.LoadTouch(*database);
    for (int i = 0; i < 100; ++i) tags.Touch("Calls");
  };
  std::thread other(touch);
  touch();
  other.join();
  EXPECT_EQ(stored("Calls"), 200);
}

}  // namespace
}  // namespace foundation
