#pragma once

#include <memory>
#include <stdexcept>

#include "tests/simulation/ModelObjects.h"
#include "tests/simulation/Plant.h"

/// The reference: what the library has to do, written down a second time as plainly as possible,
/// with nothing of the library in it. No reactive runtime, no counted pointers; state objects live
/// as long as the model, machines are owned by their parents.
namespace Simulation::Model {

/// An exception of the library.
struct Raised : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Flap {
  std::uint32_t index;
  double time;
};

/// The flap times of one profile machine, oldest first.
struct FlapQueue {
  std::uint32_t headIndex{0};
  std::uint32_t nextIndex{0};
  std::uint32_t version{0};
  std::vector<Flap> flaps;
  bool restarts{false};  ///< a planted fault

  void append(double time);
  void remove(std::size_t position);
  /// Removes the flap of that index, if there is one.
  void removeIndex(std::uint32_t index);
  void clear();
};

struct ProfileSm {
  IntfSm* owner;
  int name;
  ProfileConfig* profileConfig;  ///< or null
  Config* config;
  PhyConfig* phyConfig;
  Status* status;
  CauseStatus* cause;
  std::uint32_t curIntervals{0};
  std::uint32_t curFlaps{0};
  std::uint32_t curViolations{0};
  FlapQueue queue;
  bool active{false};
  bool marked{false};
  Reactor<ProfileSm> values;
  Reactor<ProfileSm> link;

  void restart() { curFlaps = curIntervals = curViolations = 0; }
  void forget() {
    queue.clear();
    restart();
  }
  void activeIs(bool on);
  void markedIs(bool on);
};

struct IntfSm {
  TopSm* owner;
  Status* status;
  Config* config;
  IntfConfig* intfConfig;  ///< or null
  PhyConfig* phyConfig;
  CauseStatus* cause;
  bool enable{false};
  bool active{false};
  bool marked{false};
  bool member{false};  ///< of its owner's collection
  std::array<std::unique_ptr<ProfileSm>, kProfiles> profiles;
  Reactor<IntfSm> globalValues;
  Reactor<IntfSm> settings;

  std::unique_ptr<ProfileSm>& profile(int name) { return profiles[static_cast<std::size_t>(name)]; }
  void activeIs(bool on);
  void markedIs(bool on);
};

struct TopSm {
  int serial;  ///< tells machines apart in messages
  ConfigDir* configDir;
  StatusDir* statusDir;
  ErrdisableConfig* errdisable;
  Config* config;
  CauseStatus* cause;
  int causeName;
  bool active{false};
  bool marked{false};
  Reactor<TopSm> configDirReactor;
  Reactor<TopSm> statusDirReactor;
  Reactor<TopSm> errdisableReactor;
  Reactor<TopSm> configReactor;
  std::array<std::unique_ptr<IntfSm>, kMaxInterfaces> intfs;

  std::unique_ptr<IntfSm>& intf(int id) { return intfs[static_cast<std::size_t>(id)]; }
  void activeIs(bool on);
  void markedIs(bool on);
};

/// What a machine is installed with.
struct Inputs {
  ConfigDir* configDir;
  StatusDir* statusDir;
  ErrdisableConfig* errdisable;
  Config* config;
  CauseStatus* cause;
  int causeName;

  friend bool operator==(Inputs const&, Inputs const&) = default;
};

/// The whole system. Each operation is one event, as the library's host would cause it.
class System {
 public:
  System(Names const& names, Plant plant) : names_{names}, plant_{plant} {}

  // What other agents publish.
  void rawLinkStatusIs(Status& status, std::uint32_t value);
  void enabledIs(IntfConfig& settings, bool on);
  void ownListIs(IntfConfig& settings, int name, bool on);
  void ownListDel(IntfConfig& settings, int name);
  enum class Value { maxFlaps, violations, trackedIntervals };
  void profileValueIs(ProfileConfig& profile, Value which, std::uint32_t value);
  void profileIntervalIs(ProfileConfig& profile, double seconds);
  void maxFlapsIs(Config& config, std::uint32_t value);
  void intervalIs(Config& config, double seconds);
  void intfConfigIs(Config& config, int intf, IntfConfig* settings);
  void intfConfigDel(Config& config, int intf);
  void profileConfigIs(Config& config, int name, ProfileConfig* profile);
  void profileConfigDel(Config& config, int name);
  void defaultListIs(Config& config, int name, bool on);
  void defaultListDel(Config& config, int name);
  void phyConfigIs(ConfigDir& dir, int intf, PhyConfig* phyConfig);
  void phyConfigDel(ConfigDir& dir, int intf);
  void statusIs(StatusDir& dir, int intf, Status* status);
  void statusDel(StatusDir& dir, int intf);
  void disabledIs(ErrdisableConfig& config, int cause, bool on);
  void disabledDel(ErrdisableConfig& config, int cause);

