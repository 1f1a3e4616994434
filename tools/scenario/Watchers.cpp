#include "tools/scenario/Watchers.h"

#include "runtime/vek/Exception.h"
#include "runtime/vek/State.h"

namespace Scenario {

void CauseStatusWatcher::watch(Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  printed_.clear();
  notifierIs(causeStatus);
  isRegisteredNotifieeIs(true);
}

void CauseStatusWatcher::onIntfStatus(Tarn::IntfId intf) {
  auto const causeStatus = watched();
  double const* const time = causeStatus->intfStatus().find(intf);
  auto const before = printed_.find(intf);
  if (time == nullptr) {
    if (before == printed_.end()) return;
    printed_.erase(before);
    out_.line("S- ", intf, ' ', history_(intf));
    return;
  }
  if (before != printed_.end() && Vek::sameValue(before->second, *time)) return;
  printed_.insert_or_assign(intf, *time);
  out_.line("S ", intf, ' ', *time, ' ', history_(intf));
  // Order: last, since what is called may change the record, or have this watch another one.
  errdisabled_();
}

void RootWatcher::onLinkFlapSm() {
  out_.line("R ", name_);
  if (throws_) Vek::throwRangeException("thrown by a watcher, as the scenario wants");
}

void RootWatcher::onNotificationException(Vek::AttributeId id) {
  out_.line("RX ", name_, ' ', id);
}

}  // namespace Scenario
