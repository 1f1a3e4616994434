#include "agent/TreeDump.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "runtime/vek/GenericIf.h"
#include "runtime/vek/ObjectPath.h"

namespace LinkFlapd {

namespace {

using Json = nlohmann::ordered_json;
using ObjectPtr = Vek::Ptr<Vek::PtrInterface const>;

Json describe(ObjectPtr const& object);

/// Strings of the library may hold any bytes; JSON is UTF-8.
Json textOf(std::string const& text) {
  return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace));
}

Json plain(Vek::Value const& value) {
  auto const& storage = value.storage();
  if (auto const* const flag = std::get_if<bool>(&storage)) return *flag;
  if (auto const* const number = std::get_if<std::uint32_t>(&storage)) return *number;
  if (auto const* const number = std::get_if<double>(&storage)) return *number;
  if (auto const* const string = std::get_if<Vek::String>(&storage))
    return textOf(std::string{string->view()});
  if (auto const* const object = std::get_if<ObjectPtr>(&storage))
    return *object ? textOf(value.text()) : Json{};
  return {};
}

/// A member or a machine: the object itself stands here.
Json inPlace(Vek::Value const& value) {
  auto const* const object = std::get_if<ObjectPtr>(&value.storage());
  return object != nullptr && *object ? describe(*object) : plain(value);
}

Json membersOf(Vek::GenericIf const& view, Vek::VekAttr const& attr) {
  Json members = Json::object();
  for (auto it = view.attributeIteratorConst(attr.id); it->nonNull(); it->inc()) {
    Json const key = plain(it->key());
    members[key.is_string() ? key.get<std::string>() : key.dump()] = inPlace(it->obj());
  }
  return members;
}

Json describe(ObjectPtr const& object) {
  auto const view = Vek::genericIfOf(object, true);
  Json node;
  node["path"] = textOf(Vek::objectPath(*object));
  node["type"] = view->type().fullName();
  for (auto const* type = &view->type(); type != nullptr; type = type->base())
    for (auto const& attr : type->attrs()) {
      // One that a base has under the same name is the same attribute.
      if (view->type().attr(attr->name) != attr.get()) continue;
      std::string const name{attr->name};
      if (attr->iterate != nullptr) {
        node[name] = membersOf(*view, *attr);
      } else if (attr->read != nullptr) {
        Vek::Value value;
        view->attributeOp({attr->id, Vek::GenericIf::OpCode::get, {}}, {}, value);
        node[name] = attr->kind == Vek::AttrKind::single ? inPlace(value) : plain(value);
      }
    }
  return node;
}

/// One line for each value, indented by depth; an object's type stands on its own line.
void writeText(std::ostream& out, Json const& node, std::string const& indent) {
  for (auto const& [name, value] : node.items()) {
    if (name == "path" || name == "type") continue;
    out << indent << name;
    if (!value.is_object()) {
      out << ": " << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
      continue;
    }
    if (value.contains("type")) out << "  (" << value["type"].get<std::string>() << ')';
    out << (value.empty() ? ": none\n" : "\n");
    writeText(out, value, indent + "  ");
  }
}

}  // namespace

void dumpTree(std::ostream& out, Options::DumpFormat format) {
  Json tree = Json::object();
  for (auto const& [name, object] : Vek::PathRoots::global().roots())
    tree[name] = describe(object);
  if (format == Options::DumpFormat::json) {
    out << tree.dump(2) << '\n';
  } else {
    writeText(out, tree, "");
  }
  out.flush();
}

}  // namespace LinkFlapd
