#include <csignal>
#include <functional>
#include <gtest/gtest.h>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

#include "tests/runtime/support/Tracking.h"

namespace {

using RuntimeTest::Tracking;
using Vek::make;
using Vek::Ptr;

/// Counts its hooks; `atZero` and `atEnd` run in `zeroReferencesIs` and in the destructor.
class Probe : public Vek::PtrInterface {
 public:
  struct Counts {
    int zeros{0};
    int ends{0};
  };
  using Hook = std::function<void(Probe&)>;

  explicit Probe(Counts& counts, Hook atZero = {}, Hook atEnd = {})
      : counts_{counts}, atZero_{std::move(atZero)}, atEnd_{std::move(atEnd)} {}

  void zeroReferencesIs(bool zero) override {
    EXPECT_TRUE(zero);
    EXPECT_EQ(counts_.ends, 0) << "the hook comes before the destructor";
    ++counts_.zeros;
    if (atZero_) atZero_(*this);
  }
  unsigned auditErrors(unsigned depth) const override { return depth + 40; }

 private:
  ~Probe() override {
    ++counts_.ends;
    if (atEnd_) atEnd_(*this);
  }

  Counts& counts_;
  Hook atZero_;
  Hook atEnd_;
};

class Plain : public Vek::PtrInterface {};

TEST(PtrInterface, IsBornWithOneReferenceWhichMakeAdopts) {
  auto const object = make<Plain>();
  EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(PtrInterface, IsDestroyedOnceWhenTheLastReferenceGoes) {
  Probe::Counts counts;
  auto first = make<Probe>(counts);
  auto second = first;
  EXPECT_EQ(first->referenceCount(), 2U);

  first = nullptr;
  EXPECT_EQ(second->referenceCount(), 1U);
  EXPECT_EQ(counts.zeros, 0);
  EXPECT_EQ(counts.ends, 0);

  second = nullptr;
  EXPECT_EQ(counts.zeros, 1);
  EXPECT_EQ(counts.ends, 1);
}

TEST(PtrInterface, FlagsAreSeparateAndAreNoReferences) {
  Probe::Counts counts;
  auto object = make<Probe>(counts);
  EXPECT_FALSE(object->hasNotificationActive());
  EXPECT_FALSE(object->vekMarkedForDeletion());

  object->hasNotificationActiveIs(true);
  EXPECT_TRUE(object->hasNotificationActive());
  EXPECT_FALSE(object->vekMarkedForDeletion());
  EXPECT_EQ(object->referenceCount(), 1U);

  object->vekMarkedForDeletionIs(true);
  object->hasNotificationActiveIs(false);
  EXPECT_FALSE(object->hasNotificationActive());
  EXPECT_TRUE(object->vekMarkedForDeletion());
  EXPECT_EQ(object->referenceCount(), 1U);

  object->hasNotificationActiveIs(true);
  auto copy = object;
  EXPECT_EQ(object->referenceCount(), 2U);
  copy = nullptr;
  EXPECT_TRUE(object->hasNotificationActive());
  EXPECT_TRUE(object->vekMarkedForDeletion());

  object = nullptr;
  EXPECT_EQ(counts.ends, 1) << "a set flag keeps nothing alive";
}

TEST(PtrInterface, ConstructorMayHandItselfToCountedPointers) {
  class HandsItselfOut : public Vek::PtrInterface {
   public:
    explicit HandsItselfOut(int& ends) : ends_{ends} {
      { Ptr<HandsItselfOut> const temporary{this}; }
      EXPECT_EQ(ends_, 0);
    }

   private:
    ~HandsItselfOut() override { ++ends_; }
    int& ends_;
  };
  int ends = 0;
  auto object = make<HandsItselfOut>(ends);
  EXPECT_EQ(object->referenceCount(), 1U);
  EXPECT_EQ(ends, 0);
  object = nullptr;
  EXPECT_EQ(ends, 1);
}

TEST(PtrInterface, PointersTakenInTheDestructorDoNotDestroyAgain) {
  Probe::Counts counts;
  auto object = make<Probe>(counts, Probe::Hook{}, [](Probe& probe) {
    Ptr<Probe> const first{&probe};
    Ptr<Probe> const second{first};
  });
  object = nullptr;
  EXPECT_EQ(counts.ends, 1);
}

TEST(PtrInterface, PointersTakenAndDroppedInTheZeroHookDoNotKeepTheObject) {
  Probe::Counts counts;
  auto object = make<Probe>(counts, [](Probe& probe) { Ptr<Probe> const passing{&probe}; });
  object = nullptr;
  EXPECT_EQ(counts.zeros, 1);
  EXPECT_EQ(counts.ends, 1);
}

TEST(PtrInterface, PointerKeptInTheZeroHookKeepsTheObject) {
  Probe::Counts counts;
  Ptr<Probe> kept;
  bool keep = true;
  auto object = make<Probe>(counts, [&](Probe& probe) {
    if (keep) kept = Ptr<Probe>{&probe};
  });

  object = nullptr;
  ASSERT_EQ(counts.ends, 0);
  EXPECT_EQ(kept->referenceCount(), 1U);

  keep = false;
  kept = nullptr;
  EXPECT_EQ(counts.zeros, 2) << "the hook runs each time the last reference goes";
  EXPECT_EQ(counts.ends, 1);
}

TEST(PtrInterface, ConstructorThatThrowsLeavesNothingBehind) {
  class Refuses : public Vek::PtrInterface {
   public:
    Refuses() { throw 7; }
  };
  Tracking const tracking;
  EXPECT_THROW(make<Refuses>(), int);
  EXPECT_EQ(tracking.live(), 0U);
}

TEST(PtrInterface, DefaultsOfTheVirtualOperations) {
  auto const object = make<Plain>();
  EXPECT_EQ(object->fwkType(), nullptr);
  EXPECT_EQ(object->auditErrors(3), 0U);
  EXPECT_EQ(object->vekAuditErrors(3), 0U);
}

TEST(PtrInterface, VekAuditErrorsAsksAuditErrorsOfTheObject) {
  Probe::Counts counts;
  auto const object = make<Probe>(counts);
  EXPECT_EQ(object->vekAuditErrors(2), 42U);
}

TEST(PtrInterface, IsFreedByTheSizedOperatorOfTheRuntime) {
  static_assert(std::is_same_v<decltype(&Vek::PtrInterface::operator new), void* (*)(std::size_t)>);
  static_assert(std::is_same_v<decltype(&Vek::PtrInterface::operator delete),
                               void (*)(void*, std::size_t) noexcept>);
  // A derived type's own operators are found instead, with the size of the whole object.
  struct Sizes {
    std::size_t made{0};
    std::size_t freed{0};
  };
  static Sizes sizes;
  class Sized : public Vek::PtrInterface {
   public:
    static void* operator new(std::size_t size) {
      sizes.made = size;
      return PtrInterface::operator new(size);
    }
    static void operator delete(void* memory, std::size_t size) noexcept {
      sizes.freed = size;
      PtrInterface::operator delete(memory, size);
    }
    char payload[100]{};
  };
  make<Sized>();
  EXPECT_EQ(sizes.made, sizeof(Sized));
  EXPECT_EQ(sizes.freed, sizeof(Sized));
}

TEST(PtrTrack, CountsTheObjectsMadeWhileTrackingIsOn) {
  auto untracked = make<Plain>();
  Tracking const tracking;
  auto first = make<Plain>();
  auto second = make<Plain>();
  auto const sameAsSecond = second;
  EXPECT_EQ(tracking.live(), 2U);

  untracked = nullptr;
  EXPECT_EQ(tracking.live(), 2U) << "an object from before was never recorded";
  second = nullptr;
  EXPECT_EQ(tracking.live(), 2U);
  first = nullptr;
  EXPECT_EQ(tracking.live(), 1U);
}

TEST(PtrTrack, RecordsNothingWhileTrackingIsOff) {
  std::size_t const before = Vek::PtrTrack::live();
  auto const object = make<Plain>();
  EXPECT_EQ(Vek::PtrTrack::live(), before);
}

TEST(PtrTrack, ForgetsAnObjectThatIsLeakedOnPurpose) {
  Probe::Counts counts;
  Tracking const tracking;
  auto object = make<Probe>(counts);
  EXPECT_EQ(tracking.live(), 1U);

  Probe* const leaked = object.get();
  object->referencesLeak();
  EXPECT_EQ(tracking.live(), 0U);
  EXPECT_EQ(object->referenceCount(), 2U);

  object = nullptr;
  EXPECT_EQ(counts.ends, 0) << "the leaked reference keeps the object";
  leaked->dropReference();  // what nobody else does: the test leaves no leak
  EXPECT_EQ(counts.ends, 1);
}

TEST(PtrTrack, LeavesTheObjectAloneWhenTrackingIsOff) {
  Probe::Counts counts;
  auto object = make<Probe>(counts);
  Probe* const leaked = object.get();
  object->referencesLeak();
  object = nullptr;
  EXPECT_EQ(leaked->referenceCount(), 1U);
  EXPECT_EQ(counts.ends, 0);
  leaked->dropReference();
}

void destroyWhileReferenced() {
  auto const pointer = make<Plain>();
  auto const another = pointer;
  pointer->~Plain();
}

TEST(PtrInterfaceDeathTest, DestroyingAReferencedObjectEndsTheProcess) {
  EXPECT_EXIT(destroyWhileReferenced(), testing::KilledBySignal(SIGABRT),
              "^Vek: an object was destroyed while it was still referenced\n$");
}

}  // namespace
