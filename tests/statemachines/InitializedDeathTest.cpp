#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// Every handler asserts that its machine is initialised, the initialising ones that it is not yet.
// The whole text is compared: source, line, signature, expression. (The assertion of
// manageProfileSm stands with the selection of profiles.)

namespace {

using testing::Eq;
using testing::KilledBySignal;

Tarn::IntfId const ethernet1{"Ethernet1"};

std::string failure(int line, std::string const& signature, std::string const& expression) {
  return "LinkFlapSm:" + std::to_string(line) + ": " + signature + ": Assertion `" + expression +
         "' failed.\n";
}

class LinkFlapSmDeathTest : public testing::Test {
 protected:
  LinkFlapSmDeathTest() { sw_.start(); }

  LinkFlap::LinkFlapSm& uninitialized() {
    sw_.machine().initializedIs(false);
    return sw_.machine();
  }

  Switch sw_;
};

TEST_F(LinkFlapSmDeathTest, HandleInitializedRunsOnce) {
  EXPECT_EXIT(sw_.machine().handleInitialized(), KilledBySignal(SIGABRT),
              Eq(failure(460, "void LinkFlap::LinkFlapSm::handleInitialized()", "!initialized()")));
}

TEST_F(LinkFlapSmDeathTest, HandleIntfNeedsAnInitialisedMachine) {
  EXPECT_EXIT(
      uninitialized().handleIntf(ethernet1), KilledBySignal(SIGABRT),
      Eq(failure(402, "void LinkFlap::LinkFlapSm::handleIntf(Tarn::IntfId)", "initialized()")));
}

TEST_F(LinkFlapSmDeathTest, HandleProfileConfigNeedsAnInitialisedMachine) {
  EXPECT_EXIT(uninitialized().handleProfileConfig("p1"), KilledBySignal(SIGABRT),
              Eq(failure(344, "void LinkFlap::LinkFlapSm::handleProfileConfig(Vek::String)",
                         "initialized()")));
}

TEST_F(LinkFlapSmDeathTest, HandleDefaultProfileListNeedsAnInitialisedMachine) {
  EXPECT_EXIT(uninitialized().handleDefaultProfileList("p1"), KilledBySignal(SIGABRT),
              Eq(failure(372, "void LinkFlap::LinkFlapSm::handleDefaultProfileList(Vek::String)",
                         "initialized()")));
}

TEST_F(LinkFlapSmDeathTest, HandleDisabledNeedsAnInitialisedMachine) {
  EXPECT_EXIT(
      uninitialized().handleDisabled("other"), KilledBySignal(SIGABRT),
      Eq(failure(445, "void LinkFlap::LinkFlapSm::handleDisabled(Vek::String)", "initialized()")));
}

class LinkFlapIntfSmAssertionDeathTest : public testing::Test {
 protected:
  LinkFlapIntfSmAssertionDeathTest() {
    sw_.addInterface(ethernet1);
    sw_.settingsIs(ethernet1, true);
    sw_.start();
  }

  LinkFlap::LinkFlapIntfSm& uninitialized() {
    sw_.intfSm(ethernet1)->initializedIs(false);
    return *sw_.intfSm(ethernet1);
  }

  Switch sw_;
};

TEST_F(LinkFlapIntfSmAssertionDeathTest, HandleInitializedRunsOnce) {
  EXPECT_EXIT(
      sw_.intfSm(ethernet1)->handleInitialized(), KilledBySignal(SIGABRT),
      Eq(failure(300, "void LinkFlap::LinkFlapIntfSm::handleInitialized()", "!initialized()")));
}

TEST_F(LinkFlapIntfSmAssertionDeathTest, HandleLinkFlapValuesNeedsAnInitialisedMachine) {
  EXPECT_EXIT(
      uninitialized().handleLinkFlapValues(), KilledBySignal(SIGABRT),
      Eq(failure(284, "void LinkFlap::LinkFlapIntfSm::handleLinkFlapValues()", "initialized()")));
}

TEST_F(LinkFlapIntfSmAssertionDeathTest, HandleProfileListNeedsAnInitialisedMachine) {
  EXPECT_EXIT(uninitialized().handleProfileList("p1"), KilledBySignal(SIGABRT),
              Eq(failure(313, "void LinkFlap::LinkFlapIntfSm::handleProfileList(Vek::String)",
                         "initialized()")));
}

TEST_F(LinkFlapIntfSmAssertionDeathTest, HandleIntfConfigEnabledNeedsAnInitialisedMachine) {
  EXPECT_EXIT(
      uninitialized().handleIntfConfigEnabled(ethernet1), KilledBySignal(SIGABRT),
      Eq(failure(322, "void LinkFlap::LinkFlapIntfSm::handleIntfConfigEnabled(Tarn::IntfId)",
                 "initialized()")));
}

// Through a reactor: an assertion is no exception, the runtime does not contain it.
TEST_F(LinkFlapIntfSmAssertionDeathTest, EndsTheProcessAlsoInsideANotification) {
  EXPECT_EXIT(
      {
        uninitialized();
        sw_.config->maxFlapsIs(77);
      },
      KilledBySignal(SIGABRT),
      Eq(failure(284, "void LinkFlap::LinkFlapIntfSm::handleLinkFlapValues()", "initialized()")));
}

class LinkFlapProfileSmDeathTest : public testing::Test {
 protected:
  LinkFlapProfileSmDeathTest() {
    sw_.addInterface(ethernet1);
    sw_.start();
  }

  LinkFlap::LinkFlapProfileSm& sm() { return *sw_.profileSm(ethernet1, "default"); }
  LinkFlap::LinkFlapProfileSm& uninitialized() {
    sm().initializedIs(false);
    return sm();
  }

  Switch sw_;
};

TEST_F(LinkFlapProfileSmDeathTest, HandleInitializedRunsOnce) {
  EXPECT_EXIT(
      sm().handleInitialized(), KilledBySignal(SIGABRT),
      Eq(failure(188, "void LinkFlap::LinkFlapProfileSm::handleInitialized()", "!initialized()")));
}

TEST_F(LinkFlapProfileSmDeathTest, HandleProfileValuesNeedsAnInitialisedMachine) {
  EXPECT_EXIT(uninitialized().handleProfileValues("p1", ethernet1), KilledBySignal(SIGABRT),
              Eq(failure(177,
                         "void LinkFlap::LinkFlapProfileSm::handleProfileValues(Vek::String, "
                         "Tarn::IntfId)",
                         "initialized()")));
}

// Asserted before the link status is looked at: it is not 1 here.
TEST_F(LinkFlapProfileSmDeathTest, HandleLinkStatusNeedsAnInitialisedMachine) {
  EXPECT_EXIT(
      uninitialized().handleLinkStatus(), KilledBySignal(SIGABRT),
      Eq(failure(106, "void LinkFlap::LinkFlapProfileSm::handleLinkStatus()", "initialized()")));
}

// The trace line of a handler stands before its assertion.
TEST_F(LinkFlapProfileSmDeathTest, TracesBeforeItAsserts) {
  Vek::traceSinkIs([](Vek::TraceRecord const& record) {
    std::fprintf(stderr, "%.*s at %d\n", static_cast<int>(record.function.size()),
                 record.function.data(), record.line);
  });
  EXPECT_EXIT(
      uninitialized().handleLinkStatus(), KilledBySignal(SIGABRT),
      Eq("handleLinkStatus at 104\n" +
         failure(106, "void LinkFlap::LinkFlapProfileSm::handleLinkStatus()", "initialized()")));
}

}  // namespace
