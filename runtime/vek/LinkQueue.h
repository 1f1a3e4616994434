#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/Wrap.h"

#pragma GCC visibility push(default)

namespace Vek {

[[noreturn]] void throwLinkQueueFull();
[[noreturn]] void throwLinkQueueIndexInUse();

/// Where the index space of a queue stands.
struct LinkQueueMetadata {
  std::uint32_t headIndex{0};  ///< index of the head; of an empty queue: `nextIndex`
  std::uint32_t nextIndex{0};  ///< index of the next entry appended, unless the tail is beyond it

  friend bool operator==(LinkQueueMetadata const&, LinkQueueMetadata const&) = default;
};

/// Base of the entries of a queue: a small counted object.
template <typename Value>
class LinkQueueEntry : public PtrInterface {
 public:
  std::uint32_t vek_index() const noexcept { return index_; }
  /// Called by the queue when the entry is linked in.
  void vek_indexIs(std::uint32_t index) noexcept { index_ = index; }
  Value const& value() const noexcept { return value_; }

 protected:
  LinkQueueEntry(std::uint32_t index, Value const& value) : index_{index}, value_{value} {}
  ~LinkQueueEntry() override = default;

 private:
  template <typename E, typename I, typename V>
  friend class LinkQueue;
  std::uint32_t index_;
  Value value_;
  // Toward the tail; the tail's: the head. Of an entry that waits to be used again: the one to be
  // used after it.
  LinkQueueEntry* next_{nullptr};
};

/// A first-in-first-out queue whose entries are addressed by an index that only grows, modulo 2^32.
///
/// Append and removal at the head take constant time; access by index tries the head and the tail
/// and else takes time linear in the number of entries. An index is not used again before 2^32
/// appends, unless entries are made under indexes of the caller's (`newMember`);
/// order and walks hold across the wrap.
///
/// `Entry` derives from `LinkQueueEntry<Value>`, is final, is made from (index, value) and lets the
/// queue destroy it (a friend). Ownership: the queue holds one reference on each entry.
///
/// An entry whose destruction nobody needs to see says so by a member `kRecycled`. While memory is
/// pooled, counting is plain and objects are not tracked (`PtrInterface::recycles`), such entries are
/// kept for the next appends to any queue of their type, and clearing a queue takes constant time;
/// whoever holds one of them keeps it as it is. What is kept is never given back; an append passes
/// over those that are held, each once.
template <typename Entry, typename Index, typename Value>
class LinkQueue {
  static_assert(std::is_same_v<Index, std::uint32_t>);

 public:
  class Iterator;

  LinkQueue() = default;
  LinkQueue(LinkQueue const&) = delete;
  LinkQueue& operator=(LinkQueue const&) = delete;
  ~LinkQueue() { clear(); }

  LinkQueueMetadata const& metadata() const noexcept { return metadata_; }
  void metadataIs(LinkQueueMetadata const& metadata) noexcept { metadata_ = metadata; }
  /// Grows by one with every append and every removal.
  std::uint32_t version() const noexcept { return version_; }
  std::uint32_t count() const noexcept { return count_; }
  Entry* head() const noexcept {
    return tail_ == nullptr ? nullptr : static_cast<Entry*>(tail_->next_);
  }
  Entry* tail() const noexcept { return static_cast<Entry*>(tail_); }
  /// The entry behind `entry`, which is in this queue; null behind the tail. For a walk during which
  /// nothing else can happen; any other takes an iterator.
  Entry* next(Entry const& entry) const noexcept {
    return &entry == tail_ ? nullptr : static_cast<Entry*>(static_cast<Node const&>(entry).next_);
  }
  /// The head's value, found without going to the head; a default value when the queue is empty.
  Value const& headValue() const noexcept { return headValue_; }

  /// Appends a new entry at the tail. Throws `Vek::RangeException` ("linkqueue index space full")
  /// when the index after its own is the head's; `nextIndex` is then settled, nothing else changed.
  void enq(Value const& value) {
    Index index = metadata_.nextIndex;
    if (tail_ != nullptr && tail_->index_ >= index) index = wrappingSum(tail_->index_, 1);
    metadata_.nextIndex = index;
    requireRoomFor(index);
    linkAtTail(newEntry(index, value), index);
  }