  /// The record written or, without a time, withdrawn; by anybody.
  void record(CauseStatus& cause, int intf, std::optional<double> time);

  // What the host does with the Root. The machine replaced or removed lives on when `keep` is set,
  // until `dropKept`.
  void install(Inputs const& inputs, bool keep);
  void uninstall(bool keep);
  void dropKept() { kept_.reset(); }
  void newRoot();

  // What anybody may call on a machine.
  void handleIntf(TopSm& sm, int intf);
  void handleProfileConfig(TopSm& sm, int name);
  void handleDefaultProfileList(TopSm& sm, int name);
  void handleDisabled(TopSm& sm, int cause);
  void deleteIntfSm(TopSm& sm, int intf);
  void manageProfileSm(IntfSm& sm);
  void handleLinkFlapValues(IntfSm& sm);
  void handleProfileList(IntfSm& sm, int name);
  void handleProfileValues(ProfileSm& sm, int name, int intf);
  void handleLinkStatus(ProfileSm& sm);
  // Its watched objects replaced; `settings` and `profile` may be null.
  void configIs(IntfSm& sm, Config& config);
  void intfConfigIs(IntfSm& sm, IntfConfig* settings);
  void profileConfigIs(ProfileSm& sm, ProfileConfig* profile);
  void statusIs(ProfileSm& sm, Status& status);

  TopSm* installed() const { return installed_.get(); }
  TopSm* kept() const { return kept_.get(); }
  std::uint32_t rootChanges() const { return rootChanges_; }

  /// Whether a change of that profile, or of the default list, reaches an interface that is selected
  /// but has no machine: that ends the process, as documented, and has to be avoided.
  static bool profileChangeEndsAll(Config const& config, int name);
  static bool defaultListChangeEndsAll(Config const& config);
  static bool profileChangeEndsAll(TopSm& sm, int name);
  static bool defaultListChangeEndsAll(TopSm& sm);

  // The clock: what its source says during the event, and what became of it.
  void clockPlanIs(ClockPlan const& plan) { plan_ = plan; }
  void newClockRun() { last_.reset(); }
  double last() const { return last_.value_or(0); }

  /// The levels at which messages are wanted.
  void tracingIs(bool level2, bool level8) {
    level2_ = level2;
    level8_ = level8;
  }

  Outcome outcome;

 private:
  double now();
  template <typename Text>
  void trace(int level, int line, char const* function, Text text);
  template <typename Handle>
  void guarded(char const* attribute, Handle handle);

  std::string textOf(IntfSm const& sm) const;
  std::string textOf(ProfileSm const& sm) const;
  std::string const& interface(int id) const {
    return names_.interfaces[static_cast<std::size_t>(id)];
  }
  std::string const& profile(int id) const { return names_.profiles[static_cast<std::size_t>(id)]; }

  std::unique_ptr<TopSm> newTopSm(Inputs const& inputs);
  static Inputs inputsOf(TopSm const& sm);
  IntfSm& intfSmIs(TopSm& sm, Status* status, IntfConfig* settings, PhyConfig* phyConfig);
  std::unique_ptr<IntfSm> newIntfSm(TopSm& sm, Status* status, IntfConfig* settings,
                                    PhyConfig* phyConfig);
  void handleIntfConfigEnabled(IntfSm& sm);
  void select(IntfSm& sm, Switches<kProfiles> const& list);
  void newProfileSm(IntfSm& sm, int name, ProfileConfig* profileConfig);
  void profileValueChanged(ProfileConfig& profile);
  bool evaluate(ProfileSm& sm, double flapTime, double firstFlapTime, std::uint32_t maxFlaps,
                std::uint32_t interval, std::uint32_t violations, std::uint32_t trackedIntervals);
  void logTimeStamps(ProfileSm const& sm);
  static bool endsAll(TopSm& sm, int name, bool everyDefault);

  bool planted(Plant plant) const { return plant_ == plant; }

  Names const& names_;
  Plant plant_;
  ClockPlan plan_;
  std::optional<double> last_;
  bool level2_{false};
  bool level8_{false};
  int nextSerial_{0};
  std::uint32_t rootChanges_{0};
  std::unique_ptr<TopSm> kept_;
  std::unique_ptr<TopSm> installed_;
};

template <typename Text>
void System::trace(int level, int line, char const* function, Text text) {
  outcome.hits += level2_ || level8_ ? 2 : 1;
  if (level == 2 ? level2_ : level8_) outcome.traces.push_back({level, line, function, text()});
}

template <typename Handle>
void System::guarded(char const* attribute, Handle handle) {
  try {
    handle();
  } catch (Raised const& raised) {
    outcome.failures.push_back({attribute, raised.what()});
  }
}

}  // namespace Simulation::Model
