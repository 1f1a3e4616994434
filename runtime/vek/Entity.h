#pragma once

#include <cstdint>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/String.h"

#pragma GCC visibility push(default)

namespace Vek {

/// A named object with a place in a tree of entities.
///
/// Ownership: the parent is a plain pointer; whoever set it clears it before the parent goes.
class Entity : public PtrInterface {
 public:
  explicit Entity(Name name = {}) noexcept : name_{std::move(name)} {}

  virtual Name name() const { return name_; }
  virtual Entity* parent() const { return parent_; }
  virtual void parentIs(Entity* parent) { parent_ = parent; }
  /// The attribute of the parent in which this entity stands.
  virtual AttributeId parentAttrId() const { return parentAttrId_; }
  virtual void parentAttrIdIs(AttributeId id) { parentAttrId_ = id; }
  /// The names from the topmost entity down to this one, joined by "::".
  virtual String fullName() const;
  /// The same as a path: each name behind a "/", bytes that a path cannot hold written as %XX.
  virtual String uriPath() const;
  /// The name of one of this object's attributes; empty when it has none of that identifier.
  virtual String attributeString(AttributeId id) const;

  /// How often an attribute of this entity was changed.
  std::uint32_t changes() const noexcept { return changes_; }

 protected:
  ~Entity() override;

  /// What `name()` returns unless it is overridden.
  Name const& ownName() const noexcept { return name_; }
  void countChange() noexcept { ++changes_; }

 private:
  AttributeId parentAttrId_{0};
  Name name_;
  Entity* parent_{nullptr};
  std::uint32_t changes_{0};
};

}  // namespace Vek

#pragma GCC visibility pop
