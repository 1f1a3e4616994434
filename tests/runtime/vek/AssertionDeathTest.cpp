#include <csignal>
#include <gtest/gtest.h>

#include "runtime/vek/Assertion.h"

namespace {

constexpr Vek::Assertion kInitialized{
    313, "initialized()", "void LinkFlap::LinkFlapIntfSm::handleProfileList(Vek::String)",
    "LinkFlapSm"};

TEST(AssertionDeathTest, NamesSourceLineFunctionAndExpressionAndAborts) {
  EXPECT_EXIT(kInitialized(false), testing::KilledBySignal(SIGABRT),
              "^LinkFlapSm:313: void LinkFlap::LinkFlapIntfSm::handleProfileList\\(Vek::String\\): "
              "Assertion `initialized\\(\\)' failed\\.\n$");
}

TEST(AssertionDeathTest, SaysNothingWhileItHolds) {
  testing::internal::CaptureStderr();
  kInitialized(true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(AssertionDeathTest, TakesAPercentSignForItself) {
  constexpr Vek::Assertion kPercent{1, "a % 2 == 0", "bool even(%s)", "Some%dSource"};
  EXPECT_EXIT(kPercent(false), testing::KilledBySignal(SIGABRT),
              "^Some%dSource:1: bool even\\(%s\\): Assertion `a % 2 == 0' failed\\.\n$");
}

TEST(FatalDeathTest, WritesTheMessageAndALineEndAndAborts) {
  EXPECT_EXIT(Vek::fatal("100% gone"), testing::KilledBySignal(SIGABRT), "^100% gone\n$");
}

}  // namespace
