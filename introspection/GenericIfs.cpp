#include "introspection/GenericIfs.h"

namespace LinkFlap {

std::unique_ptr<Vek::GenericIf> LinkFlapProfileSm::GenericIf_::clone() const {
  return std::make_unique<GenericIf_>(*this);
}

std::unique_ptr<Vek::GenericIf> LinkFlapIntfSm::GenericIf_::clone() const {
  return std::make_unique<GenericIf_>(*this);
}

std::unique_ptr<Vek::GenericIf> LinkFlapSm::GenericIf_::clone() const {
  return std::make_unique<GenericIf_>(*this);
}

std::unique_ptr<Vek::GenericIf> Root::GenericIf_::clone() const {
  return std::make_unique<GenericIf_>(*this);
}

Vek::Ptr<Root::GenericIf_::GenericIf_Adapter_> Root::GenericIf_::GenericIf_Adapter_Is(
    Ptr const& root, GenericIf_* view) {
  auto adapter = Vek::make<GenericIf_Adapter_>(view);
  adapter->notifierIs(root);
  adapter->hasNotificationActiveIs(true);
  return adapter;
}

void Root::GenericIf_::GenericIf_Adapter_::onLinkFlapSm() {
  if (!vekMarkedForDeletion()) view_->onLinkFlapSm();
}

void Root::GenericIf_::GenericIf_Adapter_::onZeroReferences() {
  if (!vekMarkedForDeletion()) view_->onZeroReferences();
}

void Root::GenericIf_::GenericIf_Adapter_::onNotificationException(Vek::AttributeId id) {
  NotifieeConst::onNotificationException(id);
  if (!vekMarkedForDeletion()) view_->onNotificationException(id);
}

void Root::GenericIf_::GenericIf_Adapter_::vekDoZombieReactors(bool on) {
  if (on == vekMarkedForDeletion()) return;
  if (root() != nullptr) hasNotificationActiveIs(!on);
  vekMarkedForDeletionIs(on);
}

}  // namespace LinkFlap
