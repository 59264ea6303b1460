#include "ui/guarded_application.h"

#include <gtest/gtest.h>

#include <QTest>
#include <QTimer>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

TEST(GuardedApplication, AFaultThatNobodyExpectedIsToldOnceAndTheProgramGoesOn) {
  auto& application = dynamic_cast<ui::GuardedApplication&>(*qApp);
  std::vector<std::string> told;
  application.setReport([&told](const std::string& fault) {
    told.push_back(fault);
    // The message's own loop: a window that throws while it is painted would open one after the other.
    QTest::qWait(50);
  });
  QTimer broken;
  QObject::connect(&broken, &QTimer::timeout, [] { throw std::runtime_error("the disk is gone"); });
  broken.start(1);
  EXPECT_TRUE(QTest::qWaitFor([&told] { return !told.empty(); }, 20'000));
  broken.stop();
  QTest::qWait(100);
  application.setReport([](const std::string& fault) { ADD_FAILURE() << "left a handler: " << fault; });
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told.front(), "the disk is gone");
}

}  // namespace
