#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>

#include "agent/Options.h"

namespace {

using LinkFlapd::Options;
using LinkFlapd::UsageError;

Options parse(std::initializer_list<char const*> arguments) {
  return LinkFlapd::parseOptions({arguments.begin(), arguments.size()});
}

std::string complaintAbout(std::initializer_list<char const*> arguments) {
  try {
    parse(arguments);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "no complaint";
}

TEST(Options, WithoutArgumentsMonitorsAllPhysicalPorts) {
  Options const options = parse({});
  EXPECT_EQ(options.action, Options::Action::run);
  EXPECT_EQ(options.maxFlaps, 5U);
  EXPECT_EQ(options.interval, 10.0);
  EXPECT_FALSE(options.enforce);
  EXPECT_EQ(options.traceLevel, 0);
  EXPECT_FALSE(options.receiveBuffer);
  EXPECT_TRUE(options.patterns.empty());
}

TEST(Options, TakesValuesFromTheNextArgumentOrBehindAnEqualsSign) {
  for (Options const& options :
       {parse({"--max-flaps", "3", "--interval", "60", "--trace", "8", "--receive-buffer", "4096"}),
        parse({"--max-flaps=3", "--interval=60", "--trace=8", "--receive-buffer=4096"})}) {
    EXPECT_EQ(options.maxFlaps, 3U);
    EXPECT_EQ(options.interval, 60.0);
    EXPECT_EQ(options.traceLevel, 8);
    EXPECT_EQ(options.receiveBuffer, 4096);
  }
}

TEST(Options, TakesWhatIsNoOptionForAPattern) {
  Options const options = parse({"et1", "--enforce", "sw*p?", "-", "--", "--odd-name"});
  EXPECT_TRUE(options.enforce);
  EXPECT_EQ(options.patterns, (std::vector<std::string>{"et1", "sw*p?", "-", "--odd-name"}));
}

TEST(Options, TakesTheLastOfSeveralValues) {
  EXPECT_EQ(parse({"--max-flaps", "3", "--max-flaps", "4"}).maxFlaps, 4U);
}

TEST(Options, TakesTheBoundsOfItsNumbers) {
  EXPECT_EQ(parse({"--max-flaps", "0"}).maxFlaps, 0U);
  EXPECT_EQ(parse({"--max-flaps", "4294967295"}).maxFlaps, std::numeric_limits<unsigned>::max());
  EXPECT_EQ(parse({"--interval", "1"}).interval, 1.0);
  EXPECT_EQ(parse({"--interval", "4294967295"}).interval, 4294967295.0);
  EXPECT_EQ(parse({"--interval", "2.5"}).interval, 2.5);
  EXPECT_EQ(parse({"--receive-buffer", "1"}).receiveBuffer, 1);
}

TEST(Options, AsksForHelpOrVersion) {
  EXPECT_EQ(parse({"--help"}).action, Options::Action::help);
  EXPECT_EQ(parse({"--version"}).action, Options::Action::version);
}

TEST(Options, NamesTheArgumentAtFault) {
  EXPECT_EQ(complaintAbout({"--max-flaps", "many"}),
            "--max-flaps: 'many' is not a whole number from 0 to 4294967295");
  EXPECT_EQ(complaintAbout({"--max-flaps", "4294967296"}),
            "--max-flaps: '4294967296' is not a whole number from 0 to 4294967295");
  EXPECT_EQ(complaintAbout({"--max-flaps=-1"}),
            "--max-flaps: '-1' is not a whole number from 0 to 4294967295");
  EXPECT_EQ(complaintAbout({"--max-flaps", "3x"}),
            "--max-flaps: '3x' is not a whole number from 0 to 4294967295");
  EXPECT_EQ(complaintAbout({"--max-flaps="}),
            "--max-flaps: '' is not a whole number from 0 to 4294967295");
  EXPECT_EQ(complaintAbout({"--dump-as", "xml"}), "--dump-as: 'xml' is not text or json");
  EXPECT_EQ(complaintAbout({"--trace", "7"}),
            "--trace: '7' is not a trace level; the levels are 2 (decisions) and 8 (everything)");
  EXPECT_EQ(complaintAbout({"--receive-buffer", "0"}),
            "--receive-buffer: '0' is not a whole number from 1 to 1073741824");
  EXPECT_EQ(complaintAbout({"--shut"}), "unknown option '--shut'");
  EXPECT_EQ(complaintAbout({"-x"}), "unknown option '-x'");
  EXPECT_EQ(complaintAbout({"--interval"}), "--interval: its value is missing");
  EXPECT_EQ(complaintAbout({"--enforce=yes"}), "--enforce takes no value");
  EXPECT_EQ(complaintAbout({""}), "'' is not an interface name or pattern");
  EXPECT_EQ(complaintAbout({"an-overlong-name"}),
            "'an-overlong-name' is not an interface name: it has more than 15 characters");
  EXPECT_EQ(complaintAbout({"--enforce", "--monitor-only"}),
            "--monitor-only: --monitor-only and --enforce exclude each other");
}

TEST(Options, RefusesIntervalsThatTheLibraryWouldReadDifferently) {
  for (char const* const interval : {"0", "0.99", "-5", "nan", "inf", "4294967296", "1e10", "ten"})
    EXPECT_EQ(complaintAbout({"--interval", interval}),
              std::string{"--interval: '"} + interval +
                  "' is not a number of seconds from 1 to 4294967295");
}

TEST(Options, LetsAGlobBeLongerThanAName) {
  EXPECT_EQ(parse({"[abcdefghijklmnop]*"}).patterns.size(), 1U);
}

TEST(Options, HelpNamesEveryOption) {
  std::string const help = LinkFlapd::usageText();
  for (char const* const option : {"--max-flaps", "--interval", "--monitor-only", "--enforce",
                                   "--trace", "--receive-buffer", "--help", "--version"})
    EXPECT_NE(help.find(option), std::string::npos) << option;
}

}  // namespace
