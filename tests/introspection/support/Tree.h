#pragma once

#include <string>
#include <vector>

#include "runtime/vek/GenericIf.h"

namespace IntrospectionTest {

/// Calls visit(path, view) for an object and for every object below it: machines and members of
/// collections, not what they refer to. All by the records, without a type of them.
template <typename Visit>
void walkTree(std::string const& path, Vek::Ptr<Vek::PtrInterface const> const& object,
              Visit const& visit) {
  auto const view = Vek::genericIfOf(object, false);
  visit(path, *view);
  for (Vek::VekType const* type = &view->type(); type != nullptr; type = type->base()) {
    for (auto const& attr : type->attrs()) {
      std::string const step = path + '/' + std::string{attr->name};
      if (attr->kind == Vek::AttrKind::single) {
        auto const child = attr->read(*object);
        auto const& pointer = std::get<Vek::Ptr<Vek::PtrInterface const>>(child.storage());
        if (pointer) walkTree(step, pointer, visit);
      }
      if (attr->kind != Vek::AttrKind::collection) continue;
      for (auto it = view->attributeIteratorConst(attr->id); it->nonNull(); it->inc()) {
        Vek::Value const member = it->obj();
        if (!member.type()->object) break;
        walkTree(step + '[' + it->key().text() + ']',
                 std::get<Vek::Ptr<Vek::PtrInterface const>>(member.storage()), visit);
      }
    }
  }
}

/// Calls visit(attr, key, value) for every value that an object lets be read: its attributes, those
/// of its bases, the members of its collections and queues, and what belongs to an attribute.
template <typename Visit>
void forEachValue(Vek::GenericIf& view, Visit const& visit) {
  auto const read = [&](Vek::VekAttr const& attr) {
    if (attr.read == nullptr) return;
    Vek::Value value;
    view.attributeOp({attr.id, Vek::GenericIf::OpCode::get, {}}, {}, value);
    visit(attr, Vek::Value{}, value);
  };
  for (Vek::VekType const* type = &view.type(); type != nullptr; type = type->base()) {
    for (auto const& attr : type->attrs()) {
      read(*attr);
      if (attr->iterate == nullptr) continue;
      for (auto it = view.attributeIteratorConst(attr->id); it->nonNull(); it->inc())
        visit(*attr, it->key(), it->obj());
    }
  }
  if (auto const* const companion = view.type().attr("linkFlapTimeStampMetadata")) read(*companion);
}

/// Every value of a tree, one line to each.
inline void dump(std::string const& path, Vek::Ptr<Vek::PtrInterface const> const& object,
                 std::vector<std::string>& lines) {
  walkTree(path, object, [&](std::string const& at, Vek::GenericIf& view) {
    forEachValue(view,
                 [&](Vek::VekAttr const& attr, Vek::Value const& key, Vek::Value const& value) {
                   std::string line = at + '.' + std::string{attr.name};
                   if (!key.empty()) line += '[' + key.text() + ']';
                   lines.push_back(line + " = " + value.text());
                 });
  });
}

}  // namespace IntrospectionTest
