// Paths over a small tree: what they name, and that what was named has a path that names it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/vek/Exception.h"
#include "runtime/vek/GenericIf.h"

#include "tests/fuzz/Check.h"
#include "tests/fuzz/SmallTree.h"

namespace {

using Fuzz::check;

/// The target of a path, or nothing: it was refused, with a column that the path has.
std::optional<Vek::PathTarget> targetOf(std::string_view path, bool intoObject) {
  try {
    return Vek::pathTarget(path, intoObject);
  } catch (Vek::RangeException const& exception) {
    std::string_view const message = exception.message().view();
    auto const column = message.find(" at column ");
    check(column != std::string_view::npos, "a refusal without a column");
    auto number = std::stoull(std::string{message.substr(column + 11, 20)});
    // The planted fault: columns behind a key are far too large.
    if (Fuzz::planted() && path.find("]/") != std::string_view::npos) number += 20;
    check(number >= 1 && number <= path.size() + 1, "a column beyond the path");
    return std::nullopt;
  }
}

/// Reads what can be read there, through a view that changes nothing.
void look(Vek::PathTarget const& target) {
  auto const view = Vek::genericIfOf(target.object, true);
  Vek::Value result;
  for (auto const code : {Vek::GenericIf::OpCode::get, Vek::GenericIf::OpCode::set,
                          Vek::GenericIf::OpCode::call, Vek::GenericIf::OpCode::instantiate,
                          Vek::GenericIf::OpCode::del, Vek::GenericIf::OpCode::size}) {
    try {
      view->attributeOp({target.attr->id, code, target.key}, {}, result);
      check(code == Vek::GenericIf::OpCode::get || code == Vek::GenericIf::OpCode::size,
            "a read-only view let a change pass");
    } catch (Vek::Exception const& exception) {
      check(!exception.ids().empty(), "an exception of no kind");
    }
  }
  (void)result.text();
  if (target.attr->iterate == nullptr) return;
  auto it = target.key.empty() ? view->attributeIteratorConst(target.attr->id)
                               : view->attributeIteratorKeyConst(target.attr->id, target.key);
  for (; it->nonNull(); it->inc())
    (void)(it->key().text() + it->obj().text());
}

void objectNamed(Vek::PtrInterface const& object) {
  std::string const path = Vek::objectPath(object);
  if (path.starts_with("0x")) return;  // no root leads down to it
  auto const again = targetOf(path, true);
  check(again && again->attr == nullptr && again->object.get() == &object,
        "an object's path does not name it");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  Fuzz::SmallTree::instance();
  std::string_view const path{reinterpret_cast<char const*>(data), size};

  auto const into = targetOf(path, true);
  auto const before = targetOf(path, false);
  check(into.has_value() == before.has_value(), "a path is read once and refused once");
  if (into) {
    if (into->attr == nullptr) objectNamed(*into->object);
    for (auto const& target : {*into, *before})
      if (target.attr != nullptr) look(target);
  }

  char const* at = path.data();
  auto const object = Vek::objectOfPath(at, path.data() + size);
  if (object) {
    auto const length = static_cast<std::size_t>(at - path.data());
    check(length > 0 && length <= size, "an object was read of no text");
    auto const front = targetOf(path.substr(0, length), true);
    check(front && front->attr == nullptr && front->object == object,
          "the front of a path names another object than was read from it");
    objectNamed(*object);
  } else {
    check(at == path.data(), "a refused path was taken from");
    check(!into, "a path names something, and yet no object was read from it");
  }
  return 0;
}
