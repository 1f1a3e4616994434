#include <gtest/gtest.h>
#include <locale>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"
#include "runtime/vek/Trace.h"

namespace {

using Vek::TraceHandle;
using Vek::TracePoint;
using Vek::TraceRecord;

/// Collects what the sink is given, one line each, while it lives.
class Traced {
 public:
  Traced()
      : previous_{Vek::traceSinkIs([this](TraceRecord const& record) {
          std::ostringstream line;
          line << record.facility << ' ' << record.level << (record.levelFlag ? '+' : '-') << ' '
               << record.file << ' ' << record.source << ':' << record.line << ' '
               << record.function << ' ' << record.message;
          lines_.push_back(line.str());
        })} {}
  ~Traced() { Vek::traceSinkIs(previous_); }
  Traced(Traced const&) = delete;
  Traced& operator=(Traced const&) = delete;

  std::vector<std::string> const& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  Vek::TraceSink previous_;
};

/// Installs a coverage stream while it lives.
class Coverage {
 public:
  Coverage() { Vek::coverageStream_ = &stream_; }
  ~Coverage() { Vek::coverageStream_ = nullptr; }
  Coverage(Coverage const&) = delete;
  Coverage& operator=(Coverage const&) = delete;

  std::string text() const { return stream_.str(); }

 private:
  std::ostringstream stream_;
};

/// A piece of a message that counts how often it is printed.
struct Costly {
  int& printed;
  friend std::ostream& operator<<(std::ostream& out, Costly const& piece) {
    ++piece.printed;
    return out << "costly";
  }
};

class Trace : public testing::Test {
 protected:
  TraceHandle facility_{"LinkFlap", false};
  TraceHandle::Registration const registered_{facility_};
  TracePoint const handler_{8, 312, "handleProfileList", "LinkFlapSm", facility_};
  TracePoint const decision_{2, 50, "declareErrDisable", "LinkFlapSm", facility_};
};

TEST_F(Trace, LevelsAreOffUntilTheyAreEnabledOneByOne) {
  EXPECT_STREQ(facility_.name(), "LinkFlap");
  EXPECT_FALSE(facility_.enabled());
  for (int level = 0; level < 10; ++level)
    EXPECT_FALSE(facility_.level(level));

  facility_.levelIs(8, true);
  facility_.levelIs(0, true);
  EXPECT_TRUE(facility_.enabled());
  EXPECT_TRUE(facility_.level(8));
  EXPECT_FALSE(facility_.level(2));
  facility_.levelIs(8, false);
  EXPECT_TRUE(facility_.enabled());
  facility_.levelIs(0, false);
  EXPECT_FALSE(facility_.enabled()) << "with its last level the facility goes off";
}

TEST_F(Trace, HandleMayBeginWithAllLevelsEnabled) {
  constinit static TraceHandle on{"On", true};
  EXPECT_TRUE(on.enabled());
  for (int level = 0; level < 10; ++level)
    EXPECT_TRUE(on.level(level));
}

TEST_F(Trace, LevelsOutsideOfZeroToNineAreRefused) {
  EXPECT_NO_THROW(facility_.levelIs(9, true));
  for (int level : {-1, 10, 1000}) {
    EXPECT_FALSE(facility_.level(level));
    try {
      facility_.levelIs(level, true);
      ADD_FAILURE() << "level " << level << " was accepted";
    } catch (Vek::RangeException const& exception) {
      EXPECT_STREQ(exception.what(), "trace level out of range");
    }
  }
}

// Deliberate: 2 for a trace point passed while the facility is enabled, 1 while it is not.
TEST_F(Trace, CountsTwoForAnEnabledFacilityAndOneForAnotherOne) {
  Traced const traced;
  EXPECT_EQ(facility_.hits(), 0U);
  handler_("a");
  decision_("b");
  EXPECT_EQ(facility_.hits(), 2U);

  facility_.levelIs(8, true);
  handler_("c");
  EXPECT_EQ(facility_.hits(), 4U);
  decision_("d");  // its level is off, its facility is not
  EXPECT_EQ(facility_.hits(), 6U);

  facility_.levelIs(8, false);
  handler_("e");
  EXPECT_EQ(facility_.hits(), 7U);
  EXPECT_EQ(traced.lines().size(), 1U);
}

TEST_F(Trace, CountsTheSameWithACoverageStream) {
  Coverage const coverage;
  handler_("a");
  EXPECT_EQ(facility_.hits(), 1U);
}

TEST_F(Trace, EnabledMessageReachesTheSinkWithItsPlace) {
  Traced const traced;
  facility_.levelIs(8, true);
  handler_("LinkFlapIntfSm( Ethernet1 )", "::handleProfileList(", Vek::String{"strict"}, ")");
  EXPECT_EQ(traced.lines(),
            (std::vector<std::string>{"LinkFlap 8+ <unknown> LinkFlapSm:312 handleProfileList "
                                      "LinkFlapIntfSm( Ethernet1 )::handleProfileList(strict)"}));
}

TEST_F(Trace, EachLevelSpeaksForItself) {
  Traced const traced;
  facility_.levelIs(2, true);
  handler_("not this");
  decision_("but this");
  EXPECT_EQ(
      traced.lines(),
      (std::vector<std::string>{"LinkFlap 2+ <unknown> LinkFlapSm:50 declareErrDisable but this"}));
}

TEST_F(Trace, NothingIsFormattedWhileTheLevelIsOff) {
  Traced const traced;
  int printed = 0;
  int computed = 0;
  auto const compute = [&computed] { return ++computed; };
  handler_(Costly{printed}, compute);
  facility_.levelIs(2, true);  // the facility is on, the level is not
  handler_(Costly{printed}, compute);
  EXPECT_EQ(printed, 0);
  EXPECT_EQ(computed, 0);

  facility_.levelIs(8, true);
  handler_(Costly{printed}, compute);
  EXPECT_EQ(printed, 1);
  EXPECT_EQ(computed, 1);
  ASSERT_EQ(traced.lines().size(), 1U);
  EXPECT_TRUE(traced.lines()[0].ends_with(" costly1"));
}

TEST_F(Trace, NumbersHaveTwelveDigits) {
  Traced const traced;
  facility_.levelIs(8, true);
  handler_(1.0 / 3, " ", 123456789.123456, " ", 6.0);
  ASSERT_EQ(traced.lines().size(), 1U);
  EXPECT_TRUE(traced.lines()[0].ends_with(" 0.333333333333 123456789.123 6")) << traced.lines()[0];
}

TEST_F(Trace, NumbersDoNotDependOnTheLocaleOfTheHost) {
  struct Grouped : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    char do_decimal_point() const override { return ','; }
  };
  Traced const traced;
  facility_.levelIs(8, true);
  std::locale const before = std::locale::global(std::locale{std::locale{}, new Grouped});
  handler_(1234567, " ", 1.5);
  std::locale::global(before);
  ASSERT_EQ(traced.lines().size(), 1U);
  EXPECT_TRUE(traced.lines()[0].ends_with(" 1234567 1.5")) << traced.lines()[0];
}

