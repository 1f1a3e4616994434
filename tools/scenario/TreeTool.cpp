#include "tools/scenario/TreeTool.h"

#include "runtime/vek/Exception.h"
#include "runtime/vek/GenericIf.h"
#include "runtime/vek/ObjectPath.h"

namespace Scenario {

namespace {

using OpCode = Vek::GenericIf::OpCode;

/// An attribute, or a member of one, that a path names, and a view of its object.
struct Target {
  std::unique_ptr<Vek::GenericIf> view;
  Vek::VekAttr const& attr;
  Vek::Value key;

  Vek::Value perform(OpCode code, std::vector<std::string> const& arguments) const {
    Vek::GenericIf::List values;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      // A text is read as the type that is asked for, strings too: they may be quoted. What nobody
      // asks for is handed on as it is, and refused.
      Vek::ValueType const* const type = typeOf(code, i);
      values.push_back(type == nullptr ? Vek::Value{Vek::String{arguments[i]}}
                                       : Vek::valueOfText(arguments[i], *type));
    }
    Vek::Value result;
    view->attributeOp({attr.id, code, key}, values, result);
    return result;
  }

 private:
  Vek::ValueType const* typeOf(OpCode code, std::size_t argument) const {
    if (code == OpCode::set) return argument == 0 ? attr.writeType : nullptr;
    return argument < attr.parameters.size() ? attr.parameters[argument].type : nullptr;
  }
};

Target targetOf(std::string_view path, bool readOnly) {
  auto const target = Vek::pathTarget(path, false);
  if (target.attr == nullptr) Vek::throwRangeException("the path names an object, no attribute");
  return {Vek::genericIfOf(target.object, readOnly), *target.attr, target.key};
}

std::string signatureOf(Vek::VekAttr const& attr) {
  std::string text{"("};
  for (auto const& parameter : attr.parameters) {
    if (text.size() > 1) text += ", ";
    text.append(parameter.name).append(" ").append(parameter.type->name);
  }
  return text + ")";
}

/// The registered type of an attribute's value, with that of its keys.
std::string typeTextOf(Vek::VekAttr const& attr) {
  std::string text{attr.valueType};
  if (attr.keyType != nullptr) text.append("[").append(attr.keyType->name).append("]");
  return text;
}

void listMembers(TreeTool::Line const& line, Vek::GenericIf const& view, Vek::VekAttr const& attr) {
  for (auto it = view.attributeIteratorConst(attr.id); it->nonNull(); it->inc()) {
    std::string text{"V "};
    line(text.append(attr.name)
             .append("[")
             .append(it->key().text())
             .append("] = ")
             .append(it->obj().text()));
  }
}

std::string describe(Vek::GenericIf& view, Vek::VekAttr const& attr) {
  std::string text{"V "};
  text.append(attr.name);
  if (attr.call != nullptr) return text + signatureOf(attr);
  Vek::Value value;
  if (attr.size != nullptr) {
    view.attributeOp({attr.id, OpCode::size, {}}, {}, value);
    return text.append("[] ").append(value.text());
  }
  view.attributeOp({attr.id, OpCode::get, {}}, {}, value);
  return text.append(" = ").append(value.text());
}

}  // namespace

void TreeTool::list(std::string_view path) const {
  auto const target = Vek::pathTarget(path, true);
  auto const view = Vek::genericIfOf(target.object, true);
  if (target.attr != nullptr && target.key.empty() && target.attr->iterate != nullptr)
    return listMembers(line_, *view, *target.attr);
  if (target.attr != nullptr) Vek::throwRangeException("the path names no object");
  for (auto const* type = &view->type(); type != nullptr; type = type->base())
    for (auto const& attr : type->attrs())
      // One that a base has under the same name is the same attribute.
      if (view->type().attr(attr->name) == attr.get()) line_(describe(*view, *attr));
}

void TreeTool::get(std::string_view path) const {
  Target const target = targetOf(path, true);
  Vek::Value const value = target.perform(OpCode::get, {});
  line_("V " + (value.empty() ? std::string{"none"} : value.text()));
}

void TreeTool::set(std::string_view path, std::string_view value) const {
  (void)targetOf(path, false).perform(OpCode::set, {std::string{value}});
}

void TreeTool::call(std::string_view path, std::vector<std::string> const& arguments) const {
  (void)targetOf(path, false).perform(OpCode::call, arguments);
}

void TreeTool::make(std::string_view path, std::vector<std::string> const& arguments) const {
  line_("V " + targetOf(path, false).perform(OpCode::instantiate, arguments).text());
}

void TreeTool::remove(std::string_view path) const {
  Vek::Value const removed = targetOf(path, false).perform(OpCode::del, {});
  auto const* const object = std::get_if<Vek::Ptr<Vek::PtrInterface const>>(&removed.storage());
  bool const none = removed.empty() || (object != nullptr && !*object);
  line_(none ? "V none" : "V some");
}

void TreeTool::type(std::string_view name) const {
  auto const* const type = Vek::IntrospectionReactor::global().typeNode(name);
  if (type == nullptr) Vek::throwRangeException("no type of that name");
  std::string title{"V "};
  title.append(type->fullName());
  if (type->base() != nullptr) title.append(" : ").append(type->base()->fullName());
  line_(title);
  for (auto const& attr : type->attrs()) {
    std::string text{"V "};
    text.append(std::to_string(attr->id)).append(" ").append(attr->name).append(" ");
    text.append(typeTextOf(*attr)).append(" ").append(Vek::kindText(attr->kind));
    if (attr->call != nullptr || attr->instantiate != nullptr)
      text.append(" ").append(signatureOf(*attr));
    line_(text);
  }
}

std::vector<std::string> quotedWords(std::string_view text) {
  std::vector<std::string> words;
  bool quoted = false;
  bool inWord = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char const c = text[i];
    if (c == ' ' && !quoted) {
      inWord = false;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    words.back() += c;
    if (c == '"') quoted = !quoted;
    if (c == '\\' && quoted && i + 1 < text.size()) words.back() += text[++i];
  }
  if (quoted) Vek::throwRangeException("a quote is not closed");
  return words;
}

}  // namespace Scenario
