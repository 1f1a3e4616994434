#include "runtime/vek/Reinstantiation.h"

#include "statemachines/LinkFlapIntfSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

Vek::String const& builtInProfile() {
  static Vek::String const name{"default"};
  return name;
}

namespace {

using ProfileList = Vek::Collection<Vek::String, bool>;

/// Makes the profile machines those of `list`, which has members.
///
/// Deliberate: a machine is kept only for a member whose value is true, but made for every member.
/// So the machine of a false member is deleted and made afresh each time, without its history.
/// Deliberate: a machine that exists is never revisited; what became of its profile's configuration
/// since it was made does not matter.
void selectListed(LinkFlapIntfSm& sm, ProfileList const& list,
                  Vek::Ptr<Config const> const& config) {
  for (auto machine = sm.linkFlapProfileSm().iterator(); machine; ++machine) {
    bool const* const listed = list.find(machine->profileName());
    if (listed == nullptr || !*listed) sm.linkFlapProfileSmDel(machine->profileName());
  }
  for (auto const& profile : list) {
    Vek::String const& name = profile.key();
    if (sm.linkFlapProfileSm().find(name) == nullptr)
      sm.linkFlapProfileSmIs(name, config->profileConfig(name), config, sm.ethPhyIntfConfig(),
                             sm.ethPhyIntfStatus(), sm.causeStatus());
  }
}

void selectBuiltIn(LinkFlapIntfSm& sm, Vek::Ptr<Config const> const& config) {
  // Deliberate: a machine of that name is taken for the built-in one, whatever it was made from and
  // whatever else is there.
  if (sm.linkFlapProfileSm().find(builtInProfile()) != nullptr) return;
  for (auto machine = sm.linkFlapProfileSm().iterator(); machine; ++machine)
    sm.linkFlapProfileSmDel(machine);
  sm.linkFlapProfileSmIs(builtInProfile(), nullptr, config, sm.ethPhyIntfConfig(),
                         sm.ethPhyIntfStatus(), sm.causeStatus());
}

}  // namespace

void manageProfileSm(LinkFlapIntfSm::Ptr sm) {
  Trace::manageProfileSm("manageProfileSm(", sm.get(), ")");
  Assert::manageProfileSm(bool{sm});

  if (!sm->enable()) {
    // Order: the machines go first; whoever hears of the record's withdrawal finds none.
    sm->linkFlapProfileSmDelAll();
    sm->causeStatus()->intfStatusDel(sm->intfId());
    return;
  }

  auto const intfConfig = sm->intfConfig();
  auto const config = sm->config();
  ProfileList const& defaults = config->defaultProfileList();
  ProfileList const* const own = intfConfig ? &intfConfig->profileList() : nullptr;
  // Deliberate: the number of members decides, not their values.
  bool const hasOwn = own != nullptr && !own->empty();
  bool const hasDefaults = !defaults.empty();

  // Deliberate: so a listed profile that is itself named "default" loses its machine each time.
  if (hasOwn || hasDefaults) sm->linkFlapProfileSmDel(builtInProfile());

  if (hasOwn) {
    selectListed(*sm, *own, config);
  } else if (hasDefaults) {
    selectListed(*sm, defaults, config);
  } else {
    selectBuiltIn(*sm, config);
  }
}

LinkFlapProfileSm::Ptr LinkFlapIntfSm::linkFlapProfileSm(Vek::String const& name) const {
  return linkFlapProfileSm_[name];
}

LinkFlapProfileSm::Ptr LinkFlapIntfSm::linkFlapProfileSmIs(
    Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
    Vek::Ptr<Config const> const& config,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  auto child = linkFlapProfileSm(profileName);
  if (!child) {
    child = newLinkFlapProfileSm(std::move(profileName), profileConfig, config, ethPhyIntfConfig,
                                 ethPhyIntfStatus, causeStatus);
    child->hasNotificationActiveIs(true);
    return child;
  }
  Vek::requireSame("_profileConfig", profileConfig, child->profileConfig());
  Vek::requireSame("_config", config, child->config());
  Vek::requireSame("_ethPhyIntfConfig", ethPhyIntfConfig, child->ethPhyIntfConfig());
  Vek::requireSame("_ethPhyIntfStatus", ethPhyIntfStatus, child->ethPhyIntfStatus());
  Vek::requireSame("_causeStatus", causeStatus, child->causeStatus());
  return child;
}

LinkFlapProfileSm::Ptr LinkFlapIntfSm::newLinkFlapProfileSm(
    Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
    Vek::Ptr<Config const> const& config,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  auto child =
      LinkFlapProfileSm::LinkFlapProfileSmIs(std::move(profileName), profileConfig, config,
                                             ethPhyIntfConfig, ethPhyIntfStatus, causeStatus, this);
  linkFlapProfileSmDel(child->profileName());
  linkFlapProfileSm_.newMember(child);
  return child;
}

// Deliberate, in both removals: a removed machine that someone still holds forgets its owner, which
// may go before it does.

LinkFlapProfileSm::Ptr LinkFlapIntfSm::linkFlapProfileSmDel(Vek::String const& name) {
  auto child = linkFlapProfileSm_.deleteMember(name);
  if (child) child->intfSmIs(nullptr);
  return child;
}

LinkFlapProfileSm::Ptr LinkFlapIntfSm::linkFlapProfileSmDel(ProfileSms::Iterator& position) {
  auto child = linkFlapProfileSm_.deleteMember(position);
  if (child) child->intfSmIs(nullptr);
  return child;
}

void LinkFlapIntfSm::linkFlapProfileSmDelAll() {
  for (auto machine = linkFlapProfileSm_.iterator(); machine; ++machine)
    linkFlapProfileSmDel(machine);
}

}  // namespace LinkFlap
