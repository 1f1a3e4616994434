#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/vek/Clock.h"
#include "runtime/vek/Report.h"
#include "runtime/vek/Trace.h"

#include "statemachines/LinkFlapSm.h"

/// One trace message: where it came from and what it said.
struct TraceLine {
  int level;
  int line;
  std::string function;
  std::string message;

  friend bool operator==(TraceLine const&, TraceLine const&) = default;
};

std::ostream& operator<<(std::ostream& out, TraceLine const& line);

/// The three counters of a profile machine.
struct Counters {
  unsigned flaps;
  unsigned intervals;
  unsigned violations;

  friend bool operator==(Counters const&, Counters const&) = default;
};

std::ostream& operator<<(std::ostream& out, Counters const& counters);

/// A whole switch in memory: the state objects that other agents would publish, a Root, a clock
/// that only the test moves, and a record of all that the library lets out.
///
///     Switch sw{{.maxFlaps = 2, .interval = 10}};
///     sw.addInterface(ethernet1);
///     sw.start();
///     sw.flap(ethernet1, {0, 3, 6});
///     EXPECT_EQ(sw.errdisabledAt(ethernet1), 6.0);
///
/// Both trace levels of the library are on. An exception that left a callback is kept; a test that
/// expects one takes it with `takeFailures`, and one that was not taken fails the test.
///
/// One at a time: clock, trace sink and exception sink are the process's.
class Switch {
 public:
  struct Values {
    unsigned maxFlaps{5};
    double interval{10};
  };
  struct ProfileValues {
    unsigned maxFlaps;
    double interval;  ///< seconds
    unsigned violations{1};
    unsigned trackedIntervals{1};
  };
  using ProfileList = std::vector<std::pair<char const*, bool>>;

  Switch();
  explicit Switch(Values values);
  ~Switch();
  Switch(Switch const&) = delete;
  Switch& operator=(Switch const&) = delete;

  // Configuration and interfaces. A new object has its values before it becomes a member.

  /// Both directory members, the configuration first; the link is in state 0.
  void addInterface(Tarn::IntfId const& id);
  void addPhyConfig(Tarn::IntfId const& id);
  void addStatus(Tarn::IntfId const& id);
  Vek::Ptr<LinkFlap::ProfileConfig> profileIs(char const* name, ProfileValues values);
  /// The interface's own settings: always a new object.
  Vek::Ptr<LinkFlap::IntfConfig> settingsIs(Tarn::IntfId const& id, bool enabled,
                                            ProfileList const& profiles = {});
  /// The objects that `addInterface` made last.
  Vek::Ptr<Interface::EthPhyIntfStatus> const& status(Tarn::IntfId const& id) const;
  Vek::Ptr<Interface::EthPhyIntfConfig> const& phyConfig(Tarn::IntfId const& id) const;
  void linkIs(Tarn::IntfId const& id, unsigned rawLinkStatus);
  void phyConfigStateIs(Tarn::IntfId const& id, unsigned state);
  /// At each of these times: down, then up.
  void flap(Tarn::IntfId const& id, std::initializer_list<double> times);

  // The library.

  /// Installs a machine for the present objects; nothing but the Root holds it afterwards.
  void start();
  /// The machine installed; ends the process when there is none.
  LinkFlap::LinkFlapSm& machine() const { return *root->linkFlapSm(); }
  /// Not counted; null when there is none.
  LinkFlap::LinkFlapIntfSm* intfSm(Tarn::IntfId const& id) const;
  LinkFlap::LinkFlapProfileSm* profileSm(Tarn::IntfId const& id, char const* profile) const;
  /// The names of the interface's profile machines, sorted.
  std::vector<std::string> profiles(Tarn::IntfId const& id) const;
  /// The interfaces of the status directory in the order of a walk.
  std::vector<Tarn::IntfId> walkOrder() const;

  // What became of it.

  std::optional<double> errdisabledAt(Tarn::IntfId const& id) const;
  /// The recorder of `takeWrites` follows the object.
  void causeStatusIs(Vek::Ptr<Errdisable::CauseStatus> const& object);
  /// Changes of the record since the last call, such as "Ethernet1 6.5" or "Ethernet1 withdrawn".
  std::vector<std::string> takeWrites();
  /// Trace lines since the last call. The address of a profile machine at the beginning of a message
  /// is rewritten to "@INTERFACE/PROFILE" ("-" for a machine without an interface status).
  std::vector<TraceLine> takeTraces();
  /// The same, the messages alone.
  std::vector<std::string> takeMessages();
  std::vector<Vek::CallbackFailure> takeFailures();
  /// How many lines of that function were traced since the last take.
  std::size_t traced(std::string_view function) const;

  Vek::ManualClock clock;
  Vek::Ptr<Vek::ActivityConfig> activity;
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir;
  Vek::Ptr<Errdisable::Config> errdisableConfig;
  Vek::Ptr<LinkFlap::Config> config;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus;
  Vek::String causeName{"link-flap"};
  LinkFlap::Root::Ptr root;

 private:
  class Recorder;

  std::map<Tarn::IntfId, Vek::Ptr<Interface::EthPhyIntfStatus>> status_;
  std::map<Tarn::IntfId, Vek::Ptr<Interface::EthPhyIntfConfig>> phyConfig_;
  std::vector<std::string> writes_;
  std::vector<TraceLine> traces_;
  std::vector<Vek::CallbackFailure> failures_;
  Vek::Ptr<Recorder> recorder_;
  Vek::TraceSink previousTraceSink_;
  Vek::ExceptionSink previousExceptionSink_;
};

/// The times in the queue of a profile machine, oldest first.
std::vector<double> times(LinkFlap::LinkFlapProfileSm const& sm);
Counters counters(LinkFlap::LinkFlapProfileSm const& sm);
