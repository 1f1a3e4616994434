#include <csignal>
#include <gtest/gtest.h>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

namespace {

using Vek::make;
using Vek::Ptr;

class Base : public Vek::PtrInterface {
 public:
  int number{1};
};

class Derived : public Base {
 public:
  explicit Derived(int* ends = nullptr) : ends_{ends} {}

 private:
  ~Derived() override {
    if (ends_ != nullptr) ++*ends_;
  }
  int* ends_;
};

static_assert(sizeof(Ptr<Base>) == sizeof(Base*));
static_assert(std::is_nothrow_move_constructible_v<Ptr<Base>>);
static_assert(std::is_convertible_v<Ptr<Derived>, Ptr<Base>>);
static_assert(std::is_convertible_v<Ptr<Base>, Ptr<Base const>>);
static_assert(!std::is_convertible_v<Ptr<Base const>, Ptr<Base>>, "read-only stays read-only");
static_assert(!std::is_convertible_v<Ptr<Base>, Ptr<Derived>>);
static_assert(!std::is_convertible_v<Ptr<Base>, bool>, "only where a condition is asked for");

TEST(Ptr, IsEmptyByDefaultAndFromNull) {
  Ptr<Base> const byDefault;
  Ptr<Base> const fromNull{nullptr};
  Ptr<Base> const fromNullObject{static_cast<Base*>(nullptr)};
  EXPECT_FALSE(byDefault);
  EXPECT_EQ(byDefault.get(), nullptr);
  EXPECT_TRUE(fromNull == nullptr);
  EXPECT_TRUE(fromNullObject == byDefault);
}

TEST(Ptr, CopyAddsAReferenceAndItsEndDropsOne) {
  auto const object = make<Base>();
  {
    Ptr<Base> const copy{object};
    EXPECT_EQ(object->referenceCount(), 2U);
    Ptr<Base> const fromRaw{object.get()};
    EXPECT_EQ(object->referenceCount(), 3U);
  }
  EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(Ptr, MoveCarriesTheReferenceAlong) {
  auto object = make<Base>();
  Ptr<Base> const moved{std::move(object)};
  EXPECT_EQ(moved->referenceCount(), 1U);
  EXPECT_EQ(object.get(), nullptr);  // NOLINT: a moved-from Ptr is empty
}

TEST(Ptr, AssignmentDropsTheOldObjectAndTakesTheNew) {
  int oldEnds = 0;
  auto pointer = make<Derived>(&oldEnds);
  auto const other = make<Derived>();

  pointer = other;
  EXPECT_EQ(oldEnds, 1);
  EXPECT_EQ(other->referenceCount(), 2U);
  pointer = nullptr;
  EXPECT_EQ(other->referenceCount(), 1U);
  EXPECT_FALSE(pointer);
}

TEST(Ptr, MoveAssignmentDropsTheOldObjectAtOnce) {
  int oldEnds = 0;
  auto pointer = make<Derived>(&oldEnds);
  auto other = make<Derived>();
  pointer = std::move(other);
  EXPECT_EQ(oldEnds, 1);
  EXPECT_EQ(pointer->referenceCount(), 1U);
  EXPECT_EQ(other.get(), nullptr);  // NOLINT
}

TEST(Ptr, SelfAssignmentChangesNothing) {
  int ends = 0;
  auto pointer = make<Derived>(&ends);
  auto& same = pointer;
  pointer = same;
  EXPECT_EQ(pointer->referenceCount(), 1U);
  pointer = std::move(same);
  ASSERT_TRUE(pointer);
  EXPECT_EQ(pointer->referenceCount(), 1U);
  EXPECT_EQ(ends, 0);
}

TEST(Ptr, AssignmentFromInsideOfTheObjectThatGoes) {
  class Chain : public Vek::PtrInterface {
   public:
    Ptr<Chain> next;
    int number{0};
  };
  auto head = make<Chain>();
  head->next = make<Chain>();
  head->next->number = 2;
  head = head->next;  // the assigned pointer is a member of the object that the assignment destroys
  EXPECT_EQ(head->number, 2);
  EXPECT_EQ(head->referenceCount(), 1U);
}

TEST(Ptr, HoldsTheNewObjectBeforeTheOldOneIsDestroyed) {
  class Looks : public Vek::PtrInterface {
   public:
    Looks(Ptr<Looks>& place, bool& sawItself) : place_{place}, sawItself_{sawItself} {}

   private:
    ~Looks() override { sawItself_ = place_.get() == this; }
    Ptr<Looks>& place_;
    bool& sawItself_;
  };
  bool sawItself = true;
  bool ignored = false;
  Ptr<Looks> place;
  place = make<Looks>(place, sawItself);
  place = make<Looks>(place, ignored);
  EXPECT_FALSE(sawItself);

  sawItself = true;
  place = make<Looks>(place, sawItself);
  place = nullptr;
  EXPECT_FALSE(sawItself);
}

TEST(Ptr, ConvertsToBasesAndToTheReadOnlyForm) {
  int ends = 0;
  auto derived = make<Derived>(&ends);
  Ptr<Base> const base{derived};
  Ptr<Base const> readOnly{base};
  EXPECT_EQ(derived->referenceCount(), 3U);
  EXPECT_TRUE(derived == base);
  EXPECT_TRUE(readOnly == base);

  readOnly = std::move(derived);
  EXPECT_EQ(readOnly->referenceCount(), 2U);
  EXPECT_FALSE(derived);  // NOLINT
}

TEST(Ptr, ReadOnlyFormKeepsTheObjectAlive) {
  int ends = 0;
  Ptr<Derived const> readOnly = make<Derived>(&ends);
  EXPECT_EQ(ends, 0);
  EXPECT_EQ(readOnly->number, 1);
  readOnly = nullptr;
  EXPECT_EQ(ends, 1);
}

TEST(Ptr, AdoptAddsNoReferenceAndReleaseDropsNone) {
  auto pointer = make<Base>();
  Base* const raw = pointer.release();
  EXPECT_FALSE(pointer);
  EXPECT_EQ(raw->referenceCount(), 1U);
  auto const again = Ptr<Base>::adopt(raw);
  EXPECT_EQ(again.get(), raw);
  EXPECT_EQ(raw->referenceCount(), 1U);
}

TEST(Ptr, SwapExchangesWithoutCounting) {
  auto one = make<Base>();
  auto other = make<Base>();
  Base* const first = one.get();
  Base* const second = other.get();
  one.swap(other);
  EXPECT_EQ(one.get(), second);
  EXPECT_EQ(other.get(), first);
  EXPECT_EQ(one->referenceCount(), 1U);
}

TEST(Ptr, IsComparedByIdentity) {
  auto const one = make<Base>();
  auto const twin = make<Base>();
  Ptr<Base> const same{one};
  EXPECT_TRUE(one == same);
  EXPECT_FALSE(one == twin);
  EXPECT_TRUE(one != twin);
  EXPECT_TRUE(one != nullptr);
  EXPECT_TRUE(nullptr != one);
}

TEST(Ptr, HashGoesWithIdentity) {
  auto const one = make<Base>();
  std::unordered_set<Ptr<Base>> const set{one, make<Base>(), one};
  EXPECT_EQ(set.size(), 2U);
  EXPECT_TRUE(set.contains(Ptr<Base>{one.get()}));
  EXPECT_EQ(one->referenceCount(), 2U);
}

TEST(Ptr, StaticCastYieldsTheSameObject) {
  Ptr<Base> const base = make<Derived>();
  Ptr<Derived> const derived = Vek::staticPtrCast<Derived>(base);
  EXPECT_TRUE(derived == base);
  EXPECT_EQ(base->referenceCount(), 2U);
  EXPECT_FALSE(Vek::staticPtrCast<Derived>(Ptr<Base>{}));
}

TEST(PtrDeathTest, DereferencingAnEmptyPointerEndsTheProcess) {
  Ptr<Base> const empty;
  EXPECT_EXIT((void)empty->number, testing::KilledBySignal(SIGABRT),
              "^Vek: an empty Ptr was dereferenced where an object is required\n$");
  EXPECT_EXIT((void)(*empty).number, testing::KilledBySignal(SIGABRT),
              "^Vek: an empty Ptr was dereferenced where an object is required\n$");
}

}  // namespace
