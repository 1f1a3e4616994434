#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

// The commands that ask a machine for a child that it may have already: with the child's own
// constructor parameters, or with others in place of some, which the machine is to refuse.

namespace Scenario {

namespace {

using IntfSm = LinkFlap::LinkFlapIntfSm;
using ProfileSm = LinkFlap::LinkFlapProfileSm;

enum class IntfSmParameter { ethPhyIntfStatus, config, intfConfig, ethPhyIntfConfig, causeStatus };

enum class ProfileSmParameter {
  profileConfig,
  config,
  ethPhyIntfConfig,
  ethPhyIntfStatus,
  causeStatus
};

/// A parameter in place of which a new object is given or, written PARAM:null, none.
template <typename Parameter>
struct Replacement {
  Parameter parameter{};
  bool null{false};

  template <typename Object>
  Object orNull(Object fresh) const {
    return null ? Object{} : fresh;
  }
};

/// The key of an interface's machine is read from its status, so that cannot be missing.
constexpr bool mayBeNull(IntfSmParameter parameter) {
  return parameter != IntfSmParameter::ethPhyIntfStatus;
}

constexpr bool mayBeNull(ProfileSmParameter /*parameter*/) {
  return true;
}

}  // namespace

template <>
inline constexpr std::array<std::string_view, 5> kWordsOf<IntfSmParameter>{
    "ethPhyIntfStatus", "config", "intfConfig", "ethPhyIntfConfig", "causeStatus"};

template <>
inline constexpr std::array<std::string_view, 5> kWordsOf<ProfileSmParameter>{
    "profileConfig", "config", "ethPhyIntfConfig", "ethPhyIntfStatus", "causeStatus"};

template <typename Parameter>
struct Argument<Replacement<Parameter>> {
  static Replacement<Parameter> read(Words& words) {
    constexpr std::string_view kNull{":null"};
    constexpr auto& choices = kWordsOf<Parameter>;
    std::string const expected =
        oneOf(choices.data(), choices.size()) + ", with or without " + std::string{kNull};
    auto word = words.take(expected);
    bool const null = word.ends_with(kNull);
    if (null) word.remove_suffix(kNull.size());
    auto const index = indexOf(word, choices.data(), choices.size());
    if (!index) words.refuse(expected);
    auto const parameter = static_cast<Parameter>(*index);
    if (null && !mayBeNull(parameter)) words.refuse(std::string{word} + ", which cannot be null");
    return {parameter, null};
  }
};

namespace {

using IntfSmReplacements = std::vector<Replacement<IntfSmParameter>>;
using ProfileSmReplacements = std::vector<Replacement<ProfileSmParameter>>;

void requestIntfSm(World& world, IntfSm::Ptr const& sm, IntfSmReplacements const& replacements) {
  auto status = sm->ethPhyIntfStatus();
  auto config = sm->config();
  auto intfConfig = sm->intfConfig();
  auto phyConfig = sm->ethPhyIntfConfig();
  auto causeStatus = sm->causeStatus();
  for (auto const& replacement : replacements) {
    switch (replacement.parameter) {
      case IntfSmParameter::ethPhyIntfStatus:
        status = statusOf(sm->intfId(), 0);
        break;
      case IntfSmParameter::config:
        config = replacement.orNull(configOf({}));
        break;
      case IntfSmParameter::intfConfig:
        intfConfig = replacement.orNull(intfConfigOf(sm->intfId(), {}));
        break;
      case IntfSmParameter::ethPhyIntfConfig:
        phyConfig = replacement.orNull(phyConfigOf(sm->intfId(), 0));
        break;
      case IntfSmParameter::causeStatus:
        causeStatus = replacement.orNull(Vek::make<Errdisable::CauseStatus>());
        break;
    }
  }
  bool const same =
      world.machine()->linkFlapIntfSmIs(status, config, intfConfig, phyConfig, causeStatus) == sm;
  world.out().line(same ? "V same" : "V new");
}

void requestProfileSm(World& world, IntfSm::Ptr const& owner, Vek::String const& profile,
                      ProfileSmReplacements const& replacements) {
  auto const sm = owner->linkFlapProfileSm(profile);
  auto profileConfig = sm ? sm->profileConfig() : world.config()->profileConfig(profile);
  auto config = sm ? sm->config() : owner->config();
  auto phyConfig = sm ? sm->ethPhyIntfConfig() : owner->ethPhyIntfConfig();
  auto status = sm ? sm->ethPhyIntfStatus() : owner->ethPhyIntfStatus();
  auto causeStatus = sm ? sm->causeStatus() : owner->causeStatus();
  for (auto const& replacement : replacements) {
    switch (replacement.parameter) {
      case ProfileSmParameter::profileConfig:
        profileConfig = replacement.orNull(profileConfigOf(profile, {}));
        break;
      case ProfileSmParameter::config:
        config = replacement.orNull(configOf({}));
        break;
      case ProfileSmParameter::ethPhyIntfConfig:
        phyConfig = replacement.orNull(phyConfigOf(owner->intfId(), 0));
        break;
      case ProfileSmParameter::ethPhyIntfStatus:
        status = replacement.orNull(statusOf(owner->intfId(), 0));
        break;
      case ProfileSmParameter::causeStatus:
        causeStatus = replacement.orNull(Vek::make<Errdisable::CauseStatus>());
        break;
    }
  }
  bool const same = owner->linkFlapProfileSmIs(profile, profileConfig, config, phyConfig, status,
                                               causeStatus) == sm;
  world.out().line(same ? "V same" : "V new");
}

}  // namespace

void addReinstantiationCommands(CommandTable& table) {
  table.addForIntfSm("intfsm.is", "IF [PARAM[:null] ...]",
                     [](World& world, IntfSm::Ptr const& sm, IntfSmReplacements const& given) {
                       requestIntfSm(world, sm, given);
                     });

  table.addForIntfSm(
      "profsm.is", "IF P [PARAM[:null] ...]",
      [](World& world, IntfSm::Ptr const& owner, Vek::String const& profile,
         ProfileSmReplacements const& given) { requestProfileSm(world, owner, profile, given); });
}

}  // namespace Scenario
