#include "agent/PortReporter.h"

#include "agent/Journal.h"

namespace LinkFlapd {

namespace {

/// " (carrier up count 7)", or nothing where the kernel has no such counter.
std::string counterText(Port const& port) {
  if (!port.link.carrierUpCount) return {};
  return " (carrier up count " + std::to_string(*port.link.carrierUpCount) + ")";
}

std::string flapsText(std::uint32_t flaps) {
  return std::to_string(flaps) + (flaps == 1 ? " flap" : " flaps");
}

}  // namespace

void PortReporter::portAdded(Port const& port) {
  std::string const state = !port.link.adminUp  ? "administratively down"
                            : port.link.carrier ? "link up"
                                                : "link down";
  say(port, "watched: index " + std::to_string(port.link.index) + ", " + state + counterText(port));
}

void PortReporter::portRemoved(Port const& port, std::string const& renamedTo) {
  if (renamedTo.empty())
    say(port, "no longer watched: the interface is gone");
  else
    say(port, "no longer watched: the interface is now called " + renamedTo);
}

void PortReporter::portAdminUp(Port const& port) {
  say(port, "administratively up");
}

void PortReporter::portChanged(Port const& port, PortChange const& change) {
  if (change.firstCarrier)
    say(port, "link up, first carrier since it was set up: no flap" + counterText(port));
  if (change.flaps > 0)
    say(port, flapsText(change.flaps) + ", link " + (port.link.linkUp() ? "up" : "down") +
                  counterText(port));
  else if (change.wentDown && !change.adminDown)
    say(port, "link down");
  if (change.adminDown) say(port, "administratively down");
}

void PortReporter::say(Port const& port, std::string const& what) {
  journal_.line(port.link.name + ": " + what);
}

}  // namespace LinkFlapd
