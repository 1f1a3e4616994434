#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "runtime/vek/Entity.h"
#include "runtime/vek/ListRaw.h"
#include "runtime/vek/Ptr.h"

#pragma GCC visibility push(default)

namespace Vek {

class ActivityConfig;
class ActivitySm;
class Deferral;

/// What an activity can deliver to: a reactor with keyed notifications that may wait.
class DeferredDelivery {
 public:
  /// Delivers one waiting attribute.
  virtual void handleNotification(ActivityConfig* activity) = 0;
  /// Forgets what waits.
  virtual void forgetPending() = 0;

 protected:
  ~DeferredDelivery() = default;
};

/// The activity (event loop) on which reactors run, as the host configures it.
///
/// By default a keyed notification runs its handler at once. With `deferred` it waits until the
/// host calls `ActivitySm::deliver`; then one waiting key of an attribute is delivered, while
/// several become one unkeyed notification, which the link-flap machines ignore. A host that defers
/// must therefore deliver after every change, or it loses some.
class ActivityConfig final : public Entity {
 public:
  static constexpr std::string_view vekTypeName{"Vek::ActivityConfig"};

  using Entity::Entity;

  VekType const* fwkType() const override;

  bool deferred() const noexcept { return deferred_; }
  /// Concerns later notifications; what waits already stays where it is.
  void deferredIs(bool on) noexcept { deferred_ = on; }

 private:
  friend Ptr<ActivitySm> vekActivitySmFor(Ptr<ActivityConfig> const& config);
  ~ActivityConfig() override;

  bool deferred_{false};
  Ptr<ActivitySm> activitySm_;
};

/// The running state of an activity: the reactors that wait for delivery.
///
/// Ownership: belongs to its `ActivityConfig`. The queue does not hold the reactors: one that goes
/// leaves the queue. Each is held while it is delivered to.
class ActivitySm final : public PtrInterface {
 public:
  explicit ActivitySm(ActivityConfig* config) noexcept : config_{config} {}

  /// The configuration this activity belongs to; null once that has gone.
  ActivityConfig* config() const noexcept { return config_; }
  bool defers() const noexcept { return config_ != nullptr && config_->deferred(); }

  /// Whether a notification waits.
  bool pending() const noexcept { return !queue_.empty(); }
  /// Delivers as many waiting attributes as there are at the call and returns their number; the
  /// reactors take turns. Something may wait again when it returns: call it until `pending()` is
  /// false.
  std::size_t deliver();

 private:
  friend class ActivityConfig;
  friend class Deferral;
  ~ActivitySm() override;

  ActivityConfig* config_;
  ListRaw<Deferral> queue_;
};

/// The activity's running state, made on first use; empty for an empty pointer.
Ptr<ActivitySm> vekActivitySmFor(Ptr<ActivityConfig> const& config);

/// What a reactor whose keyed notifications can be deferred keeps for its activity.
class Deferral : public ListRaw<Deferral>::Link {
 public:
  /// `attributes`: how many attributes can wait at most. `reactor` owns this object.
  Deferral(PtrInterface::NotifieeConst& reactor, DeferredDelivery& delivery,
           std::size_t attributes);
  ~Deferral() { cancel(); }

  Ptr<ActivityConfig> const& vekFwkActivity() const noexcept { return activity_; }
  /// Stores the activity and its running state. What waits with the former one stays there while
  /// that lives, and moves here when it goes.
  void vekFwkActivityIs(Ptr<ActivityConfig> const& activity);
  Ptr<ActivitySm> const& actsm() const noexcept { return actsm_; }
  void actsmIs(Ptr<ActivitySm> actsm) noexcept { actsm_ = std::move(actsm); }

  /// Whether a notification raised now would wait, were it not being delivered.
  bool defers() const noexcept { return actsm_ && actsm_->defers(); }
  /// Whether the notification now raised for attribute `id` is to wait. If so, `pendingCount` has
  /// been raised by one and the reactor stands in the activity's queue.
  bool vekOnAttribute(AttributeId id, unsigned& pendingCount);
  /// Takes the attribute that has waited longest; 0 when none waits.
  AttributeId takePending() noexcept;
  /// Puts the reactor back into the queue of `actsm` if more attributes wait.
  void redispatch(Ptr<ActivitySm> const& actsm) noexcept;
  /// Leaves the queue and forgets what waits.
  void cancel() noexcept;

  /// While it lives, the next notification of attribute `id` counts as delivered: it does not wait.
  class Delivering {
   public:
    Delivering(Deferral& deferral, AttributeId id) noexcept : deferral_{deferral} {
      deferral.delivering_ = id;
    }
    ~Delivering() { deferral_.delivering_ = 0; }
    Delivering(Delivering const&) = delete;
    Delivering& operator=(Delivering const&) = delete;

   private:
    Deferral& deferral_;
  };

 private:
  friend class ActivitySm;

  void leaveQueue() noexcept;
  void activityGone() noexcept;

  PtrInterface::NotifieeConst& reactor_;
  DeferredDelivery& delivery_;
  Ptr<ActivityConfig> activity_;
  Ptr<ActivitySm> actsm_;
  ActivitySm* queuedAt_{nullptr};
  AttributeId delivering_{0};
  std::vector<AttributeId> waiting_;
};

}  // namespace Vek

#pragma GCC visibility pop
