#include <cstddef>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// A child machine requested again: with the parameters that it was made from it is returned, with
// others an exception says which one differs.

namespace {

using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};

std::string pointerText(void const* pointer) {
  if (pointer == nullptr) return "0x0";
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

std::string message(char const* parameter, void const* given, void const* current) {
  return std::string{
             "Reinstantiating the pointer interface where constructor parameter attribute "} +
         parameter + " has a different value of " + pointerText(given) +
         " than the current value of " + pointerText(current) + " not allowed";
}

/// The text of the exception that `request` raises.
template <typename Request>
std::string refusal(Request request) {
  try {
    request();
  } catch (Vek::NameInUseException const& exception) {
    EXPECT_TRUE(exception.ids().has(Vek::kNameInUseException));
    return exception.what();
  }
  return "no exception";
}

/// The constructor parameters of an interface machine; the status is of the null interface, so
/// that a request without one means the same child.
struct IntfParameters {
  Vek::Ptr<Interface::EthPhyIntfStatus const> status{
      Vek::make<Interface::EthPhyIntfStatus>(Tarn::IntfId{})};
  Vek::Ptr<LinkFlap::Config const> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<LinkFlap::IntfConfig const> intfConfig{Vek::make<LinkFlap::IntfConfig>()};
  Vek::Ptr<Interface::EthPhyIntfConfig const> phyConfig{
      Vek::make<Interface::EthPhyIntfConfig>(Tarn::IntfId{})};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
};

LinkFlap::LinkFlapIntfSm::Ptr request(LinkFlap::LinkFlapSm& sm, IntfParameters const& p) {
  return sm.linkFlapIntfSmIs(p.status, p.config, p.intfConfig, p.phyConfig, p.causeStatus);
}

/// The constructor parameters of a profile machine, beside its name.
struct ProfileParameters {
  Vek::Ptr<LinkFlap::ProfileConfig const> profileConfig{Vek::make<LinkFlap::ProfileConfig>()};
  Vek::Ptr<LinkFlap::Config const> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Interface::EthPhyIntfConfig const> phyConfig{
      Vek::make<Interface::EthPhyIntfConfig>(ethernet1)};
  Vek::Ptr<Interface::EthPhyIntfStatus const> status{
      Vek::make<Interface::EthPhyIntfStatus>(ethernet1)};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
};

LinkFlap::LinkFlapProfileSm::Ptr request(LinkFlap::LinkFlapIntfSm& sm, ProfileParameters const& p) {
  return sm.linkFlapProfileSmIs("p1", p.profileConfig, p.config, p.phyConfig, p.status,
                                p.causeStatus);
}

/// One parameter: its name, what it is in a set of parameters, and how it is taken from another.
template <typename Parameters>
struct Parameter {
  char const* name;
  void const* (*pointer)(Parameters const&);
  void (*clear)(Parameters&);
  void (*take)(Parameters&, Parameters const&);
};

template <auto Member, typename Parameters>
Parameter<Parameters> parameter(char const* name) {
  return {name, [](Parameters const& p) -> void const* { return (p.*Member).get(); },
          [](Parameters& p) { p.*Member = nullptr; },
          [](Parameters& p, Parameters const& from) { p.*Member = from.*Member; }};
}

// In the order in which they are compared.
Parameter<IntfParameters> const kIntf[]{
    parameter<&IntfParameters::status, IntfParameters>("_ethPhyIntfStatus"),
    parameter<&IntfParameters::config, IntfParameters>("_config"),
    parameter<&IntfParameters::intfConfig, IntfParameters>("_intfConfig"),
    parameter<&IntfParameters::phyConfig, IntfParameters>("_ethPhyIntfConfig"),
    parameter<&IntfParameters::causeStatus, IntfParameters>("_causeStatus"),
};
Parameter<ProfileParameters> const kProfile[]{
    parameter<&ProfileParameters::profileConfig, ProfileParameters>("_profileConfig"),
    parameter<&ProfileParameters::config, ProfileParameters>("_config"),
    parameter<&ProfileParameters::phyConfig, ProfileParameters>("_ethPhyIntfConfig"),
    parameter<&ProfileParameters::status, ProfileParameters>("_ethPhyIntfStatus"),
    parameter<&ProfileParameters::causeStatus, ProfileParameters>("_causeStatus"),
};

/// What both kinds of children have in common; `Owner` gives the machine that owns them.
template <typename Owner, typename Parameters, std::size_t count>
void expectEachDifferenceRefused(Owner makeOwner, Parameter<Parameters> const (&list)[count]) {
  for (auto const& differing : list) {
    SCOPED_TRACE(differing.name);
    Parameters const made;
    Parameters const fresh;
    Parameters other = made;
    differing.take(other, fresh);
    Parameters without = made;
    differing.clear(without);
    {
      Switch sw;
      auto& owner = makeOwner(sw);
      auto const child = request(owner, made);
      EXPECT_EQ(refusal([&] { request(owner, other); }),
                message(differing.name, differing.pointer(other), differing.pointer(made)));
      EXPECT_EQ(refusal([&] { request(owner, without); }),
                message(differing.name, nullptr, differing.pointer(made)));
      // The child is the one it was.
      EXPECT_EQ(request(owner, made), child);
    }
    {
      Switch sw;
      auto& owner = makeOwner(sw);
      request(owner, without);
      EXPECT_EQ(refusal([&] { request(owner, made); }),
                message(differing.name, differing.pointer(made), nullptr));
      EXPECT_EQ(refusal([&] { request(owner, without); }), "no exception");
    }
  }
}

/// From the first to the last: of several that differ, the first is named.
template <typename Owner, typename Parameters, std::size_t count>
void expectFirstDifferenceNamed(Owner makeOwner, Parameter<Parameters> const (&list)[count]) {
  Switch sw;
  auto& owner = makeOwner(sw);
  Parameters const made;
  auto const child = request(owner, made);
  Parameters other;
  for (auto const& first : list) {
    EXPECT_EQ(refusal([&] { request(owner, other); }),
              message(first.name, first.pointer(other), first.pointer(made)));
    first.take(other, made);
  }
  EXPECT_EQ(request(owner, other), child);
}

LinkFlap::LinkFlapSm& topLevel(Switch& sw) {
  sw.start();
  return sw.machine();
}

LinkFlap::LinkFlapIntfSm& interface(Switch& sw) {
  sw.addInterface(ethernet1);
  sw.start();
  return *sw.intfSm(ethernet1);
}

TEST(ReinstantiateIntfSm, EachOfTheFiveParametersIsRefusedWhenItDiffers) {
  expectEachDifferenceRefused(topLevel, kIntf);
}

TEST(ReinstantiateIntfSm, TheFirstThatDiffersIsNamed) {
  expectFirstDifferenceNamed(topLevel, kIntf);
}

TEST(ReinstantiateIntfSm, WithTheSameParametersReturnsTheChildUntouched) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  auto* const child = sw.intfSm(ethernet1);
  child->hasNotificationActiveIs(false);
  sw.takeTraces();
  EXPECT_EQ(sw.machine().linkFlapIntfSmIs(sw.status(ethernet1), sw.config, nullptr,
                                          sw.phyConfig(ethernet1), sw.causeStatus),
            child);
  EXPECT_FALSE(child->hasNotificationActive());
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), testing::ElementsAre(1));
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(ReinstantiateProfileSm, EachOfTheFiveParametersIsRefusedWhenItDiffers) {
  expectEachDifferenceRefused(interface, kProfile);
}

