#include "runtime/vek/PtrInterface.h"

#include <cstddef>
#include <mutex>
#include <new>
#include <unordered_set>

#include "runtime/vek/Assertion.h"

namespace Vek {

bool VFPtrInterface::enableThreadSafePointers = false;
bool ptrifTrackOn_ = false;

void PtrInterface::hasNotificationActiveIs(bool on) {
  notificationActiveFlagIs(on);
}

unsigned PtrInterface::vekAuditErrors(unsigned depth) const {
  return auditErrors(depth);
}

unsigned PtrInterface::auditErrors(unsigned /*depth*/) const {
  return 0;
}

void PtrInterface::zeroReferencesIs(bool /*zero*/) {}

VekType const* PtrInterface::fwkType() const {
  return nullptr;
}

void PtrInterface::destroyedWhileReferenced() noexcept {
  fatal("Vek: an object was destroyed while it was still referenced");
}

void PtrInterface::destroyShared() const noexcept {
  // Nobody else has a reference, so nobody else can add one.
  shared().fetch_add(kReference, std::memory_order_relaxed);
  destroy();
}

void PtrInterface::destroy() const noexcept {
  // The caller has left the last reference in the count: it pins the object, so that a Ptr taken by
  // the hook or by a destructor, and dropped there, does not destroy it a second time.
  auto* const self = const_cast<PtrInterface*>(this);
  self->zeroReferencesIs(true);
  if (referenceCount() > 1) {  // the hook kept a reference: the object lives on
    dropReference();
    return;
  }
  delete self;
}

void PtrInterface::referencesLeak() const noexcept {
  addReference();
  if (ptrifTrackOn_) PtrTrack::ptrifDel(this);
}

void PtrInterface::trackNew() const noexcept {
  PtrTrack::ptrifNew(this);
}

void PtrInterface::trackGone() const noexcept {
  PtrTrack::ptrifDel(this);
}

namespace {

struct Tracker {
  std::mutex mutex;
  std::unordered_set<PtrInterface const*> objects;
};

// Never destroyed: objects with static storage may be released after any static of ours.
Tracker& tracker() noexcept {
  alignas(Tracker) static std::byte memory[sizeof(Tracker)];
  static auto* const instance = new (memory) Tracker;
  return *instance;
}

}  // namespace

void PtrTrack::ptrifNew(PtrInterface const* object) noexcept try {
  std::lock_guard const lock{tracker().mutex};
  tracker().objects.insert(object);
} catch (std::bad_alloc const&) {
  // An aid of diagnosis does not end the process: the object is not counted.
}

void PtrTrack::ptrifDel(PtrInterface const* object) noexcept {
  std::lock_guard const lock{tracker().mutex};
  tracker().objects.erase(object);
}

std::size_t PtrTrack::live() noexcept {
  std::lock_guard const lock{tracker().mutex};
  return tracker().objects.size();
}

}  // namespace Vek
