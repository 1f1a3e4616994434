#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "runtime/vek/AttributeIterator.h"
#include "runtime/vek/Entity.h"
#include "runtime/vek/Notifiee.h"
#include "runtime/vek/Value.h"
#include "runtime/vek/VekType.h"

#pragma GCC visibility push(default)

namespace Vek {

/// `indexed`: whether the operation was on a member.
[[noreturn]] void throwOpNotSupportedException(std::string_view name, unsigned opId, bool indexed);
[[noreturn]] void throwBadIndexAttrException(std::string_view name);
[[noreturn]] void throwUnknownArgException(std::string_view what);

/// A view of an object by the names of its attributes: what a tool uses that is not compiled against
/// the object's type. One implementation for all types; what it knows, it knows from their records.
///
/// It holds the object. A read-only view refuses every change: writing, calling handlers, making and
/// removing members.
class GenericIf {
 public:
  /// Arguments in the order of the record's parameters. A text (`Vek::String`) stands for a value of
  /// another type and is converted, all of it.
  using List = std::vector<Value>;

  /// Such arguments as they are handed to an operation: a view, which needs no memory of its own.
  /// What it views must outlive it, as a list in braces does until the call is over.
  class Arguments {
   public:
    Arguments() = default;
    Arguments(List const& values) noexcept : values_{values} {}
    Arguments(std::initializer_list<Value> values) noexcept
        : values_{std::data(values), values.size()} {}

    bool empty() const noexcept { return values_.empty(); }
    std::size_t size() const noexcept { return values_.size(); }
    Value const& operator[](std::size_t index) const noexcept { return values_[index]; }

   private:
    std::span<Value const> values_;
  };

  enum class OpCode : std::uint8_t {
    get = 1,          ///< the value; with an index: the member's
    set = 2,          ///< one argument
    call = 3,         ///< a handler, with its arguments
    instantiate = 4,  ///< constructor-list: makes a machine or returns the present one
    del = 5,          ///< the member of the index; without one: what the attribute holds
    size = 6,         ///< number of members
  };

  /// One operation on one attribute, or on one member of it.
  struct Op {
    AttributeId attribute;
    OpCode code;
    Value index;  ///< a key, or a text that is converted to one; empty: the attribute as a whole
  };

  virtual ~GenericIf() = default;

  bool readOnly() const noexcept { return readOnly_; }
  Ptr<PtrInterface const> const& object() const noexcept { return object_; }

  /// The type's record.
  virtual VekType const& type() const;
  /// The identifier of the attribute of that name, of the type or its base; 0 when there is none.
  AttributeId attributeId(std::string_view name) const;
  /// The name of that attribute; empty when there is none.
  std::string_view attributeString(AttributeId id) const;

  /// Performs one operation. Throws `Vek::Exception` "attempting to modify a const instance"; what
  /// the `throwX` functions above throw; `Vek::TypeException` with the view's bare type name when an
  /// argument has another type; `Vek::RangeException` when a text does not convert; and what the
  /// operation itself throws.
  void attributeOp(Op const& op, Arguments arguments, Value& result);

  /// A walk over a collection or a queue, from its first member on, or from `key`.
  std::unique_ptr<AttributeIterator> attributeIteratorConst(AttributeId id) const;
  std::unique_ptr<AttributeIterator> attributeIteratorKeyConst(AttributeId id,
                                                               Value const& key) const;
  static Value attributeIterator_iterObj(AttributeIterator const& it) { return it.obj(); }
  static Value attributeIterator_iterKey(AttributeIterator const& it) { return it.key(); }
  static void attributeIterator_iterInc(AttributeIterator& it) { it.inc(); }
  /// Removes the member the walk stands on; the walk goes on behind it.
  void attributeIterator_iterDel(AttributeIterator& it) const;
  static std::unique_ptr<AttributeIterator> attributeIterator_iterClone(
      AttributeIterator const& it) {
    return it.clone();
  }
  static bool attributeIterator_nonNull(AttributeIterator const& it) { return it.nonNull(); }

  /// A new view of the same object.
  virtual std::unique_ptr<GenericIf> clone() const = 0;

  /// The object as a pointer to `type`, which is its own or one of its bases; else throws
  /// `Vek::TypeException` with the view's bare type name.
  virtual void const* voidPtrIs(VekType const& type) const;

  void hasNotificationActiveIs(bool on);
  virtual void vekDoZombieReactors(bool on);

 protected:
  GenericIf(Ptr<PtrInterface const> object, bool readOnly) noexcept
      : object_{std::move(object)}, readOnly_{readOnly} {}
  GenericIf(GenericIf const&) = default;
  GenericIf& operator=(GenericIf const&) = default;

  void refuseIfReadOnly() const;
  PtrInterface& writable() const;
  VekAttr const& attr(AttributeId id) const;

 private:
  Value converted(Value const& value, ValueType const& wanted) const;
  List converted(VekAttr const& attr, Arguments arguments) const;
  Value indexOf(VekAttr const& attr, Value const& index) const;
  void memberOp(VekAttr const& attr, Op const& op, Arguments arguments, Value& result);
  void wholeOp(VekAttr const& attr, Op const& op, Arguments arguments, Value& result);

  Ptr<PtrInterface const> object_;
  bool readOnly_;
};

/// The view of an object that is no entity.
class GenericIfPtrInterface : public GenericIf {
 public:
  using GenericIf::GenericIf;
  GenericIfPtrInterface(Ptr<PtrInterface const> object, bool readOnly) noexcept
      : GenericIf{std::move(object), readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;
};

/// The view of an entity: a state object, or the Root.
class GenericIfEntity : public GenericIf {
 public:
  GenericIfEntity(Ptr<Entity const> object, bool readOnly) noexcept
      : GenericIf{std::move(object), readOnly} {}
  std::unique_ptr<GenericIf> clone() const override;
  void const* voidPtrIs(VekType const& type) const override;
};

/// A view of any object that has a type record. Throws `Vek::RangeException` when it has none.
std::unique_ptr<GenericIf> genericIfOf(Ptr<PtrInterface const> const& object, bool readOnly);

/// The whole of `text` as a value of `type`. Throws `Vek::RangeException`: `cannotConvert` when the
/// text does not begin with one, "junk at column N deserializing TEXT" (columns from 1) when more
/// follows.
Value valueOfText(std::string_view text, ValueType const& type);

}  // namespace Vek

#pragma GCC visibility pop
