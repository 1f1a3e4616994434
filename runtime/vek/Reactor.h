#pragma once

#include <initializer_list>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/vek/Activity.h"
#include "runtime/vek/Attribute.h"
#include "runtime/vek/Notifiee.h"

#pragma GCC visibility push(default)

namespace Vek {

/// A watcher that turns the notifications of `Watched` into calls of its owner's handlers.
///
/// A concrete reactor (`Self`) overrides the notifications it wants, each with one line that names
/// the handler; only the attributes of those are offered to it. What every reactor needs stands
/// here: binding, the zombie rule, re-pointing.
///
/// Notifications run at once; `ActivityReactor` adds deferral.
///
/// Ownership: holds its notifier by counted reference, its owner by a plain pointer which the owner
/// clears before it goes.
template <typename Self, typename Owner, typename Watched>
class Reactor : public Watched::NotifieeConst {
 public:
  /// Binds to `watched` and registers with it; runs no handler.
  Reactor(Ptr<Watched const> const& watched, Owner* owner)
      : Watched::NotifieeConst{overridden()}, owner_{owner} {
    Watched::NotifieeConst::notifierIs(watched);
    this->isRegisteredNotifieeIs(true);
  }

  /// Turns this reactor into a zombie (delivery off, marked for deletion) or back. A zombie runs no
  /// handler, even when a notification reaches it.
  virtual void vekDoZombieReactors(bool on) {
    if (on == this->vekMarkedForDeletion()) return;
    if (this->attached() != nullptr) this->hasNotificationActiveIs(!on);
    this->vekMarkedForDeletionIs(on);
  }

 protected:
  ~Reactor() override = default;

  void ownerIs(Owner* owner) noexcept { owner_ = owner; }
  Owner* owner() const noexcept { return owner_; }

  /// A notification without a key: runs the handler, unless this reactor is being torn down.
  /// Trap: the handler may destroy this reactor; nothing is touched after it.
  void react(void (Owner::*handler)()) {
    if (runsHandlers()) (owner_->*handler)();
  }

  /// A keyed notification.
  template <typename Key>
  void react(Key const& key, void (Owner::*handler)(Key)) {
    if (runsHandlers()) (owner_->*handler)(key);
  }

  /// Points this reactor at another object, then brings the owner up to date by running `handlers`
  /// in order; stops when one of them tears this reactor down.
  void rebind(Ptr<PtrInterface const> const& object,
              std::initializer_list<void (Owner::*)()> handlers) {
    if (object.get() == this->attached()) return;
    Ptr<Reactor> const self{this};  // a handler may end in the owner's destruction
    // All that can fail in registering comes first: this reactor must not end attached but deaf.
    if (auto const* const notifier = dynamic_cast<Watched const*>(object.get()))
      notifier->roomForWatchersOf(this->watching());
    Watched::NotifieeConst::notifierIs(object);
    if (!object) return;
    try {
      for (auto const handler : handlers)
        react(handler);
    } catch (...) {
      this->isRegisteredNotifieeIs(true);  // a handler that fails does not leave a deaf reactor
      throw;
    }
    // Deliberate: whatever it was before, a reactor that is pointed at an object hears of it. One
    // that is marked for deletion still runs no handler.
    this->isRegisteredNotifieeIs(true);
  }

 private:
  static constexpr AttributeMask overridden() noexcept {
    constexpr AttributeMask mask = Watched::NotifieeConst::template overriddenBy<Self>();
    static_assert(mask != 0, "a reactor that overrides no notification watches nothing");
    return mask;
  }

  bool runsHandlers() const noexcept { return !this->vekMarkedForDeletion() && owner_ != nullptr; }

  Owner* owner_;
};

/// A reactor whose keyed notifications may be deferred to an activity.
template <typename Self, typename Owner, typename Watched>
class ActivityReactor : public Reactor<Self, Owner, Watched>, private DeferredDelivery {
 public:
  ActivityReactor(Ptr<ActivityConfig> const& activity, Ptr<Watched const> const& watched,
                  Owner* owner)
      : Reactor<Self, Owner, Watched>{watched, owner},
        deferral_{*this, *this, std::tuple_size_v<decltype(pending_)>} {
    deferral_.vekFwkActivityIs(activity);
  }