  /// Removes the head and returns its value; a default value when the queue is empty.
  Value deq() {
    Value const value = headValue_;
    if (tail_ != nullptr) release(unlink(tail_, tail_->next_));
    return value;
  }

  /// Removes entries from the head on, up to the first of whose value `goes` says no. It is asked
  /// once of each, before any is removed, and must not touch the queue. The queue is then as after
  /// their removal one by one.
  template <typename Goes>
  void deqWhile(Goes goes) {
    if (tail_ == nullptr || !goes(headValue_)) return;
    Node* const first = tail_->next_;
    Node* last = first;
    std::uint32_t leaving = 1;
    for (; last != tail_ && goes(last->next_->value_); ++leaving)
      last = last->next_;
    if (last == tail_) {
      clear();
      return;
    }
    tail_->next_ = last->next_;
    headMoved();
    version_ = wrappingSum(version_, leaving);
    count_ -= leaving;
    discard(first, last);
  }

  /// The entry of that index, or null.
  Entry* find(Index index) const noexcept {
    if (tail_ == nullptr) return nullptr;
    if (head()->index_ == index) return head();
    if (tail_->index_ == index) return tail();
    for (Node* entry = tail_->next_->next_; entry != tail_; entry = entry->next_)
      if (entry->index_ == index) return static_cast<Entry*>(entry);
    return nullptr;
  }

  /// Overwrites the value of the entry of that index in place, or makes one (`newMember`).
  void valueIs(Index index, Value const& value) {
    if (Entry* const entry = find(index)) {
      static_cast<Node*>(entry)->value_ = value;
      if (entry == head()) headValue_ = value;
    } else {
      newMember(index, value);
    }
  }

  /// Makes an entry of that index and links it in where the order of indexes wants it: between two
  /// entries, or behind the tail or before the head, whichever is nearer; the queue's next index
  /// always comes behind the tail. Throws `Vek::RangeException` as `enq` does, and
  /// `Vek::NameInUseException` when there is an entry of that index.
  Ptr<Entry> newMember(Index index, Value const& value) {
    if (find(index) != nullptr) throwLinkQueueIndexInUse();
    if (tail_ == nullptr) return counted(linkAtTail(newEntry(index, value), index));
    Index const headIndex = tail_->next_->index_;
    if (wrappingDifference(index, headIndex) < wrappingDifference(tail_->index_, headIndex))
      return counted(linkInside(index, value));
    if (index == metadata_.nextIndex ||
        wrappingDifference(index, tail_->index_) <= wrappingDifference(headIndex, index)) {
      requireRoomFor(index);
      return counted(linkAtTail(newEntry(index, value), index));
    }
    return counted(linkAtHead(newEntry(index, value), index));
  }

  /// Removes the entry of that index and returns its value; a default value when there is none.
  Value del(Index index) {
    Node* const before = beforeFirst([index](Node const& entry) { return entry.index_ == index; });
    return before == nullptr ? Value{} : taken(unlink(before, before->next_));
  }

  /// Removes the tail and returns its value; a default value when the queue is empty. Takes time
  /// linear in the number of entries.
  Value delTail() noexcept {
    Node* const before = beforeFirst([this](Node const& entry) { return &entry == tail_; });
    return before == nullptr ? Value{} : taken(unlink(before, tail_));
  }

  /// Removes the entry that the walk stands on; the walk then stands on the one that followed.
  void del(Iterator& position) {
    Node* const wanted = position.entry_.get();
    if (wanted == nullptr) return;
    Node* const before = beforeFirst([wanted](Node const& entry) { return &entry == wanted; });
    if (before == nullptr) {  // removed already, by someone else
      ++position;
      return;
    }
    Node* const following = wanted == tail_ ? nullptr : wanted->next_;
    release(unlink(before, wanted));
    position.standOn(following);
  }