TEST_F(Trace, CoverageStreamGetsEveryMessageAndTheSinkOnlyEnabledOnes) {
  Traced const traced;
  Coverage const coverage;
  handler_("level off");
  EXPECT_EQ(coverage.text(), "LinkFlap 8 LinkFlapSm:312 handleProfileList level off\n");
  EXPECT_TRUE(traced.lines().empty());

  facility_.levelIs(8, true);
  handler_("level on");
  EXPECT_EQ(coverage.text(),
            "LinkFlap 8 LinkFlapSm:312 handleProfileList level off\n"
            "LinkFlap 8 LinkFlapSm:312 handleProfileList level on\n");
  EXPECT_EQ(traced.lines().size(), 1U);
}

TEST_F(Trace, HelperGivesTheSinkNoMessageOfADisabledLevel) {
  Traced const traced;
  std::stringstream message{"text"};
  Vek::traceHelper(facility_, "file", message, 8, false, "Source", 1, "function");
  EXPECT_TRUE(traced.lines().empty());
  std::stringstream other{"text"};
  Vek::traceHelper(facility_, "file", other, 8, true, "Source", 1, "function");
  EXPECT_EQ(traced.lines(), (std::vector<std::string>{"LinkFlap 8+ file Source:1 function text"}));
}

TEST_F(Trace, WritesToStandardErrorByDefault) {
  facility_.levelIs(2, true);
  Vek::TraceSink const before = Vek::traceSinkIs(nullptr);
  testing::internal::CaptureStderr();
  decision_("down");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "LinkFlap 2 LinkFlapSm:50 declareErrDisable: down\n");
  Vek::traceSinkIs(before);
}

TEST_F(Trace, ExceptionOfTheSinkOrOfAPieceIsDropped) {
  facility_.levelIs(8, true);
  {
    Vek::TraceSink const before = Vek::traceSinkIs([](TraceRecord const&) { throw 7; });
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(handler_("a"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Vek: a trace message was lost\n");
    Vek::traceSinkIs(before);
  }
  Traced const traced;
  testing::internal::CaptureStderr();
  EXPECT_NO_THROW(handler_("a", []() -> int { throw 7; }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Vek: a trace message was lost\n");
  EXPECT_TRUE(traced.lines().empty());
}

TEST_F(Trace, SinkMayReplaceItself) {
  facility_.levelIs(8, true);
  auto const used = std::make_shared<int>(0);
  Traced const traced;
  Vek::TraceSink const outer = Vek::traceSinkIs(nullptr);
  Vek::traceSinkIs([used, outer](TraceRecord const&) {
    Vek::traceSinkIs(outer);
    ++*used;  // the sink, and what it captured, lives until it returns
  });
  handler_("first");
  handler_("second");
  EXPECT_EQ(*used, 1);
  ASSERT_EQ(traced.lines().size(), 1U);
  EXPECT_TRUE(traced.lines()[0].ends_with(" second"));
  EXPECT_EQ(used.use_count(), 1);
}

TEST_F(Trace, TracePointMayBePassedInsideOfAPiece) {
  Traced const traced;
  facility_.levelIs(8, true);
  handler_("outer ", [this] {
    handler_("inner");
    return "end";
  });
  ASSERT_EQ(traced.lines().size(), 2U);
  EXPECT_TRUE(traced.lines()[0].ends_with(" inner"));
  EXPECT_TRUE(traced.lines()[1].ends_with(" outer end"));
}

TEST(TraceRegistration, UnderACoverageStreamIsHeardFromTheStart) {
  Coverage const coverage;
  TraceHandle facility{"Late", false};
  TraceHandle::Registration const registered{facility};
  EXPECT_TRUE(facility.active());
  facility.levelIs(8, true);
  facility.levelIs(8, false);
  EXPECT_TRUE(facility.active()) << "the stream is there still";
  TracePoint const point{8, 1, "function", "Source", facility};
  point("said");
  EXPECT_NE(coverage.text().find("said"), std::string::npos);
}

TEST(TraceRegistration, EndsInWhateverOrder) {
  TraceHandle first{"First", false};
  TraceHandle second{"Second", false};
  auto older = std::make_unique<TraceHandle::Registration>(first);
  TraceHandle::Registration const newer{second};
  older = nullptr;
  Coverage const coverage;
  EXPECT_FALSE(first.active()) << "it has left";
  EXPECT_TRUE(second.active());
}

}  // namespace
