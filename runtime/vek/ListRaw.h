#pragma once

#include <utility>

#pragma GCC visibility push(default)

namespace Vek {

template <typename T>
class SnapshotWalk;

/// The untyped part of `ListRaw`: what links, and what is under way.
class ListRawGeneric {
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
    friend class ListRawGeneric;
    // A ring, so that every member leaves in the same way; both null outside of a list.
    Link* previous_{nullptr};
    Link* next_{nullptr};
  };

  ListRawGeneric(ListRawGeneric const&) = delete;
  ListRawGeneric& operator=(ListRawGeneric const&) = delete;

  bool empty() const noexcept { return first_ == nullptr; }

  /// Takes out everything; walks under way end.
  void clear() noexcept {
    while (first_ != nullptr)
      unlink(*first_);
  }

 protected:
  template <typename T>
  friend class SnapshotWalk;

  /// A walk under way. It knows where the list ended when it began, and every removal tells it: so
  /// it needs no copy of the list, and members need no mark of when they came.
  class Walk {
   public:
    explicit Walk(ListRawGeneric& list) noexcept
        : end_{list.first_ == nullptr ? nullptr : list.first_->previous_},
          next_{list.first_},
          outer_{walks_} {
      // The stack of walks knows this one while it lives, which g++ cannot see.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
      walks_ = this;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    }
    Walk(Walk const&) = delete;
    Walk& operator=(Walk const&) = delete;

    /// Ends the walk when it goes: a walk has one, made right after it. An object of its own,
    /// which nobody else can reach: so what is to be restored stays in a register.
    class End {
     public:
      explicit End(Walk const& walk) noexcept : outer_{walk.outer_} {}
      ~End() { walks_ = outer_; }
      End(End const&) = delete;
      End& operator=(End const&) = delete;

     private:
      Walk* const outer_;
    };

    Link* advance() noexcept {
      current_ = next_;
      if (next_ != nullptr) next_ = next_ == end_ ? nullptr : next_->next_;
      return current_;
    }
    Link* current() const noexcept {
      return current_;
    }

   private:
    friend class ListRawGeneric;

    void leaves(Link const& link) noexcept {
      if (current_ == &link) current_ = nullptr;
      if (next_ == &link) next_ = end_ == &link ? nullptr : link.next_;
      // Whatever was appended since stays behind the end.
      if (end_ == &link) end_ = link.previous_;
    }

    Link* end_;
    Link* current_{nullptr};
    Link* next_;
    Walk* outer_;
  };

  ListRawGeneric() = default;
  ~ListRawGeneric() {
    clear();
  }

  Link* first() const noexcept {
    return first_;
  }

  void swap(ListRawGeneric& other) noexcept {
    std::swap(first_, other.first_);
  }

  void link(Link& link) noexcept {
    if (first_ == nullptr) {
      link.previous_ = &link;
      link.next_ = &link;
      first_ = &link;
    } else {
      link.previous_ = first_->previous_;
      link.next_ = first_;
      first_->previous_->next_ = &link;
      first_->previous_ = &link;
    }
  }

  void unlink(Link& link) noexcept {
    for (Walk* walk = walks_; walk != nullptr; walk = walk->outer_)
      walk->leaves(link);
    link.next_->previous_ = link.previous_;
    link.previous_->next_ = link.next_;
    if (first_ == &link) first_ = link.next_ == &link ? nullptr : link.next_;
    link.previous_ = nullptr;
    link.next_ = nullptr;
  }

 private:
  // The walks under way on this thread, over whichever list, innermost first. Kept here and not in
  // each list: there are very many lists and hardly ever more than two walks.
  [[gnu::tls_model("initial-exec")]] static constinit thread_local Walk* walks_;

  Link* first_{nullptr};
};

/// A plain list of objects that live elsewhere, in order of insertion: the watchers of an object.
///
/// Insertion and removal take constant time. A list is walked through a `SnapshotIterator`, which
/// visits those who were in the list when it was made and still are when their turn comes.
///
/// `T` derives from `ListRaw<T>::Link`. Ownership: none; a member leaves the list before it goes.
///
/// Thread: one, also for walks over it.
template <typename T>
class ListRaw : public ListRawGeneric {
 public:
  class Link : public ListRawGeneric::Link {
   protected:
    Link() = default;
    ~Link() = default;
  };

  T* front() const noexcept { return typed(first()); }

  /// Appends `object`, which is in no list.
  void append(T& object) noexcept { link(asLink(object)); }
  /// Takes out `object`, which is in this list. Walks under way skip it.
  void remove(T& object) noexcept { unlink(asLink(object)); }
  /// Takes over the members of `other`, itself being empty. Walks under way go on.
  void takeAll(ListRaw& other) noexcept { swap(other); }

 private:
  friend class SnapshotWalk<T>;

  static Link& asLink(T& object) noexcept { return object; }
  static T* typed(ListRawGeneric::Link* link) noexcept {
    return static_cast<T*>(static_cast<Link*>(link));
  }
};

/// The steps of a `SnapshotIterator`; who makes one sees to its end (`End`).
template <typename T>
class SnapshotWalk : private ListRawGeneric::Walk {
  using Walk = ListRawGeneric::Walk;

 public:
  explicit SnapshotWalk(ListRaw<T>& list) noexcept : Walk{list} {}

  class End : private Walk::End {
   public:
    explicit End(SnapshotWalk const& walk) noexcept : Walk::End{walk} {}
  };

  /// Goes on to the next member and returns it; null at the end.
  T* next() noexcept { return ListRaw<T>::typed(Walk::advance()); }
  /// The member that the walk stands on; null when it has left the list (and perhaps is no more).
  T* current() const noexcept { return ListRaw<T>::typed(Walk::current()); }
};

/// A walk over a `ListRaw` that holds under any change of the list and the end of the list itself.
///
///     SnapshotIterator<Watcher> walk{watchers};
///     while (Watcher* watcher = walk.next()) ...
///
/// Costs nothing for the members it has not reached: no copy, no reference. Walks nest, whichever
/// the list: it lives on the stack, and the inner one ends first.
template <typename T>
class SnapshotIterator : public SnapshotWalk<T> {
 public:
  explicit SnapshotIterator(ListRaw<T>& list) noexcept : SnapshotWalk<T>{list} {}

 private:
  typename SnapshotWalk<T>::End end_{*this};
};

}  // namespace Vek

#pragma GCC visibility pop