  /// Removes every entry, from head to tail.
  void clear() noexcept {
    if (tail_ == nullptr) return;
    // As if one by one. Only the removal of one that leaves others behind raises a next index that
    // lags behind the tail.
    if (count_ > 1) raiseNextIndex();
    metadata_.headIndex = metadata_.nextIndex;
    version_ = wrappingSum(version_, count_);
    count_ = 0;
    headValue_ = Value{};
    Node* const last = std::exchange(tail_, nullptr);
    discard(last->next_, last);
  }

  /// A walk from the head on, which goes on correctly when entries are removed or appended.
  Iterator iterator() const { return Iterator{*this}; }

 private:
  using Node = LinkQueueEntry<Value>;

  void requireRoomFor(Index index) const {
    if (tail_ != nullptr && wrappingSum(index, 1) == metadata_.headIndex) throwLinkQueueFull();
  }

  /// The predecessor, in the ring, of the first entry of which `wanted` is true; null for none.
  template <typename Wanted>
  Node* beforeFirst(Wanted wanted) const noexcept {
    if (tail_ == nullptr) return nullptr;
    Node* before = tail_;
    do {
      if (wanted(*before->next_)) return before;
      before = before->next_;
    } while (before != tail_);
    return nullptr;
  }

  // What links an entry in takes over its first reference, as the queue's own.

  Node* linkAtTail(Node* entry, Index index) noexcept {
    entry->vek_indexIs(index);
    if (tail_ == nullptr) {
      entry->next_ = entry;
      headValue_ = entry->value_;
      metadata_.headIndex = index;
      grows();
    } else {
      linkBehind(tail_, entry);
    }
    tail_ = entry;
    metadata_.nextIndex = wrappingSum(index, 1);
    return entry;
  }

  Node* linkAtHead(Node* entry, Index index) noexcept {
    entry->vek_indexIs(index);
    headValue_ = entry->value_;
    metadata_.headIndex = index;
    return linkBehind(tail_, entry);
  }

  Node* linkInside(Index index, Value const& value) {
    Node* const entry = newEntry(index, value);
    Index const headIndex = tail_->next_->index_;
    Node* before = tail_->next_;
    while (wrappingDifference(before->next_->index_, headIndex) <
           wrappingDifference(index, headIndex))
      before = before->next_;
    entry->vek_indexIs(index);
    return linkBehind(before, entry);
  }

  Node* linkBehind(Node* before, Node* entry) noexcept {
    entry->next_ = std::exchange(before->next_, entry);
    grows();
    return entry;
  }

  void grows() noexcept {
    version_ = wrappingSum(version_, 1);
    ++count_;
  }

  /// `before`: the predecessor in the ring. The queue's reference passes to the caller.
  Node* unlink(Node* before, Node* entry) noexcept {
    if (before == entry) {
      tail_ = nullptr;
      headValue_ = Value{};
      metadata_.headIndex = metadata_.nextIndex;
    } else {
      before->next_ = entry->next_;
      if (before == tail_)
        headMoved();
      else if (entry == tail_)
        tail_ = before;
    }
    entry->next_ = nullptr;
    version_ = wrappingSum(version_, 1);
    --count_;
    return entry;
  }

  /// The head has left, and another has become the head.
  void headMoved() noexcept {
    headValue_ = tail_->next_->value_;
    metadata_.headIndex = tail_->next_->index_;
    raiseNextIndex();
  }

  void raiseNextIndex() noexcept {
    if (metadata_.nextIndex <= tail_->index_) metadata_.nextIndex = wrappingSum(tail_->index_, 1);
  }

  /// Drops the queue's references on `first` to `last`, which have left it together.
  static void discard(Node* first, Node* last) noexcept {
    if (recycles()) [[likely]] {
      last->next_ = std::exchange(spare_, first);
      return;
    }
    last->next_ = nullptr;
    while (first != nullptr)
      release(std::exchange(first, std::exchange(first->next_, nullptr)));
  }

