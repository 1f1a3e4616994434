#pragma once

#include <utility>

#include "runtime/vek/Ptr.h"

#pragma GCC visibility push(default)

namespace Vek {

/// A machine's hold on one watched input: nothing, or one reactor bound to the object.
template <typename ReactorType>
class Input {
 public:
  ReactorType* reactor() const noexcept { return reactor_.get(); }
  void reactorIs(Ptr<ReactorType> reactor) noexcept { reactor_ = std::move(reactor); }

  /// The object watched, without a reference, or null.
  auto const* get() const noexcept {
    return reactor_ ? reactor_->watchedObject() : decltype(reactor_->watchedObject()){nullptr};
  }
  /// The same where one is required: without one the process ends.
  auto const& operator*() const noexcept {
    auto const* const object = get();
    if (object == nullptr) [[unlikely]]
      emptyPtrDereferenced();
    return *object;
  }
  /// The object watched, or an empty pointer.
  auto object() const { return reactor_ ? reactor_->watched() : decltype(reactor_->watched()){}; }

  /// Watches `object` from now on: the reactor is re-pointed, which runs its handlers; when there
  /// is none, `make(object)` makes one, which runs none. An empty `object` drops the reactor.
  template <typename Watched, typename Make>
  void objectIs(Ptr<Watched const> const& object, Make make) {
    if (!object) {
      objectDel();
    } else if (reactor_) {
      reactor_->notifierIs(object);
    } else {
      reactor_ = make(object);
    }
  }

  /// Unbinds and drops the reactor; returns the object it watched.
  auto objectDel() {
    auto watched = object();
    if (auto const dropped = std::exchange(reactor_, nullptr)) {
      // Whoever else holds the reactor holds a dead one.
      dropped->vekDoZombieReactors(true);
      dropped->notifierIs(nullptr);
    }
    return watched;
  }

 private:
  Ptr<ReactorType> reactor_;
};

}  // namespace Vek

#pragma GCC visibility pop
