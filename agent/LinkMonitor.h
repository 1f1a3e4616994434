#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "runtime/tarn/IntfId.h"

#include "agent/InterfaceFilter.h"
#include "agent/LinkState.h"

namespace LinkFlapd {

class PortPublisher;

/// One watched interface.
struct Port {
  Tarn::IntfId id;
  LinkState link;  ///< as the kernel last told it
  /// From an administrative down to the first carrier after the administrative up: what the link
  /// does meanwhile is the operator's doing and no flap.
  bool configInProgress{false};
};

/// What one message of the kernel changed on a port.
struct PortChange {
  std::uint32_t flaps{
      0};  ///< returns to up, the first carrier after an administrative up not counted
  bool firstCarrier{false};  ///< that first carrier came
  bool wentDown{false};      ///< the link was up and is not any more
  bool adminDown{false};
};

/// The table of watched interfaces, and the rules by which the kernel's messages become flaps.
///
/// The kernel merges link messages: several changes within a second can arrive as one message, or
/// as one that shows no change at all. What it never merges is the counter of carrier gains, so the
/// rise of that counter, not the states seen, says how often a link returned to up. `docs/agent.md`
/// tells the rules and their reasons.
class LinkMonitor {
 public:
  /// Hears of ports. Told before the change is published, so that a line that says why stands
  /// before the line that says what the state machines made of it.
  class Listener {
   public:
    virtual void portAdded(Port const&) {}
    /// `renamedTo` is empty unless the interface lives on under that name.
    virtual void portRemoved(Port const&, std::string const& /*renamedTo*/) {}
    virtual void portAdminUp(Port const&) {}
    virtual void portChanged(Port const&, PortChange const&) {}

   protected:
    ~Listener() = default;
  };

  /// Ownership: `publisher` outlives the monitor.
  LinkMonitor(InterfaceFilter filter, PortPublisher& publisher);

  /// Listeners are told in the order in which they were added. Ownership: the caller's.
  void listenerAdd(Listener& listener) { listeners_.push_back(&listener); }

  /// A message of the kernel: an interface's state at the time of a change.
  void linkIs(LinkState const& link) { take(link, false); }
  void linkDel(int index);
  /// Messages were lost; until a dump has told everything, none can be taken for the very next one.
  void messagesLost() { gap_ = true; }

  /// A dump tells the state of every interface. What it does not mention is gone; but only a dump
  /// that ran to its end undisturbed may be trusted in that.
  void dumpBegins();
  void dumpLinkIs(LinkState const& link) { take(link, true); }
  void dumpEnds(bool complete);

  /// This host has just set the port administratively down; the kernel's message is on its way.
  void portShut(int index);

  /// The port of that identifier or index, or null. Valid until the next message.
  Port const* port(Tarn::IntfId const& id) const;
  Port const* port(int index) const;
  std::size_t size() const { return entries_.size(); }
  /// Whether some watched port has a name that matches.
  bool watchesAny(std::string const& pattern) const;

 private:
  struct Entry {
    Port port;
    bool seen{false};                    ///< since the present dump began
    std::optional<unsigned> shutDuring;  ///< our shut is not confirmed yet: which dump was the last
  };
  using Entries = std::map<int, Entry>;

  void take(LinkState const& link, bool fromDump);
  void add(LinkState const& link);
  void settle(Entry& entry, LinkState const& link, bool fromDump);
  void publish(Port const& port, PortChange const& change, bool nowAdminUp);
  void remove(Entries::iterator entry, std::string const& renamedTo = {});
  void nameTaken(std::string const& name, int index);
  void insert(Entry entry);

  InterfaceFilter filter_;
  PortPublisher& publisher_;
  std::vector<Listener*> listeners_;
  Entries entries_;                                 ///< by interface index
  std::map<std::string, int, std::less<>> byName_;  ///< the index of each
  bool gap_{false};   ///< messages were lost and no dump made up for it yet
  unsigned dump_{0};  ///< number of the latest dump begun
};

}  // namespace LinkFlapd
