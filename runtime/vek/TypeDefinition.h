#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <type_traits>
#include <utility>

#include "runtime/vek/Assertion.h"
#include "runtime/vek/AttributeIterator.h"
#include "runtime/vek/VekType.h"

#pragma GCC visibility push(default)

namespace Vek {

namespace detail {

/// A value as it is reflected: a plain pointer to an object as a counted one.
template <typename T>
struct Reflected {
  using type = T;
};
template <typename T>
struct Reflected<T*> {
  using type = Ptr<T>;
};
template <typename T>
using ReflectedT = typename Reflected<std::remove_cvref_t<T>>::type;

template <typename Object, typename Function>
struct Member;
/// `Declared`: the class that declares the function, `Object` or a base of it.
template <typename Object, typename Declared, typename R, typename... Args>
struct Member<Object, R (Declared::*)(Args...)> {
  using Result = R;
  static constexpr std::size_t kArguments{sizeof...(Args)};
  static constexpr std::array<ValueType const*, sizeof...(Args)> types{
      &ValueTraits<std::remove_cvref_t<Args>>::type...};
  static constexpr ValueType const* first() noexcept { return types[0]; }

  template <auto F>
  static R invoke(PtrInterface& object, VekAttr::Arguments arguments) {
    return invoke<F>(static_cast<Object&>(object), arguments, std::index_sequence_for<Args...>{});
  }

 private:
  template <auto F, std::size_t... I>
  static R invoke(Object& object, [[maybe_unused]] VekAttr::Arguments arguments,
                  std::index_sequence<I...> /*indexes*/) {
    return (object.*F)(arguments[I].template as<std::remove_cvref_t<Args>>()...);
  }
};
template <typename Object, typename Declared, typename R, typename... Args>
struct Member<Object, R (Declared::*)(Args...) noexcept>
    : Member<Object, R (Declared::*)(Args...)> {};

/// A walk over a `HashMap`: of machines (the value is the machine) or of a `Collection`.
template <typename Object, typename Iterator, auto Del>
struct HashWalk {
  Iterator at;

  explicit operator bool() const { return static_cast<bool>(at); }
  Value key() const { return Value{std::remove_cvref_t<decltype(at->fwkKey())>{at->fwkKey()}}; }
  Value obj() const {
    if constexpr (requires { at->value(); }) {
      return Value{at->value()};
    } else {
      return Value{at.member()};
    }
  }
  void inc() { ++at; }
  void del(Object& object) {
    auto const key = at->fwkKey();
    bool const present = at.isMember();  // another may stand under the key by now
    ++at;
    if (present) (void)std::invoke(Del, object, key);
  }
};

}  // namespace detail

/// Registers the attributes of one type, in the order of the calls: enters the type, leaves it at
/// the end of its life. Value types, key types and parameter types are those of the functions given;
/// only what C++ forgets, the names, is written. `id` 0 stands for the next identifier in order.
template <typename Object>
class TypeDefinition {
 public:
  TypeDefinition(IntrospectionReactor& reactor, VekType& type) : reactor_{reactor}, type_{type} {
    reactor_.handleType(type_);
    type_.hasGenericIfSupportIs(true);
  }
  ~TypeDefinition() { reactor_.handleScopeExit(); }
  TypeDefinition(TypeDefinition const&) = delete;
  TypeDefinition& operator=(TypeDefinition const&) = delete;

  /// A value: read by `Read`; written by `Write` and removed by `Del` where these are given.
  template <auto Read, auto Write = nullptr, auto Del = nullptr>
  VekAttr& value(AttrKind kind, AttributeId id, std::string_view name) {
    using T = detail::ReflectedT<std::invoke_result_t<decltype(Read), Object const&>>;
    VekAttr& attr = reactor_.defNoninstantiatingAttr(type_, name, ValueTraits<T>::type.name,
                                                     nullptr, kind, false, id);
    attr.read = [](PtrInterface const& object) {
      return Value{T{std::invoke(Read, static_cast<Object const&>(object))}};
    };
    if constexpr (!std::is_null_pointer_v<decltype(Write)>) {
      using Setter = detail::Member<Object, decltype(Write)>;
      attr.writeType = Setter::first();
      attr.write = [](PtrInterface& object, Value const& value) {
        Setter::template invoke<Write>(object, VekAttr::Arguments{&value, 1});
      };
    }
    if constexpr (!std::is_null_pointer_v<decltype(Del)>)
      attr.del = [](PtrInterface& object) {
        return Value{std::invoke(Del, static_cast<Object&>(object))};
      };
    return attr;
  }

