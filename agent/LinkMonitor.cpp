#include "agent/LinkMonitor.h"

#include <algorithm>
#include <utility>

#include "agent/PortPublisher.h"

namespace LinkFlapd {

namespace {

/// How often a link gained carrier between two looks at it; nothing when the second look is the
/// older one.
std::optional<std::uint32_t> rise(LinkState const& before, LinkState const& after) {
  if (!before.carrierUpCount || !after.carrierUpCount)
    return !before.carrier && after.carrier ? 1 : 0;  // a kernel without the counter: what is seen
  // Unsigned arithmetic takes the counter's wrap in its stride. A rise of more than half the range
  // is a step back.
  std::uint32_t const difference = *after.carrierUpCount - *before.carrierUpCount;
  if (difference > UINT32_MAX / 2) return std::nullopt;
  return difference;
}

/// An interface seen for the first time: nobody knows whether it had carrier since it was set up,
/// unless it never had any.
bool neverHadCarrier(LinkState const& link) {
  return !link.carrier && link.carrierUpCount == 0U;
}

}  // namespace

LinkMonitor::LinkMonitor(InterfaceFilter filter, PortPublisher& publisher)
    : filter_{std::move(filter)}, publisher_{publisher} {}

void LinkMonitor::linkDel(int index) {
  if (auto const found = entries_.find(index); found != entries_.end()) remove(found);
}

void LinkMonitor::dumpBegins() {
  ++dump_;
  for (auto& [index, entry] : entries_)
    entry.seen = false;
}

void LinkMonitor::dumpEnds(bool complete) {
  if (!complete) return;
  gap_ = false;
  for (auto next = entries_.begin(); next != entries_.end();) {
    auto const current = next++;
    if (!current->second.seen) remove(current);
  }
}

void LinkMonitor::portShut(int index) {
  auto const found = entries_.find(index);
  if (found != entries_.end() && found->second.port.link.adminUp) found->second.shutDuring = dump_;
}

Port const* LinkMonitor::port(Tarn::IntfId const& id) const {
  auto const found = byName_.find(id.name().view());
  return found == byName_.end() ? nullptr : port(found->second);
}

Port const* LinkMonitor::port(int index) const {
  auto const found = entries_.find(index);
  return found == entries_.end() ? nullptr : &found->second.port;
}

bool LinkMonitor::watchesAny(std::string const& pattern) const {
  return std::any_of(byName_.begin(), byName_.end(), [&](auto const& port) {
    return InterfaceFilter::matches(pattern, port.first);
  });
}

void LinkMonitor::take(LinkState const& link, bool fromDump) {
  nameTaken(link.name, link.index);
  auto const found = entries_.find(link.index);
  if (found == entries_.end()) {
    if (filter_.matches(link)) add(link);
    return;
  }
  Entry& entry = found->second;
  entry.seen = true;
  if (entry.port.link.name == link.name) {
    settle(entry, link, fromDump);
    return;
  }
  // What happened up to the renaming is still the old name's.
  LinkState lastOfOldName = link;
  lastOfOldName.name = entry.port.link.name;
  settle(entry, lastOfOldName, fromDump);

  Entry renamed = entry;
  renamed.port.link.name = link.name;
  renamed.port.id = Tarn::IntfId{link.name.c_str()};
  remove(found, link.name);
  if (!filter_.matches(link)) return;
  insert(std::move(renamed));
}

void LinkMonitor::add(LinkState const& link) {
  Entry entry;
  entry.seen = true;
  entry.port.id = Tarn::IntfId{link.name.c_str()};
  entry.port.link = link;
  entry.port.configInProgress = !link.adminUp || neverHadCarrier(link);
  insert(std::move(entry));
}

void LinkMonitor::insert(Entry entry) {
  int const index = entry.port.link.index;
  Port const& port = entries_.emplace(index, std::move(entry)).first->second.port;
  byName_.emplace(port.link.name, index);
  publisher_.add(port.id, port.configInProgress, port.link.linkUp());
  for (Listener* const listener : listeners_)
    listener->portAdded(port);
}

void LinkMonitor::settle(Entry& entry, LinkState const& link, bool fromDump) {
  Port& port = entry.port;
  LinkState const before = port.link;
  auto const carrierGains = rise(before, link);
  // Messages arrive in the order in which they were made, so a step back can only be another
  // interface that was made with the same index and name while messages were lost. A dump then
  // shows it; a message that does is left out.
  if (!carrierGains && !fromDump) return;

  // Our shut was lost in an overrun, and so was the operator's setting up: the dump shows neither.
  bool const shutUndone =
      fromDump && link.adminUp && entry.shutDuring && *entry.shutDuring != dump_;
  if (!link.adminUp || shutUndone) entry.shutDuring.reset();
  bool const adminWasUp = before.adminUp && !shutUndone;
  bool const nowAdminUp = link.adminUp && !adminWasUp;
  bool inProgress = port.configInProgress || nowAdminUp;

  PortChange change;
  change.flaps = carrierGains.value_or(0);
  if (nowAdminUp && !fromDump && !gap_) {
    // The message was made as the port was set up. A link that gained carrier while it was
    // administratively down is not told of, so gains beyond the first are of that time.
    change.firstCarrier = link.carrier;
    change.flaps = 0;
  } else if (!adminWasUp && !link.adminUp) {
    change.flaps = 0;
  } else if (inProgress && change.flaps > 0) {
    change.firstCarrier = true;
    --change.flaps;
  } else if (nowAdminUp && link.carrier) {
    change.firstCarrier = true;  // a driver that keeps carrier while the port is down
  }
  if (change.firstCarrier) inProgress = false;
  change.adminDown = before.adminUp && !link.adminUp;
  change.wentDown = before.linkUp() && !link.linkUp();

  // Order: the table first, since publishing can come back here (an err-disabled port is shut).
  port.link = link;
  port.configInProgress = inProgress || !link.adminUp;
  publish(port, change, nowAdminUp);
}

void LinkMonitor::publish(Port const& port, PortChange const& change, bool nowAdminUp) {
  if (nowAdminUp)
    for (Listener* const listener : listeners_)
      listener->portAdminUp(port);
  for (Listener* const listener : listeners_)
    listener->portChanged(port, change);
  if (change.firstCarrier) publisher_.settle(port.id, false, true);
  for (std::uint32_t flap = 0; flap < change.flaps; ++flap)
    publisher_.flap(port.id);
  publisher_.settle(port.id, port.configInProgress, port.link.linkUp());
}

void LinkMonitor::remove(Entries::iterator entry, std::string const& renamedTo) {
  Port const port = std::move(entry->second.port);
  entries_.erase(entry);
  byName_.erase(port.link.name);
  publisher_.remove(port.id);
  for (Listener* const listener : listeners_)
    listener->portRemoved(port, renamedTo);
}

/// Names are unique: an interface that turns up under a watched port's name means that the port is
/// gone or called otherwise, and that we missed it.
void LinkMonitor::nameTaken(std::string const& name, int index) {
  auto const holder = byName_.find(name);
  if (holder != byName_.end() && holder->second != index) remove(entries_.find(holder->second));
}

}  // namespace LinkFlapd
