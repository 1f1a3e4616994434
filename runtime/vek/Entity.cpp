#include "runtime/vek/Entity.h"

#include <string>

namespace Vek {

namespace {

bool plainInPath(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

}  // namespace

Entity::~Entity() = default;

String Entity::fullName() const {
  Entity const* const above = parent();
  return above == nullptr ? name().string() : above->fullName() + "::" + name().string();
}

String Entity::uriPath() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string path;
  for (Entity const* entity = this; entity != nullptr; entity = entity->parent()) {
    std::string step{"/"};
    Name const name = entity->name();
    for (char const c : name.string().view()) {
      if (plainInPath(c)) {
        step += c;
      } else {
        auto const byte = static_cast<unsigned char>(c);
        step += '%';
        step += kDigits[byte >> 4U];
        step += kDigits[byte & 15U];
      }
    }
    path.insert(0, step);
  }
  return String{path};
}

String Entity::attributeString(AttributeId /*id*/) const {
  return {};
}

}  // namespace Vek
