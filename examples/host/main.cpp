// The smallest host of the library: it publishes one interface, installs link-flap detection, plays
// the driver of a bad link, and hears that the interface was err-disabled.

#include <cstdio>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

namespace {

/// What a host does about an err-disable; a real one would shut the port.
class PortControl final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  void onIntfStatus(Tarn::IntfId id) override {
    auto const causeStatus = watched();
    if (causeStatus->intfStatus().has(id))
      std::printf("%s err-disabled at %g s\n", id.name().charPtr(), causeStatus->intfStatus(id));
    else
      std::printf("%s enabled again\n", id.name().charPtr());
  }
};

}  // namespace

int main() {
  Vek::ManualClock clock;  // without this the library reads the system's monotonic clock

  // The state that the library reads, and the one object that it writes.
  auto const activity = Vek::make<Vek::ActivityConfig>();
  auto const configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
  auto const statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  auto const errdisableConfig = Vek::make<Errdisable::Config>();
  auto const config = Vek::make<LinkFlap::Config>();
  auto const causeStatus = Vek::make<Errdisable::CauseStatus>();
  config->maxFlapsIs(3);
  config->intervalIs(10);

  auto const portControl = Vek::make<PortControl>();
  portControl->notifierIs(causeStatus);
  portControl->isRegisteredNotifieeIs(true);

  auto const root = LinkFlap::rootFactory("example");
  root->linkFlapSmIs(activity, configDir, statusDir, errdisableConfig, config, causeStatus,
                     "link-flap");

  // An interface: its configuration first, so that it is never seen without one.
  Tarn::IntfId const ethernet1{"Ethernet1"};
  configDir->newIntfConfig(ethernet1);
  auto const status = statusDir->newIntfStatus(ethernet1);

  // Four returns to up within ten seconds; three are allowed.
  for (int flap = 0; flap < 4; ++flap) {
    clock.secondsIs(2.0 * flap);
    status->rawLinkStatusIs(Interface::RawLinkStatus::down);
    status->rawLinkStatusIs(Interface::RawLinkStatus::up);
  }

  // The operator takes the interface out of detection: the record is withdrawn.
  config->newIntfConfig(ethernet1);  // its `enabled` is false until set
  root->linkFlapSmDel();
  return causeStatus->intfStatus().empty() ? 0 : 1;
}
