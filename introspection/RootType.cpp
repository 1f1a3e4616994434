#include "runtime/model/StateTypes.h"
#include "runtime/vek/TypeDefinition.h"

#include "introspection/Types.h"

namespace LinkFlap {

void defineRoot(Vek::IntrospectionReactor& reactor, Root::_Type& type) {
  using Vek::AttrKind;
  Vek::TypeDefinition<Root> root{reactor, type};
  // The constructor's parameter, which is the entity's name: the same attribute, identifier and all.
  root.value<&Root::name>(AttrKind::input, 130, "name");
  root.single<&Root::linkFlapSm, &Root::linkFlapSmIs, &Root::linkFlapSmDel>(
      Root::kLinkFlapSm, "linkFlapSm",
      {"vekFwkActivity", "ethPhyIntfConfigDir", "ethPhyIntfStatusDir", "errdisableConfig", "config",
       "causeStatus", "causeName"});
}

}  // namespace LinkFlap
