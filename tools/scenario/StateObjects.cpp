#include "tools/scenario/StateObjects.h"

namespace Scenario {

Vek::Ptr<LinkFlap::Config> configOf(ConfigValues const& values) {
  auto config = Vek::make<LinkFlap::Config>();
  config->maxFlapsIs(values.maxFlaps);
  config->intervalIs(values.interval);
  return config;
}

Vek::Ptr<LinkFlap::IntfConfig> intfConfigOf(Tarn::IntfId const& intf, IntfValues const& values) {
  auto config = Vek::make<LinkFlap::IntfConfig>(Vek::Name{intf.name()});
  config->enabledIs(values.enabled);
  for (auto const& member : values.profileList)
    config->profileListIs(member.name, member.on);
  return config;
}

Vek::Ptr<LinkFlap::ProfileConfig> profileConfigOf(Vek::String const& name,
                                                  ProfileValues const& values) {
  auto config = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{name});
  config->maxFlapsIs(values.maxFlaps);
  config->intervalIs(values.interval);
  config->violationsIs(values.violations);
  config->trackedIntervalsIs(values.trackedIntervals);
  return config;
}

Vek::Ptr<Interface::EthPhyIntfConfig> phyConfigOf(Tarn::IntfId const& intf, std::uint32_t state) {
  auto config = Vek::make<Interface::EthPhyIntfConfig>(intf);
  config->phyConfigStateIs(static_cast<Interface::PhyConfigState>(state));
  return config;
}

Vek::Ptr<Interface::EthPhyIntfStatus> statusOf(Tarn::IntfId const& intf, std::uint32_t rawStatus) {
  auto status = Vek::make<Interface::EthPhyIntfStatus>(intf);
  status->rawLinkStatusIs(static_cast<Interface::RawLinkStatus>(rawStatus));
  return status;
}

// In braces, the members are read from left to right.

ConfigValues Argument<ConfigValues>::read(Words& words) {
  return {Argument<std::uint32_t>::read(words), Argument<double>::read(words)};
}

ProfileValues Argument<ProfileValues>::read(Words& words) {
  return {Argument<std::uint32_t>::read(words), Argument<double>::read(words),
          Argument<std::uint32_t>::read(words), Argument<std::uint32_t>::read(words)};
}

ListMember Argument<ListMember>::read(Words& words) {
  constexpr std::string_view kExpected{"NAME=0 or NAME=1"};
  auto const word = words.take(kExpected);
  auto const equals = word.find('=');
  if (equals == std::string_view::npos) words.refuse(kExpected);
  auto const name = word.substr(0, equals);
  auto const value = word.substr(equals + 1);
  if (!isName(name) || (value != "0" && value != "1")) words.refuse(kExpected);
  return {Vek::String{name}, value == "1"};
}

IntfValues Argument<IntfValues>::read(Words& words) {
  return {Argument<bool>::read(words), Argument<std::vector<ListMember>>::read(words)};
}

}  // namespace Scenario
