#pragma once

#include <gtest/gtest.h>

#include "runtime/tarn/IntfId.h"

#include "tests/agent/support/Kernel.h"

/// A host that has just started on one healthy port, `et1`, which gained carrier 10 times before.
class HealthyPort : public testing::Test {
 protected:
  HealthyPort() {
    kernel.dumps({{.count = 10}});
    kernel.recorder.take();
  }

  bool inProgress() const {
    return kernel.publisher.configDir()->intfConfig(Tarn::IntfId{"et1"})->phyConfigState() ==
           Interface::PhyConfigState::inProgress;
  }
  bool linkUp() const {
    return kernel.publisher.statusDir()->intfStatus(Tarn::IntfId{"et1"})->rawLinkStatus() ==
           Interface::RawLinkStatus::up;
  }
  unsigned flaps() const { return kernel.recorder.flaps("et1"); }

  Kernel kernel;
};
