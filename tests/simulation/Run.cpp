#include "tests/simulation/Run.h"

#include <cmath>
#include <limits>

#include "statemachines/SourcePoints.h"

namespace Simulation {

namespace {

constexpr double kInfinity{std::numeric_limits<double>::infinity()};
constexpr double kNan{std::numeric_limits<double>::quiet_NaN()};
constexpr double kYear{365.0 * 86400};

/// Everything is compared after every so many events.
constexpr std::uint64_t kEverything{1024};

}  // namespace

Run::Run(std::uint64_t seed, Plant plant)
    : random_{seed},
      temper_{.links = random_.of(std::array{400U, 700U, 850U, 930U, 960U}),
              .pace = random_.of(std::array{1U, 2U, 4U, 8U, 16U, 64U}),
              .oddities = random_.of(std::array{8U, 32U, 128U}),
              .tracing = random_.oneIn(2),
              .misplaced = random_.oneIn(4)},
      names_{namesFor(seed, 4 + random_.index(9))},
      world_{names_, static_cast<int>(names_.interfaces.size())},
      model_{names_, plant},
      comparison_{world_, model_} {
  // Values as an agent would publish them: a limit that can be reached.
  for (std::size_t v = 0; v < World::kVariants; ++v)
    for (auto& profile : world_.profiles) {
      profile[v].model.maxFlaps = limit();
      profile[v].model.interval = intervalValue();
      profile[v].model.violations = violationsValue();
      profile[v].model.trackedIntervals = trackedValue();
      profile[v].lib->maxFlapsIs(profile[v].model.maxFlaps);
      profile[v].lib->intervalIs(profile[v].model.interval);
      profile[v].lib->violationsIs(profile[v].model.violations);
      profile[v].lib->trackedIntervalsIs(profile[v].model.trackedIntervals);
    }
  populate();
}

/// A switch as it is when the host begins: most interfaces are there, some with settings.
void Run::populate() {
  for (int id = 0; id < static_cast<int>(names_.interfaces.size()); ++id) {
    auto const at = static_cast<std::size_t>(id);
    if (!random_.oneIn(8)) {
      world_.configDir[0].lib->intfConfigIs(world_.id(id), world_.phyConfig[at][0].lib);
      model_.phyConfigIs(world_.configDir[0].model, id, &world_.phyConfig[at][0].model);
    }
    if (!random_.oneIn(8)) {
      world_.statusDir[0].lib->intfStatusIs(world_.id(id), world_.status[at][0].lib);
      model_.statusIs(world_.statusDir[0].model, id, &world_.status[at][0].model);
    }
    if (random_.oneIn(3)) {
      world_.settings[at][0].lib->enabledIs(true);
      model_.enabledIs(world_.settings[at][0].model, true);
      world_.config[0].lib->intfConfigIs(world_.id(id), world_.settings[at][0].lib);
      model_.intfConfigIs(world_.config[0].model, id, &world_.settings[at][0].model);
    }
  }
  World::Choice const first{};
  world_.install(first, false);
  model_.install(world_.inputs(first), false);
}

bool Run::play(std::uint64_t count) {
  while (event_ < count) {
    bool const played = event();
    if (!comparison_.difference().empty()) return false;
    if (played) ++event_;
  }
  comparison_.everything();
  return comparison_.difference().empty();
}

bool Run::event() {
  world_.outcome.clear();
  model_.outcome.clear();
  clockEvent();
  if (temper_.tracing && random_.oneIn(4096)) tracingEvent();
  world_.serialsAre(model_.installed() != nullptr ? model_.installed()->serial : -1,
                    model_.kept() != nullptr ? model_.kept()->serial : -1);

  std::uint64_t const hitsBefore = LinkFlap::traceHandle().hits();
  Touched touched;
  if (random_.below(1024) < temper_.links) {
    touched = linkEvent();
  } else {
    switch (random_.below(16)) {
      case 0:
      case 1:
      case 2:
        touched = configurationEvent();
        break;
      case 3:
      case 4:
      case 5:
        touched = interfaceEvent();
        break;
      case 6:
      case 7:
      case 8:
        touched = profileEvent();
        break;
      case 9:
      case 10:
      case 11:
        touched = directoryEvent();
        break;
      case 12:
        touched = hostEvent();
        break;
      case 13:
        touched = switchEvent();
        break;
      default:
        touched = callEvent();
        break;
    }
  }
  world_.outcome.hits = LinkFlap::traceHandle().hits() - hitsBefore;

  comparison_.outcomes();
  if (touched.intf == Touched::kAll) {
    comparison_.machines();
  } else if (touched.intf != Touched::kNone) {
    comparison_.interface(touched.intf);
  }
  if (event_ % kEverything == 0) comparison_.everything();

  for (Write const& write : world_.outcome.writes)
    ++(write.present ? tally_.recorded : tally_.withdrawn);
  tally_.raised += world_.outcome.failures.size() + (world_.outcome.thrown.empty() ? 0 : 1);
  tally_.traces += world_.outcome.traces.size();
  tally_.readings += world_.outcome.readings;
  return touched.intf != Touched::kNone;
}

/// Settles what the clock's source says during the event to come.
void Run::clockEvent() {
  if (untilNewRun_ > 0 && --untilNewRun_ == 0) {
    world_.newClockRun();
    model_.newClockRun();
    clock_ = random_.of(std::array{0.0, -100.0, 5.0, 1e6, -1e300, 0.1});
  }
  ClockPlan plan;
  std::uint32_t const kind = random_.below(64);
  if (kind < 30) {
    // The source stalls.
  } else if (kind < 56) {
    clock_ += static_cast<double>(random_.below(2 * temper_.pace + 1)) / 16;
  } else if (kind < 60) {
    // Fractions that no binary number holds.
    clock_ += static_cast<double>(random_.below(3000000)) / 1e6;
  } else if (kind < 63) {
    clock_ = windowEdge();
  } else {
    clock_ += static_cast<double>(random_.below(100));
  }
  plan.first = plan.second = clock_;
  if (random_.oneIn(8)) plan.second = clock_ + static_cast<double>(random_.below(64)) / 7;
  if (random_.oneIn(64)) plan.step = static_cast<double>(random_.below(32)) / 16 - 0.5;
  if (random_.oneIn(512)) {
    switch (random_.below(8)) {
      case 0:
        plan.first = kNan;
        break;
      case 1:
        plan.second = kNan;
        break;
      case 2:
        plan.first = random_.oneIn(2) ? kInfinity : -kInfinity;
        break;
      case 3:
        plan.second = random_.oneIn(2) ? kInfinity : -kInfinity;
        break;
      case 4:
        plan.first = clock_ - static_cast<double>(random_.below(1000));
        break;
      case 5:
        plan.first = -plan.first;
        break;
      case 6:
        plan.second = clock_ - kYear;
        break;
      default:
        if (!random_.oneIn(4)) break;
        // Ahead: a year, or to where no fraction is left. Soon after, a new source begins.
        clock_ +=
            random_.oneIn(2) ? kYear : random_.of(std::array{4294967296.0, 1e18, 1e19, 1e300});
        plan.first = plan.second = clock_;
        if (untilNewRun_ == 0) untilNewRun_ = 1 + random_.index(400);
    }
  }
  world_.clockPlanIs(plan);
  model_.clockPlanIs(plan);
}

/// A time at, just before or just behind the end of some machine's window or interval.
double Run::windowEdge() {
  Model::TopSm* const machine = model_.installed();
  if (machine == nullptr) return clock_;
  auto const& place = machine->intf(intf());
  if (!place) return clock_;
  for (int i = 0, first = name(); i < kProfiles; ++i) {
    auto const& sm = place->profile((first + i) % kProfiles);
    if (!sm || sm->queue.flaps.empty()) continue;
    double const interval = std::floor(sm->profileConfig != nullptr ? sm->profileConfig->interval
                                                                    : sm->config->interval);
    if (!(interval >= 1 && interval < 1e6)) return clock_;
    std::uint32_t const tracked =
        sm->profileConfig != nullptr ? sm->profileConfig->trackedIntervals : 1;
    double const intervals = random_.oneIn(2) ? tracked : static_cast<double>(random_.below(4));
    double const edge = sm->queue.flaps.front().time + interval * intervals;
    if (edge > clock_ + 1000) return clock_;
    switch (random_.below(4)) {
      case 0:
        return std::nextafter(edge, -kInfinity);
      case 1:
        return std::nextafter(edge, kInfinity);
      default:
        return edge;
    }
  }
  return clock_;
}

void Run::tracingEvent() {
  bool const level2 = random_.oneIn(2);
  bool const level8 = random_.oneIn(4);
  LinkFlap::traceHandle().levelIs(2, level2);
  LinkFlap::traceHandle().levelIs(8, level8);
  model_.tracingIs(level2, level8);
}

Run::Touched Run::linkEvent() {
  int const id = intf();
  auto& twin = world_.status[static_cast<std::size_t>(id)][variant()];
  if (random_.oneIn(32)) {
    auto& phy = world_.phyConfig[static_cast<std::size_t>(id)][variant()];
    std::uint32_t const state = random_.oneIn(3) ? 2 : random_.below(4);
    phy.model.phyConfigState = state;
    both(
        "phyConfigState",
        [&] { phy.lib->phyConfigStateIs(static_cast<Interface::PhyConfigState>(state)); }, [] {});
    return {id};
  }
  std::uint32_t value = twin.model.rawLinkStatus == 1 ? 2 : 1;
  if (random_.oneIn(32))
    value = random_.of(std::array{0U, 1U, 2U, 3U, 4294967295U, 2147483649U, 257U});
  both(
      "rawLinkStatus",
      [&] { twin.lib->rawLinkStatusIs(static_cast<Interface::RawLinkStatus>(value)); },
      [&] { model_.rawLinkStatusIs(twin.model, value); });
  return {id};
}

std::uint32_t Run::limit() {
  if (odd()) return random_.of(std::array{4294967295U, 4294967294U, 2147483648U, 1000U});
  return random_.below(5);
}

std::uint32_t Run::violationsValue() {
  if (odd()) return random_.of(std::array{0U, 4294967295U, 7U});
  return 1 + random_.below(3);
}

std::uint32_t Run::trackedValue() {
  if (odd()) return random_.of(std::array{0U, 50000U, 4294967295U, 65536U});
  return 1 + random_.below(4);
}

double Run::intervalValue() {
  if (odd())
    return random_.of(std::array{0.0, -0.0, 0.5, 0.999999, -3.0, 4294967295.0, 4294967296.0,
                                 4294967301.9, 1e18, 1e30, -1e30, 100000.0, 65536.0, kInfinity,
                                 -kInfinity, kNan});
  if (random_.oneIn(3)) return random_.of(std::array{1.0, 2.9, 10.7, 1.999999, 5.5, 30.0});
  return 1 + static_cast<double>(random_.below(20));
}

}  // namespace Simulation
