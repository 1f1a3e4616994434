#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/Value.h"

#pragma GCC visibility push(default)

namespace Vek {

class AttributeIterator;

/// What an attribute is to a tool.
enum class AttrKind : std::uint8_t {
  activity,    ///< the activity that the object runs on
  input,       ///< a constructor parameter
  state,       ///< a plain value
  collection,  ///< members under keys; of machines, those are made through it
  queue,       ///< values under indexes that the queue assigns
  single,      ///< at most one machine, made through it
  handler,     ///< a function
  owner,       ///< the machine that holds this one
  key,         ///< the key under which it does
};

std::string_view kindText(AttrKind kind) noexcept;

/// The record of one attribute. An operation that the attribute does not support is null; the
/// others may throw what the operation itself throws. `object` is of the record's type.
struct VekAttr {
  /// A handler's parameter, or a constructor argument of what is made through the attribute.
  struct Parameter {
    std::string_view name;
    ValueType const* type;
  };
  using Arguments = std::span<Value const>;

  AttributeId id{0};
  std::string_view name;
  AttrKind kind{AttrKind::state};
  bool notifying{false};                ///< watchers can hear of its changes
  std::string_view valueType;           ///< registered name; of a handler: "void *"
  ValueType const* keyType{nullptr};    ///< of collections and queues
  ValueType const* writeType{nullptr};  ///< what `write` and `memberWrite` take
  std::vector<Parameter> parameters;

  Value (*read)(PtrInterface const& object){nullptr};
  void (*write)(PtrInterface& object, Value const& value){nullptr};
  /// What was removed: for an input, the object it watched; for a single, the machine.
  Value (*del)(PtrInterface& object){nullptr};
  void (*call)(PtrInterface& object, Arguments arguments){nullptr};
  /// Makes a machine from its constructor arguments, or returns the present one.
  Value (*instantiate)(PtrInterface& object, Arguments arguments){nullptr};

  // Of collections and queues.
  std::uint32_t (*size)(PtrInterface const& object){nullptr};
  /// Empty when there is no member of that key.
  Value (*member)(PtrInterface const& object, Value const& key){nullptr};
  void (*memberWrite)(PtrInterface& object, Value const& key, Value const& value){nullptr};
  /// What was removed; empty when there was none.
  Value (*memberDel)(PtrInterface& object, Value const& key){nullptr};
  /// A walk from the first member on, or from the place of `key`.
  std::unique_ptr<AttributeIterator> (*iterate)(PtrInterface const& object,
                                                Value const* key){nullptr};
};

/// The record of a type: its name, its base and its attributes in the order of registration.
///
/// Ownership: lives as long as the process; its one reference is leaked on purpose.
class VekType : public PtrInterface {
 public:
  VekType(std::string_view fullName, VekType const* base) noexcept
      : fullName_{fullName}, base_{base} {}

  std::string_view fullName() const noexcept { return fullName_; }
  /// The name behind the last "::".
  std::string_view bareName() const noexcept;
  /// Null for a type without one.
  VekType const* base() const noexcept { return base_; }
  bool derivesFrom(VekType const& other) const noexcept;

  /// The type's own attributes, without those of its base.
  std::vector<std::unique_ptr<VekAttr>> const& attrs() const noexcept { return attrs_; }
  /// The attribute of that name or identifier, of this type or of its base; null when there is none.
  VekAttr const* attr(std::string_view name) const noexcept;
  VekAttr const* attr(AttributeId id) const noexcept;

  /// Adds an attribute, or replaces one of that name at its place. `id` 0: the next in order.
  VekAttr& attrIs(std::string_view name, AttributeId id = 0);
  void attrDel(std::string_view name) noexcept;
  /// A value that belongs to an attribute and is found by its own name, but is not listed.
  VekAttr& companionIs(std::string_view name, AttributeId id);

  bool hasGenericIfSupport() const noexcept { return genericIf_; }
  void hasGenericIfSupportIs(bool on) noexcept { genericIf_ = on; }

 private:
  std::string_view fullName_;
  VekType const* base_;
  bool genericIf_{false};
  std::vector<std::unique_ptr<VekAttr>> attrs_;
  std::vector<std::unique_ptr<VekAttr>> companions_;
};

/// The process's type tree: every registered type by its full name. Types are registered while
/// libraries are loaded, and read from then on.
class IntrospectionReactor {
 public:
  static IntrospectionReactor& global();

  // Registration: a namespace is entered, in it types, in them attributes.
  void handleNameSpace(std::string_view name);
  /// Announces a type with its base and enters it.
  void handleType(VekType& type);
  VekAttr& defNoninstantiatingAttr(VekType& type, std::string_view name, std::string_view valueType,
                                   ValueType const* keyType, AttrKind kind, bool notifying,
                                   AttributeId id);
  /// A handler or an instantiating attribute: what stood under that name is removed, and the record
  /// made afresh; its parameters follow by `handleAttr`, closed by `handleAttrContextExit`.
  VekAttr& defInstantiatingAttr(VekType& type, std::string_view name, std::string_view valueType,
                                AttrKind kind, AttributeId id);
  void handleAttr(std::string_view name, ValueType const& type);
  void handleAttrContextExit() noexcept { context_ = nullptr; }
  /// Leaves the type, or the namespace.
  void handleScopeExit() noexcept;

  /// Binds a record to its full name.
  void typeNodeIs(VekType const& type, std::string_view fullName);
  /// The record bound to that name, or null.
  VekType const* typeNode(std::string_view fullName) const noexcept;
  /// All bound records, in order of binding.
  std::vector<VekType const*> const& types() const noexcept { return types_; }

 private:
  std::vector<std::string_view> scopes_;
  VekAttr* context_{nullptr};
  std::vector<VekType const*> types_;
};

/// The record of the base of all counted objects, and that of entities.
VekType const& ptrInterfaceType();
VekType const& entityType();

}  // namespace Vek

#pragma GCC visibility pop
