#include "runtime/vek/Activity.h"

#include "runtime/vek/Notifiee.h"

namespace Vek {

ActivityConfig::~ActivityConfig() {
  if (activitySm_) activitySm_->config_ = nullptr;
}

ActivitySm::~ActivitySm() {
  while (Deferral* const waiting = queue_.front())
    waiting->activityGone();
}

std::size_t ActivitySm::deliver() {
  Ptr<ActivitySm> const self{this};
  Ptr<ActivityConfig> const config{config_};
  std::size_t due = 0;
  {
    SnapshotIterator<Deferral> walk{queue_};
    while (Deferral const* const waiting = walk.next())
      due += waiting->waiting_.size();
  }
  std::size_t delivered = 0;
  while (delivered < due) {
    Deferral* const waiting = queue_.front();
    if (waiting == nullptr) break;
    Ptr<PtrInterface::NotifieeConst> const hold{&waiting->reactor_};
    AttributeId const id = waiting->waiting_.front();
    waiting->leaveQueue();
    try {
      waiting->delivery_.handleNotification(config.get());
    } catch (...) {
      hold->handleNotificationException(id);
    }
    // A reactor that was given no activity meanwhile has nowhere else to wait with the rest.
    if (!waiting->waiting_.empty() && waiting->queuedAt_ == nullptr) waiting->redispatch(self);
    ++delivered;
  }
  return delivered;
}

Ptr<ActivitySm> vekActivitySmFor(Ptr<ActivityConfig> const& config) {
  if (!config) return nullptr;
  if (!config->activitySm_) config->activitySm_ = make<ActivitySm>(config.get());
  return config->activitySm_;
}

Deferral::Deferral(PtrInterface::NotifieeConst& reactor, DeferredDelivery& delivery,
                   std::size_t attributes)
    : reactor_{reactor}, delivery_{delivery} {
  waiting_.reserve(attributes);
}

void Deferral::vekFwkActivityIs(Ptr<ActivityConfig> const& activity) {
  actsm_ = vekActivitySmFor(activity);
  activity_ = activity;
}

bool Deferral::vekOnAttribute(AttributeId id, unsigned& pendingCount) {
  if (delivering_ == id) {
    delivering_ = 0;  // what the handler itself causes is a change of its own and waits
    return false;
  }
  if (!actsm_ || !actsm_->defers()) return false;
  if (++pendingCount == 1) {
    waiting_.push_back(id);
    redispatch(actsm_);
  }
  return true;
}

AttributeId Deferral::takePending() noexcept {
  if (waiting_.empty()) return 0;
  AttributeId const id = waiting_.front();
  if (waiting_.size() == 1) {
    waiting_.clear();
    leaveQueue();
  } else {
    waiting_.erase(waiting_.begin());
  }
  return id;
}

void Deferral::activityGone() noexcept {
  leaveQueue();
  // Another than the one that goes: what `actsm_` holds does not go.
  if (actsm_) {
    redispatch(actsm_);
  } else {
    delivery_.forgetPending();
  }
}

void Deferral::redispatch(Ptr<ActivitySm> const& actsm) noexcept {
  if (waiting_.empty() || queuedAt_ != nullptr || !actsm) return;
  actsm->queue_.append(*this);
  queuedAt_ = actsm.get();
}

void Deferral::leaveQueue() noexcept {
  if (queuedAt_ == nullptr) return;
  queuedAt_->queue_.remove(*this);
  queuedAt_ = nullptr;
}

void Deferral::cancel() noexcept {
  leaveQueue();
  waiting_.clear();
}

}  // namespace Vek
