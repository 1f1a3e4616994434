#pragma once

#include <memory>
#include <utility>

#include "runtime/vek/HashMap.h"
#include "runtime/vek/Value.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Refuses a change through a read-only view: throws `Vek::Exception` "attempting to modify a const
/// instance".
[[noreturn]] void throwConstException();

/// A walk over a collection or a queue, for tools that know neither's type. It holds the object
/// whose attribute it walks, and goes on correctly whatever comes or goes meanwhile.
class AttributeIterator {
 public:
  virtual ~AttributeIterator() = default;
  AttributeIterator& operator=(AttributeIterator const&) = delete;

  /// Whether the walk stands on a member; what follows requires that it does.
  virtual bool nonNull() const = 0;
  virtual Value key() const = 0;
  /// The member's value.
  virtual Value obj() const = 0;
  virtual void inc() = 0;
  /// Removes the member, as the attribute's own removal does; the walk goes on behind it.
  /// Throws as a read-only view does when it comes from one.
  void del() {
    if (readOnly_) throwConstException();
    remove();
  }
  /// A walk handed out by a read-only view removes nothing.
  void readOnlyIs(bool on) noexcept { readOnly_ = on; }
  virtual std::unique_ptr<AttributeIterator> clone() const = 0;

 protected:
  AttributeIterator() = default;
  AttributeIterator(AttributeIterator const&) = default;

  virtual void remove() = 0;

 private:
  bool readOnly_{false};
};

/// Such a walk from what a type of collection offers. `Walk` has: explicit bool, key(), obj(),
/// inc(), del(Object&); it is copyable.
template <typename Object, typename Walk>
class AttributeWalk final : public AttributeIterator {
 public:
  AttributeWalk(Ptr<Object const> object, Walk walk)
      : object_{std::move(object)}, walk_{std::move(walk)} {}

  bool nonNull() const override { return static_cast<bool>(walk_); }
  Value key() const override { return walk_.key(); }
  Value obj() const override { return walk_.obj(); }
  void inc() override { walk_.inc(); }
  std::unique_ptr<AttributeIterator> clone() const override {
    return std::make_unique<AttributeWalk>(*this);
  }

 private:
  // Not reached where the view that handed out the walk is read-only.
  void remove() override { walk_.del(const_cast<Object&>(*object_)); }

  Ptr<Object const> object_;  // first in, last out: the walk refers to it
  Walk walk_;
};

}  // namespace Vek

#pragma GCC visibility pop
