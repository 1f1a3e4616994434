#include "runtime/vek/Activity.h"
#include "runtime/vek/Entity.h"
#include "runtime/vek/TypeDefinition.h"

// The records of the runtime's own types. A type's identifiers begin where its base's reserve ends:
// those of counted objects at 2, those of what derives from them at 130, and so on by 128.

namespace Vek {

namespace {

/// Makes a record that lives as long as the process.
VekType& newType(std::string_view fullName, VekType const* base) {
  auto const type = make<VekType>(fullName, base);
  type->referencesLeak();
  return *type;
}

VekType const& newPtrInterfaceType() {
  auto& reactor = IntrospectionReactor::global();
  VekType& type = newType("Vek::PtrInterface", nullptr);
  {
    TypeDefinition<PtrInterface> definition{reactor, type};
    definition.value<&PtrInterface::hasNotificationActive>(AttrKind::state, 2,
                                                           "hasNotificationActive");
    definition.value<&PtrInterface::vekMarkedForDeletion>(AttrKind::state, 3,
                                                          "vekMarkedForDeletion");
    definition.value<&PtrInterface::referenceCount>(AttrKind::state, 4, "referenceCount");
  }
  reactor.typeNodeIs(type, type.fullName());
  return type;
}

VekType const& newEntityType() {
  auto& reactor = IntrospectionReactor::global();
  VekType& type = newType("Vek::Entity", &ptrInterfaceType());
  {
    TypeDefinition<Entity> definition{reactor, type};
    definition.value<&Entity::name>(AttrKind::state, 130, "name");
    definition.value<&Entity::fullName>(AttrKind::state, 131, "fullName");
    definition.value<&Entity::uriPath>(AttrKind::state, 132, "uriPath");
    definition.value<&Entity::changes>(AttrKind::state, 133, "changes");
  }
  reactor.typeNodeIs(type, type.fullName());
  return type;
}

VekType const& newActivityConfigType() {
  auto& reactor = IntrospectionReactor::global();
  VekType& type = newType(ActivityConfig::vekTypeName, &entityType());
  {
    TypeDefinition<ActivityConfig> definition{reactor, type};
    definition.value<&ActivityConfig::deferred, &ActivityConfig::deferredIs>(AttrKind::state, 258,
                                                                             "deferred");
  }
  reactor.typeNodeIs(type, type.fullName());
  return type;
}

}  // namespace

VekType const& ptrInterfaceType() {
  static VekType const& type = newPtrInterfaceType();
  return type;
}

VekType const& entityType() {
  static VekType const& type = newEntityType();
  return type;
}

VekType const* ActivityConfig::fwkType() const {
  static VekType const& type = newActivityConfigType();
  return &type;
}

}  // namespace Vek
