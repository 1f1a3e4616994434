// Every number at an edge in every numeric attribute, crossed with every other and with clock
// readings of the same kind: what the machine makes of it is what `NumberModel` says.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <vector>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/edges/NumberModel.h"

namespace {

using Limits = NumberModel::Limits;
using Mistake = NumberModel::Mistake;
using State = NumberModel::State;

constexpr double kInfinity{std::numeric_limits<double>::infinity()};
constexpr double kNoNumber{std::numeric_limits<double>::quiet_NaN()};
constexpr double kTimes[]{kNoNumber,
                          -1.0,
                          0.0,
                          -0.0,
                          0.5,
                          1.0,
                          2.9,
                          2147483648.0,
                          4294967295.0,
                          4294967296.0,
                          9007199254740992.0,
                          18446744073709551616.0,
                          kInfinity};
constexpr double kMoreIntervals[]{-kInfinity, 1e30, 4294967301.9, 0.99999999999999989};
constexpr std::uint32_t kLimits[]{0, 1, 2147483648U, 4294967295U};

std::vector<double> intervals() {
  std::vector<double> all(std::begin(kTimes), std::end(kTimes));
  all.insert(all.end(), std::begin(kMoreIntervals), std::end(kMoreIntervals));
  return all;
}

/// Not-a-number is the same as not-a-number. So is 0 as -0: an attribute whose value is the one is
/// not changed by writing the other.
bool same(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

bool same(State const& a, State const& b) {
  if (a.flaps != b.flaps || a.intervals != b.intervals || a.violations != b.violations ||
      a.times.size() != b.times.size() ||
      a.errdisabledAt.has_value() != b.errdisabledAt.has_value())
    return false;
  for (std::size_t i = 0; i < a.times.size(); ++i)
    if (!same(a.times[i], b.times[i])) return false;
  return !a.errdisabledAt || same(*a.errdisabledAt, *b.errdisabledAt);
}

/// A profile machine alone, on state objects of its own; each run starts it anew.
class Machine {
 public:
  explicit Machine(bool ownProfile) {
    config_->maxFlapsIs(7);
    config_->intervalIs(77);
    status_->rawLinkStatusIs(Interface::RawLinkStatus::up);
    sm_ = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
        "p1", ownProfile ? Vek::Ptr<LinkFlap::ProfileConfig const>{profile_} : nullptr, config_,
        Vek::make<Interface::EthPhyIntfConfig>(id_), status_, causeStatus_, nullptr);
  }

  void limitsAre(Limits const& limits, bool ownProfile) {
    if (ownProfile) {
      profile_->intervalIs(limits.interval);
      profile_->maxFlapsIs(limits.maxFlaps);
      profile_->violationsIs(limits.violations);
      profile_->trackedIntervalsIs(limits.trackedIntervals);
    } else {
      config_->intervalIs(limits.interval);
      config_->maxFlapsIs(limits.maxFlaps);
    }
  }

  State after(std::vector<double> const& readings, State const& start) {
    sm_->linkFlapTimeStampDelAll();
    sm_->curFlapsIs(start.flaps);
    sm_->curIntervalsIs(start.intervals);
    sm_->curViolationsIs(start.violations);
    causeStatus_->intfStatusDel(id_);
    Vek::ManualClock clock;
    for (double const reading : readings) {
      clock.secondsIs(reading);
      sm_->handleLinkStatus();
    }
    State state{.times = {},
                .flaps = sm_->curFlaps(),
                .intervals = sm_->curIntervals(),
                .violations = sm_->curViolations(),
                .errdisabledAt = std::nullopt};
    for (auto entry = sm_->linkFlapTimeStamp().iterator(); entry; ++entry)
      state.times.push_back(entry->time());
    if (causeStatus_->intfStatus().has(id_)) state.errdisabledAt = causeStatus_->intfStatus(id_);
    return state;
  }

 private:
  Tarn::IntfId id_{"Ethernet1"};
  Vek::Ptr<LinkFlap::Config> config_{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<LinkFlap::ProfileConfig> profile_{Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"})};
  Vek::Ptr<Interface::EthPhyIntfStatus> status_{Vek::make<Interface::EthPhyIntfStatus>(id_)};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_{Vek::make<Errdisable::CauseStatus>()};
  LinkFlap::LinkFlapProfileSm::Ptr sm_;
};

struct Tally {
  long combinations{0};
  long differences{0};
};

/// Four flaps at readings a, b, b, a, for all a and b; from counters at 0, and from counters that
/// stand one short of their limits.
void compareHistories(Machine& machine, Limits const& limits, Mistake mistake, Tally& tally) {
  State const starts[]{
      {},
      {.times = {}, .flaps = limits.maxFlaps, .violations = limits.violations - 1U},
  };
  for (State const& start : starts)
    for (double const a : kTimes)
      for (double const b : kTimes) {
        std::vector<double> const readings{a, b, b, a};
        NumberModel model{limits, start, mistake};
        for (double const reading : readings)
          model.flap(reading);
        State const found = machine.after(readings, start);
        ++tally.combinations;
        if (same(found, model.state())) continue;
        if (++tally.differences > 3 || mistake != Mistake::none) continue;
        ADD_FAILURE() << "interval " << limits.interval << " maxFlaps " << limits.maxFlaps
                      << " violations " << limits.violations << " trackedIntervals "
                      << limits.trackedIntervals << " times " << a << ' ' << b << ": found "
                      << found.flaps << ' ' << found.intervals << ' ' << found.violations << ' '
                      << found.errdisabledAt.value_or(-7) << " expected " << model.state().flaps
                      << ' ' << model.state().intervals << ' ' << model.state().violations << ' '
                      << model.state().errdisabledAt.value_or(-7);
      }
}

TEST(NumericEdges, OfAProfileAreAsTheModelSays) {
  Machine machine{true};
  Tally tally;
  for (double const interval : intervals())
    for (std::uint32_t const maxFlaps : kLimits)
      for (std::uint32_t const violations : kLimits)
        for (std::uint32_t const tracked : kLimits) {
          Limits const limits{interval, maxFlaps, violations, tracked};
          machine.limitsAre(limits, true);
          compareHistories(machine, limits, Mistake::none, tally);
        }
  // 17 intervals, 4 * 4 * 4 limits, 2 starts, 13 * 13 times.
  EXPECT_EQ(tally.combinations, 17L * 64 * 2 * 169);
  EXPECT_EQ(tally.differences, 0);
  std::printf("profile values: %ld combinations, %ld differences\n", tally.combinations,
              tally.differences);
}

TEST(NumericEdges, OfTheGlobalValuesAreAsTheModelSays) {
  Machine machine{false};
  Tally tally;
  for (double const interval : intervals())
    for (std::uint32_t const maxFlaps : kLimits) {
      Limits const limits{interval, maxFlaps, 1, 1};
      machine.limitsAre(limits, false);
      compareHistories(machine, limits, Mistake::none, tally);
    }
  EXPECT_EQ(tally.combinations, 17L * 4 * 2 * 169);
  EXPECT_EQ(tally.differences, 0);
  std::printf("global values: %ld combinations, %ld differences\n", tally.combinations,
              tally.differences);
}

/// The planted faults: a model that makes a mistake must differ somewhere.
TEST(NumericEdges, SeeEachMistake) {
  Machine machine{true};
  for (int mistake = 1; mistake < NumberModel::kMistakes; ++mistake) {
    Tally tally;
    for (double const interval : {2.9, 4294967296.0, 2147483648.0, 1.0})
      for (Limits const& limits :
           {Limits{interval, 0, 1, 1}, Limits{interval, 1, 4294967295U, 2147483648U},
            Limits{interval, 1, 1, 1}, Limits{interval, 4294967295U, 1, 0},
            Limits{interval, 0, 4294967295U, 4294967295U}}) {
        machine.limitsAre(limits, true);
        compareHistories(machine, limits, static_cast<Mistake>(mistake), tally);
      }
    EXPECT_GT(tally.differences, 0) << "mistake " << mistake << " makes no difference";
  }
}

}  // namespace
