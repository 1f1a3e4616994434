#include "runtime/model/StateTypes.h"
#include "runtime/vek/TypeDefinition.h"

#include "introspection/Types.h"

namespace LinkFlap {

void defineLinkFlapIntfSm(Vek::IntrospectionReactor& reactor, LinkFlapIntfSm::_Type& type) {
  using Sm = LinkFlapIntfSm;
  using Vek::AttrKind;
  // The overloads of the collection's name that are meant.
  constexpr auto kMachines =
      static_cast<Sm::ProfileSms const& (Sm::*)() const noexcept>(&Sm::linkFlapProfileSm);
  constexpr auto kDel =
      static_cast<LinkFlapProfileSm::Ptr (Sm::*)(Vek::String const&)>(&Sm::linkFlapProfileSmDel);

  // clang-format off
  Vek::TypeDefinition<Sm> sm{reactor, type};
  sm.value<&Sm::vekFwkActivity>(AttrKind::activity, 129, "vekFwkActivity");
  sm.value<&Sm::ethPhyIntfStatus>(AttrKind::input, 130, "ethPhyIntfStatus");
  sm.value<&Sm::config, &Sm::configIs, &Sm::configDel>(AttrKind::input, 131, "config");
  sm.value<&Sm::intfConfig, &Sm::intfConfigIs, &Sm::intfConfigDel>(AttrKind::input, 132, "intfConfig");
  sm.value<&Sm::ethPhyIntfConfig>(AttrKind::input, 133, "ethPhyIntfConfig");
  sm.value<&Sm::causeStatus>(AttrKind::input, 134, "causeStatus");
  sm.value<&Sm::intfId>(AttrKind::state, 135, "intfId");
  sm.value<&Sm::enable, &Sm::enableIs>(AttrKind::state, 136, "enable");
  sm.machines<kMachines, &Sm::linkFlapProfileSmIs, kDel>(0, "linkFlapProfileSm",
      {"profileName", "profileConfig", "config", "ethPhyIntfConfig", "ethPhyIntfStatus", "causeStatus"});
  sm.handler<&Sm::handleLinkFlapValues>(138, "handleLinkFlapValues");
  sm.handler<&Sm::handleProfileList>(0, "handleProfileList", {"profileName"});
  sm.handler<&Sm::handleIntfConfigEnabled>(0, "handleIntfConfigEnabled", {"intfId"});
  sm.value<&Sm::initialized, &Sm::initializedIs>(AttrKind::state, 143, "initialized");
  sm.handler<&Sm::handleInitialized>(144, "handleInitialized");
  sm.value<&Sm::fwkKey>(AttrKind::key, 0, "fwkKey");
  sm.handler<&Sm::hasNotificationActiveIs>(0, "hasNotificationActiveIs", {"hasNotificationActiveIs"});
  sm.handler<&Sm::vekDoZombieReactors>(0, "vekDoZombieReactors", {"on"});
  // clang-format on
}

}  // namespace LinkFlap
