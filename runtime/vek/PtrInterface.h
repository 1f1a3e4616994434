#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "runtime/vek/Pool.h"
#include "runtime/vek/VFPtrInterface.h"

#pragma GCC visibility push(default)

namespace Vek {

class VekType;

/// Names one attribute of a type; unique within the type, not across types.
using AttributeId = std::uint32_t;

/// While true, living objects are recorded in `PtrTrack`. Set it before the first object is made.
extern bool ptrifTrackOn_;

/// Base of every shared object: an intrusive reference count and two flags in one word.
///
/// Ownership: an object is born with one reference, which `Vek::make` adopts. Counting from one
/// (not from zero) lets a constructor hand `this` to a function that takes a `Ptr`: that temporary
/// brings the count to two and back to one, never to zero.
///
/// Thread: one activity thread; only the count (and its flags) may be shared with other threads,
/// and only while `enableThreadSafePointers` is set.
///
/// The order of the virtual operations is part of the interface: binary tools address them by slot.
class PtrInterface {
 public:
  class NotifieeConst;
  class Watching;

  PtrInterface(PtrInterface const&) = delete;
  PtrInterface& operator=(PtrInterface const&) = delete;

  /// Switches delivery of notifications on or off, as far as the type has any.
  virtual void hasNotificationActiveIs(bool on);
  /// Number of inconsistencies found in this object; `depth` bounds how far children are followed.
  virtual unsigned vekAuditErrors(unsigned depth) const;
  virtual unsigned auditErrors(unsigned depth) const;
  /// Called when the last reference has gone and the object is about to be destroyed. An override
  /// that takes (and keeps) a reference keeps the object alive.
  virtual void zeroReferencesIs(bool zero);
  /// The type's record in the reflection, or null when the type has none.
  virtual VekType const* fwkType() const;

 protected:
  PtrInterface() noexcept {
    if (ptrifTrackOn_) [[unlikely]]
      trackNew();
  }
  virtual ~PtrInterface() {
    if (ptrifTrackOn_) [[unlikely]]
      trackGone();
    // `destroy` pins the count at one. Whoever still holds a reference now would use a dead object.
    if (word_ / kReference != 1) [[unlikely]]
      destroyedWhileReferenced();
  }

 public:
  bool hasNotificationActive() const noexcept { return (loaded() & kNotificationActive) != 0; }
  bool vekMarkedForDeletion() const noexcept { return (loaded() & kMarkedForDeletion) != 0; }
  void vekMarkedForDeletionIs(bool on) noexcept { flagIs(kMarkedForDeletion, on); }

  /// References held at this moment; for tests and diagnostics only.
  std::uint32_t referenceCount() const noexcept { return loaded() / kReference; }

  /// Whether the caller's reference is surely the only one; while counting is atomic, never sure.
  bool isOnlyReference() const noexcept {
    return !VFPtrInterface::enableThreadSafePointers && word_ < 2 * kReference;
  }

  void addReference() const noexcept {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      shared().fetch_add(kReference, std::memory_order_relaxed);
    } else {
      word_ += kReference;
    }
  }

  void dropReference() const noexcept {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      if (shared().fetch_sub(kReference, std::memory_order_acq_rel) < 2 * kReference)
        destroyShared();
    } else if (word_ < 2 * kReference) {
      destroy();
    } else {
      word_ -= kReference;
    }
  }

  /// Whether an object of no use any more may be kept for the next of its kind instead of being
  /// destroyed: memory is pooled anyway, no other thread counts, and nobody tracks objects.
  static bool recycles() noexcept { return Pool::plain() && !ptrifTrackOn_; }
  /// Whether the object has the one reference that it was born with, and no flag. Asked only while
  /// `recycles()`.
  bool isAsNew() const noexcept { return word_ == kReference; }

  /// Adds a reference that is never released: the object lives until the process ends, and the
  /// object tracker no longer counts it as one that somebody ought to release.
  void referencesLeak() const noexcept;

  /// From the pool (Pool.h). A type that must be aligned to more than 8 brings its own.
  static void* operator new(std::size_t size) { return Pool::allocate(size); }
  static void operator delete(void* memory, std::size_t size) noexcept {
    Pool::release(memory, size);
  }

 protected:
  /// Sets the flag alone; an override of `hasNotificationActiveIs` calls it and then does its work.
  void notificationActiveFlagIs(bool on) noexcept { flagIs(kNotificationActive, on); }

 private:
  // The flags are the two low bits; the count stands above them, so no flag is ever a reference.
  static constexpr std::uint32_t kNotificationActive{1U << 0U};
  static constexpr std::uint32_t kMarkedForDeletion{1U << 1U};
  static constexpr std::uint32_t kReference{1U << 2U};

  // Atomic whatever the switch says: it costs a plain read, and another thread may be counting.
  std::uint32_t loaded() const noexcept { return shared().load(std::memory_order_relaxed); }
  std::atomic_ref<std::uint32_t> shared() const noexcept {
    return std::atomic_ref<std::uint32_t>{word_};
  }

  void flagIs(std::uint32_t flag, bool on) noexcept {
    if (VFPtrInterface::enableThreadSafePointers) {
      on ? shared().fetch_or(flag, std::memory_order_relaxed)
         : shared().fetch_and(~flag, std::memory_order_relaxed);
    } else {
      word_ = on ? word_ | flag : word_ & ~flag;
    }
  }

  void destroy() const noexcept;
  void destroyShared() const noexcept;
  void trackNew() const noexcept;
  void trackGone() const noexcept;
  [[noreturn]] static void destroyedWhileReferenced() noexcept;

  mutable std::uint32_t word_{kReference};
};

/// The living objects, recorded while `ptrifTrackOn_` is set; for tests and for hosts
/// that look for leaks. Thread: safe from any.
class PtrTrack {
 public:
  /// An object for which there is no memory to record it is not counted.
  static void ptrifNew(PtrInterface const* object) noexcept;
  static void ptrifDel(PtrInterface const* object) noexcept;
  /// Objects made since tracking was switched on that are alive and not leaked on purpose.
  static std::size_t live() noexcept;
};

}  // namespace Vek

#pragma GCC visibility pop
