#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

namespace Scenario {

namespace {

using IntfSm = LinkFlap::LinkFlapIntfSm;
using ProfileSm = LinkFlap::LinkFlapProfileSm;

enum class Counter { curFlaps, curIntervals, curViolations };

/// A profile's values under a name of its own.
struct NamedProfile {
  Vek::String name;
  ProfileValues values;
};

/// What a flap is evaluated by.
struct Evaluation {
  double flapTime{0};
  double firstFlapTime{0};
  ProfileValues limits;
};

}  // namespace

template <>
inline constexpr std::array<std::string_view, 3> kWordsOf<Counter>{"curFlaps", "curIntervals",
                                                                   "curViolations"};

template <>
struct Argument<NamedProfile> {
  static NamedProfile read(Words& words) {
    return {Argument<Vek::String>::read(words), Argument<ProfileValues>::read(words)};
  }
};

template <>
struct Argument<Evaluation> {
  static Evaluation read(Words& words) {
    return {Argument<double>::read(words), Argument<double>::read(words),
            Argument<ProfileValues>::read(words)};
  }
};

namespace {

void addCollectionCommands(CommandTable& table) {
  table.addForIntfSm("profsm.del", "IF P",
                     [](World& world, IntfSm::Ptr const& sm, Vek::String const& profile) {
                       bool const removed{sm->linkFlapProfileSmDel(profile)};
                       world.out().line(removed ? "V some" : "V none");
                     });

  table.addForIntfSm("profsm.delall", "IF",
                     [](World&, IntfSm::Ptr const& sm) { sm->linkFlapProfileSmDelAll(); });
}

void addStateCommands(CommandTable& table) {
  table.addForProfileSm(
      "profsm.counter", "IF P curFlaps|curIntervals|curViolations N",
      [](World&, ProfileSm::Ptr const& sm, Counter counter, std::uint32_t number) {
        switch (counter) {
          case Counter::curFlaps:
            return sm->curFlapsIs(number);
          case Counter::curIntervals:
            return sm->curIntervalsIs(number);
          case Counter::curViolations:
            return sm->curViolationsIs(number);
        }
      });

  table.addForProfileSm("profsm.initialized", "IF P 0|1",
                        [](World&, ProfileSm::Ptr const& sm, bool on) { sm->initializedIs(on); });
}

void addHandlerCommands(CommandTable& table) {
  table.addForProfileSm("profsm.handleInitialized", "IF P",
                        [](World&, ProfileSm::Ptr const& sm) { sm->handleInitialized(); });

  table.addForProfileSm("profsm.handleLinkStatus", "IF P",
                        [](World&, ProfileSm::Ptr const& sm) { sm->handleLinkStatus(); });

  table.addForProfileSm("profsm.handleProfileValues", "IF P ARGNAME ARGIF",
                        [](World&, ProfileSm::Ptr const& sm, Vek::String const& name,
                           Tarn::IntfId const& intf) { sm->handleProfileValues(name, intf); });

  table.addForProfileSm("eval",
                        "IF P FLAPTIME FIRSTFLAPTIME MAXFLAPS INTERVAL VIOLATIONS TRACKEDINTERVALS",
                        [](World& world, ProfileSm::Ptr const& sm, Evaluation const& by) {
                          bool const errdisabled = LinkFlap::evaluateErrDisable(
                              sm, by.flapTime, by.firstFlapTime, by.limits.maxFlaps,
                              by.limits.interval, by.limits.violations, by.limits.trackedIntervals);
                          world.out().line("V ", errdisabled);
                        });
}

void addInputCommands(CommandTable& table) {
  table.addForProfileSm(
      "profsm.profileConfigIs",
      "IF P same|null|new NAME MAXFLAPS INTERVAL VIOLATIONS TRACKEDINTERVALS",
      [](World&, ProfileSm::Ptr const& sm, Redirection<NamedProfile, true> const& to) {
        switch (to.target) {
          case Target::held:
            return sm->profileConfigIs(sm->profileConfig());
          case Target::none:
            return sm->profileConfigIs(nullptr);
          case Target::fresh:
            return sm->profileConfigIs(profileConfigOf(to.values.name, to.values.values));
        }
      });

  // The interface is read by hand: a machine whose status was taken away knows it no longer.
  table.add("profsm.statusIs", "IF P same|null|new RAW",
            [](World& world, Tarn::IntfId const& intf, Vek::String const& profile,
               Redirection<std::uint32_t, true> const& to) {
              auto const sm = world.profileSm(intf, profile);
              if (!sm) return world.out().line("V none");
              switch (to.target) {
                case Target::held:
                  return sm->ethPhyIntfStatusIs(sm->ethPhyIntfStatus());
                case Target::none:
                  return sm->ethPhyIntfStatusIs(nullptr);
                case Target::fresh:
                  return sm->ethPhyIntfStatusIs(statusOf(intf, to.values));
              }
            });
}

}  // namespace

void addProfileMachineCommands(CommandTable& table) {
  addCollectionCommands(table);
  addStateCommands(table);
  addHandlerCommands(table);
  addInputCommands(table);
}

}  // namespace Scenario
