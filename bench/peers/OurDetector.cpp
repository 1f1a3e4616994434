#include "bench/peers/OurDetector.h"

#include <string>

namespace Bench {

namespace {

/// Names of that many profiles, in the order in which an interface's machines are made for them:
/// two profiles that would err-disable by the same flap are asked in this order, and the peers ask
/// theirs in the order of the setup.
std::vector<Vek::String> profileNames(std::size_t count) {
  auto const config = Vek::make<LinkFlap::Config>();
  for (std::size_t i = 0; i < count; ++i)
    config->defaultProfileListIs(Vek::String{"profile" + std::to_string(i)}, true);
  std::vector<Vek::String> names;
  for (auto const& member : config->defaultProfileList())
    names.push_back(member.key());
  return names;
}

void valuesAre(LinkFlap::ProfileConfig& profile, Limits const& limits) {
  profile.maxFlapsIs(limits.maxFlaps);
  profile.intervalIs(limits.interval);
  profile.violationsIs(limits.violations);
  profile.trackedIntervalsIs(limits.trackedIntervals);
}

}  // namespace

OurDetector::OurDetector(Setup const& setup, ClockFunction clock)
    : activity_{Vek::make<Vek::ActivityConfig>()},
      configDir_{Vek::make<Interface::AllEthPhyIntfConfigDir>()},
      statusDir_{Vek::make<Interface::AllEthPhyIntfStatusDir>()},
      errdisableConfig_{Vek::make<Errdisable::Config>()},
      config_{Vek::make<LinkFlap::Config>()},
      causeStatus_{Vek::make<Errdisable::CauseStatus>()},
      profileNames_{profileNames(setup.profiles.size())},
      root_{LinkFlap::rootFactory("bench")} {
  Vek::clockSourceIs(clock);
  for (std::size_t i = 0; i < setup.profiles.size(); ++i) {
    auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{profileNames_[i]});
    valuesAre(*profile, setup.profiles[i]);
    config_->profileConfigIs(profileNames_[i], profile);
    config_->defaultProfileListIs(profileNames_[i], true);
    profiles_.push_back(profile);
  }
  root_->linkFlapSmIs(activity_, configDir_, statusDir_, errdisableConfig_, config_, causeStatus_,
                      "link-flap");
  statuses_.reserve(setup.interfaces);
  configs_.reserve(setup.interfaces);
  for (std::size_t i = 0; i < setup.interfaces; ++i) {
    Tarn::IntfId const id{interfaceName(i).c_str()};
    configs_.push_back(Vek::make<Interface::EthPhyIntfConfig>(id));
    configDir_->intfConfigIs(id, configs_.back());
    statuses_.push_back(statusDir_->newIntfStatus(id));
  }
}

OurDetector::~OurDetector() {
  root_->linkFlapSmDel();
}

void OurDetector::configInProgressIs(Handle const& port, bool on) {
  auto const config = configDir_->intfConfig(port->intfId());
  for (auto const& object : configs_)
    if (object == config)
      object->phyConfigStateIs(on ? Interface::PhyConfigState::inProgress
                                  : Interface::PhyConfigState::configured);
}

void OurDetector::profileIs(std::size_t profile, Limits const& limits) {
  valuesAre(*profiles_[profile], limits);
}

std::optional<double> OurDetector::errDisabledAt(Handle const& port) const {
  double const* const time = causeStatus_->intfStatus().find(port->intfId());
  return time == nullptr ? std::nullopt : std::optional{*time};
}

Counted OurDetector::counted(std::size_t index, std::size_t profile) const {
  auto const sm = root_->linkFlapSm()
                      ->linkFlapIntfSm(statuses_[index]->intfId())
                      ->linkFlapProfileSm(profileNames_[profile]);
  return {sm->curFlaps(), sm->curIntervals(), sm->curViolations(), sm->linkFlapTimeStamp().count()};
}

}  // namespace Bench