TEST(ReinstantiateProfileSm, TheFirstThatDiffersIsNamed) {
  expectFirstDifferenceNamed(interface, kProfile);
}

TEST(ReinstantiateProfileSm, WithTheSameParametersReturnsTheChildUntouched) {
  Switch sw;
  auto& owner = interface(sw);
  sw.flap(ethernet1, {1});
  auto* const child = sw.profileSm(ethernet1, "default");
  child->hasNotificationActiveIs(false);
  sw.takeTraces();
  EXPECT_EQ(owner.linkFlapProfileSmIs("default", nullptr, sw.config, sw.phyConfig(ethernet1),
                                      sw.status(ethernet1), sw.causeStatus),
            child);
  EXPECT_FALSE(child->hasNotificationActive());
  EXPECT_THAT(times(*child), testing::ElementsAre(1));
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

// The name is the key: another one is another child, equal text is the same.
TEST(ReinstantiateProfileSm, ComparesTheNameByItsText) {
  Switch sw;
  auto& owner = interface(sw);
  ProfileParameters const p;
  auto const child = request(owner, p);
  EXPECT_EQ(owner.linkFlapProfileSmIs(Vek::String{std::string{"p"} + "1"}, p.profileConfig,
                                      p.config, p.phyConfig, p.status, p.causeStatus),
            child);
  EXPECT_NE(owner.linkFlapProfileSmIs("p2", p.profileConfig, p.config, p.phyConfig, p.status,
                                      p.causeStatus),
            child);
}

TEST(ReinstantiateProfileSm, ANewChildHasNotificationActive) {
  Switch sw;
  auto& owner = interface(sw);
  EXPECT_TRUE(request(owner, ProfileParameters{})->hasNotificationActive());
}

}  // namespace
