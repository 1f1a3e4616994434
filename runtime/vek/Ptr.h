#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "runtime/vek/Pool.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Ends the process: an empty pointer was dereferenced where an object is required.
[[noreturn, gnu::cold]] void emptyPtrDereferenced();

/// Counted pointer to a runtime object (anything with `addReference` and `dropReference`). Copying
/// adds a reference, destroying or reassigning drops one. `Ptr<T const>` is the read-only form.
///
/// Dereferencing an empty pointer ends the process with a message, in every build.
template <typename T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  Ptr(T* object) noexcept : object_{object} { add(); }
  Ptr(Ptr const& other) noexcept : object_{other.object_} { add(); }
  Ptr(Ptr&& other) noexcept : object_{std::exchange(other.object_, nullptr)} {}
  template <typename U>
  requires(!std::same_as<U, T> && std::convertible_to<U*, T*>) Ptr(Ptr<U> const& other)
  noexcept : object_{other.get()} { add(); }
  template <typename U>
  requires(!std::same_as<U, T> && std::convertible_to<U*, T*>) Ptr(Ptr<U>&& other)
  noexcept : object_{other.release()} {}
  ~Ptr() {
    if (object_ != nullptr) object_->dropReference();
  }

  // The new object is in place before the old one is released, since its destructor may look here.
  Ptr& operator=(Ptr const& other) noexcept {
    Ptr{other}.swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr{std::move(other)}.swap(*this);
    return *this;
  }
  Ptr& operator=(std::nullptr_t) noexcept {
    Ptr{}.swap(*this);
    return *this;
  }

  /// Takes over a reference that the caller owns, without adding one.
  static Ptr adopt(T* object) noexcept {
    Ptr result;
    result.object_ = object;
    return result;
  }
  /// Gives the reference to the caller, who must drop it.
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

  T* get() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  T& operator*() const noexcept { return *checked(); }
  T* operator->() const noexcept { return checked(); }

  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }

  /// Pointers are compared by identity.
  template <typename U>
  friend bool operator==(Ptr const& a, Ptr<U> const& b) noexcept {
    return a.get() == b.get();
  }
  friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  void add() const noexcept {
    if (object_ != nullptr) object_->addReference();
  }
  T* checked() const noexcept {
    if (object_ == nullptr) [[unlikely]]
      emptyPtrDereferenced();
    return object_;
  }

  T* object_{nullptr};
};

/// Makes an object; the pointer returned holds its first reference.
template <typename T, typename... Args>
Ptr<T> make(Args&&... args) {
  static_assert(alignof(T) <= Pool::kAlignment, "such a type needs an operator new of its own");
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}

/// The same object under a derived type that the caller knows it to have.
template <typename T, typename U>
Ptr<T> staticPtrCast(Ptr<U> const& pointer) noexcept {
  return Ptr<T>{static_cast<T*>(pointer.get())};
}

}  // namespace Vek

template <typename T>
struct std::hash<Vek::Ptr<T>> {
  std::size_t operator()(Vek::Ptr<T> const& pointer) const noexcept {
    return std::hash<T*>{}(pointer.get());
  }
};

#pragma GCC visibility pop
