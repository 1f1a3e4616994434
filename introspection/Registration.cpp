#include "introspection/Types.h"

namespace LinkFlap {

namespace {

/// Makes a record that lives as long as the process: its reference is leaked on purpose.
template <typename Type>
Type& leaked() {
  auto const type = Vek::make<Type>();
  type->referencesLeak();
  return *type;
}

struct Records {
  LinkFlapProfileSm::_Type& profileSm = leaked<LinkFlapProfileSm::_Type>();
  LinkFlapIntfSm::_Type& intfSm = leaked<LinkFlapIntfSm::_Type>();
  LinkFlapSm::_Type& sm = leaked<LinkFlapSm::_Type>();
  Root::_Type& root = leaked<Root::_Type>();
};

Records& records() {
  static Records instance;
  return instance;
}

bool initialised = false;

/// What runs when the library is loaded: binds the records to their names in the type tree.
bool bindTypes() {
  auto& reactor = Vek::IntrospectionReactor::global();
  for (Vek::VekType const* const type : {Root::_fwkType(), LinkFlapSm::_fwkType(),
                                         LinkFlapIntfSm::_fwkType(), LinkFlapProfileSm::_fwkType()})
    reactor.typeNodeIs(*type, type->fullName());
  return true;
}

[[maybe_unused]] bool const bound = bindTypes();

}  // namespace

void vekInitLinkFlapSm() {
  if (initialised) return;
  initialised = true;
  auto& reactor = Vek::IntrospectionReactor::global();
  Records& all = records();
  reactor.handleNameSpace("LinkFlap");
  defineLinkFlapProfileSm(reactor, all.profileSm);
  defineLinkFlapIntfSm(reactor, all.intfSm);
  defineLinkFlapSm(reactor, all.sm);
  defineRoot(reactor, all.root);
  reactor.handleScopeExit();
}

Vek::VekType const* Root::_fwkType() {
  vekInitLinkFlapSm();
  return &records().root;
}

Vek::VekType const* LinkFlapSm::_fwkType() {
  vekInitLinkFlapSm();
  return &records().sm;
}

Vek::VekType const* LinkFlapIntfSm::_fwkType() {
  vekInitLinkFlapSm();
  return &records().intfSm;
}

Vek::VekType const* LinkFlapProfileSm::_fwkType() {
  vekInitLinkFlapSm();
  return &records().profileSm;
}

Vek::VekType const* Root::fwkType() const {
  return _fwkType();
}

Vek::VekType const* LinkFlapSm::fwkType() const {
  return _fwkType();
}

Vek::VekType const* LinkFlapIntfSm::fwkType() const {
  return _fwkType();
}

Vek::VekType const* LinkFlapProfileSm::fwkType() const {
  return _fwkType();
}

}  // namespace LinkFlap
