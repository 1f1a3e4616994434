#include "runtime/vek/ObjectPath.h"

#include "runtime/vek/AttributeIterator.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Reinstantiation.h"

namespace Vek {

namespace {

Ptr<PtrInterface const> objectOf(Value const& value) {
  auto const* const pointer = std::get_if<Ptr<PtrInterface const>>(&value.storage());
  return pointer == nullptr ? nullptr : *pointer;
}

bool nameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// Reads one path from the front of a text.
class PathReader {
 public:
  PathReader(char const* begin, char const* end) : begin_{begin}, at_{begin}, end_{end} {}

  char const* position() const noexcept { return at_; }
  bool atEnd() const noexcept { return at_ == end_; }

  [[noreturn]] void fail(char const* what) const {
    throwRangeException(format("%s at column %lld of %s", what,
                               static_cast<long long>(at_ - begin_) + 1,
                               std::string{begin_, end_}.c_str())
                            .charPtr());
  }

  Ptr<PtrInterface const> root() {
    char const* const start = at_;
    if (atEnd()) fail("no path");
    String name;
    try {
      name = textOfQuoted(at_, end_, typeid(Name));
    } catch (RangeException const&) {
      fail("no name");
    }
    auto object = PathRoots::global().root(std::string{name.view()});
    if (!object) {
      at_ = start;
      fail("no such object");
    }
    return object;
  }

  /// Reads "/attribute" and perhaps "[key]"; false when no such step follows.
  bool step(PtrInterface const& object, VekAttr const*& attr, Value& key) {
    if (atEnd() || *at_ != '/') return false;
    ++at_;
    char const* const start = at_;
    while (!atEnd() && nameCharacter(*at_))
      ++at_;
    VekType const* const type = object.fwkType();
    attr = type == nullptr
               ? nullptr
               : type->attr(std::string_view(start, static_cast<std::size_t>(at_ - start)));
    if (attr == nullptr) {
      at_ = start;
      fail("no such attribute");
    }
    key = Value{};
    if (!atEnd() && *at_ == '[') readKey(*attr, key);
    return true;
  }

 private:
  void readKey(VekAttr const& attr, Value& key) {
    if (attr.keyType == nullptr) fail("an attribute without members");
    ++at_;
    try {
      key = Value{*attr.keyType, attr.keyType->fromText(at_, end_)};
    } catch (RangeException const&) {
      fail("no key");
    }
    if (atEnd() || *at_ != ']') fail("\"]\" expected");
    ++at_;
  }

