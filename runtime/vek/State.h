#pragma once

#include <cmath>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/vek/Attribute.h"
#include "runtime/vek/Notifiee.h"

namespace Vek {

/// Whether a write of `b` over `a` changes nothing. A value that is not a number equals itself here,
/// so that writing it twice is no change.
template <typename Value>
bool sameValue(Value const& a, Value const& b) {
  if constexpr (std::is_floating_point_v<Value>) {
    return a == b || (std::isnan(a) && std::isnan(b));
  } else {
    return a == b;
  }
}

/// Base of every state type: an entity whose attributes tell watchers when they change.
///
/// A derived type describes each attribute once, as a constexpr Scalar or Keyed, and lists them in
/// `vekAttributes`; the functions below do the storing, the counting and the telling.
///
/// Writing the value already held, or deleting an absent member, is not a change: nobody is told.
///
/// A setter that finds no memory throws `std::bad_alloc` and has changed nothing and told nobody;
/// a change that was made is told to everyone, whatever a watcher throws.
///
/// An exception of the immediate hook stands for the whole notification of that watcher.
///
/// Trap: a watcher may drop the last reference to the object it is told about, so no setter touches
/// the object once it has told.
template <typename Type>
class State : public Notifier {
 public:
  using Notifier::Notifier;

  String attributeString(AttributeId id) const override {
    String name;
    std::apply(
        [&](auto const&... attribute) {
          ((attribute.id == id ? void(name = String{attribute.name}) : void()), ...);
        },
        Type::vekAttributes);
    return name;
  }

  /// How often an attribute of this object was read through its accessor.
  std::uint32_t reads() const noexcept { return reads_; }

  template <typename Value, typename Watcher>
  Value const& get(Scalar<Type, Value, Watcher> const& attribute) const {
    ++reads_;
    return self().*attribute.member;
  }

  template <typename Value, typename Watcher>
  void set(Scalar<Type, Value, Watcher> const& attribute, std::type_identity_t<Value> value) {
    Value& held = self().*attribute.member;
    if (sameValue(held, value)) return;
    held = std::move(value);
    this->countChange();
    this->template tell<Watcher>(
        attribute.id, attribute.name,
        [&](Watcher& watcher, auto const& /*walk*/) { (watcher.*attribute.changed)(); });
  }

  /// All members of a keyed attribute.
  template <typename Key, typename Value, typename Watcher>
  Collection<Key, Value> const& members(Keyed<Type, Key, Value, Watcher> const& attribute) const {
    ++reads_;
    return self().*attribute.members;
  }

  /// The value of `key`, or a default one (false, 0, empty pointer) when there is none.
  template <typename Key, typename Value, typename Watcher>
  Value member(Keyed<Type, Key, Value, Watcher> const& attribute,
               std::type_identity_t<Key> const& key) const {
    Value const* const value = members(attribute).find(key);
    return value == nullptr ? Value{} : *value;
  }

  template <typename Key, typename Value, typename Watcher>
  void memberIs(Keyed<Type, Key, Value, Watcher> const& attribute, std::type_identity_t<Key> key,
                std::type_identity_t<Value> value) {
    auto& members = (self().*attribute.members).members_;
    if (auto* const member = members.find(key)) {
      if (sameValue(member->value_, value)) return;
      std::swap(member->value_, value);  // the old value is released when all is done
    } else {
      members.newMember(make<CollectionMember<Key, Value>>(key, std::move(value)));
    }
    this->countChange();
    tellMember(attribute, key);
  }

  /// What writing the member of `key` needs memory for, obtained beforehand; nobody can see it.
  template <typename Key, typename Value, typename Watcher>
  static Ptr<CollectionMember<Key, Value>> memberRoom(
      Keyed<Type, Key, Value, Watcher> const& /*attribute*/, std::type_identity_t<Key> key) {
    return make<CollectionMember<Key, Value>>(std::move(key), Value{});
  }

  /// As above, with the key that `room` was obtained for; throws nothing.
  template <typename Key, typename Value, typename Watcher>
  void memberIs(Keyed<Type, Key, Value, Watcher> const& attribute,
                Ptr<CollectionMember<Key, Value>> room,
                std::type_identity_t<Value> value) noexcept {
    Key const key = room->key_;
    auto& members = (self().*attribute.members).members_;
    if (members.find(key) != nullptr) return memberIs(attribute, key, std::move(value));
    room->value_ = std::move(value);
    members.newMember(std::move(room));
    this->countChange();
    tellMember(attribute, key);
  }

  /// Trap: `key` is a copy, since callers pass the key of the very member that goes.
  template <typename Key, typename Value, typename Watcher>
  void memberDel(Keyed<Type, Key, Value, Watcher> const& attribute, std::type_identity_t<Key> key) {
    // Held until all is done: what the value's destruction does must not come before the telling.
    auto const removed = (self().*attribute.members).members_.deleteMember(key);
    if (!removed) return;
    this->countChange();
    tellMember(attribute, key);
  }

 protected:
  ~State() override = default;

  /// For accessors that compute what they return.
  void countRead() const noexcept { ++reads_; }

 private:
  Type& self() { return static_cast<Type&>(*this); }
  Type const& self() const { return static_cast<Type const&>(*this); }

  template <typename Key, typename Value, typename Watcher>
  void tellMember(Keyed<Type, Key, Value, Watcher> const& attribute, Key const& key) {
    this->template tell<Watcher>(attribute.id, attribute.name,
                                 [&](Watcher& watcher, auto const& walk) {
                                   (watcher.*attribute.immediate)();
                                   // The immediate hook may have taken the watcher away.
                                   if (walk.current() == &watcher)
                                     (watcher.*attribute.memberChanged)(key);
                                 });
  }

  mutable std::uint32_t reads_{0};
};

}  // namespace Vek
