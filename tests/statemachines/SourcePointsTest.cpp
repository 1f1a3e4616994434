#include <gtest/gtest.h>
#include <set>

#include "statemachines/SourcePoints.h"

// The trace points and assertions a second time, typed apart from statemachines/SourcePoints.h:
// tools filter and count by these numbers and names.

namespace {

namespace Trace = LinkFlap::Trace;
namespace Assert = LinkFlap::Assert;

struct ExpectedPoint {
  Vek::TracePoint const* point;
  char const* function;
  int level;
  int line;
};

ExpectedPoint const kPoints[]{
    {&Trace::linkFlapProfileSmHandleInitialized, "handleInitialized", 8, 187},
    {&Trace::deleteLinkFlapIntfSm, "deleteLinkFlapIntfSm", 8, 387},
    {&Trace::evaluateErrDisable, "evaluateErrDisable", 8, 76},
    {&Trace::evaluateErrDisableFlapCounted, "evaluateErrDisable", 8, 80},
    {&Trace::evaluateErrDisableNewInterval, "evaluateErrDisable", 8, 87},
    {&Trace::evaluateErrDisableLimit, "evaluateErrDisable", 8, 90},
    {&Trace::declareErrDisable, "declareErrDisable", 2, 50},
    {&Trace::logTimeStampsTitle, "logTimeStamps", 2, 21},
    {&Trace::logTimeStampsTime, "logTimeStamps", 2, 28},
    {&Trace::logTimeStampsEllipsis, "logTimeStamps", 2, 32},
    {&Trace::logTimeStampsNewest, "logTimeStamps", 2, 33},
    {&Trace::handleProfileValues, "handleProfileValues", 8, 176},
    {&Trace::handleLinkFlapValues, "handleLinkFlapValues", 8, 283},
    {&Trace::manageProfileSm, "manageProfileSm", 8, 208},
    {&Trace::handleProfileList, "handleProfileList", 8, 312},
    {&Trace::linkFlapIntfSmHandleInitialized, "handleInitialized", 8, 299},
    {&Trace::handleIntfConfigEnabled, "handleIntfConfigEnabled", 8, 321},
    {&Trace::handleProfileConfig, "handleProfileConfig", 8, 343},
    {&Trace::handleDefaultProfileList, "handleDefaultProfileList", 8, 371},
    {&Trace::handleIntf, "handleIntf", 8, 401},
    {&Trace::handleDisabled, "handleDisabled", 8, 444},
    {&Trace::linkFlapSmHandleInitialized, "handleInitialized", 8, 459},
    {&Trace::handleLinkStatus, "handleLinkStatus", 8, 104},
};

TEST(SourcePoints, TracePointsStandWhereToolsExpectThem) {
  for (ExpectedPoint const& expected : kPoints) {
    SCOPED_TRACE(expected.line);
    EXPECT_STREQ(expected.point->function, expected.function);
    EXPECT_EQ(expected.point->level, expected.level);
    EXPECT_EQ(expected.point->line, expected.line);
    EXPECT_STREQ(expected.point->source, "LinkFlapSm");
    EXPECT_EQ(&expected.point->facility, &LinkFlap::traceHandle());
  }
}

TEST(SourcePoints, ThereAreTwentyThreeTracePointsNoTwoOnOneLine) {
  std::set<int> lines;
  for (ExpectedPoint const& expected : kPoints)
    lines.insert(expected.point->line);
  EXPECT_EQ(lines.size(), 23U);
}

TEST(SourcePoints, TheFacilityIsNamedAfterTheLibraryAndDisabledAtFirst) {
  EXPECT_STREQ(LinkFlap::traceHandle().name(), "LinkFlap");
  EXPECT_FALSE(LinkFlap::traceHandle().enabled());
}

struct ExpectedAssertion {
  Vek::Assertion const* assertion;
  int line;
  char const* expression;
  char const* function;
};

ExpectedAssertion const kAssertions[]{
    {&Assert::handleLinkStatus, 106, "initialized()",
     "void LinkFlap::LinkFlapProfileSm::handleLinkStatus()"},
    {&Assert::handleProfileValues, 177, "initialized()",
     "void LinkFlap::LinkFlapProfileSm::handleProfileValues(Vek::String, Tarn::IntfId)"},
    {&Assert::linkFlapProfileSmHandleInitialized, 188, "!initialized()",
     "void LinkFlap::LinkFlapProfileSm::handleInitialized()"},
    {&Assert::manageProfileSm, 210, "sm",
     "void LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr)"},
    {&Assert::handleLinkFlapValues, 284, "initialized()",
     "void LinkFlap::LinkFlapIntfSm::handleLinkFlapValues()"},
    {&Assert::linkFlapIntfSmHandleInitialized, 300, "!initialized()",
     "void LinkFlap::LinkFlapIntfSm::handleInitialized()"},
    {&Assert::handleProfileList, 313, "initialized()",
     "void LinkFlap::LinkFlapIntfSm::handleProfileList(Vek::String)"},
    {&Assert::handleIntfConfigEnabled, 322, "initialized()",
     "void LinkFlap::LinkFlapIntfSm::handleIntfConfigEnabled(Tarn::IntfId)"},
    // No line is fixed for the rest: each follows its trace point.
    {&Assert::handleProfileConfig, 344, "initialized()",
     "void LinkFlap::LinkFlapSm::handleProfileConfig(Vek::String)"},
    {&Assert::handleDefaultProfileList, 372, "initialized()",
     "void LinkFlap::LinkFlapSm::handleDefaultProfileList(Vek::String)"},
    {&Assert::handleIntf, 402, "initialized()",
     "void LinkFlap::LinkFlapSm::handleIntf(Tarn::IntfId)"},
    {&Assert::handleDisabled, 445, "initialized()",
     "void LinkFlap::LinkFlapSm::handleDisabled(Vek::String)"},
    {&Assert::linkFlapSmHandleInitialized, 460, "!initialized()",
     "void LinkFlap::LinkFlapSm::handleInitialized()"},
};

TEST(SourcePoints, AssertionsNameTheirPlace) {
  for (ExpectedAssertion const& expected : kAssertions) {
    SCOPED_TRACE(expected.line);
    EXPECT_EQ(expected.assertion->line, expected.line);
    EXPECT_STREQ(expected.assertion->expression, expected.expression);
    EXPECT_STREQ(expected.assertion->function, expected.function);
    EXPECT_STREQ(expected.assertion->source, "LinkFlapSm");
  }
}

TEST(SourcePoints, ThereAreThirteenAssertionsNoTwoOnOneLine) {
  std::set<int> lines;
  for (ExpectedAssertion const& expected : kAssertions)
    lines.insert(expected.assertion->line);
  EXPECT_EQ(lines.size(), 13U);
}

}  // namespace