  static Ptr<Entry> counted(Node* entry) noexcept { return Ptr<Entry>{static_cast<Entry*>(entry)}; }
  static Value taken(Node* entry) noexcept {
    Value const value = entry->value_;
    release(entry);
    return value;
  }
  /// Drops the queue's reference. `Entry` is final and has no hook for its last reference, so it is
  /// destroyed without asking which type it is.
  static void release(Node* entry) noexcept {
    static_assert(std::is_final_v<Entry> && std::is_trivially_destructible_v<Value> &&
                  std::is_same_v<decltype(&Entry::zeroReferencesIs), void (PtrInterface::*)(bool)>);
    if (recycles() && entry->isAsNew()) [[likely]]
      entry->next_ = std::exchange(spare_, entry);
    else if (entry->isOnlyReference())
      delete static_cast<Entry*>(entry);
    else
      entry->dropReference();
  }

  static bool recycles() noexcept {
    if constexpr (requires { Entry::kRecycled; })
      return PtrInterface::recycles();
    else
      return false;
  }

  /// An entry with the queue's reference.
  static Node* newEntry(Index index, Value const& value) {
    while (Node* const entry = spare_) {
      if (!recycles()) [[unlikely]]
        break;
      spare_ = std::exchange(entry->next_, nullptr);
      __builtin_prefetch(spare_);
      if (entry->isAsNew()) [[likely]] {
        entry->index_ = index;
        entry->value_ = value;
        return entry;
      }
      entry->dropReference();  // somebody holds it still, or has marked it
    }
    return make<Entry>(index, value).release();
  }

  // Entries that have left their queues and wait to be used again, in all queues of this type. One
  // that came here together with others may be held by somebody still; that is seen when it would
  // be used. So a queue is cleared without a look at its entries.
  static inline constinit Node* spare_{nullptr};

  LinkQueueMetadata metadata_;
  std::uint32_t version_{0};
  std::uint32_t count_{0};
  Node* tail_{nullptr};  // behind it, in the ring, stands the head
  Value headValue_{};    // here, because every append is followed by a look at it
};

/// A walk over a queue. It holds the entry it stands on, which stays valid after its removal.
template <typename Entry, typename Index, typename Value>
class LinkQueue<Entry, Index, Value>::Iterator {
 public:
  explicit Iterator(LinkQueue const& queue) : queue_{&queue} { standOn(queue.head()); }

  explicit operator bool() const noexcept { return bool{entry_}; }
  Entry& operator*() const noexcept { return *entry_; }
  Entry* operator->() const noexcept { return entry_.operator->(); }

  /// Goes on to the first entry beyond the index of the one it stands on.
  Iterator& operator++() {
    if (!entry_) return *this;
    if (version_ == queue_->version_) [[likely]]
      entry_ = Ptr<Entry>{queue_->next(*entry_)};
    else
      standOn(following());
    return *this;
  }

 private:
  friend class LinkQueue;

  // Indexes are compared by their distance from where the head was when the walk came to stand
  // here: entries leave at the head and come at the tail, so that distance grows from head to tail
  // also across the wrap.
  Node* following() const noexcept {
    Index const here = wrappingDifference(static_cast<Node const*>(entry_.get())->index_, origin_);
    for (Entry* entry = queue_->head(); entry != nullptr; entry = queue_->next(*entry)) {
      Index const distance = wrappingDifference(static_cast<Node*>(entry)->index_, origin_);
      // One that has come meanwhile stands behind the tail or before the head of then, whichever is
      // nearer, as it was put there.
      bool const ahead = distance <= span_ || distance - span_ <= wrappingDifference(0, distance);
      if (ahead && distance > here) return entry;
    }
    return nullptr;
  }

  void standOn(Node* entry) noexcept {
    // Order: the entry comes last. To leave the former one may end it, which may change the queue;
    // what is noted here is then seen to be of before.
    version_ = queue_->version_;
    if (entry != nullptr) {
      origin_ = queue_->tail_->next_->index_;
      span_ = wrappingDifference(queue_->tail_->index_, origin_);
    }
    entry_ = Ptr<Entry>{static_cast<Entry*>(entry)};
  }

  LinkQueue const* queue_;
  Ptr<Entry> entry_;
  std::uint32_t version_{0};
  Index origin_{0};  // the head's index when the walk came to stand here
  Index span_{0};    // the distance of the tail from there
};

}  // namespace Vek

#pragma GCC visibility pop