  /// A handler, with the names of its parameters.
  template <auto Call>
  VekAttr& handler(AttributeId id, std::string_view name,
                   std::initializer_list<std::string_view> parameters = {}) {
    using Function = detail::Member<Object, decltype(Call)>;
    VekAttr& attr = reactor_.defInstantiatingAttr(type_, name, "void *", AttrKind::handler, id);
    declare<Function>(parameters);
    attr.call = [](PtrInterface& object, VekAttr::Arguments arguments) {
      Function::template invoke<Call>(object, arguments);
    };
    return attr;
  }

  /// At most one machine: read by `Read`, made by `Instantiate`, removed by `Del`.
  template <auto Read, auto Instantiate, auto Del>
  VekAttr& single(AttributeId id, std::string_view name,
                  std::initializer_list<std::string_view> parameters) {
    using T = detail::ReflectedT<std::invoke_result_t<decltype(Read), Object const&>>;
    VekAttr& attr =
        reactor_.defInstantiatingAttr(type_, name, ValueTraits<T>::type.name, AttrKind::single, id);
    instantiated<Instantiate>(attr, parameters);
    attr.read = [](PtrInterface const& object) {
      return Value{T{std::invoke(Read, static_cast<Object const&>(object))}};
    };
    attr.del = [](PtrInterface& object) {
      return Value{std::invoke(Del, static_cast<Object&>(object))};
    };
    return attr;
  }

  /// A collection of machines, `Map` being the accessor of its `HashMap`.
  template <auto Map, auto Instantiate, auto Del>
  VekAttr& machines(AttributeId id, std::string_view name,
                    std::initializer_list<std::string_view> parameters) {
    using HashMapType = std::remove_cvref_t<std::invoke_result_t<decltype(Map), Object const&>>;
    using Iterator = typename HashMapType::Iterator;
    using Machine = std::remove_cvref_t<decltype(*std::declval<Iterator>())>;
    using Key = std::remove_cvref_t<decltype(std::declval<Machine const&>().fwkKey())>;
    VekAttr& attr = reactor_.defInstantiatingAttr(type_, name, ValueTraits<Ptr<Machine>>::type.name,
                                                  AttrKind::collection, id);
    attr.keyType = &ValueTraits<Key>::type;
    instantiated<Instantiate>(attr, parameters);
    attr.size = [](PtrInterface const& object) {
      return std::invoke(Map, static_cast<Object const&>(object)).members();
    };
    attr.member = [](PtrInterface const& object, Value const& key) {
      Ptr<Machine> const machine =
          std::invoke(Map, static_cast<Object const&>(object))[key.as<Key>()];
      return machine ? Value{machine} : Value{};
    };
    attr.memberDel = [](PtrInterface& object, Value const& key) {
      Ptr<Machine> const machine = std::invoke(Del, static_cast<Object&>(object), key.as<Key>());
      return machine ? Value{machine} : Value{};
    };
    attr.iterate = [](PtrInterface const& object,
                      Value const* key) -> std::unique_ptr<AttributeIterator> {
      using Walk = detail::HashWalk<Object, Iterator, Del>;
      auto const& self = static_cast<Object const&>(object);
      HashMapType const& map = std::invoke(Map, self);
      return std::make_unique<AttributeWalk<Object, Walk>>(
          Ptr<Object const>{&self},
          Walk{key == nullptr ? map.iterator() : map.iterator(key->as<Key>())});
    };
    return attr;
  }

  /// An attribute with operations that the caller fills in.
  VekAttr& plain(AttrKind kind, AttributeId id, std::string_view name, std::string_view valueType,
                 ValueType const* keyType) {
    return reactor_.defNoninstantiatingAttr(type_, name, valueType, keyType, kind, false, id);
  }

 private:
  template <typename Function>
  void declare(std::initializer_list<std::string_view> parameters) {
    if (parameters.size() != Function::kArguments)
      fatal("Vek: a function was registered with another number of parameters than it has");
    std::size_t index = 0;
    for (std::string_view const parameter : parameters)
      reactor_.handleAttr(parameter, *Function::types[index++]);
    reactor_.handleAttrContextExit();
  }

  template <auto Instantiate>
  void instantiated(VekAttr& attr, std::initializer_list<std::string_view> parameters) {
    using Function = detail::Member<Object, decltype(Instantiate)>;
    declare<Function>(parameters);
    attr.instantiate = [](PtrInterface& object, VekAttr::Arguments arguments) {
      return Value{Function::template invoke<Instantiate>(object, arguments)};
    };
  }

  IntrospectionReactor& reactor_;
  VekType& type_;
};

}  // namespace Vek

#pragma GCC visibility pop
