#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

namespace Vek {

template <typename T>
class SnapshotIterator;

/// A plain list of objects that live elsewhere, in order of insertion: the watchers of an object.
///
/// Insertion and removal take constant time. A list is walked through a `SnapshotIterator`, which
/// visits those who were in the list when it was made and still are when their turn comes.
///
/// `T` derives from `ListRaw<T>::Link`. Ownership: none; a member leaves the list before it goes.
template <typename T>
class ListRaw {
 public:
  class Link {
   public:
    Link(Link const&) = delete;
    Link& operator=(Link const&) = delete;
    bool linked() const noexcept { return previous_ != nullptr; }

   protected:
    Link() = default;
    ~Link() = default;

   private:
    friend class ListRaw;
    friend class SnapshotIterator<T>;
    Link* previous_{nullptr};  // of the first: the last; null outside of a list
    Link* next_{nullptr};      // of the last: null
    std::uint64_t number_{0};  // later insertions, into whichever list, have greater numbers
  };

  ListRaw() = default;
  ListRaw(ListRaw const&) = delete;
  ListRaw& operator=(ListRaw const&) = delete;
  ~ListRaw() { clear(); }

  bool empty() const noexcept { return first_ == nullptr; }
  T* front() const noexcept { return static_cast<T*>(first_); }

  /// Appends `object`, which is in no list.
  void append(T& object) noexcept {
    Link& link = object;
    link.number_ = nextNumber().fetch_add(1, std::memory_order_relaxed);
    link.next_ = nullptr;
    if (first_ == nullptr) {
      link.previous_ = &link;
      first_ = &link;
    } else {
      link.previous_ = first_->previous_;
      first_->previous_->next_ = &link;
      first_->previous_ = &link;
    }
  }

  /// Takes out `object`, which is in this list. Walks under way skip it.
  void remove(T& object) noexcept {
    Link& link = object;
    for (auto* walk = walks_; walk != nullptr; walk = walk->outer_)
      walk->leaves(link);
    if (link.next_ != nullptr) {
      link.next_->previous_ = link.previous_;
    } else if (first_ != &link) {
      first_->previous_ = link.previous_;
    }
    if (first_ == &link) {
      first_ = link.next_;
    } else {
      link.previous_->next_ = link.next_;
    }
    link.previous_ = nullptr;
    link.next_ = nullptr;
  }

  /// Takes out everything; walks under way end.
  void clear() noexcept {
    while (first_ != nullptr)
      remove(*front());
    for (auto* walk = walks_; walk != nullptr; walk = walk->outer_)
      walk->list_ = nullptr;
    walks_ = nullptr;
  }

  /// The number that the next insertion will get: a walk up to it sees nobody who comes later.
  static std::uint64_t numberNow() noexcept { return nextNumber().load(std::memory_order_relaxed); }

 private:
  friend class SnapshotIterator<T>;

  static std::atomic<std::uint64_t>& nextNumber() noexcept {
    static constinit std::atomic<std::uint64_t> number{1};
    return number;
  }

  Link* first_{nullptr};
  SnapshotIterator<T>* walks_{nullptr};
};

/// A walk over a `ListRaw` that holds under any change of the list and the end of the list itself.
///
///     SnapshotIterator<Watcher> walk{watchers};
///     while (Watcher* watcher = walk.next()) ...
///
/// Costs nothing for the members it has not reached: no copy, no reference. Walks over one list
/// nest, the inner one ends first.
template <typename T>
class SnapshotIterator {
 public:
  explicit SnapshotIterator(ListRaw<T>& list,
                            std::uint64_t limit = ListRaw<T>::numberNow()) noexcept
      : list_{&list}, next_{list.first_}, limit_{limit}, outer_{list.walks_} {
    // The list knows the walk while the walk lives, which g++ cannot see.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
    list.walks_ = this;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
  }
  ~SnapshotIterator() {
    if (list_ != nullptr) list_->walks_ = outer_;
  }
  SnapshotIterator(SnapshotIterator const&) = delete;
  SnapshotIterator& operator=(SnapshotIterator const&) = delete;

  /// Goes on to the next member and returns it; null at the end.
  T* next() noexcept {
    if (next_ == nullptr || next_->number_ >= limit_) {
      current_ = nullptr;
      next_ = nullptr;
      return nullptr;
    }
    current_ = next_;
    next_ = current_->next_;
    return static_cast<T*>(current_);
  }

  /// The member that the walk stands on; null when it has left the list (and perhaps is no more).
  T* current() const noexcept {
    return static_cast<T*>(current_);
  }
  /// Whether the list itself has gone.
  bool listGone() const noexcept {
    return list_ == nullptr;
  }

 private:
  friend class ListRaw<T>;

  void leaves(typename ListRaw<T>::Link& link) noexcept {
    if (current_ == &link) current_ = nullptr;
    if (next_ == &link) next_ = link.next_;
  }

  ListRaw<T>* list_;
  typename ListRaw<T>::Link* current_{nullptr};
  typename ListRaw<T>::Link* next_;
  std::uint64_t limit_;
  SnapshotIterator* outer_;
};

}  // namespace Vek
