#include "tests/reliability/DirectFailures.h"

#include <new>
#include <utility>

#include "runtime/vek/Clock.h"
#include "runtime/vek/Trace.h"

#include "statemachines/SourcePoints.h"

#include "introspection/GenericIfs.h"

#include "tests/reliability/FaultWorld.h"
#include "tests/reliability/ListenerOf.h"
#include "tests/reliability/support/AllocationFaults.h"

namespace {

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// Runs `act` with its first allocation failing, then its second, until it goes through; asks
/// `unchanged` after each that threw. Returns how many threw, or -1 when `unchanged` was false.
template <typename Act, typename Unchanged>
int eachFails(Act act, Unchanged unchanged) {
  for (int threw = 0;; ++threw) {
    AllocationFaults::failFrom(static_cast<std::uint64_t>(threw) + 1, true);
    try {
      act();
      AllocationFaults::stop();
      return threw;
    } catch (std::bad_alloc const&) {
      AllocationFaults::stop();
    }
    if (!unchanged()) return -1;
  }
}

template <typename T>
Vek::Ptr<ListenerOf<T>> listener(Vek::Ptr<T> const& object, Vek::AttributeMask watching) {
  auto const made = Vek::make<ListenerOf<T>>(watching);
  made->notifierIs(object);
  return made;
}

std::string firstReadings(unsigned& cases) {
  AllocationFaults::failFrom(1, true);
  bool const reads = Vek::now() >= 0;
  AllocationFaults::stop();
  ++cases;
  return reads ? "" : "the clock cannot be read without memory";
}

std::string registration(unsigned& cases) {
  auto const config = Vek::make<LinkFlap::Config>();
  auto const first = listener(config, Vek::kAllAttributes);
  // Hardly any object has watchers of a second kind: those of the first are kept in the object.
  if (eachFails([&] { first->isRegisteredNotifieeIs(true); }, [] { return true; }) != 0)
    return "registering a watcher of the first kind needs memory";
  cases += 1;
  auto const maxFlaps = Vek::attributeBit(LinkFlap::Config::maxFlapsAttr.id);
  auto const second = listener(config, maxFlaps);
  unsigned told = 0;
  // Two groups are made, of which the first takes over who is there.
  int threw = eachFails([&] { second->isRegisteredNotifieeIs(true); },
                        [&] {
                          config->maxFlapsIs(++told);
                          return !second->isRegisteredNotifiee() && first->told(maxFlaps) == told;
                        });
  if (threw != 2) return "registering a watcher of a new kind leaves something behind";
  cases += 2;
  // One that failed at the second group has left none behind: the next attempt needs both again.
  auto const plain = Vek::make<LinkFlap::Config>();
  auto const there = listener(plain, Vek::kAllAttributes);
  there->isRegisteredNotifieeIs(true);
  auto const comes = listener(plain, maxFlaps);
  AllocationFaults::failFrom(2, true);
  bool failed = false;
  try {
    comes->isRegisteredNotifieeIs(true);
  } catch (std::bad_alloc const&) {
    failed = true;
  }
  AllocationFaults::failFrom(0, false);
  comes->isRegisteredNotifieeIs(true);
  if (AllocationFaults::stop() != 2 || !failed)
    return "registering a watcher of a new kind leaves a group behind";
  cases += 1;
  auto const third = listener(config, Vek::attributeBit(LinkFlap::Config::intervalAttr.id));
  threw = eachFails([&] { third->isRegisteredNotifieeIs(true); },
                    [&] { return !third->isRegisteredNotifiee(); });
  if (threw != 1) return "registering a watcher of a third kind leaves something behind";
  cases += 1;
  config->maxFlapsIs(9);
  if (second->told(Vek::kAllAttributes) != 1 || first->told(maxFlaps) != told + 1)
    return "a watcher registered at last is not told";
  return "";
}

std::string repointing(unsigned& cases) {
  FaultWorld world;
  auto const sm = world.intfSm(ethernet2);
  auto const held = world.settings(ethernet2);
  // The new object has watchers of another kind, so one more group is needed for the reactor.
  auto const fresh = Vek::make<LinkFlap::IntfConfig>();
  fresh->enabledIs(true);
  auto const other = listener(fresh, Vek::attributeBit(LinkFlap::IntfConfig::enabledAttr.id));
  other->isRegisteredNotifieeIs(true);
  AllocationFaults::failFrom(1, true);
  bool threw = false;
  try {
    sm->intfConfigIs(fresh);
  } catch (std::bad_alloc const&) {
    threw = true;
  }
  AllocationFaults::stop();
  ++cases;
  if (!threw || sm->intfConfig() != held) return "a reactor that could not be re-pointed was";
  held->enabledIs(false);
  if (sm->enable()) return "a reactor that could not be re-pointed has become deaf";
  sm->intfConfigIs(fresh);
  if (!sm->enable()) return "re-pointing a reactor has not run its handler";
  fresh->enabledIs(false);
  return sm->enable() ? "a reactor that was re-pointed at last is deaf" : "";
}

std::string anotherActivity(unsigned& cases) {
  FaultWorld world;
  auto const fresh = Vek::make<Vek::ActivityConfig>();
  fresh->deferredIs(true);
  int const threw = eachFails([&] { world.machine().vekFwkActivityIs(fresh); },
                              [&] {
                                // The machine is still on its own activity, which delivers at once.
                                world.statusDir->intfStatusDel(ethernet1);
                                bool const atOnce = !world.intfSm(ethernet1);
                                world.statusDir->intfStatusIs(
                                    ethernet1, Vek::make<Interface::EthPhyIntfStatus>(ethernet1));
                                return atOnce && world.machine().vekFwkActivity() == world.activity;
                              });
  if (threw < 1) return "a machine that could not change its activity is on both";
  cases += static_cast<unsigned>(threw);
  world.statusDir->intfStatusDel(ethernet1);
  return world.intfSm(ethernet1) ? "" : "the machine does not defer on its new activity";
}

std::string delivery(unsigned& cases) {
  FaultWorld world;
  world.statusDir->intfStatusDel(ethernet1);
  world.statusDir->intfStatusDel(ethernet2);
  auto const one = Vek::make<Interface::EthPhyIntfStatus>(ethernet1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  world.activity->deferredIs(true);
  world.statusDir->intfStatusIs(ethernet1, one);
  world.config->intfConfigIs(world.interfaces[2], settings);
  // The first handler that is delivered to finds no memory; the second one is another reactor's.
  AllocationFaults::failFrom(1, false);
  auto const delivered = Vek::vekActivitySmFor(world.activity)->deliver();
  AllocationFaults::stop();
  ++cases;
  if (delivered != 2) return "a delivery that failed has kept others from theirs";
  if (world.takeReports() != 1) return "a delivery that failed was not reported once";
  auto const sm = world.intfSm(world.interfaces[2]);
  if (!sm || sm->intfConfig() != Vek::Ptr<LinkFlap::IntfConfig const>{settings})
    return "the delivery after one that failed was lost";
  world.machine().handleIntf(ethernet1);
  return world.intfSm(ethernet1) ? "" : "the handler, run again, does not admit";
}

std::string waiting(unsigned& cases) {
  FaultWorld world;
  world.activity->deferredIs(true);
  AllocationFaults::failFrom(1, true);
  world.statusDir->intfStatusDel(ethernet1);
  AllocationFaults::stop();
  ++cases;
  if (world.takeReports() != 0) return "a change cannot wait without memory";
  if (!world.intfSm(ethernet1)) return "a change does not wait";
  auto const delivered = Vek::vekActivitySmFor(world.activity)->deliver();
  return delivered == 1 && !world.intfSm(ethernet1) ? "" : "a change that has waited is lost";
}

std::string activityOfOneReactor(unsigned& cases) {
  FaultWorld world;
  auto const reactor = world.machine().newConfig(world.config);
  auto const fresh = Vek::make<Vek::ActivityConfig>();
  int const threw = eachFails([&] { reactor->vekFwkActivityIs(fresh); },
                              [&] {
                                return reactor->vekFwkActivity() == world.activity &&
                                       reactor->actsm() == Vek::vekActivitySmFor(world.activity);
                              });
  if (threw != 1) return "a reactor that could not change its activity is on both";
  cases += 1;
  return reactor->vekFwkActivity() == fresh ? "" : "a reactor does not change its activity";
}

std::string tracking(unsigned& cases) {
  Vek::ptrifTrackOn_ = true;
  auto const live = Vek::PtrTrack::live();
  AllocationFaults::failFrom(2, true);  // the first is the object's own
  auto const object = Vek::make<LinkFlap::Config>();
  AllocationFaults::stop();
  Vek::ptrifTrackOn_ = false;
  ++cases;
  return Vek::PtrTrack::live() == live ? "" : "the tracker counts what it could not record";
}

std::string byName(unsigned& cases) {
  FaultWorld world;
  LinkFlap::LinkFlapProfileSm::Ptr const sm{
      world.intfSm(ethernet1)->linkFlapProfileSm().iterator().member()};
  LinkFlap::LinkFlapProfileSm::GenericIf_ view{sm, false};
  Vek::GenericIf::Op const op{view.attributeId("linkFlapTimeStamp"), Vek::GenericIf::OpCode::set,
                              Vek::Value{Vek::String{"3"}}};
  Vek::GenericIf::List const time{Vek::Value{Vek::String{"1.5"}}};
  int const threw = eachFails(
      [&] {
        Vek::Value result;
        view.attributeOp(op, time, result);
      },
      [&] { return sm->linkFlapTimeStamp().count() == 0; });
  if (threw < 1 || sm->linkFlapTimeStamp(3) != 1.5) return "a value set by name is set by halves";
  cases += static_cast<unsigned>(threw);
  return "";
}

std::string evaluation(unsigned& cases) {
  FaultWorld world;
  LinkFlap::LinkFlapProfileSm::Ptr const sm{
      world.intfSm(ethernet1)->linkFlapProfileSm().iterator().member()};
  sm->curFlapsIs(3);
  sm->curIntervalsIs(4);
  sm->curViolationsIs(5);
  bool errDisabled = false;
  // A flap of interval 0 that exceeds the limit for the sixth time.
  int const threw = eachFails(
      [&] { errDisabled = LinkFlap::evaluateErrDisable(sm, 2, 1, 0, 10, 6, 1); },
      [&] {
        return sm->curFlaps() == 3 && sm->curIntervals() == 4 && sm->curViolations() == 5 &&
               !sm->causeStatus()->intfStatus().has(ethernet1);
      });
  if (threw < 1) return "a flap evaluated without memory is evaluated by halves";
  cases += static_cast<unsigned>(threw);
  return errDisabled && sm->causeStatus()->intfStatus().has(ethernet1)
             ? ""
             : "a flap evaluated at last does not err-disable";
}

/// An interface with its link up and a profile machine that err-disables it at the first flap.
struct FirstFlap {
  FirstFlap() {
    config->maxFlapsIs(0);
    config->intervalIs(10);
    status->rawLinkStatusIs(Interface::RawLinkStatus::up);
    sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs("p1", nullptr, config, phyConfig, status,
                                                          causeStatus, nullptr);
    sm->linkFlapTimeStampMetadataIs({7, 7});
  }
  bool counted() const {
    return sm->linkFlapTimeStamp().count() != 0 || sm->curFlaps() != 0 || sm->curIntervals() != 0 ||
           sm->curViolations() != 0 || errDisabled();
  }
  bool errDisabled() const { return causeStatus->intfStatus().has(ethernet1); }

  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Interface::EthPhyIntfConfig> phyConfig{
      Vek::make<Interface::EthPhyIntfConfig>(ethernet1)};
  Vek::Ptr<Interface::EthPhyIntfStatus> status{Vek::make<Interface::EthPhyIntfStatus>(ethernet1)};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
  LinkFlap::LinkFlapProfileSm::Ptr sm;
};

std::string firstFlap(unsigned& cases) {
  FirstFlap flap;
  int const threw = eachFails([&] { flap.sm->handleLinkStatus(); },
                              [&] {
                                return !flap.counted() && flap.sm->linkFlapTimeStampMetadata() ==
                                                              Vek::LinkQueueMetadata{7, 7};
                              });
  // Its entry in the queue, and what the record needs.
  if (threw < 2) return "a first flap that finds no memory is counted by halves";
  cases += static_cast<unsigned>(threw);
  return flap.errDisabled() ? "" : "a first flap counted at last does not err-disable";
}

// Once somebody has set the next index, two entries may have the same. A flap that is taken back is
// the newest, whatever its index.
std::string flapOfAnIndexInUse(unsigned& cases) {
  constexpr std::uint32_t kLast{4294967295U};
  FirstFlap flap;
  double const now = Vek::now();
  flap.sm->linkFlapTimeStampMetadataIs({kLast, kLast});
  flap.sm->linkFlapTimeStampEnq(now);
  flap.sm->linkFlapTimeStampEnq(now);
  flap.sm->linkFlapTimeStampMetadataIs({kLast, kLast});
  auto const& queue = flap.sm->linkFlapTimeStamp();
  auto const* const oldest = queue.head();
  auto const* const newest = queue.tail();
  int const threw = eachFails([&] { flap.sm->handleLinkStatus(); },
                              [&] {
                                return queue.count() == 2 && queue.head() == oldest &&
                                       queue.tail() == newest && !flap.errDisabled();
                              });
  if (threw < 1) return "a flap that is taken back takes another with it";
  cases += static_cast<unsigned>(threw);
  return flap.errDisabled() ? "" : "a flap counted at last does not err-disable";
}

// A history that is too short to err-disable needs no memory but for the flap, when it ages: not even
// where 65,536 violations of 65,536 flaps each are 2^32.
std::string ageingThatCannotErrDisable(unsigned& cases) {
  FirstFlap flap;
  auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"});
  profile->maxFlapsIs(65535);
  profile->intervalIs(1);
  profile->violationsIs(65536);
  profile->trackedIntervalsIs(1);
  flap.sm->profileConfigIs(profile);
  flap.sm->linkFlapTimeStampEnq(Vek::now() - 100);
  int const threw = eachFails([&] { flap.sm->handleLinkStatus(); }, [] { return true; });
  if (threw > 1) return "a flap that cannot err-disable needs memory for a record";
  cases += 1;
  return flap.sm->linkFlapTimeStamp().count() == 1 ? "" : "a history has not aged";
}

// A trace sink is called in the midst of a flap. One that forgets the flap leaves nothing to be taken
// back when there is no memory for the record.
std::string flapForgottenMeanwhile(unsigned& cases) {
  FirstFlap flap;
  unsigned forgotten = 0;
  auto previous = Vek::traceSinkIs([&](Vek::TraceRecord const& record) {
    if (!record.message.starts_with("curFlaps: ")) return;
    flap.sm->linkFlapTimeStampDelAll();
    ++forgotten;
  });
  LinkFlap::traceHandle().levelIs(8, true);
  std::string wrong;
  unsigned threw = 0;
  for (std::uint64_t k = 1; wrong.empty(); ++k) {
    unsigned const before = forgotten;
    bool failed = false;
    AllocationFaults::failFrom(k, false);
    try {
      flap.sm->handleLinkStatus();
    } catch (std::bad_alloc const&) {
      failed = true;
    }
    AllocationFaults::stop();
    if (AllocationFaults::failuresOfThisPlan() == 0) break;
    if (failed && forgotten > before) ++threw;
    if (failed ? flap.counted() : !flap.errDisabled())
      wrong = "a flap that is forgotten meanwhile is done by halves";
    flap.causeStatus->intfStatusDel(ethernet1);
  }
  LinkFlap::traceHandle().levelIs(8, false);
  Vek::traceSinkIs(std::move(previous));
  if (wrong.empty() && threw == 0)
    wrong = "no flap was forgotten before its record found no memory";
  cases += threw;
  return wrong;
}

}  // namespace

std::string directFailures(unsigned& cases) {
  for (auto const test : {firstReadings, registration, repointing, anotherActivity, delivery,
                          waiting, activityOfOneReactor, tracking, byName, evaluation, firstFlap,
                          flapOfAnIndexInUse, ageingThatCannotErrDisable, flapForgottenMeanwhile})
    if (std::string wrong = test(cases); !wrong.empty()) return wrong;
  return {};
}
