#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "runtime/vek/Entity.h"
#include "runtime/vek/ListRaw.h"
#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

namespace Vek {

/// A set of attributes of one type, as one bit each; see `attributeBit`.
using AttributeMask = std::uint16_t;

inline constexpr AttributeMask kAllAttributes{0xFFFF};

/// The bit of an attribute. The identifiers of one type never share one (`distinct` holds that).
constexpr AttributeMask attributeBit(AttributeId id) noexcept {
  return static_cast<AttributeMask>(1U << (id % 16U));
}

/// Base of every watcher of an object's attributes.
///
/// A watcher is attached to one notifier at a time and hears of changes while it is registered with
/// it. It holds the notifier by a counted reference; the notifier does not hold the watcher, which
/// deregisters itself when it is destroyed.
///
/// Whatever a notification does (delete watchers, register them, change the notifier or drop it),
/// each watcher that was registered before the change and still is when its turn comes is told
/// once, in order of registration among the watchers of one kind.
class PtrInterface::NotifieeConst : public PtrInterface,
                                    public ListRaw<PtrInterface::NotifieeConst>::Link {
 public:
  /// Switches delivery on (registers with the notifier) or off (deregisters).
  void hasNotificationActiveIs(bool on) override;

  /// The object watched, or empty.
  virtual Ptr<PtrInterface const> notifier() const { return notifier_; }
  /// Attaches to `object`, or to nothing when it is empty; deregisters from the object held before.
  /// Attaching the object already held does nothing. Registering takes an object that is a
  /// `Notifier`; the watcher bases of the watched types see to it.
  virtual void notifierIs(Ptr<PtrInterface const> const& object);
  virtual bool isRegisteredNotifiee() const { return linked(); }
  /// Registers with the notifier (without one: does nothing) or deregisters.
  virtual void isRegisteredNotifieeIs(bool on);
  /// A name for reports: the watcher's class.
  virtual Name name() const;

  /// The notifier has lost its last outside reference. Only entities whose watchers do not keep
  /// them alive tell this.
  virtual void onZeroReferences();
  /// Called by the runtime: `onZeroReferences`.
  void handleZeroRef() { onZeroReferences(); }
  /// A callback of this watcher threw while the change of attribute `id` was told. By default the
  /// failure goes to the exception sink. Runs while the exception is being handled.
  virtual void onNotificationException(AttributeId id);
  /// Called by the runtime: `onNotificationException`, with an exception of that one contained.
  void handleNotificationException(AttributeId id) noexcept;

  AttributeMask watching() const noexcept { return watching_; }

 protected:
  /// `watching`: the attributes whose changes this watcher is to be offered; at least one.
  explicit NotifieeConst(AttributeMask watching = kAllAttributes) noexcept : watching_{watching} {}
  ~NotifieeConst() override;

 private:
  AttributeMask const watching_;
  Ptr<PtrInterface const> notifier_;
};

/// An entity that tells watchers of its changes.
///
/// The watchers are kept in groups of those that watch the same attributes, so a change is offered
/// to nobody whom it does not concern. There are as many groups as there are kinds of watchers,
/// whatever the number of watchers; registering takes constant time.
class Notifier : public Entity {
 public:
  using Entity::Entity;

  /// Called by the watcher itself.
  void notifieeIs(PtrInterface::NotifieeConst& watcher) const;
  void notifieeDel(PtrInterface::NotifieeConst& watcher) const noexcept;
  /// After it, registering watchers of these attributes cannot fail.
  void roomForWatchersOf(AttributeMask watching) const { (void)groupOf(watching); }

  bool hasNotifiees() const noexcept;

 protected:
  ~Notifier() override;

  /// Calls `raise(watcher, walk)` on each watcher that watches attribute `id`, whose name serves
  /// reports. An exception of a watcher is handed to it
  /// (`onNotificationException`) and stops no other.
  /// Trap: this object may be gone when it returns.
  template <typename Watcher, typename Raise>
  void tell(AttributeId id, std::string_view name, Raise raise);

 private:
  using NotifieeConst = PtrInterface::NotifieeConst;

  struct Group {
    ListRaw<NotifieeConst> watchers;
    Group* next{nullptr};
    AttributeMask watching{0};
  };

  Group& groupOf(AttributeMask watching) const;
  [[gnu::cold]] static void watcherThrew(SnapshotIterator<NotifieeConst>& walk, AttributeId id,
                                         std::string_view name,
                                         std::type_info const& watcher) noexcept;

  mutable Group first_;
};

template <typename Watcher, typename Raise>
void Notifier::tell(AttributeId id, std::string_view name, Raise raise) {
  std::uint64_t const limit = ListRaw<NotifieeConst>::numberNow();
  for (Group* group = &first_; group != nullptr; group = group->next) {
    if ((group->watching & attributeBit(id)) == 0 || group->watchers.empty()) continue;
    SnapshotIterator<NotifieeConst> walk{group->watchers, limit};
    while (NotifieeConst* const watcher = walk.next()) {
      // Read before the call: afterwards the watcher may be no more, and a report names its class.
      std::type_info const& type = typeid(*watcher);
      try {
        raise(static_cast<Watcher&>(*watcher), walk);
      } catch (...) {
        watcherThrew(walk, id, name, type);
      }
    }
    if (walk.listGone()) return;
  }
}

/// Reports that an object is not of the watched type, whose name is the message.
[[noreturn]] void throwWatchedTypeException(std::type_info const& watched);

/// Base of the watcher base of one watched type: `X::NotifieeConst` derives from `NotifieeOf<X>`.
template <typename Watched>
class NotifieeOf : public PtrInterface::NotifieeConst {
 public:
  Ptr<Watched const> watched() const {
    return Ptr<Watched const>{static_cast<Watched const*>(notifier().get())};
  }
  /// Throws `Vek::TypeException` when the object is not a `Watched`.
  void notifierIs(Ptr<PtrInterface const> const& object) override {
    if (object && dynamic_cast<Watched const*>(object.get()) == nullptr)
      throwWatchedTypeException(typeid(Watched));
    PtrInterface::NotifieeConst::notifierIs(object);
  }

 protected:
  using PtrInterface::NotifieeConst::NotifieeConst;
  NotifieeOf() = default;
};

// Which notifications a watcher class overrides, found out when it is compiled. A member function
// that `W` inherits from `N` has type `R (N::*)(...)`; one that it declares does not.

/// Whether `notification`, written `&W::onX`, is still the one of `N`.
template <typename N, typename C>
consteval bool inheritsScalar(void (C::* /*notification*/)()) {
  return std::is_same_v<N, C>;
}

/// The same for the keyed form, picked from the overloads of the name.
template <typename N, typename Key, typename C>
consteval bool inheritsKeyed(void (C::* /*notification*/)(Key)) {
  return std::is_same_v<N, C>;
}

}  // namespace Vek
