// Memory runs out at every place where it is asked for.
//
//   reliability-memory [EVENTS [SEED [PLANTED-FAULT]]]
//
// A random scenario runs on the living library. Each of its events is tried again and again from the
// same state: its first allocation fails, then its second, and so on, once alone and once with all
// that follow. After each attempt the library must stand where it stood before the event or where the
// event leads, profile by profile, and must then go on as if nothing had happened.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/vek/Pool.h"

#include "statemachines/SourcePoints.h"

#include "tests/reliability/DirectFailures.h"
#include "tests/reliability/FaultEvents.h"
#include "tests/reliability/FaultWorld.h"
#include "tests/reliability/support/AllocationFaults.h"
#include "tests/reliability/support/StandardError.h"

namespace {

struct Figures {
  unsigned long events{0};
  unsigned long attempts{0};
  unsigned long before{0};   ///< the call threw, nothing had changed
  unsigned long after{0};    ///< all was done in spite of it
  unsigned long partly{0};   ///< some profiles counted the flap, the others are as before
  unsigned long mended{0};   ///< a handler failed; run again, it led where the event leads
  unsigned long decided{0};  ///< attempts of events that err-disable
};

class Scenario {
 public:
  explicit Scenario(unsigned seed) : seed_{seed}, random_{seed} {}

  void run(unsigned long events) {
    for (unsigned long i = 0; i < events; ++i) {
      traced_ = i % 16 == 7;
      FaultEvent const event = nextEvent(world_, random_);
      name_ = event.name;
      ++figures_.events;
      tryOut(event);
    }
  }

  Figures const& figures() const { return figures_; }

 private:
  /// What one flap leads to when the handlers of some profiles fail.
  struct Outcome {
    unsigned failed;
    bool sticky;  ///< none is counted after the first that fails
    WorldState state;
  };

  [[noreturn]] void fail(std::string const& what) const {
    AllocationFaults::stop();
    std::printf("FAILED: %s (seed %u, event %lu: %s, allocation %lu %s)\n", what.c_str(), seed_,
                figures_.events, name_.c_str(), static_cast<unsigned long>(failAt_),
                sticky_ ? "and all that follow" : "alone");
    std::exit(1);
  }

  void tryOut(FaultEvent const& event) {
    {
      WorldState const here = world_.state();
      world_.load(here);
      WorldState const before = world_.state();
      if (before != here) fail("loading a state leads to another one");
      run(event, 0, false);
      if (reports_ != 0 || threw_) fail("a callback fails although there is memory");
      WorldState const after = world_.state();
      outcomes_.clear();
      for (bool const sticky : {false, true}) {
        for (unsigned long k = 1;; ++k) {
          world_.load(before);
          run(event, k, sticky);
          if (AllocationFaults::failuresOfThisPlan() == 0) break;
          ++figures_.attempts;
          if (before.records != after.records && event.flapOf) ++figures_.decided;
          check(event, before, after);
        }
      }
      world_.load(before);
      run(event, 0, false);
      if (world_.state() != after) fail("the library does not go on as if nothing had happened");
      if (event.probe) world_.load(before);
      outcomes_.clear();
    }
    if (auto const wrong = world_.toldWrongly(); !wrong.empty()) fail(wrong);
  }

  void run(FaultEvent const& event, unsigned long failAt, bool sticky) {
    failAt_ = failAt;
    sticky_ = sticky;
    threw_ = false;
    (void)world_.takeReports();
    (void)world_.takeGreedyFailures();
    auto const shortBefore = error_.shortReports();
    for (int const level : {2, 8})
      LinkFlap::traceHandle().levelIs(level, traced_);
    AllocationFaults::failFrom(failAt, sticky);
    try {
      event.act(world_);
    } catch (std::bad_alloc const&) {
      threw_ = true;
    }
    AllocationFaults::stop();
    for (int const level : {2, 8})
      LinkFlap::traceHandle().levelIs(level, false);
    reports_ = world_.takeReports() + static_cast<unsigned>(error_.shortReports() - shortBefore);
    greedy_ = world_.takeGreedyFailures();
    if (FaultWorld::plantHalfDone && reports_ > greedy_ && event.flapOf)
      for (LinkFlap::LinkFlapProfileSm& sm : world_.intfSm(*event.flapOf)->linkFlapProfileSm())
        sm.clearHistory();
  }

  void check(FaultEvent const& event, WorldState const& before, WorldState const& after) {
    if (auto const wrong = world_.toldWrongly(); !wrong.empty()) fail(wrong);
    WorldState const now = world_.state();
    if (threw_) {
      if (reports_ != 0) fail("a call that threw has also reported");
      if (now != before) fail("the call threw and has changed something");
      ++figures_.before;
      return;
    }
    if (reports_ < greedy_) fail("a callback failed and was not reported");
    unsigned const handlers = reports_ - greedy_;
    if (handlers == 0) {
      if (now != after) fail("nothing is reported, and the event has not done its work");
      ++figures_.after;
      return;
    }
    if (event.flapOf) {
      checkFlap(*event.flapOf, event, now, before, after, handlers);
      return;
    }
    if (!now.sameInputs(after)) fail("a change that was made was not kept");
    if (!event.again) fail("a callback fails that needs no memory");
    event.again(world_);
    if (world_.takeReports() != 0) fail("a callback fails although there is memory");
    if (world_.state() != after) fail("the handler, run again, leads somewhere else");
    ++figures_.mended;
  }

