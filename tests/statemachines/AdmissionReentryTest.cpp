#include <gtest/gtest.h>
#include <optional>
#include <string_view>

#include "runtime/vek/Trace.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// What was decided before a machine was made may be void when it is complete: whoever hears of its
// making (here: reads its trace) may have changed the inputs.

namespace {

Tarn::IntfId const ethernet1{"Ethernet1"};

TEST(AdmissionReentry, AMachineWhoseCauseIsSwitchedOffWhileItIsMadeIsWithdrawn) {
  Switch sw;
  sw.addPhyConfig(ethernet1);
  sw.start();
  int made = 0;
  auto const before = Vek::traceSinkIs([&](Vek::TraceRecord const& record) {
    if (record.message.find("LinkFlapIntfSm( Ethernet1 )::handleInitialized") !=
        std::string_view::npos) {
      ++made;
      sw.errdisableConfig->disabledIs("link-flap", true);
    }
  });
  sw.causeStatus->intfStatusIs(ethernet1, 5);
  sw.addStatus(ethernet1);
  Vek::traceSinkIs(before);
  EXPECT_EQ(made, 1);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  // Switched on again, it is admitted.
  sw.errdisableConfig->disabledIs("link-flap", false);
  EXPECT_NE(sw.intfSm(ethernet1), nullptr);
}

}  // namespace
