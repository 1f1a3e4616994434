#include "runtime/vek/VekType.h"

#include <algorithm>

#include "runtime/vek/Assertion.h"

namespace Vek {

namespace {

VekAttr const* found(std::vector<std::unique_ptr<VekAttr>> const& attrs, std::string_view name) {
  for (auto const& attr : attrs)
    if (attr->name == name) return attr.get();
  return nullptr;
}

VekAttr const* found(std::vector<std::unique_ptr<VekAttr>> const& attrs, AttributeId id) {
  for (auto const& attr : attrs)
    if (attr->id == id) return attr.get();
  return nullptr;
}

}  // namespace

std::string_view kindText(AttrKind kind) noexcept {
  switch (kind) {
    case AttrKind::activity:
      return "activity";
    case AttrKind::input:
      return "input";
    case AttrKind::state:
      return "state";
    case AttrKind::collection:
      return "collection";
    case AttrKind::queue:
      return "queue";
    case AttrKind::single:
      return "single";
    case AttrKind::handler:
      return "handler";
    case AttrKind::owner:
      return "owner";
    case AttrKind::key:
      return "key";
  }
  return "?";
}

std::string_view VekType::bareName() const noexcept {
  auto const colon = fullName_.rfind("::");
  return colon == std::string_view::npos ? fullName_ : fullName_.substr(colon + 2);
}

bool VekType::derivesFrom(VekType const& other) const noexcept {
  for (VekType const* type = this; type != nullptr; type = type->base_)
    if (type == &other) return true;
  return false;
}

VekAttr const* VekType::attr(std::string_view name) const noexcept {
  if (auto const* const own = found(attrs_, name)) return own;
  if (auto const* const companion = found(companions_, name)) return companion;
  return base_ == nullptr ? nullptr : base_->attr(name);
}

VekAttr const* VekType::attr(AttributeId id) const noexcept {
  if (auto const* const own = found(attrs_, id)) return own;
  if (auto const* const companion = found(companions_, id)) return companion;
  return base_ == nullptr ? nullptr : base_->attr(id);
}

VekAttr& VekType::attrIs(std::string_view name, AttributeId id) {
  AttributeId const next = attrs_.empty() ? 1 : attrs_.back()->id + 1;
  auto attr = std::make_unique<VekAttr>();
  attr->name = name;
  attr->id = id == 0 ? next : id;
  auto const present = std::find_if(attrs_.begin(), attrs_.end(),
                                    [&](auto const& other) { return other->name == name; });
  if (present == attrs_.end()) return *attrs_.emplace_back(std::move(attr));
  if (id == 0) attr->id = (*present)->id;
  *present = std::move(attr);
  return **present;
}

void VekType::attrDel(std::string_view name) noexcept {
  std::erase_if(attrs_, [&](auto const& attr) { return attr->name == name; });
}

VekAttr& VekType::companionIs(std::string_view name, AttributeId id) {
  auto& attr = *companions_.emplace_back(std::make_unique<VekAttr>());
  attr.name = name;
  attr.id = id;
  return attr;
}

IntrospectionReactor& IntrospectionReactor::global() {
  // Never destroyed: records are read until the process ends.
  static auto* const instance = new IntrospectionReactor;
  return *instance;
}

void IntrospectionReactor::handleNameSpace(std::string_view name) {
  scopes_.push_back(name);
}

void IntrospectionReactor::handleType(VekType& type) {
  scopes_.push_back(type.fullName());
}

VekAttr& IntrospectionReactor::defNoninstantiatingAttr(VekType& type, std::string_view name,
                                                       std::string_view valueType,
                                                       ValueType const* keyType, AttrKind kind,
                                                       bool notifying, AttributeId id) {
  VekAttr& attr = type.attrIs(name, id);
  attr.kind = kind;
  attr.valueType = valueType;
  attr.keyType = keyType;
  attr.notifying = notifying;
  return attr;
}

VekAttr& IntrospectionReactor::defInstantiatingAttr(VekType& type, std::string_view name,
                                                    std::string_view valueType, AttrKind kind,
                                                    AttributeId id) {
  type.attrDel(name);
  VekAttr& attr = type.attrIs(name, id);
  attr.kind = kind;
  attr.valueType = valueType;
  context_ = &attr;
  return attr;
}

void IntrospectionReactor::handleAttr(std::string_view name, ValueType const& type) {
  if (context_ == nullptr) fatal("Vek: a parameter was registered outside of an attribute");
  context_->parameters.push_back({name, &type});
}

void IntrospectionReactor::handleScopeExit() noexcept {
  if (scopes_.empty()) fatal("Vek: a scope was left that was not entered");
  scopes_.pop_back();
}

void IntrospectionReactor::typeNodeIs(VekType const& type, std::string_view fullName) {
  if (fullName != type.fullName()) fatal("Vek: a type was bound to a name that is not its own");
  if (typeNode(fullName) == nullptr) types_.push_back(&type);
}

VekType const* IntrospectionReactor::typeNode(std::string_view fullName) const noexcept {
  for (VekType const* const type : types_)
    if (type->fullName() == fullName) return type;
  return nullptr;
}

}  // namespace Vek