  /// Each profile machine has counted the flap in full or is as it was. An err-disable that was
  /// decided has its record and cleared histories, or neither.
  void checkFlap(Tarn::IntfId const& id, FaultEvent const& event, WorldState const& now,
                 WorldState const& before, WorldState const& after, unsigned handlers) {
    if (outcomes_.empty()) computeOutcomes(id, event, before, after);
    for (Outcome const& outcome : outcomes_)
      if (outcome.sticky == sticky_ && outcome.failed == handlers && outcome.state == now) {
        ++figures_.partly;
        return;
      }
    fail(now.records == before.records ? "a profile is neither before nor after the flap"
                                       : "an err-disable was done by halves");
  }

  void computeOutcomes(Tarn::IntfId const& id, FaultEvent const& event, WorldState const& before,
                       WorldState const& after) {
    // The link is up, and nobody has counted it.
    WorldState uncounted = after;
    uncounted.machines = before.machines;
    uncounted.records = before.records;
    std::vector<Vek::String> names;
    for (InterfaceMachineState const& machine : before.machines)
      if (machine.id == id)
        for (ProfileMachineState const& profile : machine.profiles)
          names.push_back(profile.name);
    world_.load(before);
    event.act(world_);
    for (std::size_t first = 0; first < names.size(); ++first)
      for (bool const sticky : {false, true}) {
        world_.load(uncounted);
        std::size_t const end = sticky ? names.size() : first + 1;
        for (std::size_t i = 0; i < names.size(); ++i)
          if (i < first || i >= end)
            world_.intfSm(id)->linkFlapProfileSm(names[i])->handleLinkStatus();
        outcomes_.push_back({static_cast<unsigned>(end - first), sticky, world_.state()});
      }
  }

  unsigned seed_;
  std::mt19937 random_;
  StandardError error_;
  FaultWorld world_;
  Figures figures_;
  std::vector<Outcome> outcomes_;
  std::string name_;
  unsigned long failAt_{0};
  bool sticky_{false};
  bool traced_{false};
  bool threw_{false};
  unsigned reports_{0};
  unsigned greedy_{0};
};

Figures scenario(unsigned long events, unsigned seed) {
  Scenario run{seed};
  run.run(events);
  return run.figures();
}

constexpr int kSkipped{77};

/// Whether the objects of the runtime, too, come from the allocator that fails.
bool runtimeGoesThrough() {
  AllocationFaults::failFrom(1, true);
  bool threw = false;
  try {
    (void)Vek::make<LinkFlap::Config>();
  } catch (std::bad_alloc const&) {
    threw = true;
  }
  AllocationFaults::stop();
  return threw;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a leak checker ends the process without flushing
  unsigned long const events = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000;
  auto const seed = static_cast<unsigned>(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
  std::string_view const planted = argc > 3 ? argv[3] : "";
  FaultWorld::plantLostRecord = planted == "lost-record";
  FaultWorld::plantHalfDone = planted == "half-done";
  FaultWorld::plantLeak = planted == "leak";
  FaultWorld::plantDeafWatcher = planted == "deaf-watcher";

  if (Vek::Pool::pooled()) {
    std::puts("skipped: with the pool, objects do not come from the allocator one by one");
    return kSkipped;
  }
  unsigned cases = 0;
  if (auto const wrong = directFailures(cases); !wrong.empty()) {
    std::printf("FAILED: %s\n", wrong.c_str());
    return 1;
  }
  if (!runtimeGoesThrough()) {
    std::puts("FAILED: the runtime's objects do not come from operator new");
    return 1;
  }
  Vek::traceSinkIs([](Vek::TraceRecord const&) {});
  bool const leak = std::exchange(FaultWorld::plantLeak, false);
  (void)scenario(300, seed + 1);  // whatever is made once for the process is there now
  FaultWorld::plantLeak = leak;

  auto const blocks = AllocationFaults::liveBlocks();
  auto const failuresBefore = AllocationFaults::failures();
  Figures const figures = scenario(events, seed);
  auto const points = AllocationFaults::failures() - failuresBefore;
  auto const leaked = AllocationFaults::liveBlocks() - blocks;
  std::printf(
      "%lu attempts: %lu left all as before, %lu did all, %lu did some profiles' part, "
      "%lu were mended by the handler run again; %lu attempts of an err-disable\n",
      figures.attempts, figures.before, figures.after, figures.partly, figures.mended,
      figures.decided);
  std::printf(
      "%u more where a scenario does not come: registering, re-pointing, delivering, by "
      "name\n",
      cases);
  if (leaked != 0) {
    std::printf("FAILED: %ld blocks leaked\n", static_cast<long>(leaked));
    return 1;
  }
  if (figures.attempts < events || figures.decided == 0 || figures.partly == 0) {
    std::puts("FAILED: the scenario reaches too little");
    return 1;
  }
  std::printf(
      "%lu events, %lu failure points (%lu failed allocations), 0 differences, 0 blocks "
      "leaked, seed %u\n",
      figures.events, figures.attempts, static_cast<unsigned long>(points), seed);
  return events >= 10000 && figures.attempts < 10000 ? 1 : 0;
}
