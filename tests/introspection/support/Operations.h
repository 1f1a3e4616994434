#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>

#include "runtime/vek/Exception.h"
#include "runtime/vek/GenericIf.h"

// The operations of a view, as short as a test wants to say them.

namespace IntrospectionTest {

using OpCode = Vek::GenericIf::OpCode;
using List = Vek::GenericIf::List;

/// A text, as a tool has it from a person.
inline Vek::Value text(std::string_view characters) {
  return Vek::Value{Vek::String{characters}};
}

inline Vek::Value operate(Vek::GenericIf& view, OpCode code, std::string_view name,
                          Vek::Value const& index, List const& arguments) {
  Vek::Value result;
  view.attributeOp({view.attributeId(name), code, index}, arguments, result);
  return result;
}

inline Vek::Value get(Vek::GenericIf& view, std::string_view name, Vek::Value const& index = {}) {
  return operate(view, OpCode::get, name, index, {});
}
inline std::string getText(Vek::GenericIf& view, std::string_view name,
                           Vek::Value const& index = {}) {
  return get(view, name, index).text();
}
inline void set(Vek::GenericIf& view, std::string_view name, Vek::Value const& value) {
  operate(view, OpCode::set, name, {}, {value});
}
inline void setAt(Vek::GenericIf& view, std::string_view name, Vek::Value const& index,
                  Vek::Value const& value) {
  operate(view, OpCode::set, name, index, {value});
}
inline Vek::Value call(Vek::GenericIf& view, std::string_view name, List const& arguments = {}) {
  return operate(view, OpCode::call, name, {}, arguments);
}
inline Vek::Value instantiate(Vek::GenericIf& view, std::string_view name, List const& arguments) {
  return operate(view, OpCode::instantiate, name, {}, arguments);
}
inline Vek::Value del(Vek::GenericIf& view, std::string_view name, Vek::Value const& index = {}) {
  return operate(view, OpCode::del, name, index, {});
}
inline std::uint32_t size(Vek::GenericIf& view, std::string_view name) {
  return operate(view, OpCode::size, name, {}, {}).as<std::uint32_t>();
}

/// What `act` throws, as "CLASS KIND: MESSAGE", the kind being the number of its exception id;
/// "nothing" when it returns.
template <typename Act>
std::string thrownBy(Act act) {
  try {
    act();
  } catch (Vek::Exception const& exception) {
    std::string thrown = Vek::typeText(typeid(exception));
    for (unsigned id = 0; id < Vek::Exception::IdBitArray::kIds; ++id)
      if (exception.ids().has(id)) thrown += ' ' + std::to_string(id);
    thrown += ": ";
    return thrown += exception.message().view();
  } catch (std::exception const& exception) {
    return Vek::typeText(typeid(exception)) + ": " + exception.what();
  }
  return "nothing";
}

/// The object that a value refers to.
template <typename T>
T* objectOf(Vek::Value const& value) {
  return value.as<Vek::Ptr<T>>().get();
}

inline constexpr char const* kConst{"Vek::Exception 5: attempting to modify a const instance"};

}  // namespace IntrospectionTest
