#pragma once

#include "runtime/model/StateTypes.h"
#include "runtime/vek/Clock.h"
#include "runtime/vek/ObjectPath.h"

#include "statemachines/LinkFlapSm.h"

namespace Fuzz {

/// A switch with a few interfaces and profiles, whose objects paths can name. Made once; what is
/// fuzzed only reads it.
struct SmallTree {
  Vek::ManualClock clock;
  Vek::Ptr<Vek::ActivityConfig> activity{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir{
      Vek::make<Interface::AllEthPhyIntfConfigDir>()};
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir{
      Vek::make<Interface::AllEthPhyIntfStatusDir>()};
  Vek::Ptr<Errdisable::Config> errdisable{Vek::make<Errdisable::Config>()};
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> cause{Vek::make<Errdisable::CauseStatus>()};
  LinkFlap::Root::Ptr root{LinkFlap::rootFactory("r")};

  /// Short names: every byte of one must be guessed.
  SmallTree() {
    for (char const* const profile : {"p", "a b", "\"", "]"}) {
      config->newProfileConfig(profile);
      config->defaultProfileListIs(profile, true);
    }
    for (char const* const name : {"e", "e/1", "", "[\\]"}) {
      Tarn::IntfId const id{name};
      configDir->newIntfConfig(id);
      statusDir->newIntfStatus(id);
    }
    config->newIntfConfig(Tarn::IntfId{"e"})->enabledIs(true);
    (void)root->linkFlapSmIs(activity, configDir, statusDir, errdisable, config, cause,
                             "link-flap");
    clock.secondsIs(1);
    auto const status = statusDir->intfStatus(Tarn::IntfId{"e"});
    const_cast<Interface::EthPhyIntfStatus&>(*status).rawLinkStatusIs(Interface::RawLinkStatus::up);
    auto& paths = Vek::PathRoots::global();
    paths.rootIs("r", root);
    paths.rootIs("c", config);
    paths.rootIs("s", statusDir);
    paths.rootIs("x y", errdisable);
  }

  static SmallTree& instance() {
    static auto* const tree = new SmallTree;
    return *tree;
  }
};

}  // namespace Fuzz
