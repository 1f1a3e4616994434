#include "runtime/model/StateTypes.h"
#include "runtime/vek/TypeDefinition.h"

#include "introspection/Types.h"

namespace LinkFlap {

void defineLinkFlapSm(Vek::IntrospectionReactor& reactor, LinkFlapSm::_Type& type) {
  using Sm = LinkFlapSm;
  using Vek::AttrKind;
  // The overloads of the collection's name that are meant.
  constexpr auto kMachines =
      static_cast<Sm::IntfSms const& (Sm::*)() const noexcept>(&Sm::linkFlapIntfSm);
  constexpr auto kDel =
      static_cast<LinkFlapIntfSm::Ptr (Sm::*)(Tarn::IntfId const&)>(&Sm::linkFlapIntfSmDel);

  // clang-format off
  Vek::TypeDefinition<Sm> sm{reactor, type};
  sm.value<&Sm::vekFwkActivity, &Sm::vekFwkActivityIs>(AttrKind::activity, 129, "vekFwkActivity");
  sm.value<&Sm::ethPhyIntfConfigDir, &Sm::ethPhyIntfConfigDirIs, &Sm::ethPhyIntfConfigDirDel>(AttrKind::input, 130, "ethPhyIntfConfigDir");
  sm.value<&Sm::ethPhyIntfStatusDir, &Sm::ethPhyIntfStatusDirIs, &Sm::ethPhyIntfStatusDirDel>(AttrKind::input, 131, "ethPhyIntfStatusDir");
  sm.value<&Sm::errdisableConfig, &Sm::errdisableConfigIs, &Sm::errdisableConfigDel>(AttrKind::input, 132, "errdisableConfig");
  sm.value<&Sm::config, &Sm::configIs, &Sm::configDel>(AttrKind::input, 133, "config");
  sm.value<&Sm::causeStatus>(AttrKind::input, 134, "causeStatus");
  sm.value<&Sm::causeName>(AttrKind::input, 135, "causeName");
  sm.machines<kMachines, &Sm::linkFlapIntfSmIs, kDel>(136, "linkFlapIntfSm",
      {"ethPhyIntfStatus", "config", "intfConfig", "ethPhyIntfConfig", "causeStatus"});
  sm.handler<&Sm::handleIntf>(0, "handleIntf", {"intfId"});
  sm.handler<&Sm::handleDisabled>(0, "handleDisabled", {"cause"});
  sm.handler<&Sm::handleProfileConfig>(0, "handleProfileConfig", {"profileName"});
  sm.handler<&Sm::handleDefaultProfileList>(0, "handleDefaultProfileList", {"profileName"});
  sm.value<&Sm::initialized, &Sm::initializedIs>(AttrKind::state, 147, "initialized");
  sm.handler<&Sm::handleInitialized>(148, "handleInitialized");
  sm.handler<&Sm::hasNotificationActiveIs>(0, "hasNotificationActiveIs", {"hasNotificationActiveIs"});
  sm.handler<&Sm::vekDoZombieReactors>(0, "vekDoZombieReactors", {"on"});
  // clang-format on
}

}  // namespace LinkFlap
