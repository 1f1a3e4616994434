#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "runtime/vek/Exception.h"
#include "runtime/vek/Report.h"

#include "tests/runtime/support/FailureLog.h"

namespace RuntimeTest {
class SomeWatcher {};
}  // namespace RuntimeTest

namespace {

using RuntimeTest::FailureLog;
using RuntimeTest::SomeWatcher;

/// Reports what `act` throws, as the runtime does for a callback.
template <typename Act>
void report(Act act, std::string_view attributeName = "maxFlaps") {
  try {
    act();
    ADD_FAILURE() << "nothing was thrown";
  } catch (...) {
    Vek::reportCallbackException(260, attributeName, typeid(SomeWatcher));
  }
}

void broken() {
  throw std::runtime_error{"broken"};
}

/// What is written to standard error while `act` runs.
template <typename Act>
std::string written(Act act) {
  testing::internal::CaptureStderr();
  act();
  return testing::internal::GetCapturedStderr();
}

TEST(ReportCallbackException, WritesALineToStandardErrorByDefault) {
  EXPECT_EQ(
      written([] { report(broken); }),
      "Vek: exception in a callback of RuntimeTest::SomeWatcher for attribute maxFlaps (260): "
      "broken\n");
}

TEST(ReportCallbackException, WritesAQuestionMarkForAnAttributeWithoutName) {
  EXPECT_EQ(written([] { report(broken, ""); }),
            "Vek: exception in a callback of RuntimeTest::SomeWatcher for attribute ? (260): "
            "broken\n");
}

TEST(ReportCallbackException, GivesTheSinkEverythingAndWritesNothing) {
  FailureLog const log;
  EXPECT_EQ(written([] { report(broken); }), "");
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{"maxFlaps (260) of RuntimeTest::SomeWatcher: broken"}));
}

TEST(ReportCallbackException, TakesTheMessageOfEveryKindOfException) {
  FailureLog const log;
  report([] { Vek::throwRangeException("a range"); });
  report([] { throw std::logic_error{"a standard one"}; });
  report([] { throw 7; });
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "maxFlaps (260) of RuntimeTest::SomeWatcher: a range",
                             "maxFlaps (260) of RuntimeTest::SomeWatcher: a standard one",
                             "maxFlaps (260) of RuntimeTest::SomeWatcher: not a std::exception"}));
}

TEST(ReportCallbackException, IsSilentAboutAnExpectedException) {
  FailureLog const log;
  Vek::Expect const scope{Vek::kRangeException};
  report([] { Vek::throwRangeException("expected"); });
  EXPECT_TRUE(log.lines().empty());
  report([] { Vek::throwTypeException("not expected"); });
  report(broken);
  EXPECT_EQ(log.lines().size(), 2U);
}

TEST(ReportCallbackException, FallsBackToStandardErrorWhenTheSinkThrows) {
  Vek::ExceptionSink const before =
      Vek::exceptionSinkIs([](Vek::CallbackFailure const&) { throw 7; });
  EXPECT_EQ(
      written([] { report(broken); }),
      "Vek: the exception sink threw; the failure it was given:\n"
      "Vek: exception in a callback of RuntimeTest::SomeWatcher for attribute maxFlaps (260): "
      "broken\n");
  Vek::exceptionSinkIs(before);
}

TEST(ExceptionSinkIs, ReturnsTheSinkItReplaces) {
  int first = 0;
  int second = 0;
  Vek::ExceptionSink const before =
      Vek::exceptionSinkIs([&](Vek::CallbackFailure const&) { ++first; });
  Vek::ExceptionSink const replaced =
      Vek::exceptionSinkIs([&](Vek::CallbackFailure const&) { ++second; });
  report(broken);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);

  Vek::exceptionSinkIs(replaced);
  report(broken);
  EXPECT_EQ(first, 1);

  Vek::exceptionSinkIs(nullptr);
  EXPECT_NE(written([] { report(broken); }), "") << "an empty sink stands for the default";
  Vek::exceptionSinkIs(before);
}

TEST(ExceptionSinkIs, MayBeCalledByTheSinkItself) {
  auto const used = std::make_shared<int>(0);
  Vek::ExceptionSink const before = Vek::exceptionSinkIs([used](Vek::CallbackFailure const&) {
    Vek::exceptionSinkIs(nullptr);
    ++*used;  // the sink, and what it captured, lives until it returns
  });
  report(broken);
  EXPECT_EQ(*used, 1);
  EXPECT_EQ(used.use_count(), 1) << "and not longer";
  Vek::exceptionSinkIs(before);
}

// What there is no memory for is still said, in the words that need none. A text longer than any
// string fails in the same place as one for which there is no room, and is not looked at.
TEST(ReportCallbackException, WithoutMemorySaysSoAndTheNumber) {
  EXPECT_EQ(written([] {
              report(broken, {"x", std::numeric_limits<std::size_t>::max() / 2});
            }),
            "Vek: exception in a callback for attribute 260; no memory to say more\n");
}

}  // namespace
