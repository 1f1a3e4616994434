#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "runtime/vek/VekType.h"

// Type records as text, one line to an attribute, so that a test can hold a table that was typed by
// hand against one that was read back.

namespace IntrospectionTest {

inline std::string line(Vek::VekAttr const& attr) {
  std::string text{attr.name};
  text += ' ' + std::to_string(attr.id) + ' ';
  text += Vek::kindText(attr.kind);
  text += ' ';
  text += attr.valueType;
  if (attr.keyType != nullptr) {
    text += " by ";
    text += attr.keyType->name;
  }
  if (attr.parameters.empty()) return text;
  text += " (";
  for (auto const& parameter : attr.parameters) {
    if (&parameter != &attr.parameters.front()) text += ", ";
    text += parameter.name;
    text += ' ';
    text += parameter.type->name;
  }
  return text += ')';
}

/// NAME IDENTIFIER KIND TYPE [by KEY TYPE] [(PARAMETER TYPE, ...)], in the order of registration.
inline std::vector<std::string> lines(Vek::VekType const& type) {
  std::vector<std::string> all;
  for (auto const& attr : type.attrs())
    all.push_back(line(*attr));
  return all;
}

/// NAME and the operations that the attribute supports; those on a member have "[]".
inline std::string operations(Vek::VekAttr const& attr) {
  std::string text{attr.name};
  if (attr.read != nullptr) text += " get";
  if (attr.write != nullptr) text += " set";
  if (attr.del != nullptr) text += " del";
  if (attr.call != nullptr) text += " call";
  if (attr.instantiate != nullptr) text += " instantiate";
  if (attr.size != nullptr) text += " size";
  if (attr.member != nullptr) text += " get[]";
  if (attr.memberWrite != nullptr) text += " set[]";
  if (attr.memberDel != nullptr) text += " del[]";
  if (attr.iterate != nullptr) text += " iterate";
  return text;
}

inline std::vector<std::string> operations(Vek::VekType const& type) {
  std::vector<std::string> all;
  for (auto const& attr : type.attrs())
    all.push_back(operations(*attr));
  return all;
}

}  // namespace IntrospectionTest
