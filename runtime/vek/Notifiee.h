#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "runtime/vek/Entity.h"
#include "runtime/vek/ListRaw.h"
#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

#pragma GCC visibility push(default)

namespace Vek {

/// A set of attributes of one type, as one bit each; see `attributeBit`.
using AttributeMask = std::uint16_t;

inline constexpr AttributeMask kAllAttributes{0xFFFF};

/// The bit of an attribute. The identifiers of one type never share one (`distinct` holds that).
constexpr AttributeMask attributeBit(AttributeId id) noexcept {
  return static_cast<AttributeMask>(1U << (id % 16U));
}

/// What a watcher watches. A base of its own: its member fills the gap behind the reference count,
/// and there is at least one watcher for each interface and profile.
class PtrInterface::Watching : public PtrInterface {
 public:
  AttributeMask watching() const noexcept { return watching_; }

 protected:
  explicit Watching(AttributeMask watching) noexcept : watching_{watching} {}
  ~Watching() override = default;

 private:
  AttributeMask const watching_;
};

/// Base of every watcher of an object's attributes.
///
/// A watcher is attached to one notifier at a time and hears of changes while it is registered with
/// it. It holds the notifier by a counted reference; the notifier does not hold the watcher, which
/// deregisters itself when it is destroyed.
///
/// Whatever a notification does (delete watchers, register them, change the notifier or drop it),
/// each watcher that was registered before the change and still is when its turn comes is told
/// once, in order of registration among the watchers of one kind.
class PtrInterface::NotifieeConst : public PtrInterface::Watching,
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

 protected:
  /// `watching`: the attributes whose changes this watcher is to be offered; at least one.
  explicit NotifieeConst(AttributeMask watching = kAllAttributes) noexcept : Watching{watching} {}
  ~NotifieeConst() override;

  /// The object that was attached, without a reference; null for none.
  PtrInterface const* attached() const noexcept { return notifier_.get(); }

 private:
  Ptr<PtrInterface const> notifier_;
};

/// An entity that tells watchers of its changes.
///
/// The watchers stand in one list as long as all of them watch the same attributes, else in groups
/// of those that do, so a change is offered to nobody whom it does not concern. There are as many
/// groups as kinds of watchers, whatever the number of watchers; registering takes constant time, and
/// memory only for the first watcher of a second or later kind.
class Notifier : public Entity {
 public:
  using Entity::Entity;

  /// Called by the watcher itself. Registering throws `std::bad_alloc`, and nothing has changed then.
  void notifieeIs(PtrInterface::NotifieeConst& watcher) const;
  void notifieeDel(PtrInterface::NotifieeConst& watcher) const noexcept;
  /// After it, registering watchers of these attributes cannot fail.
  void roomForWatchersOf(AttributeMask watching) const { (void)watchersOf(watching); }

  bool hasNotifiees() const noexcept;

 protected:
  ~Notifier() override;

  /// Calls `raise(watcher, walk)` on each watcher that watches `attribute`. An exception of a
  /// watcher is handed to it (`onNotificationException`) and stops no other.
  /// Trap: this object may be gone when it returns.
  // Unguarded: its frame holds no array, and the guard would be a sixth of its work.
  template <auto const& attribute, typename Watcher, typename Raise>
  __attribute__((no_stack_protector)) void tell(Raise raise);

 private:
  using NotifieeConst = PtrInterface::NotifieeConst;

  /// The watchers of the same attributes, once an object has watchers of several kinds.
  struct Group {
    explicit Group(AttributeMask mask) noexcept : watching{mask} {}

    AttributeMask const watching;
    Group* next{nullptr};
    ListRaw<NotifieeConst> watchers;
  };
  /// One list as long as all watch the same, which hardly any object outgrows; then the groups.
  union Watchers {
    Watchers() noexcept : all() {}
    ~Watchers() {}  // NOLINT(modernize-use-equals-default): it would be deleted

    ListRaw<NotifieeConst> all;
    Group* groups;
  };
  /// A group that is being told of a change, and those that come after it.
  struct Round {
    explicit Round(ListRaw<NotifieeConst>& watchers) noexcept : walk{watchers} {}

