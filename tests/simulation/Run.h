#pragma once

#include <string>
#include <utility>

#include "tests/simulation/Compare.h"

namespace Simulation {

/// One history: a seed's names, objects and events, on the library and on the model.
class Run {
 public:
  Run(std::uint64_t seed, Plant plant);

  /// Plays events until `count` were played or something differs; whether nothing does. A draw that
  /// finds nothing to act on is no event.
  bool play(std::uint64_t count);

  std::uint64_t events() const { return event_; }
  std::uint64_t digest() const { return comparison_.digest(); }
  std::uint64_t compared() const { return comparison_.compared(); }
  std::string const& difference() const { return comparison_.difference(); }
  /// What the last event was.
  std::string const& what() const { return what_; }

  /// How often some things came about, to show that a history is worth its name.
  struct Tally {
    std::uint64_t recorded{0};
    std::uint64_t withdrawn{0};
    std::uint64_t raised{0};
    std::uint64_t traces{0};
    std::uint64_t readings{0};
    std::uint64_t avoided{0};  ///< events that would have ended the process, see `steered`
  };
  Tally const& tally() const { return tally_; }

 private:
  /// Which machines an event can touch.
  struct Touched {
    static constexpr int kNone{-1};
    static constexpr int kAll{-2};
    int intf{kAll};
  };

  /// How lively a seed is: the weights of the kinds of events, and the pace of its clock.
  struct Temper {
    std::uint32_t links;     ///< of 1024 events, those that change a link
    std::uint32_t pace;      ///< mean step of the clock, in 1/16 s
    std::uint32_t oddities;  ///< one value in so many is an odd one
    bool tracing;
    bool misplaced;  ///< status objects stand under other interfaces' keys too
  };

  void populate();
  bool event();
  Touched linkEvent();
  Touched configurationEvent();
  Touched interfaceEvent();
  Touched profileEvent();
  Touched directoryEvent();
  Touched hostEvent();
  Touched callEvent();
  Touched callTop(LinkFlap::LinkFlapSm& library, Model::TopSm& model);
  Touched replaceInput(LinkFlap::LinkFlapSm& library, Model::TopSm& model);
  Touched callIntf(LinkFlap::LinkFlapSm& library, Model::TopSm& model);
  Touched callProfile(LinkFlap::LinkFlapIntfSm& library, Model::IntfSm& model);
  Touched switchEvent();

  void clockEvent();
  double windowEdge();
  void tracingEvent();
  Touched steered(int intf);

  /// Runs one event on the library and on the model; the name is for reports.
  template <typename OnLibrary, typename OnModel>
  void both(char const* name, OnLibrary onLibrary, OnModel onModel);

  int intf() { return random_.index(static_cast<int>(names_.interfaces.size())); }
  int name() { return random_.index(kProfiles); }
  /// Mostly the first variant of an object, now and then the other.
  std::size_t variant() { return random_.oneIn(16) ? 1 : 0; }
  std::uint32_t limit();
  std::uint32_t violationsValue();
  std::uint32_t trackedValue();
  double intervalValue();
  bool odd() { return random_.oneIn(temper_.oddities); }

  Random random_;
  Temper temper_;
  Names names_;
  World world_;
  Model::System model_;
  Comparison comparison_;
  std::uint64_t event_{0};
  std::string what_;
  double clock_{0};
  int untilNewRun_{
      0};  ///< events until the clock's source is replaced, after a leap; 0: not planned
  Tally tally_;
};

template <typename OnLibrary, typename OnModel>
void Run::both(char const* name, OnLibrary onLibrary, OnModel onModel) {
  what_ = name;
  try {
    onLibrary();
  } catch (std::exception const& thrown) {
    world_.outcome.thrown = thrown.what();
  }
  try {
    onModel();
  } catch (Model::Raised const& raised) {
    model_.outcome.thrown = raised.what();
  }
}

}  // namespace Simulation