  char const* begin_;
  char const* at_;
  char const* end_;
};

/// What an attribute of an object, or a member of it, is worth as an object.
Ptr<PtrInterface const> objectAt(PtrInterface const& object, VekAttr const& attr,
                                 Value const& key) {
  if (!key.empty()) return attr.member == nullptr ? nullptr : objectOf(attr.member(object, key));
  return attr.read == nullptr || attr.keyType != nullptr ? nullptr : objectOf(attr.read(object));
}

/// The key under which a collection of `object`'s type would keep it. The object has a record.
Value keyOf(PtrInterface const& object) {
  for (char const* const name : {"fwkKey", "intfId", "name"}) {
    VekAttr const* const attr = object.fwkType()->attr(name);
    if (attr != nullptr && attr->read != nullptr) return attr->read(object);
  }
  return {};
}

std::string attributeStep(VekAttr const& attr) {
  std::string step{"/"};
  step += attr.name;
  return step;
}

std::string memberStep(VekAttr const& attr, Value const& key) {
  std::string step = attributeStep(attr);
  step += '[';
  step += key.text();
  step += ']';
  return step;
}

/// The step from `from` to `object` through a collection: looked up by the object's own key; if it
/// stands under another, found by walking.
std::string collectionStep(PtrInterface const& from, VekAttr const& attr,
                           PtrInterface const& object, Value const& key) {
  if (!key.empty()) {
    Value const asKey{*attr.keyType, key.storage()};
    if (objectAt(from, attr, asKey).get() == &object) return memberStep(attr, asKey);
  }
  for (auto member = attr.iterate(from, nullptr); member->nonNull(); member->inc())
    if (objectOf(member->obj()).get() == &object) return memberStep(attr, member->key());
  return {};
}

/// The steps from `from` down to `object`, which has a record; empty when none leads there.
std::string stepsTo(PtrInterface const& from, PtrInterface const& object, unsigned depth) {
  VekType const* const type = from.fwkType();
  if (type == nullptr || depth == 0) return {};
  Value const key = keyOf(object);
  for (VekType const* t = type; t != nullptr; t = t->base()) {
    for (auto const& attr : t->attrs()) {
      if (attr->kind == AttrKind::collection && attr->iterate != nullptr &&
          attr->valueType == object.fwkType()->fullName()) {
        std::string step = collectionStep(from, *attr, object, key);
        if (!step.empty()) return step;
      }
      if (attr->kind == AttrKind::single) {
        auto const child = objectAt(from, *attr, {});
        if (!child) continue;
        std::string step = attributeStep(*attr);
        if (child.get() == &object) return step;
        std::string const rest = stepsTo(*child, object, depth - 1);
        if (!rest.empty()) return step + rest;
      }
    }
  }
  return {};
}

}  // namespace

PathRoots& PathRoots::global() {
  // Never destroyed: statics may be destroyed in any order, and it only holds references.
  static auto* const instance = new PathRoots;
  return *instance;
}

void PathRoots::rootIs(std::string const& name, Ptr<PtrInterface const> object) {
  if (object) {
    roots_[name] = std::move(object);
  } else {
    roots_.erase(name);
  }
}

Ptr<PtrInterface const> PathRoots::root(std::string const& name) const {
  auto const found = roots_.find(name);
  return found == roots_.end() ? nullptr : found->second;
}

PathTarget pathTarget(std::string_view path, bool intoObject) {
  PathReader reader{path.data(), path.data() + path.size()};
  PathTarget target{reader.root(), nullptr, {}};
  VekAttr const* attr = nullptr;
  Value key;
  while (reader.step(*target.object, attr, key)) {
    auto const next = objectAt(*target.object, *attr, key);
    if (next && (intoObject || !reader.atEnd())) {
      target.object = next;
      continue;
    }
    target.attr = attr;
    target.key = key;
    if (!reader.atEnd()) reader.fail("nothing to step into");
  }
  if (!reader.atEnd()) reader.fail("\"/\" expected");
  return target;
}

namespace {

/// The path of an object; empty when no root leads to it.
std::string pathFromRoots(PtrInterface const& object) {
  for (auto const& [name, root] : PathRoots::global().roots())
    if (root.get() == &object) return quotedText(name);
  VekType const* const type = object.fwkType();
  if (type == nullptr) return {};
  // A machine that knows its owner is found from there.
  for (auto const& attr : type->attrs()) {
    if (attr->kind != AttrKind::owner) continue;
    auto const owner = objectAt(object, *attr, {});
    if (!owner) continue;
    std::string const step = stepsTo(*owner, object, 1);
    std::string const above = pathFromRoots(*owner);
    if (!step.empty() && !above.empty()) return above + step;
  }
  for (auto const& [name, root] : PathRoots::global().roots()) {
    std::string const steps = stepsTo(*root, object, 4);
    if (!steps.empty()) return quotedText(name) + steps;
  }
  return {};
}

}  // namespace

std::string objectPath(PtrInterface const& object) {
  std::string path = pathFromRoots(object);
  return path.empty() ? std::string{representation(&object).view()} : path;
}

Ptr<PtrInterface const> objectOfPath(char const*& begin, char const* end) {
  PathReader reader{begin, end};
  Ptr<PtrInterface const> object;
  try {
    object = reader.root();
    begin = reader.position();
    VekAttr const* attr = nullptr;
    Value key;
    while (reader.step(*object, attr, key)) {
      auto next = objectAt(*object, *attr, key);
      if (!next) break;
      object = std::move(next);
      begin = reader.position();
    }
  } catch (RangeException const&) {
    // What was read so far counts; the rest is the caller's business.
  }
  return object;
}

}  // namespace Vek