    SnapshotWalk<NotifieeConst> walk;
    Round* next{nullptr};
  };

  ListRaw<NotifieeConst>& watchersOf(AttributeMask watching) const;
  void groupedBesides(AttributeMask watching) const;
  [[gnu::cold]] static void watcherThrew(SnapshotWalk<NotifieeConst>& walk, AttributeId id,
                                         std::string_view name,
                                         std::type_info const& watcher) noexcept;

  /// The first group from `group` on that watches one of `attributes` and has watchers.
  static Group* nextConcerned(Group* group, AttributeMask attributes) noexcept {
    while (group != nullptr && ((group->watching & attributes) == 0 || group->watchers.empty()))
      group = group->next;
    return group;
  }

  template <auto const& attribute, typename Watcher, typename Raise>
  [[gnu::always_inline]] static void tellRound(SnapshotWalk<NotifieeConst>& walk,
                                               Raise const& raise);
  template <auto const& attribute, typename Watcher, typename Raise>
  [[gnu::noinline]] static void tellRounds(Group& group, Round*& first, Round*& place,
                                           Raise const& raise);

  mutable AttributeMask allWatch_{0};  // what all watch; 0 before there was any, and in groups
  mutable bool grouped_{false};
  mutable Watchers watchers_;
};

template <auto const& attribute, typename Watcher, typename Raise>
inline void Notifier::tellRound(SnapshotWalk<NotifieeConst>& walk, Raise const& raise) {
  while (NotifieeConst* const watcher = walk.next()) {
    // Read before the call: afterwards the watcher may be no more, and a report names its class.
    std::type_info const& type = typeid(*watcher);
    try {
      raise(static_cast<Watcher&>(*watcher), walk);
    } catch (...) {
      watcherThrew(walk, attribute.id, attribute.name, type);
    }
  }
}

template <auto const& attribute, typename Watcher, typename Raise>
void Notifier::tell(Raise raise) {
  constexpr AttributeMask attributes = attributeBit(attribute.id);
  if ((allWatch_ & attributes) == 0) [[unlikely]] {
    if (!grouped_) return;
    Round* first = nullptr;
    if (Group* const group = nextConcerned(watchers_.groups, attributes))
      tellRounds<attribute, Watcher>(*group, first, first, raise);
    return;
  }
  if (watchers_.all.empty()) return;
  SnapshotWalk<NotifieeConst> walk{watchers_.all};
  typename SnapshotWalk<NotifieeConst>::End const end{walk};
  tellRound<attribute, Watcher>(walk, raise);
}

// Order: the walks over all groups begin before anyone is told, one recursion deeper for each group.
// So nobody who comes while others are told hears of this change, and once somebody was told nothing
// of this object is needed but the walks.

/// `group`: the next one to be told. `first`: the first that is. `place`: where the round of `group`
/// is linked in, behind those before it; empty again at the end, when the round is no more.
template <auto const& attribute, typename Watcher, typename Raise>
void Notifier::tellRounds(Group& group, Round*& first, Round*& place, Raise const& raise) {
  Round round{group.watchers};
  typename SnapshotWalk<NotifieeConst>::End const end{round.walk};
  place = &round;
  if (Group* const more = nextConcerned(group.next, attributeBit(attribute.id))) {
    tellRounds<attribute, Watcher>(*more, first, round.next, raise);
  } else {
    for (Round* told = first; told != nullptr; told = told->next)
      tellRound<attribute, Watcher>(told->walk, raise);
  }
  place = nullptr;
}

/// Reports that an object is not of the watched type, whose name is the message.
[[noreturn]] void throwWatchedTypeException(std::type_info const& watched);

/// Base of the watcher base of one watched type: `X::NotifieeConst` derives from `NotifieeOf<X>`.
template <typename Watched>
class NotifieeOf : public PtrInterface::NotifieeConst {
 public:
  /// The object watched, or empty.
  Ptr<Watched const> watched() const { return Ptr<Watched const>{watchedObject()}; }
  /// The same without a reference, or null; valid while this watcher is attached to it.
  Watched const* watchedObject() const noexcept { return static_cast<Watched const*>(attached()); }
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

#pragma GCC visibility pop
