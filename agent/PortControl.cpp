#include "agent/PortControl.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <system_error>

#include "agent/ErrDisableTrace.h"
#include "agent/Journal.h"
#include "agent/PortSwitch.h"

namespace LinkFlapd {

namespace {

std::string text(Tarn::IntfId const& id) {
  return std::string{id.name().view()};
}

std::string secondsText(double time) {
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.6f", time);
  return buffer.data();
}

}  // namespace

class PortControl::Watcher final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  explicit Watcher(PortControl& control) : control_{control} {}
  void onIntfStatus(Tarn::IntfId id) override { control_.recordChanged(id); }

 private:
  PortControl& control_;
};

PortControl::PortControl(Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
                         Vek::Ptr<LinkFlap::Config const> const& config,
                         Surroundings const& surroundings)
    : causeStatus_{causeStatus},
      config_{config},
      with_{surroundings},
      watcher_{Vek::make<Watcher>(*this)} {
  watcher_->notifierIs(causeStatus_);
  watcher_->isRegisteredNotifieeIs(true);
}

PortControl::~PortControl() {
  watcher_->isRegisteredNotifieeIs(false);
}

std::vector<std::string> PortControl::shutPorts() const {
  std::vector<std::string> names;
  for (auto const& [index, name] : shut_)
    names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

void PortControl::portAdminUp(Port const& port) {
  shut_.erase(port.link.index);
  if (!causeStatus_->intfStatus().has(port.id)) return;
  with_.journal.line(port.link.name + ": err-disable withdrawn: the port was set up again");
  causeStatus_->intfStatusDel(port.id);
}

void PortControl::portAdded(Port const& port) {
  // A port keeps being shut under a new name; its record went with the old one.
  if (auto const found = shut_.find(port.link.index); found != shut_.end()) {
    if (port.link.adminUp)
      shut_.erase(found);
    else
      found->second = port.link.name;
  }
}

void PortControl::portRemoved(Port const& port, std::string const& renamedTo) {
  auto const found = shut_.find(port.link.index);
  if (found == shut_.end()) return;
  if (renamedTo.empty())
    shut_.erase(found);
  else
    found->second = renamedTo;
}

/// Order: runs inside the state machines' decision, which has cleared the port's history before it
/// wrote the record, so that whatever shutting the port does meets a clean state.
void PortControl::recordChanged(Tarn::IntfId const& id) {
  if (!causeStatus_->intfStatus().has(id)) return;  // withdrawn
  std::string const why = reason();
  with_.journal.line(text(id) + ": err-disabled at monotonic " +
                     secondsText(causeStatus_->intfStatus(id)) + " s" + why + "; " + act(id));
}

std::string PortControl::reason() const {
  auto const reason = with_.trace.take();
  if (!reason) return {};
  auto const profile = config_->profileConfig(Vek::String{reason->profile});
  // The state machines use whole seconds, too.
  auto const interval = static_cast<long long>(profile ? profile->interval() : config_->interval());
  // One flap more than is allowed makes the violation.
  return " by profile " + reason->profile + ": " + std::to_string(reason->maxFlaps + 1ULL) +
         " flaps in an interval of " + std::to_string(interval) + " s (" +
         std::to_string(reason->maxFlaps) + " allowed), flaps from " + reason->firstFlap + " to " +
         reason->lastFlap;
}

std::string PortControl::act(Tarn::IntfId const& id) {
  if (with_.portSwitch == nullptr) return "monitor only: port left up";
  Port const* const port = with_.monitor.port(id);
  if (port == nullptr) return "shutting failed: the port is gone";
  int const index = port->link.index;
  if (shut_.contains(index)) return "port already shut";
  if (!port->link.adminUp) return "port already administratively down";
  try {
    with_.portSwitch->shut(index);
  } catch (std::system_error const& error) {
    return "shutting failed: " + error.code().message();
  }
  with_.monitor.portShut(index);
  shut_[index] = port->link.name;
  return "port shut";
}

}  // namespace LinkFlapd
