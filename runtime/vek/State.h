#pragma once

#include <cmath>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/vek/Attribute.h"
#include "runtime/vek/Notifiee.h"

#pragma GCC visibility push(default)

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
/// `vekAttributes`; the functions below do the storing, the counting and the telling. The attribute
/// is their template argument: what it says is then known when they are compiled, also where the
/// compiler may not look into a description that another library could replace.
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
  template <auto const& attribute>
  using MemberOf = CollectionMember<typename AttributeType<attribute>::KeyType,
                                    typename AttributeType<attribute>::ValueType>;

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

  template <auto const& attribute>
  auto const& get() const {
    constexpr auto member = attribute.member;
    ++reads_;
    return self().*member;
  }

  template <auto const& attribute>
  void set(typename AttributeType<attribute>::ValueType value) {
    using Watcher = typename AttributeType<attribute>::WatcherType;
    constexpr auto member = attribute.member;
    constexpr auto changed = attribute.changed;
    auto& held = self().*member;
    if (sameValue(held, value)) return;
    held = std::move(value);
    this->countChange();
    this->template tell<attribute, Watcher>(
        [](Watcher& watcher, auto const& /*walk*/) { (watcher.*changed)(); });
  }

  /// All members of a keyed attribute.
  template <auto const& attribute>
  auto const& members() const {
    constexpr auto members = attribute.members;
    ++reads_;
    return self().*members;
  }

  /// The value of `key`, or a default one (false, 0, empty pointer) when there is none.
  template <auto const& attribute>
  auto member(typename AttributeType<attribute>::KeyType const& key) const {
    auto const* const value = members<attribute>().find(key);
    return value == nullptr ? typename AttributeType<attribute>::ValueType{} : *value;
  }

  template <auto const& attribute>
  void memberIs(typename AttributeType<attribute>::KeyType key,
                typename AttributeType<attribute>::ValueType value) {
    auto& members = own<attribute>();
    if (auto* const member = members.find(key)) {
      if (sameValue(member->value_, value)) return;
      std::swap(member->value_, value);  // the old value is released when all is done
    } else {
      members.newMember(make<MemberOf<attribute>>(key, std::move(value)));
    }
    this->countChange();
    tellMember<attribute>(key);
  }

  /// What writing the member of `key` needs memory for, obtained beforehand; nobody can see it.
  template <auto const& attribute>
  static auto memberRoom(typename AttributeType<attribute>::KeyType const& key) {
    return make<MemberOf<attribute>>(key, typename AttributeType<attribute>::ValueType{});
  }

  /// As above, with the key that `room` was obtained for; throws nothing.
  template <auto const& attribute>
  void memberIs(Ptr<MemberOf<attribute>> room,
                typename AttributeType<attribute>::ValueType value) noexcept {
    auto& member = own<attribute>().memberOrNew(room);
    if (&member != room.get() && sameValue(member.value_, value)) return;
    std::swap(member.value_, value);  // the old value is released when all is done
    this->countChange();
    tellMember<attribute>(room->key_);
  }

  /// Trap: `key` is a copy, since callers pass the key of the very member that goes.
  template <auto const& attribute>
  void memberDel(typename AttributeType<attribute>::KeyType key) {
    // Held until all is done: what the value's destruction does must not come before the telling.
    auto const removed = own<attribute>().deleteMember(key);
    if (!removed) return;
    this->countChange();
    tellMember<attribute>(key);
  }

 protected:
  ~State() override = default;

  /// For accessors that compute what they return.
  void countRead() const noexcept { ++reads_; }

 private:
  Type& self() { return static_cast<Type&>(*this); }
  Type const& self() const { return static_cast<Type const&>(*this); }

  template <auto const& attribute>
  auto& own() {
    constexpr auto members = attribute.members;
    return (self().*members).members_;
  }

  template <auto const& attribute>
  void tellMember(typename AttributeType<attribute>::KeyType const& key) {
    using Watcher = typename AttributeType<attribute>::WatcherType;
    constexpr auto immediate = attribute.immediate;
    constexpr auto memberChanged = attribute.memberChanged;
    this->template tell<attribute, Watcher>([&key](Watcher& watcher, auto const& walk) {
      (watcher.*immediate)();
      // The immediate hook may have taken the watcher away.
      if (walk.current() == &watcher) (watcher.*memberChanged)(key);
    });
  }

  mutable std::uint32_t reads_{0};
};

}  // namespace Vek

#pragma GCC visibility pop
