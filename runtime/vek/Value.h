#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/String.h"

#pragma GCC visibility push(default)

namespace Vek {

/// What a value of any reflected type is kept as.
using ValueStorage =
    std::variant<std::monostate, bool, std::uint32_t, double, String, Ptr<PtrInterface const>>;

/// The record of one value type: its registered name and its textual form.
struct ValueType {
  std::string_view name;      ///< for example "unsigned int" or "LinkFlap::Config"
  std::type_info const* cpp;  ///< the C++ type, for messages
  bool object;                ///< a counted pointer to an object of that name
  std::string (*toText)(ValueStorage const&);
  /// Reads a value from the beginning of [begin, end) and moves `begin` behind it. Throws
  /// `Vek::RangeException` (`cannotConvert`) when there is none; `begin` is then untouched.
  ValueStorage (*fromText)(char const*& begin, char const* end);
};

/// How a C++ type is reflected: specialised for each type that an attribute, a key or a parameter
/// can have. It has `type` (its record), `store` and `load`.
template <typename T>
struct ValueTraits;

/// A value of a reflected type; empty when it has none.
class Value {
 public:
  Value() = default;
  template <typename T>
  requires requires { ValueTraits<std::remove_cvref_t<T>>::type; }
  Value(T&& value)  // NOLINT(bugprone-forwarding-reference-overload): constrained
      : type_{&ValueTraits<std::remove_cvref_t<T>>::type},
        storage_{ValueTraits<std::remove_cvref_t<T>>::store(std::forward<T>(value))} {}
  Value(ValueType const& type, ValueStorage storage) : type_{&type}, storage_{std::move(storage)} {}

  bool empty() const noexcept { return type_ == nullptr; }
  /// The record of its type; null for an empty value.
  ValueType const* type() const noexcept { return type_; }
  ValueStorage const& storage() const noexcept { return storage_; }
  /// Its textual form; the empty text for an empty value.
  std::string text() const { return empty() ? std::string{} : type_->toText(storage_); }

  /// The value as a `T`. Throws `Vek::TypeException` with the name of the value's own type when that
  /// is another.
  template <typename T>
  T as() const;

  friend bool operator==(Value const& a, Value const& b) {
    return a.type_ == b.type_ && a.storage_ == b.storage_;
  }

 private:
  [[noreturn]] void throwOtherType() const;

  ValueType const* type_{nullptr};
  ValueStorage storage_;
};

/// The textual form of a string: as it is when it is a plain word (letters, digits, and "_.-+:"),
/// else in double quotes, with \" \\ and \xHH for what cannot stand there.
std::string quotedText(std::string_view text);
/// Reads such a string: a quoted one, or the longest run of word characters (at least one). Throws
/// as `ValueType::fromText` does; `type` is named in the message.
String textOfQuoted(char const*& begin, char const* end, std::type_info const& type);

/// The textual form of a reference to an object: its path (`ObjectPath.h`), or "null".
std::string objectText(PtrInterface const* object);
/// The object that a path names. `typeName` is the declared type of the reference.
Ptr<PtrInterface const> objectOfText(char const*& begin, char const* end, std::string_view typeName,
                                     std::type_info const& type);

namespace detail {
std::string boolText(ValueStorage const& value);
std::string unsignedText(ValueStorage const& value);
std::string doubleText(ValueStorage const& value);
std::string stringText(ValueStorage const& value);
std::string ptrText(ValueStorage const& value);
ValueStorage boolOfText(char const*& begin, char const* end);
ValueStorage unsignedOfText(char const*& begin, char const* end);
ValueStorage doubleOfText(char const*& begin, char const* end);
template <typename T>
ValueStorage stringOfText(char const*& begin, char const* end) {
  return textOfQuoted(begin, end, typeid(T));
}
}  // namespace detail

template <>
struct ValueTraits<bool> {
  static constexpr ValueType type{"bool", &typeid(bool), false, detail::boolText,
                                  detail::boolOfText};
  static ValueStorage store(bool value) { return value; }
  static bool load(ValueStorage const& value) { return std::get<bool>(value); }
};

template <>
struct ValueTraits<std::uint32_t> {
  static constexpr ValueType type{"unsigned int", &typeid(std::uint32_t), false,
                                  detail::unsignedText, detail::unsignedOfText};
  static ValueStorage store(std::uint32_t value) { return value; }
  static std::uint32_t load(ValueStorage const& value) { return std::get<std::uint32_t>(value); }
};

template <>
struct ValueTraits<double> {
  static constexpr ValueType type{"double", &typeid(double), false, detail::doubleText,
                                  detail::doubleOfText};
  static ValueStorage store(double value) { return value; }
  static double load(ValueStorage const& value) { return std::get<double>(value); }
};

/// For types that are made from a `Vek::String` and give it back: strings, names, identifiers.
template <typename T, String const& (*text)(T const&)>
struct TextValueTraits {
  static ValueStorage store(T const& value) { return text(value); }
  static T load(ValueStorage const& value) { return T{std::get<String>(value)}; }
};

inline String const& textOf(String const& string) {
  return string;
}
inline String const& textOf(Name const& name) {
  return name.string();
}

template <>
struct ValueTraits<String> : TextValueTraits<String, textOf> {
  static constexpr ValueType type{"Vek::String", &typeid(String), false, detail::stringText,
                                  detail::stringOfText<String>};
};

template <>
struct ValueTraits<Name> : TextValueTraits<Name, textOf> {
  static constexpr ValueType type{"Vek::Name", &typeid(Name), false, detail::stringText,
                                  detail::stringOfText<Name>};
};

/// Enumerations of 32 bits: their numbers. Each names itself through `EnumName`.
template <typename T>
struct EnumName;

template <typename T>
requires(std::is_enum_v<T> && sizeof(T) == sizeof(std::uint32_t)) struct ValueTraits<T> {
  static constexpr ValueType type{EnumName<T>::name, &typeid(T), false, detail::unsignedText,
                                  detail::unsignedOfText};
  static ValueStorage store(T value) { return static_cast<std::uint32_t>(value); }
  static T load(ValueStorage const& value) {
    return static_cast<T>(std::get<std::uint32_t>(value));
  }
};

/// Counted pointers to objects whose class says its registered name, `vekTypeName`.
template <typename T>
struct ValueTraits<Ptr<T>> {
  using Object = std::remove_const_t<T>;
  static constexpr ValueType type{Object::vekTypeName, &typeid(Object), true, detail::ptrText,
                                  [](char const*& begin, char const* end) -> ValueStorage {
                                    return objectOfText(begin, end, Object::vekTypeName,
                                                        typeid(Object));
                                  }};
  static ValueStorage store(Ptr<T> const& value) { return Ptr<PtrInterface const>{value}; }
  static Ptr<T> load(ValueStorage const& value) {
    auto const& pointer = std::get<Ptr<PtrInterface const>>(value);
    // A tool that may call for a change has been let in by a view that is not read-only.
    return Ptr<T>{dynamic_cast<Object*>(const_cast<PtrInterface*>(pointer.get()))};
  }
};

template <typename T>
T Value::as() const {
  // Compared by name: a pointer to const and one to non-const are one type to tools.
  if (type_ == &ValueTraits<T>::type ||
      (type_ != nullptr && type_->name == ValueTraits<T>::type.name))
    return ValueTraits<T>::load(storage_);
  throwOtherType();
}

}  // namespace Vek

#pragma GCC visibility pop