  Ptr<ActivityConfig> const& vekFwkActivity() const noexcept { return deferral_.vekFwkActivity(); }
  void vekFwkActivityIs(Ptr<ActivityConfig> const& activity) {
    deferral_.vekFwkActivityIs(activity);
  }
  Ptr<ActivitySm> const& actsm() const noexcept { return deferral_.actsm(); }
  void actsmIs(Ptr<ActivitySm> actsm) noexcept { deferral_.actsmIs(std::move(actsm)); }

  /// Switching delivery off also forgets what waits for the activity.
  void hasNotificationActiveIs(bool on) override {
    if (!on) forgetPending();
    Watched::NotifieeConst::hasNotificationActiveIs(on);
  }

  /// Deferred delivery: one waiting key is replayed through onX(key), several become one onX().
  void handleNotification(ActivityConfig* activity) override {
    AttributeId const id = deferral_.takePending();
    if (id == 0) return;
    try {
      deliverAttribute(id);
    } catch (...) {
      deferral_.redispatch(deferral_.actsm());  // what else waits is not lost with this one
      throw;
    }
    deferral_.redispatch(deferral_.actsm());
    handleDefault(activity, id, true);
  }

 protected:
  ~ActivityReactor() override = default;

  /// A keyed notification: keeps the key, lets the runtime defer it, else runs the handler.
  template <typename Key, typename Value, typename Watcher>
  void react(Keyed<Watched, Key, Value, Watcher> const& attribute,
             std::type_identity_t<Key> const& key, void (Owner::*handler)(Key)) {
    bool deferred = false;
    forEachKeyed([&](auto const& candidate, auto& pending) {
      if constexpr (std::is_same_v<decltype(pending.key), Key>) {
        if (candidate.id != attribute.id) return;
        // The same key again, while it waits alone, is still one key.
        if (pending.count == 1 && pending.key == key && deferral_.defers()) {
          deferred = true;
          return;
        }
        // Run at once although another key waits (the activity no longer defers): that one still
        // waits.
        deferred = vekOnAttribute(attribute.id, pending.count);
        if (deferred) pending.key = key;
      }
    });
    if (!deferred) Reactor<Self, Owner, Watched>::react(key, handler);
  }

  /// Whether the notification now raised for attribute `id` is to wait for the activity.
  bool vekOnAttribute(AttributeId id, unsigned& pendingCount) {
    return deferral_.vekOnAttribute(id, pendingCount);
  }

  /// What remains to be done once attribute `id` was delivered. Nothing for these reactors.
  void handleDefault(ActivityConfig* /*activity*/, AttributeId /*id*/, bool /*delivered*/) {}

 private:
  /// Slot for the key of a keyed notification that waits for the activity; empty for others.
  template <typename Attribute>
  struct Pending {};
  template <typename O, typename Key, typename Value, typename Watcher>
  struct Pending<Keyed<O, Key, Value, Watcher>> {
    Key key{};
    unsigned count{0};
  };

  template <typename... Attributes>
  static std::tuple<Pending<Attributes>...> slots(std::tuple<Attributes...> const&);

  /// Calls visit(attribute, slot) for every keyed attribute of the watched type.
  template <typename Visit>
  void forEachKeyed(Visit visit) {
    forEachKeyed(visit, std::make_index_sequence<std::tuple_size_v<decltype(pending_)>>{});
  }
  template <typename Visit, std::size_t... I>
  void forEachKeyed(Visit& visit, std::index_sequence<I...> /*attributes*/) {
    (visitKeyed(visit, std::get<I>(Watched::vekAttributes), std::get<I>(pending_)), ...);
  }
  template <typename Visit, typename Attribute, typename Slot>
  static void visitKeyed(Visit& visit, Attribute const& attribute, Slot& slot) {
    if constexpr (!std::is_empty_v<Slot>) visit(attribute, slot);
  }

  void deliverAttribute(AttributeId id) {
    forEachKeyed([&](auto const& attribute, auto& pending) {
      if (attribute.id != id) return;
      unsigned const count = std::exchange(pending.count, 0U);
      if (count == 1) {
        Deferral::Delivering const delivering{deferral_, id};
        (this->*attribute.memberChanged)(std::move(pending.key));
      } else {
        (this->*attribute.severalChanged)();
      }
    });
  }

  void forgetPending() override {
    deferral_.cancel();
    forEachKeyed([](auto const& /*attribute*/, auto& pending) { pending.count = 0; });
  }

  decltype(slots(Watched::vekAttributes)) pending_;
  Deferral deferral_;
};

}  // namespace Vek

#pragma GCC visibility pop
